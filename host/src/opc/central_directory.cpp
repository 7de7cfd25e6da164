#include "central_directory.hpp"

#include <algorithm>
#include <fstream>
#include <string_view>
#include <utility>

#include "opc/package_error.hpp"

namespace opc::zippackage::detail {
namespace {

constexpr std::uint64_t kLocalHeaderSignature = 0x04034b50;
constexpr std::uint64_t kCentralHeaderSignature = 0x02014b50;
constexpr std::uint64_t kEndSignature = 0x06054b50;
constexpr std::uint64_t kZip64EndSignature = 0x06064b50;
constexpr std::uint64_t kZip64LocatorSignature = 0x07064b50;
constexpr std::uint64_t kLocalHeaderSize = 30;
constexpr std::uint64_t kCentralHeaderSize = 46;
constexpr std::uint64_t kEndSize = 22;
constexpr std::uint64_t kZip64EndSize = 56;
constexpr std::uint64_t kZip64LocatorSize = 20;
constexpr std::uint64_t kMaxCommentSize = 0xFFFF;
constexpr std::uint64_t kZip64Escape = 0xFFFFFFFF;
constexpr std::uint64_t kZip64ExtraId = 0x0001;
constexpr std::uint64_t kUnicodePathExtraId = 0x7075;
// Version (1 byte) and CRC of the plain name (4 bytes) come before the name in that field.
constexpr std::size_t kUnicodePathPrefix = 5;

/** The little-endian number of `width` bytes at `at` in `bytes`. */
std::uint64_t le(std::string_view bytes, std::size_t at, std::size_t width) {
    std::uint64_t value = 0;
    for (std::size_t i = width; i-- > 0;) {
        value = (value << 8) | static_cast<unsigned char>(bytes[at + i]);
    }
    return value;
}

/** The zip file, read at given offsets; every failure names the file. */
class RawFile {
public:
    explicit RawFile(const std::string& path) : path_(path), in_(path, std::ios::binary) {
        in_.seekg(0, std::ios::end);
        if (!in_) {
            throw PackageError("cannot open package " + path_);
        }
        size_ = static_cast<std::uint64_t>(in_.tellg());
        position_ = size_;
    }

    std::uint64_t size() const { return size_; }

    /** `count` bytes at `offset`; refuses a range that runs past the end of the file. */
    std::string read(std::uint64_t offset, std::uint64_t count) {
        if (offset > size_ || count > size_ - offset) {
            refuse("a record runs past the end of the file");
        }
        std::string bytes(count, '\0');
        // A seek drops the stream's buffer, so the directory, read in order, is read without one.
        if (offset != position_) {
            in_.seekg(static_cast<std::streamoff>(offset));
        }
        in_.read(bytes.data(), static_cast<std::streamsize>(count));
        if (!in_) {
            throw PackageError("cannot read package " + path_);
        }
        position_ = offset + count;
        return bytes;
    }

