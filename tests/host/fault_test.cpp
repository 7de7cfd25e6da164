// The host's fault injection: what it fails, when, and from when on it counts.

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "support/temp_tree.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/system_calls.hpp"

namespace {

namespace fault = zwhost::fault;

// The fault points, which the sweeps of the library fail one by one, count only from the first
// reset; the system calls are failed here.
TEST(Fault, CountsFromTheFirstResetAndFailsEachArmedSystemCallOnce) {
    fault::point("op");
    EXPECT_EQ(fault::pointsReached(), 0U) << "nothing is counted before the first reset";
    const fault::Scope faults;

    // One byte a read: the second fails, the third reads where an action moved the file to, and an
    // interrupted read is made again.
    const zwtest::TempDir dir;
    const int fd = ::open(dir.write("f", "abcdef").c_str(), O_RDONLY);
    fault::failSystemCall("read", 2, EIO);
    fault::beforeSystemCall("read", 3, [&] { ::lseek(fd, 4, SEEK_SET); });
    std::string read;
    for (int call = 0; call < 4; ++call) {
        char byte = '-';
        read += zwhost::sys::read(fd, &byte, 1) == 1 ? std::string(1, byte) : std::strerror(errno);
        if (call == 2) {
            fault::failSystemCall("read", 1, EINTR);
        }
    }
    EXPECT_EQ(read, "aInput/output erroref");
    ::close(fd);
    EXPECT_THROW(fault::failSystemCall("write", 1, EIO), std::invalid_argument);

    // Folders list without types until the next reset.
    for (const bool untyped : {true, false}) {
        if (untyped) {
            fault::listWithoutTypes();
        } else {
            fault::reset();
        }
        const int folder = ::open(dir.path().c_str(), O_RDONLY | O_DIRECTORY);
        alignas(dirent64) char buffer[4096];
        const ssize_t got = zwhost::sys::getdents64(folder, buffer, sizeof buffer);
        ::close(folder);
        for (ssize_t at = 0; at < got; at += reinterpret_cast<dirent64*>(buffer + at)->d_reclen) {
            const auto* entry = reinterpret_cast<dirent64*>(buffer + at);
            EXPECT_EQ(entry->d_type == DT_UNKNOWN, untyped) << entry->d_name;
        }
    }
}

} // namespace
