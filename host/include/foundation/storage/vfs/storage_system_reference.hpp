#pragma once
// A handle to a storage system of the host. Copies share the storage system.

#include <cstdint>
#include <memory>
#include <string>

namespace foundation::storage::vfs {

/** A storage system: where packages and files are read from. */
class StorageSystem {
public:
    virtual ~StorageSystem() = default;
    /** The native (8-bit, UTF-8) path of the file named by `path`. */
    virtual std::string nativePath(const std::u16string& path) const = 0;
};

class StorageSystemReference {
public:
    StorageSystemReference() = default;
    explicit StorageSystemReference(std::shared_ptr<const StorageSystem> system)
        : system_(std::move(system)) {}

    const std::shared_ptr<const StorageSystem>& system() const { return system_; }

private:
    std::shared_ptr<const StorageSystem> system_;
};

} // namespace foundation::storage::vfs
