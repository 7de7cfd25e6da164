#pragma once
// The global operator new and delete of a program that links this: they count the bytes alive
// and their peak, and can be told to fail the n-th allocation from now with std::bad_alloc.
// Counting is on from the start; switched off, each allocation costs one flag test.

#include <cstddef>
#include <cstdint>

namespace zwtest::allocation {

/** Makes the `nth` counted allocation from now throw std::bad_alloc (1 is the next one); 0 disarms. */
void failAt(std::uint64_t nth);

/** Whether the armed failure has been thrown since the last failAt. */
bool failed();

/** Bytes allocated with operator new and not yet deleted, as counted. */
std::size_t liveBytes();

/** Restarts the peak at the bytes alive now. */
void resetPeak();

/** The most bytes alive at once since the last resetPeak. */
std::size_t peakBytes();

/** Switches counting on or off; blocks freed while it is off are not subtracted. */
void setCounting(bool on);

} // namespace zwtest::allocation
