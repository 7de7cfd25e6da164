#include "opc/file_system_ops_selector.hpp"

#include <stdexcept>

#include "zwhost/fault.hpp"

namespace opc {

FileSystemOpsSelector::FileSystemOpsSelector(
    const foundation::storage::vfs::StorageSystemReference& reference) {
    zwhost::fault::point("FileSystemOpsSelector");
    if (!reference.system()) {
        throw std::invalid_argument("the storage reference holds no storage system");
    }
    storage_ = reference.system();
}

} // namespace opc
