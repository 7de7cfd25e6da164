#include "zwhost/unicode.hpp"

#include <cstdint>
#include <cstring>


namespace zwhost::unicode {
namespace {

[[noreturn]] void malformed(std::size_t offset) {
    throw MalformedText("malformed UTF-8 at byte " + std::to_string(offset));
}

bool isContinuation(unsigned char byte) {
    return (byte & 0xC0U) == 0x80U;
}

} // namespace

std::u16string utf8ToUtf16(std::string_view text) {
    // UTF-16 never needs more units than UTF-8 has bytes; the string is shrunk at the end.
    std::u16string out;
    out.resize(text.size());
    char16_t* dst = out.data();
    const auto* src = reinterpret_cast<const unsigned char*>(text.data());
    const std::size_t size = text.size();
    std::size_t i = 0;
    while (i < size) {
        // ASCII fast path: eight bytes at a time while none has its high bit set.
        while (i + 8 <= size) {
            std::uint64_t block;
            std::memcpy(&block, src + i, sizeof block);
            if ((block & 0x8080808080808080ULL) != 0) {
                break;
            }
            for (int k = 0; k < 8; ++k) {
                *dst++ = static_cast<char16_t>(src[i + k]);
            }
            i += 8;
        }
        if (i >= size) {
            break;
        }
        const unsigned char lead = src[i];
        if (lead < 0x80U) {
            *dst++ = lead;
            ++i;
            continue;
        }
        std::uint32_t code;
        std::size_t length;
        std::uint32_t least;
        if ((lead & 0xE0U) == 0xC0U) {
            code = lead & 0x1FU;
            length = 2;
            least = 0x80;
        } else if ((lead & 0xF0U) == 0xE0U) {
            code = lead & 0x0FU;
            length = 3;
            least = 0x800;
        } else if ((lead & 0xF8U) == 0xF0U) {
            code = lead & 0x07U;
            length = 4;
            least = 0x10000;
        } else {
            malformed(i);
        }
        if (i + length > size) {
            malformed(i);
        }
        for (std::size_t k = 1; k < length; ++k) {
            if (!isContinuation(src[i + k])) {
                malformed(i);
            }
            code = (code << 6) | (src[i + k] & 0x3FU);
        }
        if (code < least || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
            malformed(i);
        }
        if (code >= 0x10000) {
            code -= 0x10000;
            *dst++ = static_cast<char16_t>(0xD800 + (code >> 10));
            *dst++ = static_cast<char16_t>(0xDC00 + (code & 0x3FFU));
        } else {
            *dst++ = static_cast<char16_t>(code);
        }
        i += length;
    }
    out.resize(static_cast<std::size_t>(dst - out.data()));
    return out;
}

std::string utf16ToUtf8(std::u16string_view text, Unpaired unpaired) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::uint32_t code = text[i];
        if (code < 0x80) {
            out += static_cast<char>(code);
            continue;
        }
        if (code >= 0xD800 && code <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] <= 0xDFFF) {
            code = 0x10000 + ((code - 0xD800) << 10) + (text[i + 1] - 0xDC00U);
            ++i;
        } else if (code >= 0xD800 && code <= 0xDFFF) {
            if (unpaired == Unpaired::Refuse) {
                throw MalformedText("unpaired surrogate at unit " + std::to_string(i));
            }
            code = 0xFFFD;
        }
        if (code < 0x800) {
            out += static_cast<char>(0xC0 | (code >> 6));
        } else if (code < 0x10000) {
            out += static_cast<char>(0xE0 | (code >> 12));
            out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (code >> 18));
            out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        }
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
    return out;
}

} // namespace zwhost::unicode
