#include "central_directory.hpp"

#include <zlib.h>

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

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
constexpr std::uint64_t kZip64Escape = 0xFFFFFFFF;
constexpr std::uint64_t kZip64ExtraId = 0x0001;
constexpr std::uint64_t kUnicodePathExtraId = 0x7075;
// Version (1 byte) and CRC of the plain name (4 bytes) come before the name in that field.
constexpr std::size_t kUnicodePathPrefix = 5;
constexpr std::uint16_t kUtf8NameFlag = 0x800;

// Where the fields of each record lie, from its signature.
namespace end {
constexpr std::size_t kDisk = 4, kDirectoryDisk = 6, kEntries = 10, kDirectorySize = 12,
                      kDirectoryOffset = 16, kCommentSize = 20;
} // namespace end
namespace zip64End {
constexpr std::size_t kEntries = 32, kDirectorySize = 40, kDirectoryOffset = 48;
} // namespace zip64End
namespace locator {
constexpr std::size_t kEndOffset = 8;
} // namespace locator
namespace central {
constexpr std::size_t kFlags = 8, kMethod = 10, kCrc = 16, kCompressedSize = 20, kSize = 24, kNameSize = 28,
                      kExtraSize = 30, kCommentSize = 32, kLocalOffset = 42;
} // namespace central
namespace local {
constexpr std::size_t kMethod = 8, kNameSize = 26, kExtraSize = 28;
} // namespace local

/** The little-endian number of `width` bytes at `at` in `bytes`. */
std::uint64_t le(std::string_view bytes, std::size_t at, std::size_t width) {
    std::uint64_t value = 0;
    for (std::size_t i = width; i-- > 0;) {
        value = (value << 8) | static_cast<unsigned char>(bytes[at + i]);
    }
    return value;
}

/** The zip file, read at given offsets; every refusal names the file. */
class ZipReader {
public:
    explicit ZipReader(const PackageFile& file) : file_(file) {}

    const PackageFile& file() const { return file_; }

    /** `count` bytes at `offset`, valid until the next read; refuses a range that runs past the
        end of the file. */
    std::string_view read(std::uint64_t offset, std::uint64_t count) {
        const std::string_view bytes = file_.read(offset, count, buffer_);
        if (bytes.size() != count) {
            refuse("a record runs past the end of the file");
        }
        return bytes;
    }

    [[noreturn]] void refuse(const std::string& why) const {
        throw PackageError(PackageErrorKind::Refused, "refused package " + file_.path() + ": " + why);
    }

private:
    const PackageFile& file_;
    std::vector<char> buffer_;
};

/** Where the central directory lies. */
struct EndRecord {
    std::uint64_t entries;
    std::uint64_t directoryOffset;
    std::uint64_t directorySize;
    std::uint64_t position;
};

EndRecord readZip64End(ZipReader& file, std::uint64_t locatorPosition) {
    const std::uint64_t position = le(file.read(locatorPosition, kZip64LocatorSize), locator::kEndOffset, 8);
    if (locatorPosition < kZip64EndSize || position > locatorPosition - kZip64EndSize) {
        file.refuse("the zip64 end record is misplaced");
    }
    const std::string_view record = file.read(position, kZip64EndSize);
    if (le(record, 0, 4) != kZip64EndSignature) {
        file.refuse("the zip64 end record is missing");
    }
    return {le(record, zip64End::kEntries, 8), le(record, zip64End::kDirectoryOffset, 8),
            le(record, zip64End::kDirectorySize, 8), position};
}

/** The end record, looked for in the end window alone: a file whose end record lies further back
    is no zip that a zip tool reads, however long it is. */
EndRecord readEndRecord(ZipReader& file) {
    const PackageFile& package = file.file();
    if (package.window().size() < kEndSize) {
        file.refuse("too short to be a zip file");
    }
    // Writers that fill whole blocks, such as bsdtar writing to a pipe, pad the end record's
    // comment with zeros; the comment must reach at least to where that padding begins.
    const std::string_view window = package.window();
    const std::uint64_t base = package.windowOffset();
    // All zeros: npos, one past which is 0.
    const std::size_t padStart = window.find_last_not_of('\0') + 1;
    // The end record is the last one whose comment ends where the padding begins or in it.
    for (std::size_t at = window.size() - kEndSize + 1; at-- > 0;) {
        if (le(window, at, 4) != kEndSignature) {
            continue;
        }
        const std::uint64_t end = at + kEndSize + le(window, at + end::kCommentSize, 2);
        if (end < padStart || end > window.size()) {
            continue;
        }
        if (le(window, at + end::kDisk, 2) != 0 || le(window, at + end::kDirectoryDisk, 2) != 0) {
            file.refuse("the package spans several disks");
        }
        const std::uint64_t position = base + at;
        if (position >= kZip64LocatorSize &&
            le(file.read(position - kZip64LocatorSize, 4), 0, 4) == kZip64LocatorSignature) {
            return readZip64End(file, position - kZip64LocatorSize);
        }
        return {le(window, at + end::kEntries, 2), le(window, at + end::kDirectoryOffset, 4),
                le(window, at + end::kDirectorySize, 4), position};
    }
    file.refuse("no end of central directory record in its last " + std::to_string(window.size()) + " bytes");
}

