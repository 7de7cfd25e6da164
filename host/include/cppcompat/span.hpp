#pragma once
// The host's span type, as the array library's creation functions take it.

#include <span>

namespace cppcompat::detail::span {

template <class T>
using span = std::span<T>;

} // namespace cppcompat::detail::span
