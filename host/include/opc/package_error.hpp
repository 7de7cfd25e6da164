#pragma once
// The error of the package services: a package that is not a zip, is damaged, or is hostile.

#include <stdexcept>
#include <string>

namespace opc {

/** What a package error costs, so that a caller can tell its cases apart without the text. */
enum class PackageErrorKind {
    Unreadable,        ///< the package file cannot be opened or read: none of it is read
    Refused,           ///< not a zip, damaged or hostile: none of it is read
    Misuse,            ///< opened twice, or for writing
    UnsupportedMethod, ///< one entry is compressed by a method this reader does not decode
    Encrypted,         ///< one entry is encrypted
    OverReadLimit,     ///< one entry is larger than the read limit
    OverBudget,        ///< one entry would inflate past the package's budget
    DamagedEntry,      ///< one entry's data is damaged: its CRC, its size or its compressed stream
};

/** Thrown when a package cannot be opened, listed or read, or is refused as hostile. */
class PackageError : public std::runtime_error {
public:
    PackageError(PackageErrorKind kind, const std::string& message)
        : std::runtime_error(message), kind_(kind) {}

    /** Which of the cases above this is. */
    PackageErrorKind kind() const noexcept { return kind_; }

private:
    PackageErrorKind kind_;
};

} // namespace opc
