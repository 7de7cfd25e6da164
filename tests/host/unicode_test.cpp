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

/** `code` in both encodings, written out by hand from the code point. */
Encoded encode(std::uint32_t code) {
    Encoded out;
    if (code < 0x80) {
        out.utf8 += static_cast<char>(code);
    } else if (code < 0x800) {
        out.utf8 += static_cast<char>(0xC0 | (code >> 6));
        out.utf8 += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out.utf8 += static_cast<char>(0xE0 | (code >> 12));
        out.utf8 += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out.utf8 += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out.utf8 += static_cast<char>(0xF0 | (code >> 18));
        out.utf8 += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        out.utf8 += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out.utf8 += static_cast<char>(0x80 | (code & 0x3F));
    }
    if (code < 0x10000) {
        out.utf16 += static_cast<char16_t>(code);
    } else {
        out.utf16 += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
        out.utf16 += static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
    }
    return out;
}

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

const std::vector<std::uint32_t> kBoundaryCodes = {0x80,   0x7FF,  0x800,   0xD7FF,  0xE000,
                                                   0xFFFD, 0xFFFF, 0x10000, 0x1F600, 0x10FFFF};

TEST(Utf8ToUtf16, AsciiOfEveryLengthAroundTheBlockWidths) {
    for (const std::size_t length : kLengths) {
        const Encoded text = ascii(length);
        EXPECT_EQ(utf8ToUtf16(text.utf8), text.utf16) << "length " << length;
    }
}

TEST(Utf8ToUtf16, OneWideCharacterAtEveryPlaceOfAsciiText) {
    for (const std::size_t length : kLengths) {
        for (const std::uint32_t code : kBoundaryCodes) {
            const Encoded wide = encode(code);
            for (std::size_t at = 0; at <= length; at += (length > 40 && at + 1 < length ? 7 : 1)) {
                const Encoded before = ascii(at);
                const Encoded after = ascii(length - at);
                const std::u16string result = utf8ToUtf16(before.utf8 + wide.utf8 + after.utf8);
                EXPECT_EQ(result, before.utf16 + wide.utf16 + after.utf16)
                    << "code " << code << " at " << at << " of " << length;
                EXPECT_EQ(result.capacity(), std::max<std::size_t>(result.size(), 7)) << "sized exactly";
            }
        }
    }
}

TEST(Utf8ToUtf16, TextOfWideCharactersOnlyAcrossTheStackLimit) {
    for (const std::uint32_t code : {0xE9U, 0x65E5U, 0x1D465U}) {
        Encoded text;
        // 3-byte characters: 170 of them are 510 bytes, 171 are 513.
        for (std::size_t count = 0; count < 200; ++count) {
            const Encoded wide = encode(code);
            text.utf8 += wide.utf8;
            text.utf16 += wide.utf16;
            EXPECT_EQ(utf8ToUtf16(text.utf8), text.utf16) << "code " << code << " count " << count;
        }
    }
}

TEST(Utf8ToUtf16, MalformedSequencesAreRefusedWherever) {
    const std::vector<std::string> bad = {
        "\x80",             // a continuation without a lead
        "\xBF",             // the last continuation byte
        "\xC3",             // a lead without its continuation
        "\xE6\x97",         // a three-byte sequence cut short
        "\xF0\x9F\x98",     // a four-byte sequence cut short
        "\xC3\x28",         // a lead followed by ASCII
        "\xC0\x80",         // an overlong NUL
        "\xC1\xBF",         // an overlong two-byte form
        "\xE0\x80\x80",     // an overlong three-byte form
        "\xF0\x80\x80\x80", // an overlong four-byte form
        "\xED\xA0\x80",     // an encoded high surrogate
        "\xED\xBF\xBF",     // an encoded low surrogate
        "\xF4\x90\x80\x80", // past U+10FFFF
        "\xF8\x88\x80\x80", // a five-byte lead
        "\xFF",             // never in UTF-8
    };
    for (const std::string& sequence : bad) {
        for (const std::size_t before : {0, 1, 8, 15, 16, 17, 600}) {
            for (const std::size_t after : {0, 1, 8, 16}) {
                const std::string text = ascii(before).utf8 + sequence + ascii(after).utf8;
                EXPECT_THROW(utf8ToUtf16(text), MalformedText)
                    << "sequence of " << sequence.size() << " bytes after " << before << ", before " << after;
            }
        }
    }
}

TEST(Utf8ToUtf16, EmbeddedNulIsAnOrdinaryCharacter) {
    const std::string text("a\0b\xC3\xA9", 5);
    EXPECT_EQ(utf8ToUtf16(text), std::u16string(u"a\0b\u00e9", 4));
}

} // namespace
