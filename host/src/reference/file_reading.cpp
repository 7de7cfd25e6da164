// Reading a loose file of the reference service, bounded by the read limit.

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "native_name.hpp"
#include "reference/docparser/doc_resource_parser.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/regular_file.hpp"
#include "zwhost/settings.hpp"
#include "zwhost/skip_watch.hpp"
#include "zwhost/system_calls.hpp"

namespace reference::docparser {
namespace {

namespace fs = std::filesystem;

// One read asks for this much, into a buffer on the stack.
constexpr std::size_t kChunk = std::size_t{64} << 10;

[[noreturn]] void fail(const char* what, const fs::path& path, int error) {
    throw fs::filesystem_error(what, path, std::error_code(error, std::generic_category()));
}

std::string readBounded(const fs::path& path, std::uint64_t limit) {
    const zwhost::RegularFile file(path.c_str());
    if (file.failure() != nullptr) {
        fail(file.failure(), path, file.error());
    }
    const std::uint64_t declared = file.size();
    if (declared > limit) {
        fail("file exceeds the read limit", path, EFBIG);
    }
    // The size only sizes the allocation and the reads: the file may change while it is read.
    // A file that fits the buffer on the stack is read there and appended whole, allocating
    // once, so that none of its bytes is zero-filled first; a larger one is read in place in one
    // call, as the zero-filling of its string costs less than the many calls a stack buffer
    // would take. A file that grew since is read up to one buffer past the limit.
    std::string bytes;
    if (declared > kChunk) {
        bytes.resize(static_cast<std::size_t>(declared));
        std::size_t filled = 0;
        while (filled < bytes.size()) {
            const ssize_t got = zwhost::sys::read(file.get(), bytes.data() + filled, bytes.size() - filled);
            if (got < 0) {
                fail("cannot read", path, errno);
            }
            if (got == 0) {
                break;
            }
            filled += static_cast<std::size_t>(got);
        }
        bytes.resize(filled);
    }
    char chunk[kChunk];
    for (;;) {
        const ssize_t got = zwhost::sys::read(file.get(), chunk, sizeof chunk);
        if (got < 0) {
            fail("cannot read", path, errno);
        }
        bytes.append(chunk, static_cast<std::size_t>(got));
        if (bytes.size() > limit) {
            fail("file exceeds the read limit", path, EFBIG);
        }
        // A short read of a regular file is its end, once the size it declared has been read; a
        // file of the kernel that declares no size is read until a read gives nothing.
        if (got == 0 ||
            (declared > 0 && bytes.size() >= declared && static_cast<std::size_t>(got) < sizeof chunk)) {
            return bytes;
        }
    }
}

} // namespace

std::string DocResourceParser::openAndReadFile(const ProductPathData& product) {
    try {
        zwhost::fault::point("DocResourceParser::openAndReadFile");
        const fs::path path(zwhost::reference::detail::toNative(product.getFullPath()));
        return readBounded(path, zwhost::settings::readLimit());
    } catch (...) {
        zwhost::reference::SkipWatch::giveUp();
        throw;
    }
}

} // namespace reference::docparser
