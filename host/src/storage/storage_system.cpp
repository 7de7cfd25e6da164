#include "storage/microservicestoragesystem/storage_system.hpp"

#include <cstdint>
#include <memory>
#include <stdexcept>

#include "zwhost/fault.hpp"

namespace storage::microservicestoragesystem {
namespace {

bool isHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool isLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

void appendUtf8(std::string& out, std::uint32_t code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (code >> 18));
        out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

/** The local file system: names are UTF-8 paths as the kernel takes them. */
class LocalFileSystem final : public foundation::storage::vfs::StorageSystem {
public:
    std::string nativePath(const std::u16string& path) const override {
        std::string native;
        native.reserve(path.size());
        for (std::size_t i = 0; i < path.size(); ++i) {
            const char16_t unit = path[i];
            if (isHighSurrogate(unit) && i + 1 < path.size() && isLowSurrogate(path[i + 1])) {
                appendUtf8(native, 0x10000 + ((std::uint32_t{unit} - 0xD800) << 10) +
                                       (std::uint32_t{path[i + 1]} - 0xDC00));
                ++i;
            } else if (isHighSurrogate(unit) || isLowSurrogate(unit)) {
                throw std::invalid_argument("path has an unpaired UTF-16 surrogate at unit " +
                                            std::to_string(i));
            } else {
                appendUtf8(native, unit);
            }
        }
        return native;
    }
};

} // namespace

foundation::storage::vfs::StorageSystemReference GetStorageSystemReference() {
    zwhost::fault::point("GetStorageSystemReference");
    static const auto instance = std::make_shared<const LocalFileSystem>();
    return foundation::storage::vfs::StorageSystemReference(instance);
}

} // namespace storage::microservicestoragesystem
