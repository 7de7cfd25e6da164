#pragma once
// The error of the package services: a package that is not a zip, is damaged, or is hostile.

#include <stdexcept>

namespace opc {

/** Thrown when a package cannot be opened, listed or read, or is refused as hostile. */
class PackageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace opc
