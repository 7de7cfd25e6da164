// Reading a loose file of the reference service, bounded by the read limit.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "native_name.hpp"
#include "reference/docparser/doc_resource_parser.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/settings.hpp"

namespace reference::docparser {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kChunk = std::size_t{64} << 10;

[[noreturn]] void fail(const char* what, const fs::path& path, int error) {
    throw fs::filesystem_error(what, path, std::error_code(error, std::generic_category()));
}

class Descriptor {
public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor() {
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return fd_; }

private:
    int fd_;
};

std::string readBounded(const fs::path& path, std::uint64_t limit) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.get() < 0) {
        fail("cannot open", path, errno);
    }
    struct stat info {};
    if (::fstat(file.get(), &info) != 0) {
        fail("cannot inspect", path, errno);
    }
    const auto declared = static_cast<std::uint64_t>(info.st_size > 0 ? info.st_size : 0);
    if (declared > limit) {
        fail("file exceeds the read limit", path, EFBIG);
    }
    // The declared size only sizes the first allocation: the file may change while it is read,
    // so the loop asks for one byte past the limit and fails if it gets it.
    std::string bytes;
    bytes.reserve(static_cast<std::size_t>(declared));
    for (;;) {
        const std::uint64_t remaining = limit - bytes.size();
        const std::size_t want = remaining < kChunk ? static_cast<std::size_t>(remaining) + 1 : kChunk;
        const std::size_t held = bytes.size();
        bytes.resize(held + want);
        const ssize_t got = ::read(file.get(), bytes.data() + held, want);
        if (got < 0) {
            if (errno == EINTR) {
                bytes.resize(held);
                continue;
            }
            fail("cannot read", path, errno);
        }
        bytes.resize(held + static_cast<std::size_t>(got));
        if (got == 0) {
            return bytes;
        }
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
