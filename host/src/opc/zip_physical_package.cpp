#include "opc/zippackage/zip_physical_package.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "opc/package_error.hpp"
#include "zip_contents.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/regular_file.hpp"

namespace opc::zippackage {
namespace {

// Larger files are refused rather than held in memory whole.
constexpr std::uint64_t kMaxPackageBytes = std::uint64_t{1} << 30;

std::string errorText(zip_error_t& error) {
    std::string text = zip_error_strerror(&error);
    zip_error_fini(&error);
    return text;
}

/** The bytes of the regular file at `path`, read with one open and no wait on a FIFO or device. */
void readWhole(const std::string& path, ZipPhysicalPackage::Contents& contents) {
    const zwhost::RegularFile file(path.c_str());
    if (file.failure() != nullptr) {
        throw PackageError(std::string(file.failure()) + " package " + path + ": " +
                           std::strerror(file.error()));
    }
    const std::uint64_t size = file.size();
    if (size > kMaxPackageBytes) {
        throw PackageError("refused package " + path + ": larger than " + std::to_string(kMaxPackageBytes) +
                           " bytes");
    }
    // Not zero-filled: every byte kept is read. A file that shrinks meanwhile is read as it ends.
    contents.bytes.reset(new char[size]);
    while (contents.size < size) {
        const ssize_t got = ::read(file.get(), contents.bytes.get() + contents.size, size - contents.size);
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            throw PackageError("cannot read package " + path + ": " + std::strerror(errno));
        }
        if (got == 0) {
            break;
        }
        contents.size += static_cast<std::size_t>(got);
    }
}

/** Refuses an archive that libzip reads differently from the vetted raw directory: the vetting
    holds only for the directory that libzip goes on to use. */
void requireSameDirectory(zip_t* archive, const std::vector<detail::DirectoryRecord>& records,
                          const std::string& path) {
    const zip_int64_t count = zip_get_num_entries(archive, 0);
    if (count < 0 || static_cast<std::uint64_t>(count) != records.size()) {
        throw PackageError("refused package " + path + ": libzip sees another directory");
    }
    for (std::size_t index = 0; index < records.size(); ++index) {
        zip_stat_t stat;
        zip_stat_init(&stat);
        if (zip_stat_index(archive, index, ZIP_FL_ENC_RAW, &stat) != 0 ||
            (stat.valid & (ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE)) != (ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE) ||
            stat.comp_size != records[index].compressedSize || stat.size != records[index].size) {
            throw PackageError("refused package " + path + ": libzip sees entry " + std::to_string(index) +
                               " differently");
        }
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
        throw PackageError("package " + nativePath_ + " can only be opened read-only");
    }
    if (contents_ != nullptr) {
        throw PackageError("package " + nativePath_ + " is already open");
    }
    auto contents = std::make_unique<Contents>();
    readWhole(nativePath_, *contents);
    contents->directory = detail::readCentralDirectory({contents->bytes.get(), contents->size}, nativePath_);
    // libzip's own consistency check is left off: it refuses valid zips whose local headers carry
    // sizes beside a data descriptor, and the vetting above checks what matters instead.
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* source =
        zip_source_buffer_create(contents->bytes.get(), contents->directory.zipSize, 0, &error);
    if (source == nullptr) {
        throw PackageError("cannot open package " + nativePath_ + ": " + errorText(error));
    }
    contents->archive.reset(zip_open_from_source(source, ZIP_RDONLY, &error));
    if (!contents->archive) {
        zip_source_free(source);
        throw PackageError("cannot open package " + nativePath_ + ": " + errorText(error));
    }
    zip_error_fini(&error);
    requireSameDirectory(contents->archive.get(), contents->directory.records, nativePath_);
    contents_ = std::move(contents);
}

} // namespace opc::zippackage
