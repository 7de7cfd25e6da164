#pragma once
// The physical side of a package: where its bytes are.

namespace opc::interfaces {

/** How a package is opened. */
enum class OpenMode : int { ReadOnly = 0, ReadWrite = 1 };

class IPhysicalPackage {
public:
    virtual ~IPhysicalPackage() = default;
    /** Opens the package's storage in `mode`; throws if it is not a readable package. */
    virtual void open(OpenMode mode) = 0;
    virtual bool isOpen() const = 0;
};

} // namespace opc::interfaces
