#include "reference/docparser/product_data.hpp"

namespace reference::docparser {

bool ProductData::isNonEnglishLocale() const {
    return nonEnglishLocale;
}

const std::u16string& ProductPathData::getFullPath() const {
    return fullPath;
}

} // namespace reference::docparser
