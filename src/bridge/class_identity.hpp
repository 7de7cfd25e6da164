#pragma once
// Full class names of the library's classes in the host's class system, and their identifiers.
// Neither is kept: each use composes and interns anew.

#include <string>
#include <utility>

#include "zcos/interned.hpp"

namespace example::docparser::detail {

/** "namespace.ClassName" of `T`, composed afresh. */
template <class T>
std::string getFullClassName() {
    const std::string className(T::getZCOSClassName());
    const std::string namespaceName(T::getZCOSNamespaceName());
    return namespaceName + "." + className;
}

/** The class identifier of `fullName`, which is freed on return. */
// NOLINTNEXTLINE(performance-unnecessary-value-param): the name is the function's own.
inline zcos::COSInternedBase<zcos::internal::IdEmptyPolicy> makeClassIdentifier(std::string fullName) {
    if (fullName.empty()) {
        return &zcos::internal::nullValue;
    }
    return zcos::internal::makeInterned(fullName);
}

} // namespace example::docparser::detail
