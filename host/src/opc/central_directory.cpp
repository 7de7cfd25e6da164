#include "central_directory.hpp"

#include <zlib.h>

#include <algorithm>
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
constexpr std::uint16_t kUtf8NameFlag = 0x800;

/** The little-endian number of `width` bytes at `at` in `bytes`. */
std::uint64_t le(std::string_view bytes, std::size_t at, std::size_t width) {
    std::uint64_t value = 0;
    for (std::size_t i = width; i-- > 0;) {
        value = (value << 8) | static_cast<unsigned char>(bytes[at + i]);
    }
    return value;
}

/** The zip file's bytes, read at given offsets; every failure names the file. */
class RawFile {
public:
    RawFile(std::string_view bytes, const std::string& path) : bytes_(bytes), path_(path) {}

    std::uint64_t size() const { return bytes_.size(); }

    /** `count` bytes at `offset`; refuses a range that runs past the end of the file. */
    std::string_view read(std::uint64_t offset, std::uint64_t count) const {
        if (offset > size() || count > size() - offset) {
            refuse("a record runs past the end of the file");
        }
        return bytes_.substr(offset, count);
    }

    [[noreturn]] void refuse(const std::string& why) const {
        throw PackageError(PackageErrorKind::Refused, "refused package " + path_ + ": " + why);
    }

private:
    std::string_view bytes_;
    const std::string& path_;
};

/** Where the central directory lies, and where it must end. */
struct EndRecord {
    std::uint64_t entries = 0;
    std::uint64_t directoryOffset = 0;
    std::uint64_t directorySize = 0;
    std::uint64_t position = 0;
    std::uint64_t end = 0; // just past the end record's comment
};

EndRecord readZip64End(const RawFile& file, std::uint64_t locatorPosition, std::uint64_t end) {
    const std::string_view locator = file.read(locatorPosition, kZip64LocatorSize);
    const std::uint64_t position = le(locator, 8, 8);
    if (position > locatorPosition || locatorPosition - position < kZip64EndSize) {
        file.refuse("the zip64 end record is misplaced");
    }
    const std::string_view record = file.read(position, kZip64EndSize);
    if (le(record, 0, 4) != kZip64EndSignature) {
        file.refuse("the zip64 end record is missing");
    }
    return {le(record, 32, 8), le(record, 48, 8), le(record, 40, 8), position, end};
}

