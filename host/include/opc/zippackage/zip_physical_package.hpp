#pragma once
// A zip file as the physical side of a package, read with libzip.

#include <cstdint>
#include <memory>
#include <string>

#include "opc/file_system_ops_selector.hpp"
#include "opc/interfaces/physical_package.hpp"

typedef struct zip zip_t;

namespace opc::zippackage {

class ZipPhysicalPackage final : public interfaces::IPhysicalPackage {
public:
    /** A package over the zip file at `path`; nothing is opened until `open`. */
    ZipPhysicalPackage(const std::u16string& path, const FileSystemOpsSelector& selector, bool readOnly);
    ~ZipPhysicalPackage() override;
    ZipPhysicalPackage(const ZipPhysicalPackage&) = delete;
    ZipPhysicalPackage& operator=(const ZipPhysicalPackage&) = delete;

    /** Opens the zip with consistency checks and vets its directory; throws on a bad or hostile zip. */
    void open(interfaces::OpenMode mode) override;
    bool isOpen() const override { return archive_ != nullptr; }

    /** The open libzip archive (null before `open`). */
    zip_t* archive() const { return archive_; }
    const std::u16string& path() const { return path_; }

private:
    std::u16string path_;
    std::string nativePath_;
    bool readOnly_;
    zip_t* archive_ = nullptr;
};

} // namespace opc::zippackage
