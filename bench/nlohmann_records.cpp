#include "nlohmann_records.hpp"

#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "zwhost/unicode.hpp"

namespace zwbench {
namespace {

using example::docparser::DocIDLink;
using example::docparser::ExampleItem;
using example::docparser::ExampleType;
using nlohmann::json;

std::u16string verbatim(const json& value) {
    return zwhost::unicode::utf8ToUtf16(value.get_ref<const std::string&>());
}

std::u16string trimmed(const json& value) {
    std::string_view text = value.get_ref<const std::string&>();
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) {
        return {};
    }
    text = text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
    return zwhost::unicode::utf8ToUtf16(text);
}

std::u16string optional(const json& object, const char* key, std::u16string (*convert)(const json&)) {
    const auto member = object.find(key);
    return member == object.end() || member->is_null() ? std::u16string() : convert(*member);
}

std::vector<std::u16string> strings(const json& entry, const char* key,
                                    std::u16string (*convert)(const json&)) {
    std::vector<std::u16string> values;
    const auto member = entry.find(key);
    if (member != entry.end()) {
        values.reserve(member->size());
        for (const json& value : *member) {
            values.push_back(convert(value));
        }
    }
    return values;
}

} // namespace

example::docparser::ExampleCatalogues parseWithNlohmann(const std::string& text) {
    const json root = json::parse(text);
    const json& header = root.at("header");
    reference::property::HeaderInfo info(
        optional(header, "product", verbatim), optional(header, "version", verbatim),
        optional(header, "helpFolder", verbatim), optional(header, "locale", verbatim));

    std::map<std::u16string, std::vector<ExampleItem>> items;
    auto hint = items.end();
    for (const json& entry : root.at("exampleItems")) {
        std::u16string name = verbatim(entry.at("name"));
        std::u16string component = verbatim(entry.at("component"));
        std::u16string title = trimmed(entry.at("title"));
        std::u16string description = optional(entry, "description", trimmed);
        std::u16string thumbnail = verbatim(entry.at("thumbnail"));
        ExampleType::Value exampleType = ExampleType::getDefaultValue();
        if (const auto kind = entry.find("exampleType"); kind != entry.end()) {
            exampleType = ExampleType::stringToEnum(kind->get_ref<const std::string&>());
        }
        std::u16string id = component + u'/' + name;
        std::u16string openCommand = optional(entry, "openCmd", trimmed);
        if (openCommand.empty()) {
            openCommand = u"openExample('" + id + u"');";
        }
        std::vector<std::u16string> relativePaths = strings(entry, "relative_path", verbatim);
        std::vector<std::u16string> supportingFiles = strings(entry, "supporting_files", trimmed);
        std::vector<DocIDLink> links;
        if (const auto member = entry.find("docid_links"); member != entry.end()) {
            links.reserve(member->size());
            for (const json& link : *member) {
                links.emplace_back(verbatim(link.at("docid")), verbatim(link.at("target")));
            }
        }
        hint = items.try_emplace(hint, std::move(id));
        hint->second.emplace_back(std::move(name), std::move(component), std::move(title),
                                  std::move(description), std::move(relativePaths), std::move(thumbnail),
                                  exampleType, std::move(openCommand), std::move(supportingFiles),
                                  std::move(links));
    }
    example::docparser::ExampleCatalogues result;
    std::u16string helpFolder = info.getHelpFolder();
    result.emplace(std::move(helpFolder),
                   reference::docparser::DocResource<ExampleItem>{std::move(info), std::move(items)});
    return result;
}

} // namespace zwbench
