#pragma once
// A zip file as the physical side of a package, kept open and read at the bytes it needs.

#include <cstdint>
#include <memory>
#include <string>

#include "opc/file_system_ops_selector.hpp"
#include "opc/interfaces/physical_package.hpp"

namespace opc::zippackage {

class ZipPhysicalPackage final : public interfaces::IPhysicalPackage {
public:
    /** What an open package holds: its open file and its vetted directory. */
    struct Contents;

    /** A package over the zip file at `path`; nothing is opened until `open`. */
    ZipPhysicalPackage(const std::u16string& path, const FileSystemOpsSelector& selector, bool readOnly);
    ~ZipPhysicalPackage() override;
    ZipPhysicalPackage(const ZipPhysicalPackage&) = delete;
    ZipPhysicalPackage& operator=(const ZipPhysicalPackage&) = delete;

    /** Opens the zip file and reads and vets its directory, reading its end window, directory and
        local headers alone, whatever its size; throws on a file that is not a regular file, or on
        a bad or hostile zip. */
    void open(interfaces::OpenMode mode) override;
    bool isOpen() const override { return contents_ != nullptr; }

    /** The open package (null before `open`). */
    const Contents* contents() const { return contents_.get(); }
    const std::u16string& path() const { return path_; }
    const std::string& nativePath() const { return nativePath_; }

private:
    std::u16string path_;
    std::string nativePath_;
    bool readOnly_;
    int unwinding_; // exceptions in flight when it was made
    std::unique_ptr<Contents> contents_;
};

} // namespace opc::zippackage
