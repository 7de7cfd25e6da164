#pragma once
// Conversions between UTF-8 and UTF-16 for message texts. Ill-formed input becomes U+FFFD.

#include <string>
#include <string_view>

namespace zwhost::except::detail {

std::string toUtf8(std::u16string_view text);
std::u16string toUtf16(std::string_view text);

} // namespace zwhost::except::detail
