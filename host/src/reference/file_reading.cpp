// Reading a loose file of the reference service, bounded by the read limit.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
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

// One read asks for at most this much; the stack buffer that finds the end holds kSpill.
constexpr std::size_t kMostPerRead = std::size_t{1} << 30;
constexpr std::size_t kSpill = std::size_t{4} << 10;

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
    // The declared size only sizes the allocation: the file may change while it is read. The
    // reserved room is read in place; once it is full, a small buffer on the stack finds the end
    // of the file without growing the string, and only a file that grew since is appended to,
    // up to one buffer past the limit.
    std::string bytes;
    bytes.reserve(static_cast<std::size_t>(declared));
    char spill[kSpill];
    for (;;) {
        const std::size_t held = bytes.size();
        const std::size_t room = bytes.capacity() - held;
        ssize_t got;
        if (room > 0) {
            const std::size_t want = std::min(room, kMostPerRead);
            bytes.resize(held + want);
            got = ::read(file.get(), bytes.data() + held, want);
            bytes.resize(held + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        } else {
            got = ::read(file.get(), spill, sizeof spill);
            if (got > 0) {
                bytes.append(spill, static_cast<std::size_t>(got));
            }
        }
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            fail("cannot read", path, errno);
        }
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
