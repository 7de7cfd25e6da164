#include "zwhost/fault.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <iterator>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string_view>

namespace zwhost::fault {
namespace {

// The system calls of zwhost/system_calls.hpp. They are counted in place, so that counting them
// allocates nothing: a system call must not fail for a reason the kernel would not give.
constexpr std::array<std::string_view, 7> kSystemCalls = {"open", "openat", "fstat",     "fstatat",
                                                          "read", "pread",  "getdents64"};

struct SystemCall {
    std::uint64_t calls;
    std::uint64_t failAt;
    int error;
    std::uint64_t actAt;
    std::function<void()> action;
};

struct State {
    std::mutex mutex;
    std::map<std::string, std::uint64_t, std::less<>> calls;
    std::map<std::string, std::uint64_t, std::less<>> failAt;
    std::array<SystemCall, kSystemCalls.size()> systemCalls{};
    std::uint64_t points{};
    std::uint64_t failAtPoint{};
    bool untyped{};
};

State& state() {
    static State s;
    return s;
}

SystemCall& systemCall(State& s, std::string_view name) {
    const auto* found = std::find(kSystemCalls.begin(), kSystemCalls.end(), name);
    if (found == kSystemCalls.end()) {
        throw std::invalid_argument("no system call " + std::string(name) + " to fail");
    }
    return s.systemCalls.at(static_cast<std::size_t>(std::distance(kSystemCalls.begin(), found)));
}

// The calls of `name` so far; the caller holds the lock.
std::uint64_t& callsOf(State& s, std::string_view name) {
    auto calls = s.calls.find(name);
    if (calls == s.calls.end()) {
        calls = s.calls.emplace(std::string(name), std::uint64_t{}).first;
    }
    return calls->second;
}

// Fault points cost one relaxed load until the first reset, which every test makes before it
// arms a fault (fault::Scope); from then on calls are counted.
std::atomic<bool> active{false};

} // namespace

void failOn(std::string_view operation, std::uint64_t nth) {
    State& s = state();
    std::lock_guard lock(s.mutex);
    s.failAt[std::string(operation)] = callsOf(s, operation) + nth;
}

void failAtPoint(std::uint64_t nth) {
    State& s = state();
    std::lock_guard lock(s.mutex);
    s.failAtPoint = s.points + nth;
}

void failSystemCall(std::string_view call, std::uint64_t nth, int error) {
    State& s = state();
    std::lock_guard lock(s.mutex);
    SystemCall& armed = systemCall(s, call);
    armed.failAt = armed.calls + nth;
    armed.error = error;
}

void beforeSystemCall(std::string_view call, std::uint64_t nth, std::function<void()> action) {
    State& s = state();
    std::lock_guard lock(s.mutex);
    SystemCall& armed = systemCall(s, call);
    armed.actAt = armed.calls + nth;
    armed.action = std::move(action);
}

void listWithoutTypes() {
    State& s = state();
    std::lock_guard lock(s.mutex);
    s.untyped = true;
}

bool listingsUntyped() {
    if (!active.load(std::memory_order_relaxed)) {
        return false;
    }
    State& s = state();
    std::lock_guard lock(s.mutex);
    return s.untyped;
}

void reset() {
    State& s = state();
    std::lock_guard lock(s.mutex);
    s.calls.clear();
    s.failAt.clear();
    s.systemCalls = {};
    s.untyped = false;
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
    bool fail;
    {
        std::lock_guard lock(s.mutex);
        const std::uint64_t n = ++callsOf(s, operation);
        const std::uint64_t p = ++s.points;
        const auto due = s.failAt.find(operation);
        // Counts only ever grow, so each armed fault is due at one call.
        fail = (due != s.failAt.end() && due->second == n) || p == s.failAtPoint;
    }
    if (fail) {
        throw InjectedFault(std::string(operation));
    }
}

int systemCallError(std::string_view call) {
    if (!active.load(std::memory_order_relaxed)) {
        return 0;
    }
    State& s = state();
    std::function<void()> action;
    int error;
    {
        std::lock_guard lock(s.mutex);
        SystemCall& made = systemCall(s, call);
        ++made.calls;
        if (made.calls == made.actAt) {
            action = std::move(made.action);
        }
        error = made.calls == made.failAt ? made.error : 0;
    }
    if (action) {
        action();
    }
    return error;
}

} // namespace zwhost::fault
