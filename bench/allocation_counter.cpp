#include "allocation_counter.hpp"

#include "alloc/counting_new.hpp"

namespace zwbench::heap {
namespace {

namespace allocation = zwtest::allocation;

// The program counts only inside windows, from before main on.
[[maybe_unused]] const bool countingOff = (allocation::setCounting(false), true);

std::int64_t signedBytes(std::size_t bytes) {
    return static_cast<std::int64_t>(bytes);
}

} // namespace

Window::Window() : start_(signedBytes(allocation::liveBytes())) {
    allocation::resetPeak();
    allocation::setCounting(true);
}

Window::~Window() {
    allocation::setCounting(false);
}

std::int64_t Window::liveBytes() const {
    return signedBytes(allocation::liveBytes()) - start_;
}

std::int64_t Window::peakBytes() const {
    return signedBytes(allocation::peakBytes()) - start_;
}

} // namespace zwbench::heap
