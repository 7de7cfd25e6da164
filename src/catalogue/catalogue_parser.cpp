#include "catalogue_parser.hpp"

#include <cstdint>
#include <string>
#include <utility>

#include <boost/json/error.hpp>
#include <boost/json/monotonic_resource.hpp>
#include <boost/json/parse.hpp>

#include "catalogue/catalogue_keys.hpp"

namespace example::docparser::detail {
namespace {

using reference::docparser::CatalogueFormatError;
using reference::docparser::DocResource;
using ParsingTools = reference::docparser::DocResourceParser::ParsingTools;

constexpr std::size_t kInitialBlockBytes = 1024;
// What is fetched ahead of an entry: the member table of a dozen members, and at most this much
// of the text's strings before it.
constexpr std::uintptr_t kFetchedTableBytes = 12 * sizeof(boost::json::key_value_pair);
constexpr std::uintptr_t kFetchedSpanBytes = 8192;
constexpr std::uintptr_t kCacheLineBytes = 64;

// A refusal inside the value under `key` (and its element `index`) lies under that step.
void placeUnder(CatalogueFormatError& error, std::string_view key, std::size_t index = SIZE_MAX) {
    std::string step(1, '/');
    step += reference::docparser::jsonPointerStep(key);
    if (index != SIZE_MAX) {
        step += '/';
        step += std::to_string(index);
    }
    error.placeUnder(step);
}

// `value` as an object or a string; another kind is refused in Boost.JSON's own words.
const boost::json::object& asObject(const boost::json::value& value) {
    if (!value.is_object()) {
        throw CatalogueFormatError(boost::json::make_error_code(boost::json::error::not_object).message(), "",
                                   CatalogueFormatError::Expected::Object, value.kind());
    }
    return value.get_object();
}

const boost::json::string& asString(const boost::json::value& value) {
    if (!value.is_string()) {
        throw CatalogueFormatError(boost::json::make_error_code(boost::json::error::not_string).message(), "",
                                   CatalogueFormatError::Expected::String, value.kind());
    }
    return value.get_string();
}

std::vector<DocIDLink> getDocIDLinks(const boost::json::object& entry) {
    std::vector<DocIDLink> links;
    const boost::json::value* const member = entry.if_contains(kKeyDocidLinks);
    if (member == nullptr) {
        return links;
    }
    std::size_t index = SIZE_MAX;
    try {
        const boost::json::array& linkArray = ParsingTools::getJsonArray(*member);
        links.reserve(linkArray.size());
        for (index = 0; index < linkArray.size(); ++index) {
            const boost::json::object& link = asObject(linkArray[index]);
            std::u16string docID = ParsingTools::getFluString(link, kKeyDocid, ParsingTools::Verbatim);
            std::u16string target = ParsingTools::getFluString(link, kKeyTarget, ParsingTools::Verbatim);
            links.emplace_back(std::move(docID), std::move(target));
        }
    } catch (CatalogueFormatError& error) {
        placeUnder(error, kKeyDocidLinks, index);
        throw;
    }
    return links;
}

ExampleType::Value getExampleType(const boost::json::object& entry) {
    ExampleType::Value exampleType = ExampleType::getDefaultValue();
    const boost::json::value* const member = entry.if_contains(kKeyExampleType);
    if (member != nullptr) {
        const boost::json::string* text = nullptr;
        try {
            text = &asString(*member);
        } catch (CatalogueFormatError& error) {
            placeUnder(error, kKeyExampleType);
            throw;
        }
        // An unreadable kind never costs the entry: it keeps the default.
        try {
            exampleType = ExampleType::stringToEnum(std::string_view(text->data(), text->size()));
        } catch (...) {
        }
    }
    return exampleType;
}

// The JSON value lies in its resource in the order of the text: an entry's member names and
// long strings, then its member table. Reading an entry by name jumps from the table back to the
// strings, which the processor does not foresee, and a large catalogue's value is far larger
// than the cache: so while one entry is read, the memory of the next is fetched.
// A call whose only effect is a prefetch counts as having none and is dropped by the compiler,
// so this must be in line at its call to take place at all.
[[gnu::always_inline]] inline void fetchAhead(const boost::json::value& current,
                                              const boost::json::value& next) {
    if (!current.is_object() || !next.is_object()) {
        return;
    }
    // The current entry's table is in the cache already; of the next one only the address of
    // its members is taken, which is held in the value and not in the table.
    const auto* line = reinterpret_cast<const char*>(current.get_object().end());
    const auto* const table = reinterpret_cast<const char*>(next.get_object().begin());
    // Also more than the span when the table lies below the current one: the difference wraps.
    if (reinterpret_cast<std::uintptr_t>(table) - reinterpret_cast<std::uintptr_t>(line) >
        kFetchedSpanBytes) {
        // The next entry lies in another block of the resource: its table is all that is known.
        line = table - kCacheLineBytes;
    }
    for (const char* const end = table + kFetchedTableBytes; line < end; line += kCacheLineBytes) {
        __builtin_prefetch(line);
    }
}

} // namespace

std::vector<std::u16string> getStringArray(const boost::json::object& entry, std::string_view key,
                                           ParsingTools::StringParsingType type) {
    std::vector<std::u16string> strings;
    const boost::json::value* const member = entry.if_contains(key);
    if (member == nullptr) {
        return strings;
    }
    std::size_t index = SIZE_MAX;
    try {
        const boost::json::array& array = ParsingTools::getJsonArray(*member);
        strings.reserve(array.size());
        for (index = 0; index < array.size(); ++index) {
            strings.push_back(ParsingTools::getFluString(array[index], type));
        }
    } catch (CatalogueFormatError& error) {
        placeUnder(error, key, index);
        throw;
    }
    return strings;
}

ExampleCatalogues parseExampleCatalogue(const std::string& text) {
    // Every JSON node lives in this resource and is freed with it as a whole; the value
    // is declared after it, so it goes first.
    boost::json::monotonic_resource memory(kInitialBlockBytes);
    const boost::json::value root = boost::json::parse(text, &memory);

    reference::property::HeaderInfo header = ParsingTools::getHeaderInfo(root);
    const boost::json::array& itemArray = ParsingTools::getJsonArray(root, kKeyExampleItems);

    std::map<std::u16string, std::vector<ExampleItem>> items;
    auto hint = items.end();
    const boost::json::value* const first = itemArray.begin();
    const std::size_t count = itemArray.size();
    for (std::size_t index = 0; index < count; ++index) {
        const boost::json::value& element = first[index];
        if (index + 1 < count) {
            fetchAhead(element, first[index + 1]);
        }
        // The order of these reads decides which failure ends the file first.
        try {
            const boost::json::object& entry = asObject(element);
            std::u16string name = ParsingTools::getFluString(entry, kKeyName, ParsingTools::Verbatim);
            std::u16string component =
                ParsingTools::getFluString(entry, kKeyComponent, ParsingTools::Verbatim);
            std::u16string title = ParsingTools::getFluString(entry, kKeyTitle, ParsingTools::Text);
            std::u16string description =
                ParsingTools::getFluStringWithFallback(entry, kKeyDescription, ParsingTools::Text);
            std::u16string thumbnail =
                ParsingTools::getFluString(entry, kKeyThumbnail, ParsingTools::Verbatim);
            const ExampleType::Value exampleType = getExampleType(entry);

            // The key always has its "/", also when a half is empty.
            std::u16string id;
            id.reserve(component.size() + 1 + name.size());
            id += component;
            id += u'/';
            id += name;

            std::u16string openCommand =
                ParsingTools::getFluStringWithFallback(entry, kKeyOpenCmd, ParsingTools::Text);
            if (openCommand.empty()) {
                // "openExample('" is 13 code units and "');" 3: the command is built without growing.
                openCommand.reserve(13 + id.size() + 3);
                openCommand += u"openExample('";
                openCommand += id;
                openCommand += u"');";
            }
            std::vector<std::u16string> relativePaths =
                getStringArray(entry, kKeyRelativePath, ParsingTools::Verbatim);
            std::vector<std::u16string> supportingFiles =
                getStringArray(entry, kKeySupportingFiles, ParsingTools::Text);
            std::vector<DocIDLink> docIDLinks = getDocIDLinks(entry);

            hint = items.try_emplace(hint, std::move(id));
            hint->second.emplace_back(std::move(name), std::move(component), std::move(title),
                                      std::move(description), std::move(relativePaths), std::move(thumbnail),
                                      exampleType, std::move(openCommand), std::move(supportingFiles),
                                      std::move(docIDLinks));
        } catch (CatalogueFormatError& error) {
            placeUnder(error, kKeyExampleItems, index);
            throw;
        }
    }

    DocResource<ExampleItem> catalogue{std::move(header), std::move(items)};
    ExampleCatalogues result;
    result.emplace(catalogue.header.getHelpFolder(), std::move(catalogue));
    return result;
}

} // namespace example::docparser::detail
