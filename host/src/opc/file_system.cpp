#include "opc/zwservices/file_system.hpp"

#include <zlib.h>

#include <algorithm>
#include <string_view>
#include <unordered_set>

#include "entry_decoders.hpp"
#include "opc/package_error.hpp"
#include "zip_contents.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/unicode.hpp"

namespace opc::zwservices {
namespace {

using Contents = zippackage::ZipPhysicalPackage::Contents;

// libzip inflates into this much at a time, on the stack; the text grows by appending it.
constexpr std::size_t kChunk = std::size_t{64} << 10;
// The first room given to an entry's text, whatever it declares; it grows as bytes arrive.
constexpr std::uint64_t kFirstRoom = std::uint64_t{1} << 20;
// The decoders' state may reach this; xz -9 needs 65 MiB.
constexpr std::uint64_t kDecoderMemory = std::uint64_t{72} << 20;

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

std::string entryText(const FileSystemEntry::Info& info) {
    return "entry " + std::to_string(info.index);
}

const Contents& openContents(const model::Package& package) {
    const auto* zip = dynamic_cast<const zippackage::ZipPhysicalPackage*>(&package.physical());
    if (zip == nullptr || !zip->isOpen()) {
        throw PackageError("the package is not an open zip package");
    }
    return *zip->contents();
}

/** The file entries of the package, of each name the first, and the later ones of a name. */
struct Listing {
    std::vector<FileSystemEntry> leaves;
    std::vector<FileSystemManager::SkippedEntry> skipped;
};

Listing listEntries(const Contents& contents, bool wantLeaves) {
    zip_t* archive = contents.archive.get();
    const std::size_t count = contents.directory.records.size();
    Listing listing;
    if (wantLeaves) {
        // The count was vetted at open, so this reservation is bounded.
        listing.leaves.reserve(count);
    }
    std::unordered_set<std::string_view> seen;
    seen.reserve(count);
    for (std::size_t index = 0; index < count; ++index) {
        const char* raw = zip_get_name(archive, index, ZIP_FL_ENC_GUESS);
        if (raw == nullptr) {
            throw PackageError("cannot read entry " + std::to_string(index) + ": " + zip_strerror(archive));
        }
        const std::string_view name(raw);
        if (!name.empty() && name.back() == '/') {
            continue;
        }
        if (!seen.insert(name).second) {
            listing.skipped.push_back({entryNameToUtf16(name),
                                       FileSystemManager::SkippedEntry::Why::DuplicateName,
                                       "a second entry of this name; the first one is read"});
            continue;
        }
        const zippackage::detail::DirectoryRecord& record = contents.directory.records[index];
        std::u16string path = entryNameToUtf16(name);
        if (wantLeaves) {
            listing.leaves.emplace_back(std::make_shared<const FileSystemEntry::Info>(
                FileSystemEntry::Info{index, std::move(path), record.size, record.crc}));
        }
    }
    return listing;
}

PackageError budgetSpent(const FileSystemEntry::Info& info, std::uint64_t budget) {
    return PackageError(entryText(info) + " is not read: the package has inflated its budget of " +
                        std::to_string(budget) + " bytes");
}

/** The text of one entry as it is inflated, held to the read limit, the package's budget and a
    sane inflation ratio. */
class Inflation {
public:
    Inflation(const FileSystemEntry::Info& info, const zippackage::detail::DirectoryRecord& record,
              std::uint64_t limit, std::uint64_t budget, std::uint64_t& inflated)
        : info_(info), record_(record), limit_(limit), budget_(budget), inflated_(inflated) {
        text_.reserve(static_cast<std::size_t>(std::min({info.size, limit, kFirstRoom})));
    }

    void take(const char* data, std::size_t size) {
        if (size == 0) {
            return;
        }
        const std::uint64_t total = text_.size() + size;
        if (total > limit_ || total > info_.size) {
            throw PackageError(entryText(info_) + " is " +
                               (info_.size > limit_
                                    ? "larger than the read limit of " + std::to_string(limit_) + " bytes"
                                    : std::string("larger than it declares")));
        }
        if (total > FileSystemManager::kRatioFloor &&
            total / FileSystemManager::kMaxRatio > record_.compressedSize) {
            throw PackageError(entryText(info_) + " inflates more than " +
                               std::to_string(FileSystemManager::kMaxRatio) + " times its compressed size");
        }
        if (size > budget_ - inflated_) {
            inflated_ = budget_;
            throw budgetSpent(info_, budget_);
        }
        inflated_ += size;
        text_.append(data, size);
    }

