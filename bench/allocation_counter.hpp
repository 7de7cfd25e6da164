#pragma once
// Heap accounting of the benchmark program, on the allocation counter of the tests: while a
// window is open the bytes that are live are counted, and the most that were live at once.
// Outside a window each allocation costs one flag test, so the timings are not skewed.

#include <cstdint>

namespace zwbench::heap {

/** Counts allocations from its construction to its destruction; one window at a time. */
class Window {
public:
    Window();
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    /** Bytes allocated in the window and not yet freed, less those freed of earlier blocks. */
    std::int64_t liveBytes() const;

    /** The most that liveBytes has been so far. */
    std::int64_t peakBytes() const;

private:
    std::int64_t start_;
};

} // namespace zwbench::heap