void vetName(const ZipReader& file, std::uint64_t index, std::string_view name) {
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
    // 0 is the CRC-32 of no bytes, which the bytes continue.
    return static_cast<std::uint32_t>(
        ::crc32_z(0, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

/** Applies the extra fields of a central record: 64-bit sizes and offset, and the Unicode name,
    vetted where it is the one used. */
void applyExtraFields(const ZipReader& file, std::uint64_t index, std::string_view extra,
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
            // Version 1, made for this very name: a name changed since by a tool that knows no
            // Unicode fields keeps its own, and the field is ignored, as zip tools do.
            if (field[0] == 1 && le(field, 1, 4) == crcOf(record.name)) {
                record.name = field.substr(kUnicodePathPrefix);
                record.nameIsUtf8 = true;
                vetName(file, index, record.name);
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

/** The records of `directory`, all those it holds: zip tools read every record there, whatever
    count the end record gives, so more records than counted are read and fewer are refused. */
std::vector<NamedRecord> readRecords(const ZipReader& file, std::string_view directory,
                                     std::uint64_t counted) {
    std::vector<NamedRecord> records;
    for (std::size_t at = 0; at < directory.size();) {
        const std::uint64_t index = records.size();
        if (directory.size() - at < kCentralHeaderSize) {
            file.refuse("the central directory is truncated");
        }
        const std::string_view header = directory.substr(at, kCentralHeaderSize);
        if (le(header, 0, 4) != kCentralHeaderSignature) {
            file.refuse("entry " + std::to_string(index) + " has no central header");
        }
        if (index == kMaxEntries) {
            file.refuse("more than " + std::to_string(kMaxEntries) + " entries");
        }
        const std::uint64_t nameSize = le(header, central::kNameSize, 2);
        const std::uint64_t extraSize = le(header, central::kExtraSize, 2);
        const std::uint64_t recordSize =
            kCentralHeaderSize + nameSize + extraSize + le(header, central::kCommentSize, 2);
        if (directory.size() - at < recordSize) {
            file.refuse("the central directory is truncated");
        }
        const std::string_view name = directory.substr(at + kCentralHeaderSize, nameSize);
        vetName(file, index, name);
        const auto flags = static_cast<std::uint16_t>(le(header, central::kFlags, 2));
        DirectoryRecord record{.localOffset = le(header, central::kLocalOffset, 4),
                               .compressedSize = le(header, central::kCompressedSize, 4),
                               .size = le(header, central::kSize, 4),
                               .crc = static_cast<std::uint32_t>(le(header, central::kCrc, 4)),
                               .method = static_cast<std::uint16_t>(le(header, central::kMethod, 2)),
                               .flags = flags,
                               .name = name,
                               .nameIsUtf8 = (flags & kUtf8NameFlag) != 0};
        applyExtraFields(file, index, directory.substr(at + kCentralHeaderSize + nameSize, extraSize),
                         record);
        records.push_back({record, name});
        at += recordSize;
    }
    if (records.size() < counted) {
        file.refuse("the central directory is truncated");
    }
    return records;
}

/** Checks each local header against its central record and finds where its data starts, reading
    each header once. Refuses entries whose local headers and data share a byte with another
    entry's, the shape of a zip bomb that inflates the same data many times. A trailing data
    descriptor is not counted: it holds no data that is ever inflated. */
void placeData(ZipReader& file, std::vector<NamedRecord>& records, std::uint64_t dataEnd) {
    std::vector<std::pair<std::uint64_t, std::uint64_t>> spans;
    // Whether each local header repeats its central record's name and method.
    std::vector<std::pair<bool, bool>> agrees;
    for (std::size_t index = 0; index < records.size(); ++index) {
        DirectoryRecord& record = records[index].record;
        const std::string entry = "entry " + std::to_string(index);
        if (dataEnd < kLocalHeaderSize || record.localOffset > dataEnd - kLocalHeaderSize) {
            file.refuse(entry + " lies outside the data of the package");
        }
        const std::uint64_t room = dataEnd - record.localOffset;
        const std::string_view name = records[index].name;
        const std::string_view header =
            file.read(record.localOffset, std::min<std::uint64_t>(room, kLocalHeaderSize + name.size()));
        if (le(header, 0, 4) != kLocalHeaderSignature) {
            file.refuse(entry + " has no local header");
        }
        const std::uint64_t nameSize = le(header, local::kNameSize, 2);
        const std::uint64_t headerSize = kLocalHeaderSize + nameSize + le(header, local::kExtraSize, 2);
        if (headerSize > room || record.compressedSize > room - headerSize) {
            file.refuse(entry + " runs into the central directory");
        }
        agrees.emplace_back(nameSize == name.size() && header.substr(kLocalHeaderSize) == name,
                            le(header, local::kMethod, 2) == record.method);
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
        if (!agrees[index].first) {
            file.refuse("entry " + std::to_string(index) + " has another name in its local header");
        }
        if (!agrees[index].second) {
            file.refuse("entry " + std::to_string(index) + " has another method in its local header");
        }
    }
}

} // namespace

Directory readCentralDirectory(const PackageFile& package) {
    ZipReader file(package);
    const EndRecord end = readEndRecord(file);
    if (end.entries > kMaxEntries) {
        file.refuse(std::to_string(end.entries) + " entries, more than " + std::to_string(kMaxEntries));
    }
    if (end.directoryOffset > end.position || end.directorySize > end.position - end.directoryOffset) {
        file.refuse("the central directory runs past its end record");
    }
    Directory directory;
    const std::string_view bytes = file.read(end.directoryOffset, end.directorySize);
    directory.bytes.assign(bytes.begin(), bytes.end());
    std::vector<NamedRecord> named =
        readRecords(file, {directory.bytes.data(), directory.bytes.size()}, end.entries);
    placeData(file, named, end.directoryOffset);
    for (const NamedRecord& record : named) {
        directory.records.push_back(record.record);
    }
    return directory;
}

} // namespace opc::zippackage::detail
