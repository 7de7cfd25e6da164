#pragma once
// File-system names of the host: the path type, the separator and the name helpers.

#include <string>
#include <utility>

namespace fl::filesystem {

namespace upath_constant {
/** The platform's path separator. Constant-initialised, so ready before any dynamic initialiser. */
inline constexpr char16_t PATHNAME_SEPARATOR[] = u"/";
} // namespace upath_constant

namespace detail {

template <class Narrow, class Wide>
struct path_traits {
    using narrow_type = Narrow;
    using value_type = Wide;
    using string_type = std::basic_string<Wide>;
};

/** `path` with every backslash turned into the separator; the flag is accepted and ignored. */
std::u16string make_native_form(const std::u16string& path, bool canonicalSeparators);

/** The name without its folders and its last extension; a leading dot does not start one. */
std::u16string extract_stem(const std::u16string& path);

} // namespace detail

/** A path held as 16-bit text. */
template <class Narrow, class Wide, class Traits>
class basic_path {
public:
    using string_type = typename Traits::string_type;

    basic_path() = default;
    explicit basic_path(string_type text) : text_(std::move(text)) {}

    const string_type& text() const { return text_; }
    bool empty() const { return text_.empty(); }

private:
    string_type text_;
};

using upath = basic_path<char, char16_t, detail::path_traits<char, char16_t>>;

} // namespace fl::filesystem
