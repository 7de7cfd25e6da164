#include "zwhost/unicode.hpp"

#include <cstdint>
#include <cstring>
#include <utility>

namespace zwhost::unicode {
namespace {

[[noreturn]] void malformed(std::size_t offset) {
    throw MalformedText("malformed UTF-8 at byte " + std::to_string(offset));
}

bool isContinuation(unsigned char byte) {
    return (byte & 0xC0U) == 0x80U;
}

constexpr std::uint64_t kHighBits = 0x8080808080808080ULL;

std::uint64_t load8(const unsigned char* src) {
    std::uint64_t word;
    std::memcpy(&word, src, sizeof word);
    return word;
}

/** Whether all `size` bytes are ASCII: eight at a time, the last eight overlapping the rest,
    with no early exit, as text is mostly ASCII and mostly short. */
bool isAscii(const unsigned char* src, std::size_t size) {
    if (size < 8) {
        unsigned char any = 0;
        for (std::size_t i = 0; i < size; ++i) {
            any |= src[i];
        }
        return any < 0x80U;
    }
    std::uint64_t any = load8(src + size - 8);
    for (std::size_t i = 0; i + 8 <= size; i += 8) {
        any |= load8(src + i);
    }
    return (any & kHighBits) == 0;
}

/** The UTF-16 length of well-formed UTF-8: a unit for each byte that is not a continuation,
    and one more for each lead of four bytes. On malformed text it bounds what the decoder
    writes before it finds the fault, since each sequence it accepts adds exactly that much. */
std::size_t utf16Length(const unsigned char* src, std::size_t size) {
    std::size_t units = 0;
    for (std::size_t i = 0; i < size; ++i) {
        units +=
            static_cast<std::size_t>(!isContinuation(src[i])) + static_cast<std::size_t>(src[i] >= 0xF0U);
    }
    return units;
}

/** Decodes the sequence of two or four bytes that starts with the byte at `i`; gives its length.
    Any other lead is malformed here: decode takes the well-formed sequences of three bytes. */
std::size_t decodeSequence(const unsigned char* src, std::size_t size, std::size_t i, char16_t*& dst) {
    const unsigned char lead = src[i];
    std::uint32_t code;
    std::size_t length;
    std::uint32_t least;
    if ((lead & 0xE0U) == 0xC0U) {
        code = lead & 0x1FU;
        length = 2;
        least = 0x80;
    } else if ((lead & 0xF8U) == 0xF0U) {
        code = lead & 0x07U;
        length = 4;
        least = 0x10000;
    } else {
        malformed(i);
    }
    if (length > size - i) {
        malformed(i);
    }
    for (std::size_t k = 1; k < length; ++k) {
        if (!isContinuation(src[i + k])) {
            malformed(i);
        }
        code = (code << 6) | (src[i + k] & 0x3FU);
    }
    // Two bytes reach U+07FF at most and four start at U+10000: no surrogate is found here.
    if (code < least || code > 0x10FFFF) {
        malformed(i);
    }
    if (code >= 0x10000) {
        code -= 0x10000;
        *dst++ = static_cast<char16_t>(0xD800 + (code >> 10));
        *dst++ = static_cast<char16_t>(0xDC00 + (code & 0x3FFU));
    } else {
        *dst++ = static_cast<char16_t>(code);
    }
    return length;
}

/** Decodes all of `src` into `dst`, which has room for its UTF-16 length; gives the end.
    ASCII runs go eight bytes at a time and three-byte sequences, the bulk of text in the
    scripts of East Asia, are decoded in line; the rest takes decodeSequence. */
std::size_t decode(const unsigned char* src, std::size_t size, char16_t* dst) {
    char16_t* const start = dst;
    std::size_t i = 0;
    while (i < size) {
        const unsigned lead = src[i];
        if (lead < 0x80U) {
            if (size - i >= 8 && (load8(src + i) & kHighBits) == 0) {
                for (std::size_t k = 0; k < 8; ++k) {
                    dst[k] = src[i + k];
                }
                i += 8;
                dst += 8;
            } else {
                *dst++ = static_cast<char16_t>(lead);
                ++i;
            }
            continue;
        }
        if ((lead & 0xF0U) == 0xE0U && size - i >= 3) {
            const unsigned second = src[i + 1];
            const unsigned third = src[i + 2];
            const unsigned code = ((lead & 0x0FU) << 12) | ((second & 0x3FU) << 6) | (third & 0x3FU);
            if (isContinuation(static_cast<unsigned char>(second)) &&
                isContinuation(static_cast<unsigned char>(third)) && code >= 0x800U &&
                (code < 0xD800U || code > 0xDFFFU)) {
                *dst++ = static_cast<char16_t>(code);
                i += 3;
                continue;
            }
        }
        // What is not ASCII nor a well-formed sequence of three bytes.
        i += decodeSequence(src, size, i, dst);
    }
    return static_cast<std::size_t>(dst - start);
}

// UTF-8 never has fewer bytes than UTF-16 has units, so text of up to this many bytes decodes
// into a buffer of this many units.
constexpr std::size_t kStackUnits = 512;

} // namespace

std::u16string utf8ToUtf16(std::string_view text) {
    const auto* src = reinterpret_cast<const unsigned char*>(text.data());
    const std::size_t size = text.size();
    // Most text is ASCII through and through: widened in one go into a string of its size.
    if (isAscii(src, size)) {
        return std::u16string(src, src + size);
    }
    // Short text is decoded on the stack and copied into a string of its exact size; longer
    // text is measured first, so that its string is still allocated once and to size.
    if (size <= kStackUnits) {
        char16_t units[kStackUnits];
        return std::u16string(units, decode(src, size, units));
    }
    std::u16string out(utf16Length(src, size), u'\0');
    decode(src, size, out.data());
    return out;
}

namespace {

// The code point of the well-formed sequence at `i` and its length, or a length of 0.
std::pair<char32_t, std::size_t> sequenceAt(std::string_view text, std::size_t i) {
    const auto lead = static_cast<unsigned char>(text[i]);
    const std::size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 0;
    char32_t c = length == 1   ? lead
                 : length == 2 ? (lead & 0x1F)
                 : length == 3 ? (lead & 0x0F)
                               : (lead & 0x07);
    bool valid = length != 0 && i + length <= text.size() && lead < 0xF5;
    for (std::size_t k = 1; valid && k < length; ++k) {
        const auto next = static_cast<unsigned char>(text[i + k]);
        valid = (next & 0xC0) == 0x80;
        c = (c << 6) | (next & 0x3F);
    }
    // The least code point that each length may encode.
    constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
    if (valid && (c < kSmallest[length - 1] || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000))) {
        valid = false;
    }
    return {c, valid ? length : 0};
}

} // namespace

