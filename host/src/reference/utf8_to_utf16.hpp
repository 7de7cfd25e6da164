#pragma once

#include <string>
#include <string_view>

namespace zwhost::reference::detail {

/** `text` converted from UTF-8 to UTF-16, supplementary planes as surrogate pairs.
    Throws CatalogueFormatError on a malformed sequence. */
std::u16string utf8ToUtf16(std::string_view text);

} // namespace zwhost::reference::detail
