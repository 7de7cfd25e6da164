// Reading an entry of an open package: the package services check its size and CRC and hold
// the package to its budget of inflated bytes.

#include "reference/docparser/doc_resource_parser.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/settings.hpp"
#include "zwhost/skip_watch.hpp"

namespace reference::docparser {

std::string DocResourceParser::openAndReadFile(const ProductZipData& product) {
    try {
        zwhost::fault::point("DocResourceParser::openAndReadFile");
        return product.getFileSystemManager().readEntry(product.getEntry(), zwhost::settings::readLimit(),
                                                        zwhost::settings::packageBudget());
    } catch (...) {
        zwhost::reference::SkipWatch::giveUp();
        throw;
    }
}

} // namespace reference::docparser
