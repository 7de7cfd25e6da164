#include "utf.hpp"

namespace zwhost::except::detail {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

void appendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

void appendUtf16(std::u16string& out, char32_t c) {
    if (c < 0x10000) {
        out += static_cast<char16_t>(c);
    } else {
        c -= 0x10000;
        out += static_cast<char16_t>(0xD800 + (c >> 10));
        out += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    }
}

} // namespace

std::string toUtf8(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
        } else if (c >= 0xD800 && c < 0xE000) {
            c = kReplacement;
        }
        appendUtf8(out, c);
    }
    return out;
}

std::u16string toUtf16(std::string_view text) {
    std::u16string out;
    out.reserve(text.size());
    std::size_t i = 0;
    while (i < text.size()) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t length = lead < 0x80    ? 1
                                   : lead >= 0xF0 ? 4
                                   : lead >= 0xE0 ? 3
                                   : lead >= 0xC0 ? 2
                                                  : 0;
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
        constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
        if (valid && (c < kSmallest[length] || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000))) {
            valid = false;
        }
        appendUtf16(out, valid ? c : kReplacement);
        i += valid ? length : 1;
    }
    return out;
}

} // namespace zwhost::except::detail
