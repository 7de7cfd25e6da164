#include "opc/zippackage/zip_physical_package.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "opc/package_error.hpp"
#include "zip_contents.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/regular_file.hpp"

namespace opc::zippackage {
namespace {

// Larger files are refused rather than held in memory whole.
constexpr std::uint64_t kMaxPackageBytes = std::uint64_t{1} << 30;

/** The bytes of the regular file at `path`, read with one open and no wait on a FIFO or device. */
void readWhole(const std::string& path, ZipPhysicalPackage::Contents& contents) {
    const zwhost::RegularFile file(path.c_str());
    if (file.failure() != nullptr) {
        throw PackageError(PackageErrorKind::Unreadable, std::string(file.failure()) + " package " + path +
                                                             ": " + std::strerror(file.error()));
    }
    const std::uint64_t size = file.size();
    if (size > kMaxPackageBytes) {
        throw PackageError(PackageErrorKind::Refused, "refused package " + path + ": larger than " +
                                                          std::to_string(kMaxPackageBytes) + " bytes");
    }
    // Not zero-filled: every byte kept is read. A file that shrinks meanwhile is read as it ends.
    contents.bytes.reset(new char[size]);
    while (contents.size < size) {
        const ssize_t got = ::read(file.get(), contents.bytes.get() + contents.size, size - contents.size);
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            throw PackageError(PackageErrorKind::Unreadable,
                               "cannot read package " + path + ": " + std::strerror(errno));
        }
        if (got == 0) {
            break;
        }
        contents.size += static_cast<std::size_t>(got);
    }
}

} // namespace

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
    auto contents = std::make_unique<Contents>();
    readWhole(nativePath_, *contents);
    contents->directory = detail::readCentralDirectory({contents->bytes.get(), contents->size}, nativePath_);
    contents_ = std::move(contents);
}

} // namespace opc::zippackage
