#include "foundation/log/diagnostic_logger.hpp"

#include <algorithm>
#include <iostream>
#include <mutex>
#include <set>

namespace {

struct Registry {
    std::mutex mutex;
    std::vector<std::string> alive;
    std::set<std::string, std::less<>> enabled;
};

Registry& registry() {
    // Never destroyed: loggers of other libraries may unregister during exit.
    static Registry* r = new Registry;
    return *r;
}

} // namespace

namespace foundation::log {

template <class Char>
basic_diagnostic_logger<Char>::basic_diagnostic_logger(const std::basic_string<Char>& name) : name_(name) {
    Registry& r = registry();
    std::lock_guard lock(r.mutex);
    r.alive.emplace_back(name_.begin(), name_.end());
}

template <class Char>
basic_diagnostic_logger<Char>::~basic_diagnostic_logger() {
    Registry& r = registry();
    std::lock_guard lock(r.mutex);
    const std::string name(name_.begin(), name_.end());
    auto it = std::find(r.alive.begin(), r.alive.end(), name);
    if (it != r.alive.end()) {
        r.alive.erase(it);
    }
}

template <class Char>
void basic_diagnostic_logger<Char>::write(std::basic_string_view<Char> message) const {
    Registry& r = registry();
    const std::string name(name_.begin(), name_.end());
    std::lock_guard lock(r.mutex);
    if (r.enabled.count(name) != 0) {
        std::cerr << '[' << name << "] " << std::string(message.begin(), message.end()) << '\n';
    }
}

template class basic_diagnostic_logger<char>;

} // namespace foundation::log

namespace zwhost::log {

std::vector<std::string> registeredLoggers() {
    Registry& r = registry();
    std::lock_guard lock(r.mutex);
    return r.alive;
}

void enableOutput(std::string_view name, bool enabled) {
    Registry& r = registry();
    std::lock_guard lock(r.mutex);
    if (enabled) {
        r.enabled.emplace(name);
    } else if (auto it = r.enabled.find(name); it != r.enabled.end()) {
        r.enabled.erase(it);
    }
}

} // namespace zwhost::log
