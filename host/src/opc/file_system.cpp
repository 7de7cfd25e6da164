#include "opc/zwservices/file_system.hpp"

#include <zlib.h>

#include <algorithm>
#include <array>
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

// The decoders inflate this much at a time, on the stack; the text grows by appending it.
constexpr std::size_t kChunk = std::size_t{64} << 10;
// The decoders' state may reach this; xz -9 needs 65 MiB.
constexpr std::uint64_t kDecoderMemory = std::uint64_t{72} << 20;

// What the bytes 0x80 to 0xFF stand for in code page 437, the encoding of zip names that are
// neither flagged nor valid UTF-8.
// clang-format off
constexpr std::array<char16_t, 128> kCp437High = {
    0x00C7, 0x00FC, 0x00E9, 0x00E2, 0x00E4, 0x00E0, 0x00E5, 0x00E7,
    0x00EA, 0x00EB, 0x00E8, 0x00EF, 0x00EE, 0x00EC, 0x00C4, 0x00C5,
    0x00C9, 0x00E6, 0x00C6, 0x00F4, 0x00F6, 0x00F2, 0x00FB, 0x00F9,
    0x00FF, 0x00D6, 0x00DC, 0x00A2, 0x00A3, 0x00A5, 0x20A7, 0x0192,
    0x00E1, 0x00ED, 0x00F3, 0x00FA, 0x00F1, 0x00D1, 0x00AA, 0x00BA,
    0x00BF, 0x2310, 0x00AC, 0x00BD, 0x00BC, 0x00A1, 0x00AB, 0x00BB,
    0x2591, 0x2592, 0x2593, 0x2502, 0x2524, 0x2561, 0x2562, 0x2556,
    0x2555, 0x2563, 0x2551, 0x2557, 0x255D, 0x255C, 0x255B, 0x2510,
    0x2514, 0x2534, 0x252C, 0x251C, 0x2500, 0x253C, 0x255E, 0x255F,
    0x255A, 0x2554, 0x2569, 0x2566, 0x2560, 0x2550, 0x256C, 0x2567,
    0x2568, 0x2564, 0x2565, 0x2559, 0x2558, 0x2552, 0x2553, 0x256B,
    0x256A, 0x2518, 0x250C, 0x2588, 0x2584, 0x258C, 0x2590, 0x2580,
    0x03B1, 0x00DF, 0x0393, 0x03C0, 0x03A3, 0x03C3, 0x00B5, 0x03C4,
    0x03A6, 0x0398, 0x03A9, 0x03B4, 0x221E, 0x03C6, 0x03B5, 0x2229,
    0x2261, 0x00B1, 0x2265, 0x2264, 0x2320, 0x2321, 0x00F7, 0x2248,
    0x00B0, 0x2219, 0x00B7, 0x221A, 0x207F, 0x00B2, 0x25A0, 0x00A0,
};
// clang-format on

/** The name of `record` in UTF-16: a name flagged UTF-8 must be UTF-8, another is taken as UTF-8
    where it is valid UTF-8 and as code page 437 where it is not. */
std::u16string entryName(const zippackage::detail::DirectoryRecord& record) {
    try {
        return zwhost::unicode::utf8ToUtf16(record.name);
    } catch (const zwhost::unicode::MalformedText&) {
        if (record.nameIsUtf8) {
            throw PackageError(PackageErrorKind::Refused,
                               "entry name is not UTF-8: " + std::string(record.name));
        }
    }
    std::u16string name;
    for (const char byte : record.name) {
        const auto unit = static_cast<unsigned char>(byte);
        name.push_back(unit < 0x80 ? char16_t{unit} : kCp437High[unit - 0x80]);
    }
    return name;
}

std::string entryText(const FileSystemEntry::Info& info) {
    return "entry " + std::to_string(info.index);
}

const Contents& openContents(const model::Package& package) {
    const auto* zip = dynamic_cast<const zippackage::ZipPhysicalPackage*>(&package.physical());
    if (zip == nullptr || !zip->isOpen()) {
        throw PackageError(PackageErrorKind::Misuse, "the package is not an open zip package");
    }
    return *zip->contents();
}

/** The file entries of the package, of each name the first, and the later ones of a name. */
struct Listing {
    std::vector<FileSystemEntry> leaves;
    std::vector<FileSystemManager::SkippedEntry> skipped;
};

Listing listEntries(const Contents& contents) {
    const std::vector<zippackage::detail::DirectoryRecord>& records = contents.directory.records;
    Listing listing;
    // Names are compared as read: a code page 437 name and its UTF-8 twin are one name.
    std::unordered_set<std::u16string> seen;
    for (std::size_t index = 0; index < records.size(); ++index) {
        const zippackage::detail::DirectoryRecord& record = records[index];
        if (!record.name.empty() && record.name.back() == '/') {
            continue;
        }
        std::u16string name = entryName(record);
        if (seen.contains(name)) {
            listing.skipped.push_back({std::move(name), FileSystemManager::SkippedEntry::Why::DuplicateName,
                                       "a second entry of this name; the first one is read"});
            continue;
        }
        listing.leaves.emplace_back(std::make_shared<const FileSystemEntry::Info>(
            FileSystemEntry::Info{index, name, record.size, record.crc}));
        seen.insert(std::move(name));
    }
    return listing;
}

PackageError budgetSpent(const FileSystemEntry::Info& info, std::uint64_t budget) {
    return PackageError(PackageErrorKind::OverBudget,
                        entryText(info) + " is not read: the package has inflated its budget of " +
                            std::to_string(budget) + " bytes");
}

