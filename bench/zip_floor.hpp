#pragma once
// Zip packages for the benchmarks, written and read with zlib alone: the writer makes the trees,
// and the reader is the floor a package reader is held to.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace zwbench {

/** One member of a written package: `text` deflated, or `storedZeros` zero bytes stored. */
struct ZipMember {
    std::string name;
    std::string text;
    std::uint64_t storedZeros = 0;
};

/** Writes a package of `members` in order; stored zeros are left as a hole in the file, so that a
    large member takes no room on the disk. */
void writeZip(const std::filesystem::path& file, const std::vector<ZipMember>& members);

/** The least a package reader can do: one read of the package's last 65,557 bytes, of its
    directory where it lies further back, and of each wanted member's header and data where they
    do; each wanted member inflated raw into a string of its size and its CRC checked. Calls
    `use(name, text)` for each member whose name `wanted` accepts, in the package's order.
    @throw std::runtime_error Thrown when the package is not one that writeZip writes. */
void readZipFloor(const std::filesystem::path& file, const std::function<bool(std::string_view)>& wanted,
                  const std::function<void(std::string_view, std::string&&)>& use);

/** The whole file at `file`, read with one read. */
std::string readWholeFile(const std::filesystem::path& file);

} // namespace zwbench
