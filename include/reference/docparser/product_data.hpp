#pragma once
// What is known of one catalogue file before it is read.

#include <string>
#include <utility>
#include <vector>

#include "opc/zwservices/file_system.hpp"

namespace reference::docparser {

/** The base of the product records: the catalogue's stem and whether it is localised. */
class ProductData {
public:
    ProductData(std::u16string stem, bool nonEnglishLocale)
        : stem(std::move(stem)), nonEnglishLocale(nonEnglishLocale) {}

    /** True for a localised catalogue, false for the English base catalogue. */
    bool isNonEnglishLocale() const;

    const std::u16string& getStem() const { return stem; }

protected:
    std::u16string stem;
    bool nonEnglishLocale;
};

/** A loose catalogue file or a zip package, found by its path. */
class ProductPathData : public ProductData {
public:
    ProductPathData(std::u16string stem, bool nonEnglishLocale, std::u16string fullPath)
        : ProductData(std::move(stem), nonEnglishLocale), fullPath(std::move(fullPath)) {}

    /** Where the file or package lies. */
    const std::u16string& getFullPath() const;

private:
    std::u16string fullPath;
};

/** One catalogue file inside an open package; valid only while its manager lives. */
class ProductZipData : public ProductData {
public:
    ProductZipData(std::u16string stem, const bool& nonEnglishLocale,
                   const opc::zwservices::FileSystemEntry& entry,
                   opc::zwservices::FileSystemManager& fileSystemManager)
        : ProductData(std::move(stem), nonEnglishLocale), entry(entry), fileSystemManager(fileSystemManager) {
    }

    const opc::zwservices::FileSystemEntry& getEntry() const { return entry; }
    opc::zwservices::FileSystemManager& getFileSystemManager() const { return fileSystemManager; }

private:
    opc::zwservices::FileSystemEntry entry;
    opc::zwservices::FileSystemManager& fileSystemManager;
};

/** Every catalogue under a root, in reading order. */
struct AllProducts {
    std::vector<ProductPathData> looseProducts;
    std::vector<ProductPathData> packageProducts;
};

} // namespace reference::docparser
