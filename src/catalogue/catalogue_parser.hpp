#pragma once
// Turns the text of one catalogue file into its catalogue, keyed by help folder.

#include <string>
#include <string_view>
#include <vector>

#include <boost/json/object.hpp>

#include "example/docparser/doc_example_parser.hpp"
#include "reference/docparser/doc_resource_parser.hpp"

namespace example::docparser::detail {

/** The catalogue of `text`: one element keyed by the help folder of its header.
    Throws on text that is not a catalogue; nothing of the file survives then. */
ExampleCatalogues parseExampleCatalogue(const std::string& text);

/** The catalogues under `root` for the current locale, each file's text turned into its catalogue
    by `parse`: getDocExampleFiles with parseExampleCatalogue, or a tool that watches the parse. */
ExampleCatalogues
readExampleCatalogues(const std::u16string& root,
                      const reference::docparser::ParsingInfo<ExampleCatalogues>::JsonParsingFcn& parse);

/** The strings of the array member `key` of `entry`, each treated by `type`; empty if absent. */
std::vector<std::u16string>
getStringArray(const boost::json::object& entry, std::string_view key,
               reference::docparser::DocResourceParser::ParsingTools::StringParsingType type);

} // namespace example::docparser::detail
