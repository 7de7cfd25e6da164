#include "opc/zwservices/file_system.hpp"

#include <algorithm>
#include <string_view>

#include <zip.h>

#include "opc/package_error.hpp"
#include "opc/zippackage/zip_physical_package.hpp"
#include "zwhost/fault.hpp"

namespace opc::zwservices {
namespace {

// Entries are read this many bytes at a time, through a buffer on the stack.
constexpr std::size_t kReadChunk = 16 * 1024;

struct FileClose {
    void operator()(zip_file_t* file) const { zip_fclose(file); }
};

/** The length of the UTF-8 sequence that `lead` starts; 0 for a byte that starts none. */
std::size_t sequenceLength(unsigned char lead) {
    if (lead < 0x80) {
        return 1;
    }
    if (lead < 0xC2) {
        return 0;
    }
    if (lead < 0xE0) {
        return 2;
    }
    if (lead < 0xF0) {
        return 3;
    }
    return lead < 0xF5 ? 4 : 0;
}

/** `name` from UTF-8 to UTF-16; a malformed sequence is a damaged package. */
std::u16string entryNameToUtf16(std::string_view name) {
    std::u16string out;
    out.reserve(name.size());
    for (std::size_t i = 0; i < name.size();) {
        const auto lead = static_cast<unsigned char>(name[i]);
        const std::size_t length = sequenceLength(lead);
        if (length == 0 || i + length > name.size()) {
            throw PackageError("entry name is not UTF-8: " + std::string(name));
        }
        std::uint32_t code = length == 1 ? lead : lead & (0x7FU >> length);
        for (std::size_t k = 1; k < length; ++k) {
            const auto next = static_cast<unsigned char>(name[i + k]);
            if ((next & 0xC0U) != 0x80U) {
                throw PackageError("entry name is not UTF-8: " + std::string(name));
            }
            code = (code << 6) | (next & 0x3FU);
        }
        static constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
        if (code < kLeast[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
            throw PackageError("entry name is not UTF-8: " + std::string(name));
        }
        if (code >= 0x10000) {
            out += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
            out += static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FFU));
        } else {
            out += static_cast<char16_t>(code);
        }
        i += length;
    }
    return out;
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
    std::string content;
    content.reserve(std::min(info.size, limit));
    // Bytes are kept only while they fit both the limit and the declared size, so a deflate bomb
    // costs no more memory than an honest entry. libzip checks the CRC on reaching the end of the
    // data and fails that read when it differs.
    char chunk[kReadChunk];
    for (;;) {
        const zip_int64_t got = zip_fread(file.get(), chunk, sizeof chunk);
        if (got < 0) {
            throw PackageError("cannot read entry " + std::to_string(info.index) + ": " +
                               zip_file_strerror(file.get()));
        }
        if (got == 0) {
            break;
        }
        const auto count = static_cast<std::uint64_t>(got);
        if (count > limit - content.size()) {
            throw PackageError("entry " + std::to_string(info.index) + " is larger than the read limit of " +
                               std::to_string(limit) + " bytes");
        }
        if (count > info.size - content.size()) {
            throw PackageError("entry " + std::to_string(info.index) + " is larger than it declares");
        }
        content.append(chunk, count);
    }
    if (content.size() != info.size) {
        throw PackageError("entry " + std::to_string(info.index) + " is smaller than it declares");
    }
    return content;
}

} // namespace opc::zwservices