    std::string finish() {
        if (text_.size() != info_.size) {
            throw PackageError(entryText(info_) + " is smaller than it declares");
        }
        return std::move(text_);
    }

    const std::string& text() const { return text_; }

private:
    const FileSystemEntry::Info& info_;
    const zippackage::detail::DirectoryRecord& record_;
    std::uint64_t limit_;
    std::uint64_t budget_;
    std::uint64_t& inflated_;
    std::string text_;
};

/** Inflates with libzip, which checks the CRC on reaching the end of the data. */
void inflateWithLibzip(zip_t* archive, const FileSystemEntry::Info& info, Inflation& inflation) {
    std::unique_ptr<zip_file_t, FileClose> file(zip_fopen_index(archive, info.index, 0));
    if (!file) {
        throw PackageError("cannot open " + entryText(info) + ": " + zip_strerror(archive));
    }
    char chunk[kChunk];
    for (;;) {
        const zip_int64_t got = zip_fread(file.get(), chunk, sizeof chunk);
        if (got < 0) {
            throw PackageError("cannot read " + entryText(info) + ": " + zip_file_strerror(file.get()));
        }
        if (got == 0) {
            return;
        }
        inflation.take(chunk, static_cast<std::size_t>(got));
    }
}

void inflateHere(const Contents& contents, const zippackage::detail::DirectoryRecord& record,
                 const FileSystemEntry::Info& info, std::uint64_t limit, Inflation& inflation) {
    if ((record.flags & 1U) != 0) {
        throw PackageError("cannot open " + entryText(info) + ": it is encrypted");
    }
    const std::string_view data(contents.bytes.get() + record.dataOffset, record.compressedSize);
    try {
        detail::decode(record.method, data, record.size, std::max(limit + kChunk, kDecoderMemory),
                       [&](const char* bytes, std::size_t size) { inflation.take(bytes, size); });
    } catch (const PackageError&) {
        throw;
    } catch (const std::runtime_error& error) {
        throw PackageError("cannot read " + entryText(info) + ": " + error.what());
    }
    const std::string& text = inflation.text();
    if (text.size() == info.size &&
        ::crc32_z(::crc32_z(0, nullptr, 0), reinterpret_cast<const Bytef*>(text.data()), text.size()) !=
            info.crc) {
        throw PackageError("cannot read " + entryText(info) + ": CRC error");
    }
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
    return listEntries(openContents(package_), false).skipped;
}

std::vector<FileSystemEntry> FileSystemManager::getAllLeafs() const {
    zwhost::fault::point("FileSystemManager::getAllLeafs");
    return listEntries(openContents(package_), true).leaves;
}

std::string FileSystemManager::readEntry(const FileSystemEntry& entry, std::uint64_t limit,
                                         std::uint64_t budget) const {
    zwhost::fault::point("FileSystemManager::readEntry");
    const Contents& contents = openContents(package_);
    const FileSystemEntry::Info& info = entry.info();
    const zippackage::detail::DirectoryRecord& record = contents.directory.records.at(info.index);
    const bool byLibzip = zip_compression_method_supported(record.method, 0) != 0;
    if (!byLibzip && !detail::decodedHere(record.method)) {
        throw PackageError("compression method " + std::to_string(record.method) + " (" +
                           detail::methodName(record.method) + ") is not supported");
    }
    if (info.size > limit) {
        throw PackageError(entryText(info) + " is larger than the read limit of " + std::to_string(limit) +
                           " bytes");
    }
    // Checked before the text's first room is taken, so that a spent package costs nothing more.
    if (inflated_ >= budget && info.size > 0) {
        throw budgetSpent(info, budget);
    }
    Inflation inflation(info, record, limit, budget, inflated_);
    if (byLibzip) {
        inflateWithLibzip(contents.archive.get(), info, inflation);
    } else {
        inflateHere(contents, record, info, limit, inflation);
    }
    return inflation.finish();
}

} // namespace opc::zwservices
