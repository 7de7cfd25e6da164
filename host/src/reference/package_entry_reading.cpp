// Reading an entry of an open package: the package services check its size and CRC and hold
// the package to its budget of inflated bytes.

#include "reference/docparser/doc_resource_parser.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/settings.hpp"

namespace reference::docparser {

std::string DocResourceParser::openAndReadFile(const ProductZipData& product) {
    zwhost::fault::point("DocResourceParser::openAndReadFile");
    return product.getFileSystemManager().readEntry(product.getEntry(), zwhost::settings::readLimit(),
                                                    zwhost::settings::packageBudget());
}

} // namespace reference::docparser
