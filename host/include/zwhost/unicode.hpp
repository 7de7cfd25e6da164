#pragma once
// Conversions between the host's 16-bit text and UTF-8.

#include <string>
#include <string_view>

namespace zwhost::unicode {

/** `text` converted from UTF-8 to UTF-16, supplementary planes as surrogate pairs.
    Throws reference::docparser::CatalogueFormatError on a malformed sequence. */
std::u16string utf8ToUtf16(std::string_view text);

/** `text` converted from UTF-16 to UTF-8; an unpaired surrogate becomes U+FFFD. */
std::string utf16ToUtf8(std::u16string_view text);

} // namespace zwhost::unicode
