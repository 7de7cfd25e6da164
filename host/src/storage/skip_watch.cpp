#include "zwhost/skip_watch.hpp"

namespace zwhost::reference {
namespace {

thread_local SkipWatch* innermost = nullptr;

} // namespace

SkipWatch::SkipWatch() : outer_(innermost) {
    innermost = this;
}

SkipWatch::~SkipWatch() {
    innermost = outer_;
}

void SkipWatch::giveUp() noexcept {
    if (innermost != nullptr) {
        ++innermost->count_;
    }
}

} // namespace zwhost::reference
