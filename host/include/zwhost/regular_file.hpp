#pragma once
// Regular files opened for reading: never blocking on a FIFO or a device put where a file was,
// checked on the open descriptor, and closed when they go out of scope.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

#include "zwhost/system_calls.hpp"

namespace zwhost {

class RegularFile {
public:
    /** Opens `path` with O_NONBLOCK and O_CLOEXEC and checks it with fstat. On failure, `failure()`
        names the step that failed ("cannot open", "cannot inspect", "not a regular file") and
        `error()` holds its errno (EINVAL for what is not a regular file). */
    explicit RegularFile(const char* path) : fd_(sys::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {
        struct stat info {};
        if (fd_ == -1) {
            fail("cannot open", errno);
        } else if (sys::fstat(fd_, &info) != 0) {
            fail("cannot inspect", errno);
        } else if (!S_ISREG(info.st_mode)) {
            fail("not a regular file", EINVAL);
        } else {
            size_ = static_cast<std::uint64_t>(info.st_size);
        }
    }
    ~RegularFile() {
        if (fd_ != -1) {
            ::close(fd_);
        }
    }
    RegularFile(const RegularFile&) = delete;
    RegularFile& operator=(const RegularFile&) = delete;

    int get() const { return fd_; }
    std::uint64_t size() const { return size_; }
    const char* failure() const { return failure_; }
    int error() const { return error_; }

private:
    void fail(const char* step, int error) {
        failure_ = step;
        error_ = error;
    }

    int fd_;
    std::uint64_t size_{};
    const char* failure_ = nullptr;
    int error_{};
};

} // namespace zwhost
