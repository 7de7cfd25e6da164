#include "native_name.hpp"

#include <cstdint>
#include <filesystem>
#include <system_error>

#include "reference/docparser/catalogue_format_error.hpp"
#include "zwhost/unicode.hpp"

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
    // The encoder would replace these; a path holding them names no file, so it is refused.
    for (std::size_t i = 0; i < name.size(); ++i) {
        const std::uint32_t code = name[i];
        if (code == 0) {
            unrepresentable("name holds a NUL character");
        }
        if (isLowSurrogate(code) || (isHighSurrogate(code) && (i + 1 == name.size() || !isLowSurrogate(name[++i])))) {
            unrepresentable("name holds an unpaired surrogate");
        }
    }
    return zwhost::unicode::utf16ToUtf8(name);
}

std::optional<std::u16string> fromNative(std::string_view name) {
    try {
        return zwhost::unicode::utf8ToUtf16(name);
    } catch (const ::reference::docparser::CatalogueFormatError&) {
        // A name that is not UTF-8 has no UTF-16 form; the caller passes over it.
        return std::nullopt;
    }
}

} // namespace zwhost::reference::detail