EndRecord readEndRecord(const RawFile& file) {
    if (file.size() < kEndSize) {
        file.refuse("too short to be a zip file");
    }
    // Writers that fill whole blocks, such as bsdtar writing to a pipe, pad the end record's
    // comment with zeros; the comment must reach at least to where that padding begins.
    const std::string_view all = file.read(0, file.size());
    const std::size_t lastByte = all.find_last_not_of('\0');
    const std::uint64_t padStart = lastByte == std::string_view::npos ? 0 : lastByte + 1;
    const std::uint64_t searchStart =
        padStart > kEndSize + kMaxCommentSize ? padStart - kEndSize - kMaxCommentSize : 0;
    // The end record is the last one whose comment ends where the padding begins or in it.
    for (std::uint64_t at = file.size() - kEndSize + 1; at-- > searchStart;) {
        if (le(all, at, 4) != kEndSignature) {
            continue;
        }
        const std::uint64_t end = at + kEndSize + le(all, at + 20, 2);
        if (end < padStart || end > file.size()) {
            continue;
        }
        if (le(all, at + 4, 2) != 0 || le(all, at + 6, 2) != 0) {
            file.refuse("the package spans several disks");
        }
        if (at >= kZip64LocatorSize && le(all, at - kZip64LocatorSize, 4) == kZip64LocatorSignature) {
            return readZip64End(file, at - kZip64LocatorSize, end);
        }
        return {le(all, at + 10, 2), le(all, at + 16, 4), le(all, at + 12, 4), at, end};
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

std::uint32_t crcOf(std::string_view bytes) {
    return static_cast<std::uint32_t>(
        ::crc32_z(::crc32_z(0, nullptr, 0), reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

/** Applies the extra fields of a central record: 64-bit sizes and offset, and the Unicode name,
    which is vetted whether or not it is the one used. */
void applyExtraFields(const RawFile& file, std::uint64_t index, std::string_view extra,
                      DirectoryRecord& record) {
    // A field that overruns the extra data ends the walk.
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
            const std::string_view unicodeName = field.substr(kUnicodePathPrefix);
            vetName(file, index, unicodeName);
            // Version 1, made for this very name: a name changed since by a tool that knows no
            // Unicode fields keeps its own.
            if (field[0] == 1 && le(field, 1, 4) == crcOf(record.name)) {
                record.name = unicodeName;
                record.nameIsUtf8 = true;
            }
        }
        at += 4 + length;
    }
}

/** A central record with its name, which its local header must repeat. */
struct NamedRecord {
    DirectoryRecord record;
    std::string_view name;
};

std::vector<NamedRecord> readRecords(const RawFile& file, const EndRecord& end) {
    std::vector<NamedRecord> records;
    records.reserve(end.entries);
    std::uint64_t at = end.directoryOffset;
    const std::uint64_t stop = end.directoryOffset + end.directorySize;
    for (std::uint64_t index = 0; index < end.entries; ++index) {
        if (stop - at < kCentralHeaderSize) {
            file.refuse("the central directory is truncated");
        }
        const std::string_view header = file.read(at, kCentralHeaderSize);
        if (le(header, 0, 4) != kCentralHeaderSignature) {
            file.refuse("entry " + std::to_string(index) + " has no central header");
        }
        const std::uint64_t nameSize = le(header, 28, 2);
        const std::uint64_t extraSize = le(header, 30, 2);
        const std::uint64_t recordSize = kCentralHeaderSize + nameSize + extraSize + le(header, 32, 2);
        if (stop - at < recordSize) {
            file.refuse("the central directory is truncated");
        }
        const std::string_view name = file.read(at + kCentralHeaderSize, nameSize);
        vetName(file, index, name);
        const auto flags = static_cast<std::uint16_t>(le(header, 8, 2));
        DirectoryRecord record{.localOffset = le(header, 42, 4),
                               .compressedSize = le(header, 20, 4),
                               .size = le(header, 24, 4),
                               .crc = static_cast<std::uint32_t>(le(header, 16, 4)),
                               .method = static_cast<std::uint16_t>(le(header, 10, 2)),
                               .flags = flags,
                               .name = name,
                               .nameIsUtf8 = (flags & kUtf8NameFlag) != 0};
        applyExtraFields(file, index, file.read(at + kCentralHeaderSize + nameSize, extraSize), record);
        records.push_back({record, name});
        at += recordSize;
    }
    return records;
}

/** Checks each local header against its central record and finds where its data starts. Refuses
    entries whose local headers and data share a byte with another entry's, the shape of a zip
    bomb that inflates the same data many times. A trailing data descriptor is not counted: it
    holds no data that is ever inflated. */
void placeData(const RawFile& file, std::vector<NamedRecord>& records, std::uint64_t dataEnd) {
    std::vector<std::pair<std::uint64_t, std::uint64_t>> spans;
    spans.reserve(records.size());
    for (std::size_t index = 0; index < records.size(); ++index) {
        DirectoryRecord& record = records[index].record;
        const std::string entry = "entry " + std::to_string(index);
        if (record.localOffset > dataEnd || dataEnd - record.localOffset < kLocalHeaderSize) {
            file.refuse(entry + " lies outside the data of the package");
        }
        const std::string_view header = file.read(record.localOffset, kLocalHeaderSize);
        if (le(header, 0, 4) != kLocalHeaderSignature) {
            file.refuse(entry + " has no local header");
        }
        const std::uint64_t headerSize = kLocalHeaderSize + le(header, 26, 2) + le(header, 28, 2);
        const std::uint64_t room = dataEnd - record.localOffset;
        if (headerSize > room || record.compressedSize > room - headerSize) {
            file.refuse(entry + " runs into the central directory");
        }
        record.dataOffset = record.localOffset + headerSize;
        spans.emplace_back(record.localOffset, record.dataOffset + record.compressedSize);
    }
    std::sort(spans.begin(), spans.end());
    for (std::size_t k = 1; k < spans.size(); ++k) {
        if (spans[k].first < spans[k - 1].second) {
            file.refuse("two entries overlap at offset " + std::to_string(spans[k].first));
        }
    }
    // The name and method come from the central record and the data offset from the local
    // header: both headers must describe the same entry for the vetting to hold.
    for (std::size_t index = 0; index < records.size(); ++index) {
        const DirectoryRecord& record = records[index].record;
        const std::string_view header = file.read(record.localOffset, kLocalHeaderSize);
        if (file.read(record.localOffset + kLocalHeaderSize, le(header, 26, 2)) != records[index].name) {
            file.refuse("entry " + std::to_string(index) + " has another name in its local header");
        }
        if (le(header, 8, 2) != record.method) {
            file.refuse("entry " + std::to_string(index) + " has another method in its local header");
        }
    }
}

} // namespace

Directory readCentralDirectory(std::string_view bytes, const std::string& path) {
    const RawFile file(bytes, path);
    const EndRecord end = readEndRecord(file);
    if (end.entries > kMaxEntries) {
        file.refuse(std::to_string(end.entries) + " entries, more than " + std::to_string(kMaxEntries));
    }
    if (end.directoryOffset > end.position || end.directorySize > end.position - end.directoryOffset) {
        file.refuse("the central directory runs past its end record");
    }
    std::vector<NamedRecord> named = readRecords(file, end);
    placeData(file, named, end.directoryOffset);
    Directory directory{{}, end.end};
    directory.records.reserve(named.size());
    for (const NamedRecord& record : named) {
        directory.records.push_back(record.record);
    }
    return directory;
}

} // namespace opc::zippackage::detail
