#pragma once
// The central directory of a zip file, read and vetted.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "package_file.hpp"

namespace opc::zippackage::detail {

/** The most entries a package may have. */
inline constexpr std::uint64_t kMaxEntries = 65536;

/** One central-directory record, as far as vetting and reading need it. */
struct DirectoryRecord {
    std::uint64_t localOffset{};
    std::uint64_t compressedSize{};
    std::uint64_t size{};
    std::uint64_t dataOffset{}; // where the entry's compressed data starts
    std::uint32_t crc{};
    std::uint16_t method{};
    std::uint16_t flags{};
    // The entry's name in the file's bytes: the Unicode path extra field's where that field is
    // there and holds the CRC of the plain name, else the plain name.
    std::string_view name;
    bool nameIsUtf8{}; // flagged UTF-8, or the Unicode path field's
};

/** A vetted directory: its bytes, and its records in central-directory order, whose names lie in
    those bytes. */
struct Directory {
    std::vector<char> bytes;
    std::vector<DirectoryRecord> records;
};

/** The directory of the zip `file` once it is vetted, read from its end window, its directory and
    its local headers alone: an end record in the end window, not
    truncated, at most kMaxEntries entries, no name that is absolute or holds a ".." segment, a
    backslash or NUL, every local header agreeing with its central record on the name and the
    method, and no two entries whose local headers and data share a byte.
    @throw PackageError Thrown when the file is refused. */
Directory readCentralDirectory(const PackageFile& file);

} // namespace opc::zippackage::detail
