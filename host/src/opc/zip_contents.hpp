#pragma once
// What an open zip package holds, shared by the package and the manager of its entries.

#include "central_directory.hpp"
#include "opc/zippackage/zip_physical_package.hpp"
#include "package_file.hpp"

namespace opc::zippackage {

struct ZipPhysicalPackage::Contents {
    explicit Contents(std::string path)
        : file(std::move(path)), directory(detail::readCentralDirectory(file)) {}

    detail::PackageFile file;
    detail::Directory directory;
};

} // namespace opc::zippackage
