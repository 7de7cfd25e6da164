#include "alloc/counting_new.hpp"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace zwtest::allocation {
namespace {

// The block's usable size is asked of malloc on both sides, so nothing is stored beside it.
// Live bytes are signed: a block allocated while counting was off may be freed while it is on.
std::atomic<bool> counting{true};
std::atomic<std::uint64_t> countdown{0};
std::atomic<bool> thrown{false};
std::atomic<std::int64_t> live{0};
std::atomic<std::int64_t> peak{0};

void* allocate(std::size_t size) {
    const bool counted = counting.load(std::memory_order_relaxed);
    if (counted && countdown.load() != 0 && --countdown == 0) {
        thrown = true;
        throw std::bad_alloc();
    }
    void* block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    if (counted) {
        const auto bytes = static_cast<std::int64_t>(::malloc_usable_size(block));
        const std::int64_t now = live.fetch_add(bytes, std::memory_order_relaxed) + bytes;
        for (std::int64_t top = peak.load(std::memory_order_relaxed);
             now > top && !peak.compare_exchange_weak(top, now, std::memory_order_relaxed);) {
        }
    }
    return block;
}

void release(void* block) noexcept {
    if (block != nullptr && counting.load(std::memory_order_relaxed)) {
        live.fetch_sub(static_cast<std::int64_t>(::malloc_usable_size(block)), std::memory_order_relaxed);
    }
    std::free(block);
}

} // namespace

// clang-format off
void failAt(std::uint64_t nth) { thrown = false; countdown = nth; }
bool failed() { return thrown; }
std::size_t liveBytes() { return static_cast<std::size_t>(live.load()); }
void resetPeak() { peak = live.load(); }
std::size_t peakBytes() { return static_cast<std::size_t>(peak.load()); }
void setCounting(bool on) { counting = on; }
// clang-format on

} // namespace zwtest::allocation

// Every form the program uses is replaced (the standard library builds the nothrow ones on these):
// no block may be allocated by one allocator and freed by another, as the sanitizers bring theirs.
using zwtest::allocation::allocate;
using zwtest::allocation::release;

// clang-format off
void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* block) noexcept { release(block); }
void operator delete[](void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t) noexcept { release(block); }
void operator delete[](void* block, std::size_t) noexcept { release(block); }
// clang-format on
