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

TEST(ParsingTools, MembersAreFoundByExactNameInSmallAndLargeObjects) {
    // Small objects are scanned and large ones searched by hash: both must find the same.
    for (const int members : {3, 32, 33, 100}) {
        boost::json::object object;
        for (int i = 0; i < members; ++i) {
            object["k" + std::to_string(i)] = "v" + std::to_string(i);
        }
        object["title"] = "t";
        SCOPED_TRACE(members);
        EXPECT_EQ(ParsingTools::getFluString(object, "k2", ParsingTools::Verbatim), u"v2");
        EXPECT_EQ(ParsingTools::getFluString(object, "title", ParsingTools::Text), u"t");
        for (const char* miss : {"titl", "k", "K2", ""}) {
            EXPECT_EQ(ParsingTools::getFluStringWithFallback(object, miss, ParsingTools::Text), u"") << miss;
        }
    }
}

} // namespace
