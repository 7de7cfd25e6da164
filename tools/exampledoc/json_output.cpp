#include "json_output.hpp"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "zwhost/unicode.hpp"

namespace exampledoc {
namespace {

using zwhost::unicode::utf16ToUtf8;

boost::json::array stringsToJson(const std::vector<std::u16string>& strings) {
    boost::json::array array;
    array.reserve(strings.size());
    for (const auto& text : strings) {
        array.emplace_back(utf16ToUtf8(text));
    }
    return array;
}

boost::json::object itemToJson(const std::u16string& id, const example::docparser::ExampleItem& item) {
    boost::json::array links;
    for (const auto& link : item.getDocIDLinks()) {
        links.push_back(boost::json::object{{"docid", utf16ToUtf8(link.getDocID())},
                                            {"target", utf16ToUtf8(link.getTarget())}});
    }
    return boost::json::object{
        {"id", utf16ToUtf8(id)},
        {"name", utf16ToUtf8(item.getName())},
        {"component", utf16ToUtf8(item.getComponent())},
        {"title", utf16ToUtf8(item.getTitle())},
        {"description", utf16ToUtf8(item.getDescription())},
        {"relativePaths", stringsToJson(item.getRelativePaths())},
        {"thumbnail", utf16ToUtf8(item.getThumbnail())},
        {"exampleType", example::docparser::ExampleType::enumToString(item.getExampleType())},
        {"exampleTypeValue", static_cast<std::uint32_t>(item.getExampleType())},
        {"openCommand", utf16ToUtf8(item.getOpenCommand())},
        {"supportingFiles", stringsToJson(item.getSupportingFiles())},
        {"docIDLinks", std::move(links)},
    };
}

} // namespace

boost::json::value cataloguesToJson(const example::docparser::ExampleCatalogues& catalogues) {
    boost::json::object result;
    for (const auto& [helpFolder, catalogue] : catalogues) {
        const auto& header = catalogue.header;
        boost::json::array items;
        for (const auto& [id, sameId] : catalogue.items) {
            for (const auto& item : sameId) {
                items.push_back(itemToJson(id, item));
            }
        }
        result[utf16ToUtf8(helpFolder)] = boost::json::object{
            {"header", boost::json::object{{"product", utf16ToUtf8(header.getProduct())},
                                           {"version", utf16ToUtf8(header.getVersion())},
                                           {"helpFolder", utf16ToUtf8(header.getHelpFolder())},
                                           {"locale", utf16ToUtf8(header.getLocale())}}},
            {"items", std::move(items)},
        };
    }
    return result;
}

} // namespace exampledoc
