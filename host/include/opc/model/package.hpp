#pragma once
// The package model over a physical package.

#include "opc/interfaces/physical_package.hpp"

namespace opc::model {

class Package {
public:
    /** A model over `physical`, which must outlive it. */
    explicit Package(interfaces::IPhysicalPackage& physical);

    /** Opens the package; a failure is an exception. */
    void open(interfaces::OpenMode mode);

    interfaces::IPhysicalPackage& physical() const { return physical_; }

private:
    interfaces::IPhysicalPackage& physical_;
};

} // namespace opc::model
