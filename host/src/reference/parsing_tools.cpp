#include <string_view>

#include <boost/json/kind.hpp>

#include "reference/docparser/doc_resource_parser.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/json_members.hpp"
#include "zwhost/unicode.hpp"

namespace reference::docparser {
namespace {

using ParsingTools = DocResourceParser::ParsingTools;

using Expected = CatalogueFormatError::Expected;

std::string_view expectedText(Expected expected) {
    return expected == Expected::Object ? "an object" : expected == Expected::Array ? "an array" : "a string";
}

// Refuses the value at `pointer`, relative to the value the operation was given.
[[noreturn]] void wrongKind(std::string_view what, Expected expected, const boost::json::value* found,
                            std::string pointer = {}) {
    std::string message(what);
    message += ": expected ";
    message += expectedText(expected);
    message += ", found ";
    if (found == nullptr) {
        message += "nothing";
    } else {
        const boost::json::string_view kind = boost::json::to_string(found->kind());
        message.append(kind.data(), kind.size());
    }
    throw CatalogueFormatError(message, std::move(pointer), expected,
                               found == nullptr ? std::nullopt : std::optional(found->kind()));
}

std::string memberName(std::string_view key) {
    std::string name = "member \"";
    name += key;
    name += '"';
    return name;
}

using zwhost::json::findMember;

bool isTrimmedSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// The white space that Text removes is ASCII, so it is trimmed before conversion.
std::u16string convert(std::string_view text, ParsingTools::StringParsingType type) {
    if (type == ParsingTools::Text) {
        while (!text.empty() && isTrimmedSpace(text.front())) {
            text.remove_prefix(1);
        }
        while (!text.empty() && isTrimmedSpace(text.back())) {
            text.remove_suffix(1);
        }
    }
    try {
        return zwhost::unicode::utf8ToUtf16(text);
    } catch (const zwhost::unicode::MalformedText& error) {
        throw CatalogueFormatError(error.what());
    }
}

std::u16string optionalHeaderString(const boost::json::object& header, std::string_view key) {
    const boost::json::value* member = findMember(header, key);
    if (member == nullptr) {
        return {};
    }
    if (!member->is_string()) {
        wrongKind("header " + memberName(key), Expected::String, member, "/header/" + jsonPointerStep(key));
    }
    return convert(member->get_string(), ParsingTools::Verbatim);
}

} // namespace

reference::property::HeaderInfo ParsingTools::getHeaderInfo(const boost::json::value& root) {
    zwhost::fault::point("ParsingTools::getHeaderInfo");
    if (!root.is_object()) {
        wrongKind("catalogue root", Expected::Object, &root);
    }
    const boost::json::value* header = root.get_object().if_contains("header");
    if (header == nullptr || !header->is_object()) {
        wrongKind(memberName("header"), Expected::Object, header, "/header");
    }
    const boost::json::object& members = header->get_object();
    return reference::property::HeaderInfo(
        optionalHeaderString(members, "product"), optionalHeaderString(members, "version"),
        optionalHeaderString(members, "helpFolder"), optionalHeaderString(members, "locale"));
}

const boost::json::array& ParsingTools::getJsonArray(const boost::json::value& value,
                                                     const std::string& key) {
    zwhost::fault::point("ParsingTools::getJsonArray");
    if (!value.is_object()) {
        wrongKind("value holding " + memberName(key), Expected::Object, &value);
    }
    const boost::json::value* member = findMember(value.get_object(), key);
    if (member == nullptr || !member->is_array()) {
        wrongKind(memberName(key), Expected::Array, member, "/" + jsonPointerStep(key));
    }
    return member->get_array();
}

const boost::json::array& ParsingTools::getJsonArray(const boost::json::value& value) {
    zwhost::fault::point("ParsingTools::getJsonArray(value)");
    if (!value.is_array()) {
        wrongKind("value", Expected::Array, &value);
    }
    return value.get_array();
}

std::u16string ParsingTools::getFluString(const boost::json::object& object, const std::string& key,
                                          StringParsingType type) {
    zwhost::fault::point("ParsingTools::getFluString");
    const boost::json::value* member = findMember(object, key);
    if (member == nullptr || !member->is_string()) {
        wrongKind(memberName(key), Expected::String, member, "/" + jsonPointerStep(key));
    }
    return convert(member->get_string(), type);
}

std::u16string ParsingTools::getFluString(const boost::json::value& value, StringParsingType type) {
    zwhost::fault::point("ParsingTools::getFluString(value)");
    if (!value.is_string()) {
        wrongKind("array element", Expected::String, &value);
    }
    return convert(value.get_string(), type);
}

std::u16string ParsingTools::getFluStringWithFallback(const boost::json::object& object,
                                                      const std::string& key, StringParsingType type) {
    zwhost::fault::point("ParsingTools::getFluStringWithFallback");
    const boost::json::value* member = findMember(object, key);
    if (member == nullptr || member->is_null()) {
        return {};
    }
    if (!member->is_string()) {
        wrongKind(memberName(key), Expected::String, member, "/" + jsonPointerStep(key));
    }
    return convert(member->get_string(), type);
}

} // namespace reference::docparser
