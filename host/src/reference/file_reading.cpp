// Reading a loose file of the reference service, bounded by the read limit.

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "native_name.hpp"
#include "reference/docparser/doc_resource_parser.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/regular_file.hpp"
#include "zwhost/settings.hpp"

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
    // The size only sizes the allocation: the file may change while it is read. Bytes are read
    // into a buffer on the stack and appended, so that none is zero-filled before it is written,
    // and a file that grew since is read up to one buffer past the limit.
    std::string bytes;
    bytes.reserve(static_cast<std::size_t>(declared));
    char chunk[kChunk];
    for (;;) {
        const ssize_t got = ::read(file.get(), chunk, sizeof chunk);
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            fail("cannot read", path, errno);
        }
        if (got == 0) {
            return bytes;
        }
        bytes.append(chunk, static_cast<std::size_t>(got));
        if (bytes.size() > limit) {
            fail("file exceeds the read limit", path, EFBIG);
        }
    }
}

} // namespace

std::string DocResourceParser::openAndReadFile(const ProductPathData& product) {
    zwhost::fault::point("DocResourceParser::openAndReadFile");
    const fs::path path(zwhost::reference::detail::toNative(product.getFullPath()));
    return readBounded(path, zwhost::settings::readLimit());
}

} // namespace reference::docparser
