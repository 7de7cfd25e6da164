#include "storage/microservicestoragesystem/storage_system.hpp"

#include <memory>
#include <stdexcept>

#include "zwhost/fault.hpp"
#include "zwhost/unicode.hpp"

namespace storage::microservicestoragesystem {
namespace {

/** The local file system: names are UTF-8 paths as the kernel takes them. */
class LocalFileSystem final : public foundation::storage::vfs::StorageSystem {
public:
    std::string nativePath(const std::u16string& path) const override {
        try {
            return zwhost::unicode::utf16ToUtf8(path, zwhost::unicode::Unpaired::Refuse);
        } catch (const zwhost::unicode::MalformedText& error) {
            throw std::invalid_argument(std::string("path has no UTF-8 form: ") + error.what());
        }
    }
};

} // namespace

foundation::storage::vfs::StorageSystemReference GetStorageSystemReference() {
    zwhost::fault::point("GetStorageSystemReference");
    static const auto instance = std::make_shared<const LocalFileSystem>();
    return foundation::storage::vfs::StorageSystemReference(instance);
}

} // namespace storage::microservicestoragesystem
