#include "fl/filesystem/path.hpp"

#include <algorithm>

namespace fl::filesystem::detail {

std::u16string make_native_form(const std::u16string& path, bool /*canonicalSeparators*/) {
    std::u16string native = path;
    std::replace(native.begin(), native.end(), u'\\', upath_constant::PATHNAME_SEPARATOR[0]);
    return native;
}

std::u16string extract_stem(const std::u16string& path) {
    const std::size_t slash = path.find_last_of(upath_constant::PATHNAME_SEPARATOR[0]);
    const std::u16string_view name = slash == std::u16string::npos
                                         ? std::u16string_view(path)
                                         : std::u16string_view(path).substr(slash + 1);
    const std::size_t dot = name.find_last_of(u'.');
    if (dot == std::u16string_view::npos || dot == 0) {
        return std::u16string(name);
    }
    return std::u16string(name.substr(0, dot));
}

} // namespace fl::filesystem::detail