    [[noreturn]] void refuse(const std::string& why) const {
        throw PackageError("refused package " + path_ + ": " + why);
    }

private:
    std::string path_;
    std::ifstream in_;
    std::uint64_t size_ = 0;
    std::uint64_t position_ = 0;
};

/** Where the central directory lies, and where it must end. */
struct EndRecord {
    std::uint64_t entries = 0;
    std::uint64_t directoryOffset = 0;
    std::uint64_t directorySize = 0;
    std::uint64_t position = 0;
};

EndRecord readZip64End(RawFile& file, std::uint64_t locatorPosition) {
    const std::string locator = file.read(locatorPosition, kZip64LocatorSize);
    const std::uint64_t position = le(locator, 8, 8);
    if (position > locatorPosition || locatorPosition - position < kZip64EndSize) {
        file.refuse("the zip64 end record is misplaced");
    }
    const std::string record = file.read(position, kZip64EndSize);
    if (le(record, 0, 4) != kZip64EndSignature) {
        file.refuse("the zip64 end record is missing");
    }
    return {le(record, 32, 8), le(record, 48, 8), le(record, 40, 8), position};
}

EndRecord readEndRecord(RawFile& file) {
    if (file.size() < kEndSize) {
        file.refuse("too short to be a zip file");
    }
    const std::uint64_t tailSize = std::min(file.size(), kEndSize + kMaxCommentSize);
    const std::uint64_t tailStart = file.size() - tailSize;
    const std::string tail = file.read(tailStart, tailSize);
    // The end record is the last one whose comment reaches exactly to the end of the file.
    for (std::size_t at = tailSize - kEndSize + 1; at-- > 0;) {
        if (le(tail, at, 4) != kEndSignature || at + kEndSize + le(tail, at + 20, 2) != tailSize) {
            continue;
        }
        if (le(tail, at + 4, 2) != 0 || le(tail, at + 6, 2) != 0) {
            file.refuse("the package spans several disks");
        }
        const std::uint64_t position = tailStart + at;
        if (position >= kZip64LocatorSize &&
            le(file.read(position - kZip64LocatorSize, 4), 0, 4) == kZip64LocatorSignature) {
            return readZip64End(file, position - kZip64LocatorSize);
        }
        return {le(tail, at + 10, 2), le(tail, at + 16, 4), le(tail, at + 12, 4), position};
    }
    file.refuse("no end of central directory record");
}

void vetName(const RawFile& file, std::uint64_t index, std::string_view name) {
    const std::string entry = "entry " + std::to_string(index);
    if (name.find('\0') != std::string_view::npos) {
        file.refuse(entry + " has a NUL in its name");
    }
    if (name.find('\\') != std::string_view::npos) {
        file.refuse(entry + " has a backslash in its name");
    }
    if (!name.empty() && name.front() == '/') {
        file.refuse(entry + " has an absolute name");
    }
    for (std::size_t start = 0;;) {
        const std::size_t slash = name.find('/', start);
        if (name.substr(start, slash - start) == "..") {
            file.refuse(entry + " has a \"..\" segment in its name");
        }
        if (slash == std::string_view::npos) {
            return;
        }
        start = slash + 1;
    }
}

/** Applies the extra fields of a central record: 64-bit sizes and offset, and the Unicode name,
    which libzip may use instead of the plain one and so is vetted too. */
void applyExtraFields(const RawFile& file, std::uint64_t index, std::string_view extra,
                      DirectoryRecord& record) {
    // A field that overruns the extra data ends the walk; libzip refuses such a record at open.
    for (std::size_t at = 0; at + 4 <= extra.size();) {
        const std::uint64_t id = le(extra, at, 2);
        const std::size_t length = le(extra, at + 2, 2);
        if (at + 4 + length > extra.size()) {
            return;
        }
        const std::string_view field = extra.substr(at + 4, length);
        if (id == kZip64ExtraId) {
            std::size_t next = 0;
            for (std::uint64_t* value : {&record.size, &record.compressedSize, &record.localOffset}) {
                if (*value != kZip64Escape) {
                    continue;
                }
                if (next + 8 > field.size()) {
                    file.refuse("entry " + std::to_string(index) + " has a short zip64 field");
                }
                *value = le(field, next, 8);
                next += 8;
            }
        } else if (id == kUnicodePathExtraId && field.size() >= kUnicodePathPrefix) {
            vetName(file, index, field.substr(kUnicodePathPrefix));
        }
        at += 4 + length;
    }
}

std::vector<DirectoryRecord> readRecords(RawFile& file, const EndRecord& end) {
    std::vector<DirectoryRecord> records;
    records.reserve(end.entries);
    std::uint64_t at = end.directoryOffset;
    const std::uint64_t stop = end.directoryOffset + end.directorySize;
    for (std::uint64_t index = 0; index < end.entries; ++index) {
        if (stop - at < kCentralHeaderSize) {
            file.refuse("the central directory is truncated");
        }
        const std::string header = file.read(at, kCentralHeaderSize);
        if (le(header, 0, 4) != kCentralHeaderSignature) {
            file.refuse("entry " + std::to_string(index) + " has no central header");
        }
        const std::uint64_t nameSize = le(header, 28, 2);
        const std::uint64_t extraSize = le(header, 30, 2);
        const std::uint64_t recordSize = kCentralHeaderSize + nameSize + extraSize + le(header, 32, 2);
        if (stop - at < recordSize) {
            file.refuse("the central directory is truncated");
        }
        vetName(file, index, file.read(at + kCentralHeaderSize, nameSize));
        DirectoryRecord record{le(header, 42, 4), le(header, 20, 4), le(header, 24, 4)};
        applyExtraFields(file, index, file.read(at + kCentralHeaderSize + nameSize, extraSize), record);
        records.push_back(record);
        at += recordSize;
    }
    return records;
}

/** Refuses entries whose local header and data share a byte with another entry's, the shape of
    a zip bomb that inflates the same data many times. A trailing data descriptor is not counted:
    it holds no data that is ever inflated. */
void refuseOverlaps(RawFile& file, const std::vector<DirectoryRecord>& records, std::uint64_t dataEnd) {
    std::vector<std::pair<std::uint64_t, std::uint64_t>> spans;
    spans.reserve(records.size());
    for (std::size_t index = 0; index < records.size(); ++index) {
        const DirectoryRecord& record = records[index];
        const std::string entry = "entry " + std::to_string(index);
        if (record.localOffset > dataEnd || dataEnd - record.localOffset < kLocalHeaderSize) {
            file.refuse(entry + " lies outside the data of the package");
        }
        const std::string header = file.read(record.localOffset, kLocalHeaderSize);
        if (le(header, 0, 4) != kLocalHeaderSignature) {
            file.refuse(entry + " has no local header");
        }
        const std::uint64_t headerSize = kLocalHeaderSize + le(header, 26, 2) + le(header, 28, 2);
        const std::uint64_t room = dataEnd - record.localOffset;
        if (headerSize > room || record.compressedSize > room - headerSize) {
            file.refuse(entry + " runs into the central directory");
        }
        spans.emplace_back(record.localOffset, record.localOffset + headerSize + record.compressedSize);
    }
    std::sort(spans.begin(), spans.end());
    for (std::size_t k = 1; k < spans.size(); ++k) {
        if (spans[k].first < spans[k - 1].second) {
            file.refuse("two entries overlap at offset " + std::to_string(spans[k].first));
        }
    }
}

} // namespace

std::vector<DirectoryRecord> readCentralDirectory(const std::string& path) {
    RawFile file(path);
    const EndRecord end = readEndRecord(file);
    if (end.entries > kMaxEntries) {
        file.refuse(std::to_string(end.entries) + " entries, more than " + std::to_string(kMaxEntries));
    }
    if (end.directoryOffset > end.position || end.directorySize > end.position - end.directoryOffset) {
        file.refuse("the central directory runs past its end record");
    }
    std::vector<DirectoryRecord> records = readRecords(file, end);
    refuseOverlaps(file, records, end.directoryOffset);
    return records;
}

} // namespace opc::zippackage::detail
