#pragma once
// Test-only fault injection of the host platform: any named host operation can be made to
// throw on its n-th call, and any system call of zwhost/system_calls.hpp to fail as the kernel
// fails it, so that tests can force every failure path of the library.

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zwhost::fault {

/** The exception a host operation throws when a fault was injected into it. */
struct InjectedFault : std::runtime_error {
    explicit InjectedFault(const std::string& operation)
        : std::runtime_error("injected fault in " + operation) {}
};

/** Make `operation` throw InjectedFault on its `nth` call from now on (1 is the next call). */
void failOn(std::string_view operation, std::uint64_t nth);

/** Make the `nth` fault point reached from now on throw, whatever its operation. */
void failAtPoint(std::uint64_t nth);

/** Make the `nth` call of the system call `call` from now on fail with `error`: it returns -1
    and sets errno, and is not made. `call` is a function's name in zwhost/system_calls.hpp. */
void failSystemCall(std::string_view call, std::uint64_t nth, int error);

/** Run `action` just before the `nth` call of the system call `call` from now on, as another
    process could act then: a test changes a file under a read with it. */
void beforeSystemCall(std::string_view call, std::uint64_t nth, std::function<void()> action);

/** From now until the next reset, folders are listed as file systems that give no types list
    them: each entry's type unknown. */
void listWithoutTypes();

/** Whether folders are listed without types. */
bool listingsUntyped();

/** Disarm every fault and zero the counters. */
void reset();

/** Number of fault points reached since the last reset (all operations together). */
std::uint64_t pointsReached();

/** Marks a fault point: called by a host operation on entry; throws when a fault is due. */
void point(std::string_view operation);

/** Marks a system call: the errno it fails with when a fault is due, else 0. */
int systemCallError(std::string_view call);

/** Resets faults for the lifetime of a scope, and on leaving it. Faults are armed within one (or
    after a reset): until the first reset, no call is counted. */
class Scope {
public:
    Scope() { reset(); }
    ~Scope() { reset(); }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
};

} // namespace zwhost::fault
