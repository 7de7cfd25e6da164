// The exception framework: the host's own message-id errors and the text conversions.

#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "zwhost/messages.hpp"

namespace {

using zwhost::messages::MsgIDError;

TEST(MsgIDError, TakesItsTextFromTheCatalogueAndConvertsBetweenUtf8AndUtf16) {
    const MsgIDError known({{}, "ZENTAB:utils", "RequireTextArray"});
    EXPECT_EQ(known.GetID(), "ZENTAB:utils:RequireTextArray");
    EXPECT_STREQ(known.what(), "Value must be a character vector or a cell array of character vectors.");
    const MsgIDError error({{}, "ZENTAB:none", "Missing"});
    EXPECT_STREQ(error.what(), "ZENTAB:none:Missing");
    const std::pair<std::u16string, std::string> both[] = {
        {u"plain", "plain"}, {u"\u00e9\u4e2d", "\xc3\xa9\xe4\xb8\xad"}, {u"\U0001F600", "\xf0\x9f\x98\x80"}};
    for (const auto& [utf16, utf8] : both) {
        EXPECT_EQ(error.convert_str(utf16), utf8);
        EXPECT_EQ(error.convert_str(utf8), utf16);
    }
    EXPECT_EQ(error.convert_str(std::u16string(1, char16_t{0xD800})), "\xef\xbf\xbd");
    EXPECT_EQ(error.convert_str(std::string("a\xff")), u"a\uFFFD");
    EXPECT_EQ(error.convert_str(std::string("\xc0\x80")), u"\uFFFD\uFFFD");
}

} // namespace
