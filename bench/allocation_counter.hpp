#pragma once
// Heap accounting of the benchmark program: its global operator new and delete count the bytes
// that are live, and the most that were live at once.

#include <cstdint>

namespace zwbench::heap {

/** Bytes allocated through operator new and not yet freed. */
std::uint64_t liveBytes();

/** The most bytes live at once since the last resetPeak. */
std::uint64_t peakBytes();

/** Starts a new peak from the bytes live now. */
void resetPeak();

} // namespace zwbench::heap
