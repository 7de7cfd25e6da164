#include "reference/docparser/read_zip_files.hpp"

#include <gtest/gtest.h>

#include "catalogue/catalogue_parser.hpp"
#include "support/host_leak_check.hpp"
#include "support/small_tree.hpp"
#include "zwhost/fault.hpp"

namespace {

using example::docparser::ExampleCatalogues;
using reference::docparser::DocResourceParser;
using reference::docparser::ParsingInfo;
using reference::docparser::ProductPathData;
using Info = ParsingInfo<ExampleCatalogues>;
using zwtest::catalogueText;

/** A package to write: its product's name, its entries, whether that product is localised. */
struct Package {
    std::string name;
    std::vector<zwtest::ZipEntry> entries;
    bool localised = false;
};

class ReadZipFiles : public zwtest::HostLeakCheck {
protected:
    /** Each help folder that `packages` give, as "folder(header locale): id=title ...", for ja_JP. */
    std::string read(const std::vector<Package>& packages) {
        std::vector<ProductPathData> products;
        for (const Package& package : packages) {
            products.emplace_back(zwtest::u16(package.name), package.localised,
                                  zwtest::u16(dir.writeZip(package.name + ".zip", package.entries).string()));
        }
        // clang-format off
        const Info info{&example::docparser::detail::parseExampleCatalogue, [](const std::u16string&) { return true; }, {u"ja_JP", u"ko_KR", u"zh_CN"}, u"_ja_JP"};
        // clang-format on
        const auto results = DocResourceParser::ParsingTools::readZipFiles(products, info);
        EXPECT_TRUE(results.notInstalled.empty());
        return zwtest::titles(results.installed);
    }

    zwtest::TempDir dir;
};

TEST_F(ReadZipFiles, LeavesAreChosenByStemOrByTheirProductAndBadOnesCostOnlyThemselves) {
    // clang-format off
    const struct { const char* what; std::vector<Package> packages; const char* read; } cases[] = {
        {"several leaves, each by its stem",
         {{"p", {{"cat/ex.json", catalogueText("h", "en", {{"a", "en"}, {"b", "en"}, {"c", "en"}})}, {"cat/ex_ja_JP.json", catalogueText("h", "ja", {{"a", "ja"}})},
                 {"cat/ex_zh_CN.json", catalogueText("h", "zh", {{"a", "zh"}, {"b", "zh"}})}, {"cat/exja_JP.json", catalogueText("h", "ja-no-separator", {{"c", "nosep"}})},
                 {"cat/readme.txt", "not a catalogue"}, {"cat/.json", catalogueText("h", "no stem", {{"c", "nostem"}})}}}},
         "h(ja): c/a=ja c/b=en c/c=en\n"},
        {"the one leaf of an English product, whatever its stem", {{"english", {{"ex_ko_KR.json", catalogueText("h", "en", {{"a", "en"}})}}}}, "h(en): c/a=en\n"},
        {"the one leaf of a localised product, of the current locale only",
         {{"ja", {{"ex_ja_JP.json", catalogueText("h", "ja", {{"a", "ja"}})}}, true}, {"ko", {{"ex_ko_KR.json", catalogueText("k", "ko", {{"a", "ko"}})}}, true},
          {"en", {{"ex.json", catalogueText("h", "en", {{"a", "en"}, {"b", "en"}})}}}},
         "h(ja): c/a=ja c/b=en\n"},
        {"a second leaf that is no catalogue makes the stem decide", {{"two", {{"ex_zh_CN.json", catalogueText("h", "zh", {{"a", "zh"}})}, {"notes.txt", "notes"}}}}, ""},
        {"a refused package and a bad file",
         {{"first", {{"a.json", catalogueText("h", "en", {{"a", "first"}})}}}, {"refused", {{"../a.json", catalogueText("h", "en", {{"r", "refused"}})}}},
          {"mixed", {{"bad.json", "{"}, {"b.json", catalogueText("h", "en", {{"b", "mixed"}})}}}},
         "h(en): c/a=first c/b=mixed\n"},
    };
    // clang-format on
    for (const auto& test : cases) {
        EXPECT_EQ(read(test.packages), test.read) << test.what;
    }
}

// The storage is set up once per call, before any package and outside their guards: a failure
// there ends the call, with or without packages, and no later package sets it up again.
TEST_F(ReadZipFiles, StorageIsSetUpOnceBeforeAnyPackage) {
    // clang-format off
    const struct { std::vector<Package> packages; std::uint64_t failingCall; const char* read; } cases[] = {
        {{}, 1, nullptr},
        {{{"a", {{"a.json", catalogueText("h", "en", {{"a", "A"}})}}}}, 1, nullptr},
        {{{"a", {{"a.json", catalogueText("h", "en", {{"a", "A"}})}}}, {"b", {{"b.json", catalogueText("h", "en", {{"b", "B"}})}}}}, 2, "h(en): c/a=A c/b=B\n"},
    };
    // clang-format on
    for (const auto& test : cases) {
        const zwhost::fault::Scope faults;
        zwhost::fault::failOn("GetStorageSystemReference", test.failingCall);
        if (test.read == nullptr) {
            EXPECT_THROW(read(test.packages), zwhost::fault::InjectedFault);
        } else {
            EXPECT_EQ(read(test.packages), test.read);
        }
    }
}

} // namespace
