#include "zwhost/system_calls.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "zwhost/fault.hpp"

namespace zwhost::sys {
namespace {

template <class Call>
auto uninterrupted(std::string_view name, const Call& call) -> decltype(call()) {
    for (;;) {
        decltype(call()) result = -1;
        if (const int injected = fault::systemCallError(name); injected != 0) {
            errno = injected;
        } else {
            result = call();
        }
        if (result >= 0 || errno != EINTR) {
            return result;
        }
    }
}

} // namespace

int open(const char* path, int flags) {
    return uninterrupted("open", [&] { return ::open(path, flags); });
}

int openat(int folder, const char* name, int flags) {
    return uninterrupted("openat", [&] { return ::openat(folder, name, flags); });
}

int fstat(int fd, struct stat* info) {
    return uninterrupted("fstat", [&] { return ::fstat(fd, info); });
}

int fstatat(int folder, const char* name, struct stat* info, int flags) {
    return uninterrupted("fstatat", [&] { return ::fstatat(folder, name, info, flags); });
}

ssize_t read(int fd, void* into, std::size_t count) {
    return uninterrupted("read", [&] { return ::read(fd, into, count); });
}

ssize_t pread(int fd, void* into, std::size_t count, off_t offset) {
    return uninterrupted("pread", [&] { return ::pread(fd, into, count, offset); });
}

ssize_t getdents64(int fd, void* into, std::size_t count) {
    const ssize_t got = uninterrupted("getdents64", [&] { return ::getdents64(fd, into, count); });
    if (fault::listingsUntyped()) {
        for (ssize_t at = 0; at < got;) {
            auto* entry = reinterpret_cast<dirent64*>(static_cast<char*>(into) + at);
            entry->d_type = DT_UNKNOWN;
            at += entry->d_reclen;
        }
    }
    return got;
}

} // namespace zwhost::sys
