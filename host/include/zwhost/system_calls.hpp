#pragma once
// The system calls through which the host reads files and folders. Each is made again while a
// signal interrupts it, and each can be made to fail by fault injection, under its name here
// (zwhost::fault::failSystemCall).

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>

namespace zwhost::sys {

int open(const char* path, int flags);
int openat(int folder, const char* name, int flags);
int fstat(int fd, struct stat* info);
int fstatat(int folder, const char* name, struct stat* info, int flags);
ssize_t read(int fd, void* into, std::size_t count);
ssize_t pread(int fd, void* into, std::size_t count, off_t offset);
/** The next entries of the open folder `fd`, as the kernel's getdents64 gives them. */
ssize_t getdents64(int fd, void* into, std::size_t count);

} // namespace zwhost::sys
