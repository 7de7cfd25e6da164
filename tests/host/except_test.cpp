// The exception framework: the host's own message-id errors and the text conversions.

#include <string>

#include <gtest/gtest.h>

#include "zwhost/messages.hpp"

namespace {

using zwhost::messages::MsgIDError;

TEST(MsgIDError, TextComesFromTheCatalogueOrFallsBackToTheIdentifier) {
    const MsgIDError known({{}, "ZENTAB:utils", "RequireTextArray"});
    EXPECT_EQ(known.GetID(), "ZENTAB:utils:RequireTextArray");
    EXPECT_STREQ(known.what(), "Value must be a character vector or a cell array of character vectors.");
    const MsgIDError unknown({{}, "ZENTAB:none", "Missing"});
    EXPECT_STREQ(unknown.what(), "ZENTAB:none:Missing");
}

TEST(MsgIDError, ConvertsTextBetweenUtf8AndUtf16) {
    const MsgIDError error({{}, "ZENTAB:none", "Missing"});
    struct Case {
        std::u16string utf16;
        std::string utf8;
    };
    const Case cases[] = {
        {u"plain", "plain"},
        {u"\u00e9\u4e2d", "\xc3\xa9\xe4\xb8\xad"},
        {u"\U0001F600", "\xf0\x9f\x98\x80"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(error.convert_str(c.utf16), c.utf8);
        EXPECT_EQ(error.convert_str(c.utf8), c.utf16);
    }
    EXPECT_EQ(error.convert_str(std::u16string(1, char16_t{0xD800})), "\xef\xbf\xbd");
    EXPECT_EQ(error.convert_str(std::string("a\xff")), u"a\uFFFD");
    EXPECT_EQ(error.convert_str(std::string("\xc0\x80")), u"\uFFFD\uFFFD");
}

} // namespace
