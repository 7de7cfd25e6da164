#include "zwhost/fault.hpp"

#include <atomic>
#include <map>
#include <mutex>

namespace zwhost::fault {
namespace {

struct State {
    std::mutex mutex;
    std::map<std::string, std::uint64_t, std::less<>> calls;
    std::map<std::string, std::uint64_t, std::less<>> failAt;
    std::uint64_t points = 0;
    std::uint64_t failAtPoint = 0;
};

State& state() {
    static State s;
    return s;
}

// Fault points cost one relaxed load while nothing is armed and nobody counts.
std::atomic<bool> active{false};

} // namespace

void failOn(std::string_view operation, std::uint64_t nth) {
    State& s = state();
    std::lock_guard lock(s.mutex);
    s.failAt[std::string(operation)] = s.calls[std::string(operation)] + nth;
    active.store(true, std::memory_order_relaxed);
}

void failAtPoint(std::uint64_t nth) {
    State& s = state();
    std::lock_guard lock(s.mutex);
    s.failAtPoint = s.points + nth;
    active.store(true, std::memory_order_relaxed);
}

void reset() {
    State& s = state();
    std::lock_guard lock(s.mutex);
    s.calls.clear();
    s.failAt.clear();
    s.points = 0;
    s.failAtPoint = 0;
    // Counting stays on after the first reset: the calls and points that faults are armed by.
    active.store(true, std::memory_order_relaxed);
}

std::uint64_t pointsReached() {
    State& s = state();
    std::lock_guard lock(s.mutex);
    return s.points;
}

void point(std::string_view operation) {
    if (!active.load(std::memory_order_relaxed)) {
        return;
    }
    State& s = state();
    bool fail = false;
    {
        std::lock_guard lock(s.mutex);
        auto calls = s.calls.find(operation);
        if (calls == s.calls.end()) {
            calls = s.calls.emplace(std::string(operation), 0).first;
        }
        const std::uint64_t n = ++calls->second;
        const std::uint64_t p = ++s.points;
        auto due = s.failAt.find(operation);
        if (due != s.failAt.end() && due->second == n) {
            s.failAt.erase(due);
            fail = true;
        }
        if (s.failAtPoint != 0 && s.failAtPoint == p) {
            s.failAtPoint = 0;
            fail = true;
        }
    }
    if (fail) {
        throw InjectedFault(std::string(operation));
    }
}

} // namespace zwhost::fault
