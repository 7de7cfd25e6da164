#include "native_name.hpp"

#include <cstdint>
#include <filesystem>
#include <system_error>

#include "zwhost/unicode.hpp"

namespace zwhost::reference::detail {
namespace {

[[noreturn]] void unrepresentable(const char* what) {
    throw std::filesystem::filesystem_error(what, std::make_error_code(std::errc::illegal_byte_sequence));
}

} // namespace

std::string toNative(std::u16string_view name) {
    // A path holding NUL names no file, so it is refused rather than cut short.
    if (name.find(u'\0') != std::u16string_view::npos) {
        unrepresentable("name holds a NUL character");
    }
    try {
        return zwhost::unicode::utf16ToUtf8(name, zwhost::unicode::Unpaired::Refuse);
    } catch (const zwhost::unicode::MalformedText&) {
        unrepresentable("name holds an unpaired surrogate");
    }
}

std::optional<std::u16string> fromNative(std::string_view name) {
    try {
        return zwhost::unicode::utf8ToUtf16(name);
    } catch (const zwhost::unicode::MalformedText&) {
        // A name that is not UTF-8 has no UTF-16 form; the caller passes over it.
        return std::nullopt;
    }
}

} // namespace zwhost::reference::detail
