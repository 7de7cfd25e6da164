#include "opc/zwservices/file_system.hpp"

#include <algorithm>
#include <string_view>

#include <zip.h>

#include "opc/package_error.hpp"
#include "opc/zippackage/zip_physical_package.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/unicode.hpp"

namespace opc::zwservices {
namespace {

struct FileClose {
    void operator()(zip_file_t* file) const { zip_fclose(file); }
};

/** `name` from UTF-8 to UTF-16; a malformed sequence is a damaged package. */
std::u16string entryNameToUtf16(std::string_view name) {
    try {
        return zwhost::unicode::utf8ToUtf16(name);
    } catch (const zwhost::unicode::MalformedText&) {
        throw PackageError("entry name is not UTF-8: " + std::string(name));
    }
}

PackageError readFailure(const FileSystemEntry::Info& info, zip_file_t* file) {
    return PackageError("cannot read entry " + std::to_string(info.index) + ": " + zip_file_strerror(file));
}

/** The error for an entry whose data disagrees with what it or the reader allows. */
PackageError badSize(const FileSystemEntry::Info& info, const std::string& what) {
    return PackageError("entry " + std::to_string(info.index) + " is " + what);
}

zip_t* openArchive(const model::Package& package) {
    const auto* zip = dynamic_cast<const zippackage::ZipPhysicalPackage*>(&package.physical());
    if (zip == nullptr || !zip->isOpen()) {
        throw PackageError("the package is not an open zip package");
    }
    return zip->archive();
}

} // namespace

std::u16string FileSystemEntry::getBaseName() const {
    const std::u16string& path = info_->path;
    const std::size_t slash = path.rfind(u'/');
    return slash == std::u16string::npos ? path : path.substr(slash + 1);
}

FileSystemManager::FileSystemManager(model::Package& package, const FileSystemOpsSelector& selector)
    : package_(package), selector_(selector) {
    zwhost::fault::point("FileSystemManager");
}

std::vector<FileSystemManager::SkippedEntry> FileSystemManager::getSkippedEntries() const {
    openArchive(package_);
    return {};
}

std::vector<FileSystemEntry> FileSystemManager::getAllLeafs() const {
    zwhost::fault::point("FileSystemManager::getAllLeafs");
    zip_t* archive = openArchive(package_);
    const auto count = static_cast<zip_uint64_t>(zip_get_num_entries(archive, 0));
    std::vector<FileSystemEntry> leaves;
    // The count was vetted at open, so this reservation is bounded.
    leaves.reserve(count);
    for (zip_uint64_t index = 0; index < count; ++index) {
        zip_stat_t stat;
        zip_stat_init(&stat);
        if (zip_stat_index(archive, index, ZIP_FL_ENC_GUESS, &stat) != 0) {
            throw PackageError("cannot read entry " + std::to_string(index) + ": " + zip_strerror(archive));
        }
        const std::string_view name(stat.name);
        if (!name.empty() && name.back() == '/') {
            continue;
        }
        leaves.emplace_back(std::make_shared<const FileSystemEntry::Info>(
            FileSystemEntry::Info{index, entryNameToUtf16(name), stat.size, stat.crc}));
    }
    return leaves;
}

std::string FileSystemManager::readEntry(const FileSystemEntry& entry, std::uint64_t limit) const {
    zwhost::fault::point("FileSystemManager::readEntry");
    zip_t* archive = openArchive(package_);
    const FileSystemEntry::Info& info = entry.info();
    std::unique_ptr<zip_file_t, FileClose> file(zip_fopen_index(archive, info.index, 0));
    if (!file) {
        throw PackageError("cannot open entry " + std::to_string(info.index) + ": " + zip_strerror(archive));
    }
    // The text is inflated straight into a string of the declared size, held to the limit, so a
    // deflate bomb costs no more memory than an honest entry. One more read must then find the
    // end of the data: libzip checks the CRC on reaching it and fails that read when it differs.
    std::string content(std::min(info.size, limit), '\0');
    std::size_t filled = 0;
    while (filled < content.size()) {
        const zip_int64_t got = zip_fread(file.get(), content.data() + filled, content.size() - filled);
        if (got < 0) {
            throw readFailure(info, file.get());
        }
        if (got == 0) {
            break;
        }
        filled += static_cast<std::size_t>(got);
    }
    content.resize(filled);
    char beyond = 0;
    const zip_int64_t extra = zip_fread(file.get(), &beyond, 1);
    if (extra < 0) {
        throw readFailure(info, file.get());
    }
    if (extra > 0) {
        throw badSize(info, info.size > limit
                                ? "larger than the read limit of " + std::to_string(limit) + " bytes"
                                : "larger than it declares");
    }
    if (content.size() != info.size) {
        throw badSize(info, "smaller than it declares");
    }
    return content;
}

} // namespace opc::zwservices