/** The text of one entry as it is inflated, held to the read limit, the package's budget and a
    sane inflation ratio, its CRC taken as it grows. */
class CheckedText {
public:
    CheckedText(const FileSystemEntry::Info& info, const zippackage::detail::DirectoryRecord& record,
                std::uint64_t limit, std::uint64_t budget, std::uint64_t& inflated)
        : info_(info), record_(record), limit_(limit), budget_(budget), inflated_(inflated) {}

    void take(const char* data, std::size_t size) {
        if (size == 0) {
            return;
        }
        const std::uint64_t total = text_.size() + size;
        if (total > limit_ || total > info_.size) {
            throw PackageError(info_.size > limit_ ? PackageErrorKind::OverReadLimit
                                                   : PackageErrorKind::DamagedEntry,
                               entryText(info_) + " is " +
                                   (info_.size > limit_
                                        ? "larger than the read limit of " + std::to_string(limit_) + " bytes"
                                        : std::string("larger than it declares")));
        }
        if (total > FileSystemManager::kRatioFloor &&
            total / FileSystemManager::kMaxRatio > record_.compressedSize) {
            throw PackageError(PackageErrorKind::DamagedEntry,
                               entryText(info_) + " inflates more than " +
                                   std::to_string(FileSystemManager::kMaxRatio) +
                                   " times its compressed size");
        }
        // readEntry takes no entry once the budget is spent, so the room left never wraps.
        if (size > budget_ - inflated_) {
            inflated_ = budget_;
            throw budgetSpent(info_, budget_);
        }
        inflated_ += size;
        crc_ = ::crc32_z(crc_, reinterpret_cast<const Bytef*>(data), size);
        text_.append(data, size);
    }

    std::string finish() {
        if (text_.size() != info_.size) {
            throw PackageError(PackageErrorKind::DamagedEntry,
                               entryText(info_) + " is smaller than it declares");
        }
        if (crc_ != info_.crc) {
            throw PackageError(PackageErrorKind::DamagedEntry,
                               "cannot read " + entryText(info_) + ": CRC error");
        }
        return std::move(text_);
    }

private:
    const FileSystemEntry::Info& info_;
    const zippackage::detail::DirectoryRecord& record_;
    std::uint64_t limit_;
    std::uint64_t budget_;
    std::uint64_t& inflated_;
    std::string text_;
    uLong crc_ = 0; // the CRC-32 of no bytes
};

/** Reads the entry's data alone and hands it to the decoder of its method, which feeds `text`. */
void decodeEntry(const Contents& contents, const zippackage::detail::DirectoryRecord& record,
                 const FileSystemEntry::Info& info, std::uint64_t limit, CheckedText& text) {
    if ((record.flags & 1U) != 0) {
        throw PackageError(PackageErrorKind::Encrypted,
                           "cannot open " + entryText(info) + ": it is encrypted");
    }
    // Every method stores incompressible data in little more than its size; more than that is
    // damage, and is not read.
    const std::uint64_t overhead = info.size / 8 + kChunk;
    if (record.compressedSize - std::min(record.compressedSize, overhead) > info.size) {
        throw PackageError(PackageErrorKind::DamagedEntry, "cannot read " + entryText(info) + ": it holds " +
                                                               std::to_string(record.compressedSize) +
                                                               " compressed bytes for " +
                                                               std::to_string(info.size) + " bytes of text");
    }
    std::vector<char> buffer;
    const std::string_view data = contents.file.read(record.dataOffset, record.compressedSize, buffer);
    if (data.size() != record.compressedSize) {
        throw PackageError(PackageErrorKind::DamagedEntry,
                           "cannot read " + entryText(info) + ": the package file ends inside it");
    }
    const std::uint64_t memory = limit + std::min(kChunk, UINT64_MAX - limit);
    try {
        detail::decode(record.method, data, record.size, std::max(memory, kDecoderMemory),
                       [&](const char* bytes, std::size_t size) { text.take(bytes, size); });
    } catch (const PackageError&) {
        throw;
    } catch (const std::runtime_error& error) {
        throw PackageError(PackageErrorKind::DamagedEntry,
                           "cannot read " + entryText(info) + ": " + error.what());
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
    return listEntries(openContents(package_)).skipped;
}

std::vector<FileSystemEntry> FileSystemManager::getAllLeafs() const {
    zwhost::fault::point("FileSystemManager::getAllLeafs");
    return listEntries(openContents(package_)).leaves;
}

std::string FileSystemManager::readEntry(const FileSystemEntry& entry, std::uint64_t limit,
                                         std::uint64_t budget) const {
    zwhost::fault::point("FileSystemManager::readEntry");
    const Contents& contents = openContents(package_);
    const FileSystemEntry::Info& info = entry.info();
    const zippackage::detail::DirectoryRecord& record = contents.directory.records.at(info.index);
    if (!detail::isSupported(record.method)) {
        throw PackageError(PackageErrorKind::UnsupportedMethod,
                           "compression method " + std::to_string(record.method) + " (" +
                               detail::methodName(record.method) + ") is not supported");
    }
    if (info.size > limit) {
        throw PackageError(PackageErrorKind::OverReadLimit, entryText(info) +
                                                                " is larger than the read limit of " +
                                                                std::to_string(limit) + " bytes");
    }
    // Checked before a byte is read, so that a spent package costs nothing more.
    if (inflated_ >= budget && info.size > 0) {
        throw budgetSpent(info, budget);
    }
    CheckedText text(info, record, limit, budget, inflated_);
    decodeEntry(contents, record, info, limit, text);
    return text.finish();
}

} // namespace opc::zwservices
