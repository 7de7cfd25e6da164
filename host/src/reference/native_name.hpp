#pragma once
// Conversions between the reference service's UTF-16 names and the UTF-8 names of the system.

#include <optional>
#include <string>
#include <string_view>

namespace zwhost::reference::detail {

/** `name` as a UTF-8 native name. Throws std::filesystem::filesystem_error when it holds an
    unpaired surrogate or a NUL, which no native name can carry. */
std::string toNative(std::u16string_view name);

/** The native name `name` as UTF-16, or nothing when it is not valid UTF-8. */
std::optional<std::u16string> fromNative(std::string_view name);

} // namespace zwhost::reference::detail
