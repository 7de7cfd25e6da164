#pragma once
// Access to the host's storage system.

#include "foundation/storage/vfs/storage_system_reference.hpp"

namespace storage::microservicestoragesystem {

/** A reference to the local file system, shared by every caller. */
foundation::storage::vfs::StorageSystemReference GetStorageSystemReference();

} // namespace storage::microservicestoragesystem
