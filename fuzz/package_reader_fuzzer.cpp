// Arbitrary bytes as a zip package, read through the package services and then by the library
// over a documentation tree that holds it: the services read it or refuse it with a standard
// exception, and the library leaves a refused package out without failing.

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>

#include "example/docparser/doc_example_parser.hpp"
#include "opc/file_system_ops_selector.hpp"
#include "opc/model/package.hpp"
#include "opc/zippackage/zip_physical_package.hpp"
#include "opc/zwservices/file_system.hpp"
#include "storage/microservicestoragesystem/storage_system.hpp"
#include "support/temp_tree.hpp"
#include "zwhost/settings.hpp"

namespace {

// Small enough that an entry which inflates without end is stopped quickly.
constexpr std::uint64_t kReadLimit = std::uint64_t{1} << 20;

const zwtest::TempDir& tree() {
    static const zwtest::TempDir instance;
    return instance;
}

void readThroughServices(const std::u16string& path) {
    const opc::FileSystemOpsSelector selector(
        storage::microservicestoragesystem::GetStorageSystemReference());
    opc::zippackage::ZipPhysicalPackage physical(path, selector, true);
    opc::model::Package package(physical);
    const opc::zwservices::FileSystemManager manager(package, selector);
    package.open(opc::interfaces::OpenMode::ReadOnly);
    for (const opc::zwservices::FileSystemEntry& leaf : manager.getAllLeafs()) {
        if (manager.readEntry(leaf, kReadLimit).size() > kReadLimit) {
            __builtin_trap();
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    zwhost::settings::setReadLimit(kReadLimit);
    zwhost::settings::setCurrentLocale(u"ja_JP");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tree().clear();
    const auto file = tree().write("h/pkg.zip", std::string(reinterpret_cast<const char*>(data), size));
    try {
        readThroughServices(zwtest::u16(file.string()));
    } catch (const std::exception&) {
    }
    example::docparser::DocExampleParser::getDocExampleFiles(zwtest::u16(tree().path().string()));
    return 0;
}