char32_t nextCodePoint(std::string_view text, std::size_t& at) {
    const auto [c, length] = sequenceAt(text, at);
    at += length == 0 ? 1 : length;
    return length == 0 ? char32_t{0xFFFD} : c;
}

std::size_t firstMalformedUtf8(std::string_view text) {
    const auto* src = reinterpret_cast<const unsigned char*>(text.data());
    if (isAscii(src, text.size())) {
        return std::string_view::npos;
    }
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = sequenceAt(text, i).second;
        if (length == 0) {
            return i;
        }
        i += length;
    }
    return std::string_view::npos;
}

std::u16string utf8ToUtf16Replacing(std::string_view text) {
    try {
        return utf8ToUtf16(text);
    } catch (const MalformedText&) {
    }
    // Malformed text is rare: it takes a slower pass that replaces byte by byte.
    std::u16string out;
    std::size_t i = 0;
    while (i < text.size()) {
        char32_t c = nextCodePoint(text, i);
        if (c >= 0x10000) {
            c -= 0x10000;
            out += static_cast<char16_t>(0xD800 + (c >> 10));
            out += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
        } else {
            out += static_cast<char16_t>(c);
        }
    }
    return out;
}

std::string utf16ToUtf8(std::u16string_view text, Unpaired unpaired) {
    std::string out;
    appendUtf8(out, text, unpaired);
    return out;
}

void appendUtf8(std::string& out, std::u16string_view text, Unpaired unpaired) {
    const std::size_t start = out.size();
    // A unit gives at most 3 bytes, a pair of them 4: the room is made once and cut to what was written.
    out.resize(start + 3 * text.size());
    char* const first = out.data() + start;
    char* at = first;
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::uint32_t code = text[i];
        if (code < 0x80) {
            *at++ = static_cast<char>(code);
            continue;
        }
        if (code >= 0xD800 && code <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] <= 0xDFFF) {
            code = 0x10000 + ((code - 0xD800) << 10) + (text[i + 1] - 0xDC00U);
            ++i;
        } else if (code >= 0xD800 && code <= 0xDFFF) {
            if (unpaired == Unpaired::Refuse) {
                out.resize(start);
                throw MalformedText("unpaired surrogate at unit " + std::to_string(i));
            }
            code = 0xFFFD;
        }
        if (code < 0x800) {
            *at++ = static_cast<char>(0xC0 | (code >> 6));
        } else if (code < 0x10000) {
            *at++ = static_cast<char>(0xE0 | (code >> 12));
            *at++ = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        } else {
            *at++ = static_cast<char>(0xF0 | (code >> 18));
            *at++ = static_cast<char>(0x80 | ((code >> 12) & 0x3F));
            *at++ = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        }
        *at++ = static_cast<char>(0x80 | (code & 0x3F));
    }
    out.resize(start + static_cast<std::size_t>(at - first));
}

} // namespace zwhost::unicode
