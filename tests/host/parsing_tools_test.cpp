#include <boost/json/parse.hpp>
#include <gtest/gtest.h>

#include "reference/docparser/doc_resource_parser.hpp"

namespace {

using reference::docparser::CatalogueFormatError;
using ParsingTools = reference::docparser::DocResourceParser::ParsingTools;

TEST(ParsingTools, ConvertsUtf8ToUtf16WithSurrogatePairs) {
    const auto value = boost::json::parse(R"({"s":"aé€😀 long ascii run of text"})");
    EXPECT_EQ(ParsingTools::getFluString(value.as_object(), "s", ParsingTools::Verbatim),
              u"aé€😀 long ascii run of text");
}

TEST(ParsingTools, TextTrimsOnlyAsciiWhiteSpaceAtBothEnds) {
    const auto value = boost::json::parse(R"([" \t\r\n a b \n", "\u00a0x\u00a0", "   "])");
    const auto& array = value.as_array();
    EXPECT_EQ(ParsingTools::getFluString(array[0], ParsingTools::Text), u"a b");
    EXPECT_EQ(ParsingTools::getFluString(array[0], ParsingTools::Verbatim), u" \t\r\n a b \n");
    EXPECT_EQ(ParsingTools::getFluString(array[1], ParsingTools::Text), u"\u00a0x\u00a0");
    EXPECT_EQ(ParsingTools::getFluString(array[2], ParsingTools::Text), u"");
}

TEST(ParsingTools, WrongKindsThrowNamingTheKey) {
    const auto value = boost::json::parse(R"({"n":null,"i":1,"a":[],"s":"x"})");
    const auto& object = value.as_object();
    try {
        ParsingTools::getFluString(object, "i", ParsingTools::Verbatim);
        FAIL();
    } catch (const CatalogueFormatError& error) {
        EXPECT_NE(std::string(error.what()).find("\"i\""), std::string::npos) << error.what();
        EXPECT_NE(std::string(error.what()).find("int64"), std::string::npos) << error.what();
    }
    EXPECT_THROW(ParsingTools::getFluString(object, "missing", ParsingTools::Verbatim), CatalogueFormatError);
    EXPECT_THROW(ParsingTools::getFluString(object, "n", ParsingTools::Verbatim), CatalogueFormatError);
    EXPECT_EQ(ParsingTools::getFluStringWithFallback(object, "n", ParsingTools::Verbatim), u"");
    EXPECT_EQ(ParsingTools::getFluStringWithFallback(object, "missing", ParsingTools::Verbatim), u"");
    EXPECT_THROW(ParsingTools::getFluStringWithFallback(object, "a", ParsingTools::Verbatim),
                 CatalogueFormatError);
    EXPECT_THROW(ParsingTools::getJsonArray(value, "s"), CatalogueFormatError);
    EXPECT_THROW(ParsingTools::getJsonArray(object.at("s")), CatalogueFormatError);
    EXPECT_THROW(ParsingTools::getJsonArray(object.at("a"), "k"), CatalogueFormatError);
    EXPECT_TRUE(ParsingTools::getJsonArray(value, "a").empty());
}

TEST(ParsingTools, HeaderMembersAreOptionalStrings) {
    const auto header = ParsingTools::getHeaderInfo(boost::json::parse(R"({"header":{"helpFolder":"h"}})"));
    EXPECT_EQ(header.getHelpFolder(), u"h");
    EXPECT_EQ(header.getLocale(), u"");
    EXPECT_THROW(ParsingTools::getHeaderInfo(boost::json::parse(R"({"header":{"locale":null}})")),
                 CatalogueFormatError);
    EXPECT_THROW(ParsingTools::getHeaderInfo(boost::json::parse(R"({"header":"x"})")), CatalogueFormatError);
    EXPECT_THROW(ParsingTools::getHeaderInfo(boost::json::parse(R"(["header"])")), CatalogueFormatError);
}

} // namespace
