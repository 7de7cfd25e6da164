#include "opc/model/package.hpp"

#include "zwhost/fault.hpp"

namespace opc::model {

Package::Package(interfaces::IPhysicalPackage& physical) : physical_(physical) {
    zwhost::fault::point("Package");
}

void Package::open(interfaces::OpenMode mode) {
    zwhost::fault::point("Package::open");
    physical_.open(mode);
}

} // namespace opc::model
