#include "opc/zippackage/zip_physical_package.hpp"

#include <exception>

#include "opc/package_error.hpp"
#include "zip_contents.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/skip_watch.hpp"

namespace opc::zippackage {

ZipPhysicalPackage::ZipPhysicalPackage(const std::u16string& path, const FileSystemOpsSelector& selector,
                                       bool readOnly)
    : readOnly_(readOnly), unwinding_(std::uncaught_exceptions()) {
    try {
        zwhost::fault::point("ZipPhysicalPackage");
        path_ = path;
        nativePath_ = selector.storage().nativePath(path);
    } catch (...) {
        zwhost::reference::SkipWatch::giveUp();
        throw;
    }
}

// A package is read within the lifetime of its physical package: one that ends by an exception
// was given up, whether opening, listing or choosing its entries failed.
ZipPhysicalPackage::~ZipPhysicalPackage() {
    if (std::uncaught_exceptions() > unwinding_) {
        zwhost::reference::SkipWatch::giveUp();
    }
}

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
