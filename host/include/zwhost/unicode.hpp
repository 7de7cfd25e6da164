#pragma once
// Conversions between the host's 16-bit text and UTF-8.

#include <stdexcept>
#include <string>
#include <string_view>

namespace zwhost::unicode {

/** Text that has no form in the other encoding. */
struct MalformedText : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/** `text` converted from UTF-8 to UTF-16, supplementary planes as surrogate pairs.
    Throws MalformedText on a malformed or overlong sequence or an encoded surrogate. */
std::u16string utf8ToUtf16(std::string_view text);

/** The offset of the first byte of `text` that begins no well-formed sequence (malformed,
    overlong, cut short or an encoded surrogate), or npos: what utf8ToUtf16 refuses. */
std::size_t firstMalformedUtf8(std::string_view text);

/** The code point of the UTF-8 sequence at `at` in `text`, moving `at` past it; a byte that
    begins no well-formed sequence gives U+FFFD and moves `at` by one, as utf8ToUtf16Replacing. */
char32_t nextCodePoint(std::string_view text, std::size_t& at);

/** Like utf8ToUtf16, but each byte that starts no valid sequence becomes U+FFFD. */
std::u16string utf8ToUtf16Replacing(std::string_view text);

/** What utf16ToUtf8 does with a surrogate that has no partner. */
enum class Unpaired { Replace, Refuse };

/** `text` converted from UTF-16 to UTF-8; an unpaired surrogate becomes U+FFFD, or with
    Unpaired::Refuse throws MalformedText. */
std::string utf16ToUtf8(std::u16string_view text, Unpaired unpaired = Unpaired::Replace);

/** utf16ToUtf8 appending to `out`; with Unpaired::Refuse a throw leaves `out` as it was. */
void appendUtf8(std::string& out, std::u16string_view text, Unpaired unpaired = Unpaired::Replace);

} // namespace zwhost::unicode
