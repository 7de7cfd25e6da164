#pragma once
// Chooses the storage operations a package uses. Shares the storage system it was built from,
// so it stays valid after that reference is gone.

#include <memory>

#include "foundation/storage/vfs/storage_system_reference.hpp"

namespace opc {

class FileSystemOpsSelector {
public:
    explicit FileSystemOpsSelector(const foundation::storage::vfs::StorageSystemReference& reference);

    const foundation::storage::vfs::StorageSystem& storage() const { return *storage_; }

private:
    std::shared_ptr<const foundation::storage::vfs::StorageSystem> storage_;
};

} // namespace opc
