#pragma once
// A zip package opened and read through the package services, as the catalogue reader does.

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "opc/file_system_ops_selector.hpp"
#include "opc/model/package.hpp"
#include "opc/package_error.hpp"
#include "opc/zippackage/zip_physical_package.hpp"
#include "opc/zwservices/file_system.hpp"
#include "storage/microservicestoragesystem/storage_system.hpp"
#include "support/temp_tree.hpp"

namespace zwtest {

/** Each leaf's path and text. */
using Leaves = std::vector<std::pair<std::u16string, std::string>>;

/** The package at `file`, opened read-only; its objects are built in the catalogue reader's order. */
struct OpenPackage {
    explicit OpenPackage(const std::filesystem::path& file)
        : physical(u16(file.string()), selector, true), package(physical), manager(package, selector) {
        package.open(opc::interfaces::OpenMode::ReadOnly);
    }

    /** Each leaf's text or, when `contained`, the error that stopped its read after "error: ". */
    Leaves read(std::uint64_t limit, std::uint64_t budget = opc::zwservices::FileSystemManager::kNoBudget,
                bool contained = true) const {
        Leaves leaves;
        for (const opc::zwservices::FileSystemEntry& leaf : manager.getAllLeafs()) {
            try {
                leaves.emplace_back(leaf.getPath(), manager.readEntry(leaf, limit, budget));
            } catch (const opc::PackageError& error) {
                if (!contained) {
                    throw;
                }
                leaves.emplace_back(leaf.getPath(), std::string("error: ") + error.what());
            }
        }
        return leaves;
    }

    const opc::FileSystemOpsSelector selector{
        storage::microservicestoragesystem::GetStorageSystemReference()};
    opc::zippackage::ZipPhysicalPackage physical;
    opc::model::Package package;
    const opc::zwservices::FileSystemManager manager;
};

/** Every leaf of the package at `file`, each at most `limit` bytes; the first failure throws. */
inline Leaves readPackage(const std::filesystem::path& file, std::uint64_t limit = std::uint64_t{1} << 20) {
    return OpenPackage(file).read(limit, opc::zwservices::FileSystemManager::kNoBudget, false);
}

} // namespace zwtest
