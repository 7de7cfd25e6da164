#include <cstdint>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "zwhost/unicode.hpp"

namespace {

using zwhost::unicode::appendUtf8;
using zwhost::unicode::firstMalformedUtf8;
using zwhost::unicode::MalformedText;
using zwhost::unicode::nextCodePoint;
using zwhost::unicode::Unpaired;
using zwhost::unicode::utf16ToUtf8;
using zwhost::unicode::utf8ToUtf16;
using zwhost::unicode::utf8ToUtf16Replacing;

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
                // A byte follows the text, so that a unit written past the end would show.
                const std::string text = before.utf8 + wide.utf8 + after.utf8 + 'X';
                const std::u16string result = utf8ToUtf16(std::string_view(text).substr(0, text.size() - 1));
                EXPECT_EQ(result, before.utf16 + wide.utf16 + after.utf16)
                    << "character of " << wide.utf8.size() << " bytes at " << at << " of " << length;
                EXPECT_EQ(result.capacity(), std::max<std::size_t>(result.size(), 7)) << "sized exactly";
                EXPECT_EQ(result.c_str()[result.size()], u'\0') << "nothing written past its end";
                EXPECT_EQ(firstMalformedUtf8(before.utf8 + wide.utf8 + after.utf8), std::string::npos);
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

TEST(Utf8ToUtf16, MalformedSequencesAreRefusedWhereverAndReplacedByteByByte) {
    // Lone continuations, leads cut short or followed by ASCII, overlong forms, surrogates,
    // past U+10FFFF, bytes never in UTF-8; and what the replacing form makes of each.
    // clang-format off
    // The third column: where the first malformed byte is.
    const std::tuple<std::string, std::u16string, std::size_t> bad[] = {
        {"\x80", u"\uFFFD", 0}, {"\xBF", u"\uFFFD", 0}, {"\xC3", u"\uFFFD", 0}, {"\xE6\x97", u"\uFFFD\uFFFD", 0},
        {"\xF0\x9F\x98", u"\uFFFD\uFFFD\uFFFD", 0}, {"\xC3\x28", u"\uFFFD(", 0}, {"\xC0\x80", u"\uFFFD\uFFFD", 0},
        {"\xC1\xBF", u"\uFFFD\uFFFD", 0}, {"\xE0\x80\x80", u"\uFFFD\uFFFD\uFFFD", 0}, {"\xE0\x9F\xBF", u"\uFFFD\uFFFD\uFFFD", 0},
        {"\xF0\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD", 0}, {"\xF0\x8F\xBF\xBF", u"\uFFFD\uFFFD\uFFFD\uFFFD", 0},
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD", 0}, {"\xED\xBF\xBF", u"\uFFFD\uFFFD\uFFFD", 0},
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD", 0}, {"\xF5\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD", 0},
        {"\xF8\x88\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD", 0}, {"\xFF", u"\uFFFD", 0}, {"\xC3\xA9\xA9", u"\u00E9\uFFFD", 2},
        {"\xE6\x97\xA5\xF0\x9F\x98\x80\x80", u"\u65E5\U0001F600\uFFFD", 7},
    };
    // clang-format on
    for (const auto& [sequence, replaced, firstBad] : bad) {
        for (const std::size_t before : {0, 1, 8, 15, 16, 17, 600}) {
            for (const std::size_t after : {0, 1, 8, 16}) {
                // Continuation bytes lie past the end of the text, where no read may go.
                const std::string buffer = ascii(before).utf8 + sequence + ascii(after).utf8 + "\x80\x80\x80";
                const std::string_view text(buffer.data(), buffer.size() - 3);
                EXPECT_THROW(utf8ToUtf16(text), MalformedText)
                    << "sequence of " << sequence.size() << " bytes after " << before << ", before " << after;
                EXPECT_EQ(utf8ToUtf16Replacing(text), ascii(before).utf16 + replaced + ascii(after).utf16);
                EXPECT_EQ(firstMalformedUtf8(text), before + firstBad);
            }
        }
    }
}

TEST(Utf8ToUtf16, EachCodePointIsReadWholeOrReplaced) {
    for (const Encoded& wide : kWide) {
        std::size_t at = 1;
        const std::u16string& units = wide.utf16;
        const char32_t expected = units.size() == 1
                                      ? units[0]
                                      : 0x10000 + ((char32_t{units[0]} - 0xD800) << 10) + (units[1] - 0xDC00);
        EXPECT_EQ(nextCodePoint("a" + wide.utf8 + "b", at), expected);
        EXPECT_EQ(at, 1 + wide.utf8.size());
        EXPECT_EQ(utf16ToUtf8(wide.utf16), wide.utf8);
        EXPECT_EQ(utf16ToUtf8(u"a" + wide.utf16 + u"b", Unpaired::Refuse), "a" + wide.utf8 + "b");
    }
    std::size_t at = 0;
    EXPECT_EQ(nextCodePoint("\xE6\x97(", at), U'\uFFFD');
    EXPECT_EQ(nextCodePoint(std::string_view("(\0", 2), at), U'\0');
    EXPECT_EQ(at, 2U);
}

TEST(Utf16ToUtf8, UnpairedSurrogatesAreReplacedOrRefused) {
    // clang-format off
    const std::pair<std::u16string, std::string> rows[] = {
        {u"\xD800", "\xEF\xBF\xBD"}, {u"\xDBFF", "\xEF\xBF\xBD"}, {u"\xDC00", "\xEF\xBF\xBD"}, {u"\xDFFF", "\xEF\xBF\xBD"},
        {u"a\xD800" u"b", "a\xEF\xBF\xBD" "b"}, {u"\xDC00\xD800", "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {u"\xD800\xD800\xDC00", "\xEF\xBF\xBD\xF0\x90\x80\x80"}, {u"\xD83D\xDE00\xDE00", "\xF0\x9F\x98\x80\xEF\xBF\xBD"},
        {u"\xDBFF\xE000", "\xEF\xBF\xBD\xEE\x80\x80"},
    };
    // clang-format on
    for (const auto& [text, replaced] : rows) {
        for (const std::size_t before : {0, 1, 8, 17}) {
            // A low surrogate lies past the end of the text, where no read may go.
            const std::u16string buffer = ascii(before).utf16 + text + u"\xDC00";
            const std::u16string_view input(buffer.data(), buffer.size() - 1);
            std::string appended = "kept";
            appendUtf8(appended, input);
            EXPECT_EQ(appended, "kept" + ascii(before).utf8 + replaced);
            EXPECT_THROW(appendUtf8(appended, input, Unpaired::Refuse), MalformedText);
            EXPECT_EQ(appended, "kept" + ascii(before).utf8 + replaced);
        }
    }
}

} // namespace
