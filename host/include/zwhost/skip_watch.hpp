#pragma once
// A count of what the host's reading gives up on during a call, for tools that say how much of a
// documentation tree a call left out without walking the tree again.

#include <cstddef>

namespace zwhost::reference {

/** Counts, on the thread that makes it and while it lives, each file the host cannot read (a
    loose file or a package entry) and each package it cannot open or list; each is counted once.
    A watch made later on the same thread counts in its stead until it ends. */
class SkipWatch {
public:
    SkipWatch();
    ~SkipWatch();
    SkipWatch(const SkipWatch&) = delete;
    SkipWatch& operator=(const SkipWatch&) = delete;

    std::size_t count() const { return count_; }

    /** Called by host operations for one file or package given up: counted by the innermost
        watch of the calling thread, if any. */
    static void giveUp() noexcept;

private:
    SkipWatch* outer_;
    std::size_t count_ = 0;
};

} // namespace zwhost::reference
