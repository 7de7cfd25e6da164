#include "alloc/counting_new.hpp"

#include <atomic>
#include <cstdlib>
#include <new>

#include <malloc.h>

namespace zwtest::allocation {
namespace {

std::atomic<std::uint64_t> countdown{0};
std::atomic<bool> thrown{false};
std::atomic<std::size_t> live{0};
std::atomic<std::size_t> peak{0};

void* allocate(std::size_t size) {
    if (countdown.load() != 0 && --countdown == 0) {
        thrown = true;
        throw std::bad_alloc();
    }
    void* p = std::malloc(size == 0 ? 1 : size);
    if (p == nullptr) {
        throw std::bad_alloc();
    }
    const std::size_t now = live += ::malloc_usable_size(p);
    for (std::size_t top = peak.load(); now > top && !peak.compare_exchange_weak(top, now);) {
    }
    return p;
}

void release(void* p) noexcept {
    if (p != nullptr) {
        live -= ::malloc_usable_size(p);
        std::free(p);
    }
}

} // namespace

void failAt(std::uint64_t nth) {
    thrown = false;
    countdown = nth;
}

bool failed() {
    return thrown;
}

std::size_t liveBytes() {
    return live;
}

void resetPeak() {
    peak = live.load();
}

std::size_t peakBytes() {
    return peak;
}

} // namespace zwtest::allocation

void* operator new(std::size_t size) {
    return zwtest::allocation::allocate(size);
}

void* operator new[](std::size_t size) {
    return zwtest::allocation::allocate(size);
}

void operator delete(void* p) noexcept {
    zwtest::allocation::release(p);
}

void operator delete[](void* p) noexcept {
    zwtest::allocation::release(p);
}

void operator delete(void* p, std::size_t) noexcept {
    zwtest::allocation::release(p);
}

void operator delete[](void* p, std::size_t) noexcept {
    zwtest::allocation::release(p);
}
