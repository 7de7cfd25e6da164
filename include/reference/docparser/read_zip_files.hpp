#pragma once
// Reading the catalogues inside zip packages.

#include <algorithm>
#include <string_view>
#include <vector>

#include "opc/file_system_ops_selector.hpp"
#include "opc/model/package.hpp"
#include "opc/zippackage/zip_physical_package.hpp"
#include "opc/zwservices/file_system.hpp"
#include "reference/docparser/doc_resource_parser.hpp"
#include "reference/docparser/read_json_files.hpp"
#include "storage/microservicestoragesystem/storage_system.hpp"

namespace reference::docparser {
namespace detail {

/** The leaves of an open package that are catalogues to read: a valid file name, and English
    or of the current locale. A package of one leaf is of the language `package` says; in a
    package of several, each leaf's stem tells its locale. */
inline std::vector<ProductZipData>
selectCatalogueLeaves(const std::vector<opc::zwservices::FileSystemEntry>& leaves,
                      const ProductPathData& package, const std::vector<std::u16string>& docLocales,
                      const std::u16string& localeSuffix, opc::zwservices::FileSystemManager& manager) {
    std::vector<ProductZipData> records;
    records.reserve(leaves.size());
    for (const opc::zwservices::FileSystemEntry& leaf : leaves) {
        const std::u16string baseName = leaf.getBaseName();
        const fl::filesystem::upath name =
            baseName.empty()
                ? fl::filesystem::upath()
                : fl::filesystem::upath(fl::filesystem::detail::make_native_form(baseName, true));
        if (!DocResourceParser::isValidFilename(name)) {
            continue;
        }
        std::u16string stem = fl::filesystem::detail::extract_stem(name.text());
        bool localised;
        if (leaves.size() == 1) {
            localised = package.isNonEnglishLocale();
        } else {
            const std::u16string_view stemView(stem);
            localised = std::any_of(docLocales.begin(), docLocales.end(),
                                    [&](const std::u16string& locale) { return stemView.ends_with(locale); });
        }
        // A localised leaf of another locale than the current one is not read.
        if (localised && !std::u16string_view(stem).ends_with(localeSuffix)) {
            continue;
        }
        records.emplace_back(std::move(stem), localised, leaf, manager);
    }
    return records;
}

/** Opens the package `package` as the package reader does and calls `use` with its manager, its
    leaves and the catalogues to read in it, in reading order, while the package is open. The
    package's objects are destroyed records first, package last. Throws what opening, listing or
    choosing throws. */
template <class Use>
void withPackageCatalogues(const ProductPathData& package, const opc::FileSystemOpsSelector& selector,
                           const std::vector<std::u16string>& docLocales, const std::u16string& localeSuffix,
                           const Use& use) {
    opc::zippackage::ZipPhysicalPackage physical(package.getFullPath(), selector, true);
    opc::model::Package model(physical);
    opc::zwservices::FileSystemManager manager(model, selector);
    model.open(static_cast<opc::interfaces::OpenMode>(0));
    const std::vector<opc::zwservices::FileSystemEntry> leaves = manager.getAllLeafs();
    const std::vector<ProductZipData> records =
        selectCatalogueLeaves(leaves, package, docLocales, localeSuffix, manager);
    use(manager, leaves, records);
}

} // namespace detail

template <class T>
DocResourceParser::ParsingResults<T>
DocResourceParser::ParsingTools::readZipFiles(const std::vector<ProductPathData>& products,
                                              const ParsingInfo<T>& info) {
    // One selector serves every package of the call; the storage reference is dropped once it
    // is built. A failure here is a failure of the set-up and leaves the whole parse.
    const opc::FileSystemOpsSelector selector = [] {
        const auto storage = storage::microservicestoragesystem::GetStorageSystemReference();
        return opc::FileSystemOpsSelector(storage);
    }();

    ParsingResults<T> result;
    for (const ProductPathData& product : products) {
        // A package that cannot be opened, listed or scanned is given up whole, like a package
        // that does not exist; the failure is dropped without a word.
        try {
            detail::withPackageCatalogues(product, selector, info.docLocales, info.localeSuffix,
                                          [&](const opc::zwservices::FileSystemManager&,
                                              const std::vector<opc::zwservices::FileSystemEntry>&,
                                              const std::vector<ProductZipData>& records) {
                                              readJsonFiles<T, ProductZipData>(records, info, result);
                                          });
        } catch (...) {
        }
    }
    return result;
}

} // namespace reference::docparser
