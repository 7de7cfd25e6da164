#include "plain_records.hpp"

#include <map>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include <boost/json/monotonic_resource.hpp>
#include <boost/json/parse.hpp>
#include <nlohmann/json.hpp>

#include "zwhost/json_members.hpp"
#include "zwhost/unicode.hpp"

namespace zwbench {
namespace {

/** The records of `root` read through `Json`, which differs between the readers:
    `member(object, key)` is null when absent, `at(object, key)` throws when absent,
    `text(value)` views a string, `elements(value)` is an array's range. */
template <class Json>
example::docparser::ExampleCatalogues plainRecords(const typename Json::Value& root) {
    using Value = typename Json::Value;
    using example::docparser::DocIDLink;
    using example::docparser::ExampleItem;
    using example::docparser::ExampleType;

    const auto verbatim = [](const Value& value) { return zwhost::unicode::utf8ToUtf16(Json::text(value)); };
    const auto trimmed = [](const Value& value) {
        std::string_view text = Json::text(value);
        const std::size_t first = text.find_first_not_of(" \t\r\n");
        if (first == std::string_view::npos) {
            return std::u16string();
        }
        return zwhost::unicode::utf8ToUtf16(text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1));
    };
    const auto optional = [](const Value& object, const char* key, const auto& convert) {
        const Value* member = Json::member(object, key);
        return member == nullptr || member->is_null() ? std::u16string() : convert(*member);
    };
    const auto strings = [](const Value& entry, const char* key, const auto& convert) {
        std::vector<std::u16string> values;
        if (const Value* member = Json::member(entry, key)) {
            const auto& elements = Json::elements(*member);
            values.reserve(elements.size());
            for (const Value& value : elements) {
                values.push_back(convert(value));
            }
        }
        return values;
    };

    const Value& header = Json::at(root, "header");
    reference::property::HeaderInfo info(
        optional(header, "product", verbatim), optional(header, "version", verbatim),
        optional(header, "helpFolder", verbatim), optional(header, "locale", verbatim));

    std::map<std::u16string, std::vector<ExampleItem>> items;
    auto hint = items.end();
    for (const Value& entry : Json::elements(Json::at(root, "exampleItems"))) {
        std::u16string name = verbatim(Json::at(entry, "name"));
        std::u16string component = verbatim(Json::at(entry, "component"));
        std::u16string title = trimmed(Json::at(entry, "title"));
        std::u16string description = optional(entry, "description", trimmed);
        std::u16string thumbnail = verbatim(Json::at(entry, "thumbnail"));
        ExampleType::Value exampleType = ExampleType::getDefaultValue();
        if (const Value* kind = Json::member(entry, "exampleType")) {
            exampleType = ExampleType::stringToEnum(Json::text(*kind));
        }
        std::u16string id = component + u'/' + name;
        std::u16string openCommand = optional(entry, "openCmd", trimmed);
        if (openCommand.empty()) {
            openCommand = u"openExample('" + id + u"');";
        }
        std::vector<std::u16string> relativePaths = strings(entry, "relative_path", verbatim);
        std::vector<std::u16string> supportingFiles = strings(entry, "supporting_files", trimmed);
        std::vector<DocIDLink> links;
        if (const Value* member = Json::member(entry, "docid_links")) {
            const auto& elements = Json::elements(*member);
            links.reserve(elements.size());
            for (const Value& link : elements) {
                links.emplace_back(verbatim(Json::at(link, "docid")), verbatim(Json::at(link, "target")));
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

struct Nlohmann {
    using Value = nlohmann::json;
    static const Value* member(const Value& object, const char* key) {
        const auto found = object.find(key);
        return found == object.end() ? nullptr : &*found;
    }
    static const Value& at(const Value& object, const char* key) { return object.at(key); }
    static std::string_view text(const Value& value) { return value.get_ref<const std::string&>(); }
    static const Value& elements(const Value& value) { return value; }
};

struct BoostJson {
    using Value = boost::json::value;
    static const Value* member(const Value& object, const char* key) {
        return zwhost::json::findMember(object.as_object(), key);
    }
    static const Value& at(const Value& object, const char* key) {
        const Value* found = member(object, key);
        if (found == nullptr) {
            throw std::out_of_range(std::string("no member ") + key);
        }
        return *found;
    }
    static std::string_view text(const Value& value) {
        const boost::json::string& string = value.as_string();
        return {string.data(), string.size()};
    }
    static const boost::json::array& elements(const Value& value) { return value.as_array(); }
};

} // namespace

example::docparser::ExampleCatalogues parseWithNlohmann(const std::string& text) {
    return plainRecords<Nlohmann>(nlohmann::json::parse(text));
}

example::docparser::ExampleCatalogues parseWithBoostJson(const std::string& text) {
    boost::json::monotonic_resource memory(1024);
    return plainRecords<BoostJson>(boost::json::parse(text, &memory));
}

} // namespace zwbench
