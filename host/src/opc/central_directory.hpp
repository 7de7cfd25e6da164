#pragma once
// The central directory of a zip file read from its raw bytes, so that a package is vetted
// before libzip is trusted with it.

#include <cstdint>
#include <string>
#include <vector>

namespace opc::zippackage::detail {

/** The most entries a package may have. */
inline constexpr std::uint64_t kMaxEntries = 65536;

/** One central-directory record, as far as vetting needs it. */
struct DirectoryRecord {
    std::uint64_t localOffset = 0;
    std::uint64_t compressedSize = 0;
    std::uint64_t size = 0;
};

/** The records of the zip file at `path`, in central-directory order, once it is vetted: not
    truncated, at most kMaxEntries entries, no name that is absolute or holds a ".." segment, a
    backslash or NUL, and no two entries whose local headers and data share a byte.
    @throw PackageError Thrown when the file cannot be read or is refused. */
std::vector<DirectoryRecord> readCentralDirectory(const std::string& path);

} // namespace opc::zippackage::detail
