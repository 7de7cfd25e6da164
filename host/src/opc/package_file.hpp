#pragma once
// A zip file kept open and read at offsets: its last bytes once, anything else only when asked for.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "zwhost/regular_file.hpp"

namespace opc::zippackage::detail {

/** The most bytes at the end of a zip file that can hold its end record: the record and the
    longest comment it may carry. */
inline constexpr std::uint64_t kEndWindow = 22 + 0xFFFF;

class PackageFile {
public:
    /** Opens the regular file `path` and reads its last kEndWindow bytes.
        @throw PackageError Thrown (Unreadable) when it cannot be opened or read. */
    explicit PackageFile(std::string path);

    const std::string& path() const { return path_; }
    /** The file's size when it was opened. */
    std::uint64_t size() const { return size_; }
    /** Where the end window begins, and its bytes. */
    std::uint64_t windowOffset() const { return size_ - window_.size(); }
    std::string_view window() const { return window_; }

    /** The `count` bytes at `offset`: a view into the end window where they lie in it, else read
        into `buffer`. Shorter than asked where the file ends first (it may have shrunk).
        @throw PackageError Thrown (Unreadable) when the read fails. */
    std::string_view read(std::uint64_t offset, std::uint64_t count, std::vector<char>& buffer) const;

private:
    std::size_t readAt(std::uint64_t offset, char* into, std::size_t count) const;

    std::string path_;
    zwhost::RegularFile file_;
    std::uint64_t size_ = 0;
    std::string window_;
};

} // namespace opc::zippackage::detail
