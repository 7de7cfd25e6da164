#include "json_output.hpp"

#include <boost/json/serialize.hpp>

#include "zwhost/unicode.hpp"

namespace exampledoc {
namespace {

using zwhost::unicode::utf16ToUtf8;

// The JSON writer of one help folder: compact, in the same order and escapes as boost::json.
class JsonWriter {
public:
    explicit JsonWriter(std::string& text) : text_(text) {}

    JsonWriter& key(std::string_view name) {
        string(name);
        text_ += ':';
        fresh_ = true;
        return *this;
    }

    JsonWriter& string(std::string_view value) {
        separate();
        text_ += boost::json::serialize(boost::json::string_view(value.data(), value.size()));
        return *this;
    }

    JsonWriter& string(const std::u16string& value) { return string(utf16ToUtf8(value)); }

    JsonWriter& number(std::uint32_t value) {
        separate();
        text_ += std::to_string(value);
        return *this;
    }

    JsonWriter& open(char bracket) {
        separate();
        text_ += bracket;
        fresh_ = true;
        return *this;
    }

    JsonWriter& close(char bracket) {
        text_ += bracket;
        fresh_ = false;
        return *this;
    }

    JsonWriter& strings(const std::vector<std::u16string>& values) {
        open('[');
        for (const auto& value : values) {
            string(value);
        }
        return close(']');
    }

private:
    // A comma before every value or key but the first of its object or array, none after a key.
    void separate() {
        if (!fresh_) {
            text_ += ',';
        }
        fresh_ = false;
    }

    std::string& text_;
    bool fresh_ = true;
};

void writeItem(JsonWriter& json, const std::u16string& id, const example::docparser::ExampleItem& item) {
    using example::docparser::ExampleType;
    json.open('{');
    json.key("id").string(id).key("name").string(item.getName());
    json.key("component").string(item.getComponent()).key("title").string(item.getTitle());
    json.key("description").string(item.getDescription());
    json.key("relativePaths").strings(item.getRelativePaths());
    json.key("thumbnail").string(item.getThumbnail());
    json.key("exampleType").string(ExampleType::enumToString(item.getExampleType()));
    json.key("exampleTypeValue").number(static_cast<std::uint32_t>(item.getExampleType()));
    json.key("openCommand").string(item.getOpenCommand());
    json.key("supportingFiles").strings(item.getSupportingFiles());
    json.key("docIDLinks").open('[');
    for (const auto& link : item.getDocIDLinks()) {
        json.open('{').key("docid").string(link.getDocID()).key("target").string(link.getTarget()).close('}');
    }
    json.close(']').close('}');
}

} // namespace

void writeCataloguesJson(std::ostream& out, example::docparser::ExampleCatalogues&& catalogues) {
    out << '{';
    std::string text;
    bool first = true;
    for (auto folder = catalogues.begin(); folder != catalogues.end(); folder = catalogues.erase(folder)) {
        const auto& [helpFolder, catalogue] = *folder;
        const auto& header = catalogue.header;
        JsonWriter json(text);
        if (!first) {
            text += ',';
        }
        first = false;
        json.key(utf16ToUtf8(helpFolder)).open('{').key("header").open('{');
        json.key("product").string(header.getProduct()).key("version").string(header.getVersion());
        json.key("helpFolder").string(header.getHelpFolder()).key("locale").string(header.getLocale());
        json.close('}').key("items").open('[');
        for (const auto& [id, sameId] : catalogue.items) {
            for (const auto& item : sameId) {
                writeItem(json, id, item);
            }
        }
        json.close(']').close('}');
        out << text;
        text.clear();
    }
    out << "}\n";
}

} // namespace exampledoc
