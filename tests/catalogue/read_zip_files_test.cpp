#include "reference/docparser/read_zip_files.hpp"

#include <gtest/gtest.h>

#include "catalogue/catalogue_parser.hpp"
#include "support/catalogue_text.hpp"
#include "support/host_leak_check.hpp"
#include "support/temp_tree.hpp"
#include "zwhost/fault.hpp"

namespace {

using example::docparser::ExampleCatalogues;
using reference::docparser::DocResourceParser;
using reference::docparser::ParsingInfo;
using reference::docparser::ProductPathData;
using Info = ParsingInfo<ExampleCatalogues>;
using zwtest::catalogueText;

/** A package to write: its product's name, whether that product is localised, its entries. */
struct Package {
    std::string name;
    bool localised;
    std::vector<zwtest::ZipEntry> entries;
};

class ReadZipFiles : public zwtest::HostLeakCheck {
protected:
    std::vector<ProductPathData> write(const std::vector<Package>& packages) {
        std::vector<ProductPathData> products;
        for (const Package& package : packages) {
            products.emplace_back(zwtest::u16(package.name), package.localised,
                                  zwtest::u16(dir.writeZip(package.name + ".zip", package.entries).string()));
        }
        return products;
    }

    /** Each help folder read, as "folder(header locale): id=title ...", for the current locale ja_JP. */
    std::string read(const std::vector<ProductPathData>& products) {
        const Info info{&example::docparser::detail::parseExampleCatalogue,
                        [](const std::u16string&) { return true; },
                        {u"ja_JP", u"ko_KR", u"zh_CN"},
                        u"_ja_JP"};
        const auto results = DocResourceParser::ParsingTools::readZipFiles(products, info);
        EXPECT_TRUE(results.notInstalled.empty());
        const auto narrow = [](const std::u16string& text) { return std::string(text.begin(), text.end()); };
        std::string out;
        for (const auto& [folder, catalogue] : results.installed) {
            out += narrow(folder) + "(" + narrow(catalogue.header.getLocale()) + "):";
            for (const auto& [id, items] : catalogue.items) {
                out += " " + narrow(id) + "=" + narrow(items.at(0).getTitle());
            }
        }
        return out;
    }

    zwtest::TempDir dir;
};

TEST_F(ReadZipFiles, LeavesAreChosenByStemOrByTheirProductAndBadOnesCostOnlyThemselves) {
    const struct {
        const char* what;
        std::vector<Package> packages;
        const char* read;
    } cases[] = {
        {"several leaves, each by its stem",
         {{"p",
           false,
           {{"cat/ex.json", catalogueText("h", "en", {{"a", "en"}, {"b", "en"}, {"c", "en"}})},
            {"cat/ex_ja_JP.json", catalogueText("h", "ja", {{"a", "ja"}})},
            {"cat/ex_zh_CN.json", catalogueText("h", "zh", {{"a", "zh"}, {"b", "zh"}})},
            {"cat/exja_JP.json", catalogueText("h", "ja-no-separator", {{"c", "nosep"}})},
            {"cat/readme.txt", "not a catalogue"},
            {"cat/.json", catalogueText("h", "no stem", {{"c", "nostem"}})}}}},
         "h(ja): c/a=ja c/b=en c/c=en"},
        {"the one leaf of an English product, whatever its stem",
         {{"english", false, {{"ex_ko_KR.json", catalogueText("h", "en", {{"a", "en"}})}}}},
         "h(en): c/a=en"},
        {"the one leaf of a localised product, of the current locale only",
         {{"ja", true, {{"ex_ja_JP.json", catalogueText("h", "ja", {{"a", "ja"}})}}},
          {"ko", true, {{"ex_ko_KR.json", catalogueText("k", "ko", {{"a", "ko"}})}}},
          {"en", false, {{"ex.json", catalogueText("h", "en", {{"a", "en"}, {"b", "en"}})}}}},
         "h(ja): c/a=ja c/b=en"},
        {"a second leaf that is no catalogue makes the stem decide",
         {{"two",
           false,
           {{"ex_zh_CN.json", catalogueText("h", "zh", {{"a", "zh"}})}, {"notes.txt", "notes"}}}},
         ""},
        {"a refused package and a bad file",
         {{"first", false, {{"a.json", catalogueText("h", "en", {{"a", "first"}})}}},
          {"refused", false, {{"../a.json", catalogueText("h", "en", {{"r", "refused"}})}}},
          {"mixed", false, {{"bad.json", "{"}, {"b.json", catalogueText("h", "en", {{"b", "mixed"}})}}}},
         "h(en): c/a=first c/b=mixed"},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(read(write(test.packages)), test.read) << test.what;
    }
}

TEST_F(ReadZipFiles, StorageIsSetUpOncePerCallAndAFailedPackageCostsOnlyItself) {
    const auto packages =
        write({{"a", false, {{"a.json", catalogueText("h", "en", {{"a", "A"}})}}},
               {"b", false, {{"b.json", catalogueText("h", "en", {{"b", "B"}})}, {"x.txt", ""}}}});
    const zwhost::fault::Scope faults;
    EXPECT_EQ(read(packages), "h(en): c/a=A c/b=B");
    EXPECT_EQ(zwhost::fault::callsOf("GetStorageSystemReference"), 1U);
    for (const char* operation :
         {"ProductPathData::getFullPath", "ZipPhysicalPackage", "Package", "FileSystemManager",
          "Package::open", "FileSystemManager::getAllLeafs", "DocResourceParser::isValidFilename"}) {
        zwhost::fault::reset();
        zwhost::fault::failOn(operation, 1);
        EXPECT_EQ(read(packages), "h(en): c/b=B") << operation;
    }
}

} // namespace
