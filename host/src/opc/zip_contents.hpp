#pragma once
// What an open zip package holds, shared by the package and the manager of its entries.

#include <memory>

#include <zip.h>

#include "central_directory.hpp"
#include "opc/zippackage/zip_physical_package.hpp"

namespace opc::zippackage {

struct ArchiveDiscard {
    void operator()(zip_t* archive) const { zip_discard(archive); }
};

struct ZipPhysicalPackage::Contents {
    std::unique_ptr<char[]> bytes;
    std::size_t size = 0;
    detail::Directory directory;
    std::unique_ptr<zip_t, ArchiveDiscard> archive;
};

} // namespace opc::zippackage
