#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "zwhost/unicode.hpp"

namespace {

using zwhost::unicode::MalformedText;
using zwhost::unicode::utf8ToUtf16;

struct Encoded {
    std::string utf8;
    std::u16string utf16;
};

/** ASCII text of `length` characters that differ from their neighbours. */
Encoded ascii(std::size_t length) {
    Encoded out;
    for (std::size_t i = 0; i < length; ++i) {
        const char c = static_cast<char>('!' + i % 90);
        out.utf8 += c;
        out.utf16 += static_cast<char16_t>(c);
    }
    return out;
}

// Lengths around the widths the conversion reads at once (8 and 16 bytes) and around the size
// up to which it decodes on the stack (512 bytes).
const std::vector<std::size_t> kLengths = {0,  1,  2,  7,  8,  9,  15,  16,  17,  23,  24,
                                           31, 32, 33, 63, 64, 65, 510, 511, 512, 513, 1000};

// Characters at the edges of each sequence length and of the surrogate range, in both encodings.
const Encoded kWide[] = {
    {"\u0080", u"\u0080"},         {"\u07FF", u"\u07FF"},         {"\u0800", u"\u0800"},
    {"\uD7FF", u"\uD7FF"},         {"\uE000", u"\uE000"},         {"\uFFFD", u"\uFFFD"},
    {"\uFFFF", u"\uFFFF"},         {"\U00010000", u"\U00010000"}, {"\U0001F600", u"\U0001F600"},
    {"\U0010FFFF", u"\U0010FFFF"}, {"\u00E9", u"\u00E9"},         {"\u65E5", u"\u65E5"},
    {"\U0001D465", u"\U0001D465"},
};

TEST(Utf8ToUtf16, AsciiAndOneWideCharacterAtEveryPlace) {
    EXPECT_EQ(utf8ToUtf16(std::string("a\0b\xC3\xA9", 5)), std::u16string(u"a\0b\u00e9", 4));
    for (const std::size_t length : kLengths) {
        EXPECT_EQ(utf8ToUtf16(ascii(length).utf8), ascii(length).utf16) << "length " << length;
        for (const Encoded& wide : kWide) {
            for (std::size_t at = 0; at <= length; at += (length > 40 && at + 1 < length ? 7 : 1)) {
                const Encoded before = ascii(at);
                const Encoded after = ascii(length - at);
                const std::u16string result = utf8ToUtf16(before.utf8 + wide.utf8 + after.utf8);
                EXPECT_EQ(result, before.utf16 + wide.utf16 + after.utf16)
                    << "character of " << wide.utf8.size() << " bytes at " << at << " of " << length;
                EXPECT_EQ(result.capacity(), std::max<std::size_t>(result.size(), 7)) << "sized exactly";
            }
        }
    }
    // Only wide characters, across the stack limit: 170 three-byte ones are 510 bytes, 171 are 513.
    for (const Encoded& wide : kWide) {
        Encoded text;
        for (std::size_t count = 0; count < 200; ++count) {
            text.utf8 += wide.utf8;
            text.utf16 += wide.utf16;
            EXPECT_EQ(utf8ToUtf16(text.utf8), text.utf16)
                << "character of " << wide.utf8.size() << " bytes, count " << count;
        }
    }
}

TEST(Utf8ToUtf16, MalformedSequencesAreRefusedWherever) {
    // Lone continuations, leads cut short or followed by ASCII, overlong forms, surrogates,
    // past U+10FFFF, bytes never in UTF-8.
    // clang-format off
    const std::string bad[] = {"\x80", "\xBF", "\xC3", "\xE6\x97", "\xF0\x9F\x98", "\xC3\x28", "\xC0\x80", "\xC1\xBF",
                               "\xE0\x80\x80", "\xF0\x80\x80\x80", "\xED\xA0\x80", "\xED\xBF\xBF", "\xF4\x90\x80\x80",
                               "\xF8\x88\x80\x80", "\xFF"};
    // clang-format on
    for (const std::string& sequence : bad) {
        for (const std::size_t before : {0, 1, 8, 15, 16, 17, 600}) {
            for (const std::size_t after : {0, 1, 8, 16}) {
                EXPECT_THROW(utf8ToUtf16(ascii(before).utf8 + sequence + ascii(after).utf8), MalformedText)
                    << "sequence of " << sequence.size() << " bytes after " << before << ", before " << after;
            }
        }
    }
}

} // namespace
