#include "reference/docparser/product_data.hpp"

#include "zwhost/fault.hpp"

namespace reference::docparser {

bool ProductData::isNonEnglishLocale() const {
    zwhost::fault::point("ProductData::isNonEnglishLocale");
    return nonEnglishLocale;
}

const std::u16string& ProductPathData::getFullPath() const {
    zwhost::fault::point("ProductPathData::getFullPath");
    return fullPath;
}

} // namespace reference::docparser
