#include "opc/zippackage/zip_physical_package.hpp"

#include <vector>

#include <zip.h>

#include "central_directory.hpp"
#include "opc/package_error.hpp"
#include "zwhost/fault.hpp"

namespace opc::zippackage {
namespace {

struct ArchiveDiscard {
    void operator()(zip_t* archive) const { zip_discard(archive); }
};

std::string openErrorText(int code) {
    zip_error_t error;
    zip_error_init_with_code(&error, code);
    std::string text = zip_error_strerror(&error);
    zip_error_fini(&error);
    return text;
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

ZipPhysicalPackage::~ZipPhysicalPackage() {
    if (archive_ != nullptr) {
        zip_discard(archive_);
    }
}

void ZipPhysicalPackage::open(interfaces::OpenMode mode) {
    if (!readOnly_ || mode != interfaces::OpenMode::ReadOnly) {
        throw PackageError("package " + nativePath_ + " can only be opened read-only");
    }
    if (archive_ != nullptr) {
        throw PackageError("package " + nativePath_ + " is already open");
    }
    const std::vector<detail::DirectoryRecord> records = detail::readCentralDirectory(nativePath_);
    int code = 0;
    std::unique_ptr<zip_t, ArchiveDiscard> archive(
        zip_open(nativePath_.c_str(), ZIP_CHECKCONS | ZIP_RDONLY, &code));
    if (!archive) {
        throw PackageError("cannot open package " + nativePath_ + ": " + openErrorText(code));
    }
    requireSameDirectory(archive.get(), records, nativePath_);
    archive_ = archive.release();
}

} // namespace opc::zippackage
