#include "example_kinds.hpp"

#include <algorithm>
#include <utility>

#include "model/example_type_table.hpp"

namespace exampledoc {
namespace {

using example::docparser::ExampleType;

// The library's table of kinds, by value.
std::vector<std::pair<ExampleType::Value, std::string_view>> byValue() {
    std::vector<std::pair<ExampleType::Value, std::string_view>> rows;
    for (const auto& [form, value] : example::docparser::detail::exampleTypeByName) {
        rows.emplace_back(value, form);
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

} // namespace

std::vector<std::string_view> catalogueKindForms() {
    std::vector<std::string_view> forms;
    for (const auto& [value, form] : byValue()) {
        forms.push_back(form);
    }
    return forms;
}

std::vector<std::string> kindNames() {
    std::vector<std::string> names;
    for (const auto& [value, form] : byValue()) {
        names.push_back(ExampleType::enumToString(value));
    }
    return names;
}

} // namespace exampledoc
