#include "opc/zippackage/zip_physical_package.hpp"

#include "opc/package_error.hpp"
#include "zip_contents.hpp"
#include "zwhost/fault.hpp"

namespace opc::zippackage {

ZipPhysicalPackage::ZipPhysicalPackage(const std::u16string& path, const FileSystemOpsSelector& selector,
                                       bool readOnly)
    : readOnly_(readOnly) {
    zwhost::fault::point("ZipPhysicalPackage");
    path_ = path;
    nativePath_ = selector.storage().nativePath(path);
}

ZipPhysicalPackage::~ZipPhysicalPackage() = default;

void ZipPhysicalPackage::open(interfaces::OpenMode mode) {
    if (!readOnly_ || mode != interfaces::OpenMode::ReadOnly) {
        throw PackageError(PackageErrorKind::Misuse,
                           "package " + nativePath_ + " can only be opened read-only");
    }
    if (contents_ != nullptr) {
        throw PackageError(PackageErrorKind::Misuse, "package " + nativePath_ + " is already open");
    }
    contents_ = std::make_unique<Contents>(nativePath_);
}

} // namespace opc::zippackage
