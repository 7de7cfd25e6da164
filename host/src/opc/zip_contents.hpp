#pragma once
// What an open zip package holds, shared by the package and the manager of its entries.

#include <memory>

#include "central_directory.hpp"
#include "opc/zippackage/zip_physical_package.hpp"

namespace opc::zippackage {

struct ZipPhysicalPackage::Contents {
    std::unique_ptr<char[]> bytes;
    std::size_t size = 0;
    detail::Directory directory;
};

} // namespace opc::zippackage
