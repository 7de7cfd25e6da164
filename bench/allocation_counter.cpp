#include "allocation_counter.hpp"

#include <malloc.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace zwbench::heap {
namespace {

// The block's usable size is asked of malloc on both sides, so nothing is stored beside it.
std::atomic<bool> counting{false};
std::atomic<std::int64_t> live{0};
std::atomic<std::int64_t> peak{0};

void counted(void* block) {
    if (!counting.load(std::memory_order_relaxed)) {
        return;
    }
    const auto size = static_cast<std::int64_t>(malloc_usable_size(block));
    const std::int64_t now = live.fetch_add(size, std::memory_order_relaxed) + size;
    std::int64_t most = peak.load(std::memory_order_relaxed);
    while (now > most && !peak.compare_exchange_weak(most, now, std::memory_order_relaxed)) {
    }
}

void* allocate(std::size_t size, std::size_t alignment) {
    void* block = alignment <= alignof(std::max_align_t)
                      ? std::malloc(size == 0 ? 1 : size)
                      : std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    counted(block);
    return block;
}

void release(void* block) noexcept {
    if (block != nullptr && counting.load(std::memory_order_relaxed)) {
        live.fetch_sub(static_cast<std::int64_t>(malloc_usable_size(block)), std::memory_order_relaxed);
    }
    std::free(block);
}

} // namespace

Window::Window() {
    live.store(0, std::memory_order_relaxed);
    peak.store(0, std::memory_order_relaxed);
    counting.store(true, std::memory_order_relaxed);
}

Window::~Window() {
    counting.store(false, std::memory_order_relaxed);
}

std::int64_t Window::liveBytes() const {
    return live.load(std::memory_order_relaxed);
}

std::int64_t Window::peakBytes() const {
    return peak.load(std::memory_order_relaxed);
}

} // namespace zwbench::heap

using zwbench::heap::allocate;
using zwbench::heap::release;

void* operator new(std::size_t size) {
    return allocate(size, alignof(std::max_align_t));
}
void* operator new[](std::size_t size) {
    return allocate(size, alignof(std::max_align_t));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocate(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return allocate(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return allocate(size, alignof(std::max_align_t));
    } catch (...) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return allocate(size, alignof(std::max_align_t));
    } catch (...) {
        return nullptr;
    }
}
void operator delete(void* block) noexcept {
    release(block);
}
void operator delete[](void* block) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    release(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    release(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    release(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    release(block);
}
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
    release(block);
}
