#include <string>

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>

#include "reference/docparser/doc_resource_parser.hpp"

namespace {

using reference::docparser::CatalogueFormatError;
using ParsingTools = reference::docparser::DocResourceParser::ParsingTools;

TEST(ParsingTools, ConvertsToUtf16TrimsOnlyAsciiWhiteSpaceOfTextAndFindsKeysOnlyInObjects) {
    const auto value =
        boost::json::parse(R"([" \t\r\n a b \n", "\u00a0x\u00a0", "   ", "aé€😀 long ascii run"])");
    const auto& array = value.as_array();
    EXPECT_EQ(ParsingTools::getFluString(array[0], ParsingTools::Text), u"a b");
    EXPECT_EQ(ParsingTools::getFluString(array[0], ParsingTools::Verbatim), u" \t\r\n a b \n");
    EXPECT_EQ(ParsingTools::getFluString(array[1], ParsingTools::Text), u"\u00a0x\u00a0");
    EXPECT_EQ(ParsingTools::getFluString(array[2], ParsingTools::Text), u"");
    EXPECT_EQ(ParsingTools::getFluString(array[3], ParsingTools::Verbatim), u"aé€😀 long ascii run");
    try {
        ParsingTools::getJsonArray(value, "k");
        ADD_FAILURE() << "a key of an array";
    } catch (const CatalogueFormatError& error) {
        EXPECT_STREQ(error.what(), "value holding member \"k\": expected an object, found array");
    }
}

TEST(ParsingTools, MembersAreFoundByExactName) {
    // Names are compared a word at a time: a key of any length finds its member and none that
    // differs from it in one byte or in length.
    for (std::size_t length = 1; length <= 20; ++length) {
        const std::string key(length, 'k');
        boost::json::object object;
        for (std::size_t at = 0; at < length; ++at) {
            object[std::string(key).replace(at, 1, "j")] = "near";
        }
        object[key + 'k'] = "longer";
        object[key.substr(1)] = "shorter";
        SCOPED_TRACE("key of " + std::to_string(length));
        EXPECT_EQ(ParsingTools::getFluStringWithFallback(object, key, ParsingTools::Text), u"");
        object[key] = "key";
        EXPECT_EQ(ParsingTools::getFluString(object, key, ParsingTools::Text), u"key");
    }
}

} // namespace
