#include "native_name.hpp"

#include <cstdint>
#include <filesystem>
#include <system_error>

#include "reference/docparser/catalogue_format_error.hpp"
#include "utf8_to_utf16.hpp"

namespace zwhost::reference::detail {
namespace {

[[noreturn]] void unrepresentable(const char* what) {
    throw std::filesystem::filesystem_error(what, std::make_error_code(std::errc::illegal_byte_sequence));
}

bool isHighSurrogate(std::uint32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool isLowSurrogate(std::uint32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

} // namespace

std::string toNative(std::u16string_view name) {
    std::string out;
    out.reserve(name.size());
    for (std::size_t i = 0; i < name.size(); ++i) {
        std::uint32_t code = name[i];
        if (code == 0) {
            unrepresentable("name holds a NUL character");
        }
        if (isLowSurrogate(code)) {
            unrepresentable("name holds an unpaired surrogate");
        }
        if (isHighSurrogate(code)) {
            if (i + 1 == name.size() || !isLowSurrogate(name[i + 1])) {
                unrepresentable("name holds an unpaired surrogate");
            }
            code = 0x10000 + ((code - 0xD800) << 10) + (name[++i] - 0xDC00U);
        }
        if (code < 0x80) {
            out += static_cast<char>(code);
        } else if (code < 0x800) {
            out += static_cast<char>(0xC0 | (code >> 6));
            out += static_cast<char>(0x80 | (code & 0x3F));
        } else if (code < 0x10000) {
            out += static_cast<char>(0xE0 | (code >> 12));
            out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (code & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (code >> 18));
            out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return out;
}

std::optional<std::u16string> fromNative(std::string_view name) {
    try {
        return utf8ToUtf16(name);
    } catch (const ::reference::docparser::CatalogueFormatError&) {
        // A name that is not UTF-8 has no UTF-16 form; the caller passes over it.
        return std::nullopt;
    }
}

} // namespace zwhost::reference::detail
