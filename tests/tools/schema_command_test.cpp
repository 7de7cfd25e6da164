#include <set>
#include <string>

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>

#include "check_rules.hpp"
#include "example/docparser/example_type.hpp"
#include "model/example_type_table.hpp"
#include "schema_command.hpp"

namespace {

using Names = std::set<std::string, std::less<>>;

struct NamesCase {
    std::string_view schema;
    const char* pointer; // to an array of strings in that schema
    Names expected;
};

// The schemas are files of their own, so the names they offer are held against the code that
// decides them: the kinds of the library's table, their enumerator names and the check's rules.
TEST(SchemaCommand, SchemasOfferTheNamesTheCodeDecides) {
    Names forms;
    Names enumerators;
    for (const auto& [form, value] : example::docparser::detail::exampleTypeByName) {
        forms.emplace(form);
        enumerators.insert(example::docparser::ExampleType::enumToString(value));
    }
    Names rules;
    for (const exampledoc::CheckRule& rule : exampledoc::checkRules()) {
        rules.emplace(rule.name);
    }
    const NamesCase cases[] = {
        {"catalogue", "/$defs/example/properties/exampleType/anyOf/0/enum", forms},
        {"catalogue", "/$defs/example/properties/exampleType/examples", forms},
        {"list", "/$defs/item/properties/exampleType/enum", enumerators},
        {"check", "/$defs/finding/properties/rule/enum", rules},
    };
    for (const NamesCase& c : cases) {
        SCOPED_TRACE(std::string(c.schema) + c.pointer);
        Names offered;
        for (const exampledoc::EmbeddedSchema& schema : exampledoc::embeddedSchemas()) {
            if (schema.name == c.schema) {
                const boost::json::value document = boost::json::parse(schema.text);
                for (const auto& name : document.at_pointer(c.pointer).as_array()) {
                    offered.emplace(name.as_string());
                }
            }
        }
        EXPECT_EQ(offered, c.expected);
    }
}

} // namespace
