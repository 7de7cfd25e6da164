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

class ReadZipFiles : public zwtest::HostLeakCheck {
protected:
    ProductPathData package(const std::string& name, bool localised,
                            const std::vector<zwtest::ZipEntry>& entries) {
        return ProductPathData(zwtest::u16(name), localised,
                               zwtest::u16(dir.writeZip(name + ".zip", entries).string()));
    }

    ExampleCatalogues read(const std::vector<ProductPathData>& packages) {
        const Info info{parse, installed, {u"ja_JP", u"ko_KR", u"zh_CN"}, u"_ja_JP"};
        auto results = DocResourceParser::ParsingTools::readZipFiles(packages, info);
        EXPECT_TRUE(results.notInstalled.empty());
        return std::move(results.installed);
    }

    // Titles of the help folder "h" by example name, "-" where the example is missing.
    static std::string titles(const ExampleCatalogues& catalogues, const std::vector<std::u16string>& names) {
        std::string out;
        for (const auto& name : names) {
            const auto& items = catalogues.at(u"h").items;
            const auto it = items.find(u"c/" + name);
            out += (out.empty() ? "" : " ");
            for (char16_t c : it == items.end() ? std::u16string(u"-") : it->second.at(0).getTitle()) {
                out += static_cast<char>(c);
            }
        }
        return out;
    }

    zwtest::TempDir dir;
    const Info::JsonParsingFcn parse = &example::docparser::detail::parseExampleCatalogue;
    const Info::IsInstalledFcn installed = [](const std::u16string&) { return true; };
};

TEST_F(ReadZipFiles, SeveralLeavesAreChosenByTheirStems) {
    const auto result =
        read({package("p", false,
                      {
                          {"cat/ex.json", catalogueText("h", "en", {{"a", "en"}, {"b", "en"}, {"c", "en"}})},
                          {"cat/ex_ja_JP.json", catalogueText("h", "ja", {{"a", "ja"}})},
                          {"cat/ex_zh_CN.json", catalogueText("h", "zh", {{"a", "zh"}, {"b", "zh"}})},
                          {"cat/exja_JP.json", catalogueText("h", "ja-no-separator", {{"c", "nosep"}})},
                          {"cat/readme.txt", "not a catalogue"},
                          {"cat/.json", catalogueText("h", "no stem", {{"c", "nostem"}})},
                      })});
    EXPECT_EQ(result.at(u"h").header.getLocale(), u"ja");
    EXPECT_EQ(titles(result, {u"a", u"b", u"c"}), "ja en en");
}

TEST_F(ReadZipFiles, OneLeafTakesTheLanguageOfItsProduct) {
    // An English product keeps its one catalogue whatever the stem says.
    auto result =
        read({package("english", false, {{"ex_ko_KR.json", catalogueText("h", "en", {{"a", "en"}})}})});
    EXPECT_EQ(titles(result, {u"a"}), "en");
    // A localised product's one catalogue must carry the current locale.
    result =
        read({package("ja", true, {{"ex_ja_JP.json", catalogueText("h", "ja", {{"a", "ja"}})}}),
              package("ko", true, {{"ex_ko_KR.json", catalogueText("k", "ko", {{"a", "ko"}})}}),
              package("en", false, {{"ex.json", catalogueText("h", "en", {{"a", "en"}, {"b", "en"}})}})});
    EXPECT_EQ(result.count(u"k"), 0U);
    EXPECT_EQ(result.at(u"h").header.getLocale(), u"ja");
    EXPECT_EQ(titles(result, {u"a", u"b"}), "ja en");
    // A second leaf that is no catalogue still makes the stem decide.
    result = read({package(
        "two", false, {{"ex_zh_CN.json", catalogueText("h", "zh", {{"a", "zh"}})}, {"notes.txt", "notes"}})});
    EXPECT_TRUE(result.empty());
}

TEST_F(ReadZipFiles, BadPackagesAndFilesCostOnlyThemselves) {
    const auto corrupt = dir.write("corrupt.zip", "PK\x03\x04 this is not a zip");
    const auto result = read({
        package("first", false, {{"a.json", catalogueText("h", "en", {{"a", "first"}})}}),
        ProductPathData(u"corrupt", false, zwtest::u16(corrupt.string())),
        ProductPathData(u"missing", false, zwtest::u16((dir.path() / "missing.zip").string())),
        package("empty", false, {}),
        package("mixed", false, {{"bad.json", "{"}, {"b.json", catalogueText("h", "en", {{"b", "mixed"}})}}),
    });
    EXPECT_EQ(titles(result, {u"a", u"b"}), "first mixed");
}

TEST_F(ReadZipFiles, StorageIsSetUpOncePerCallAndItsFailureLeaves) {
    zwhost::fault::Scope faults;
    EXPECT_TRUE(read({}).empty());
    EXPECT_EQ(zwhost::fault::callsOf("GetStorageSystemReference"), 1U);
    for (const char* operation : {"GetStorageSystemReference", "FileSystemOpsSelector"}) {
        zwhost::fault::failOn(operation, 1);
        const Info info{parse, installed, {}, u"_ja_JP"};
        EXPECT_THROW(DocResourceParser::ParsingTools::readZipFiles(std::vector<ProductPathData>{}, info),
                     zwhost::fault::InjectedFault);
    }
}

TEST_F(ReadZipFiles, AFailureWhileOpeningOrScanningGivesUpThePackage) {
    const std::vector<ProductPathData> packages = {
        package("a", false, {{"a.json", catalogueText("h", "en", {{"a", "A"}})}}),
        package("b", false, {{"b.json", catalogueText("h", "en", {{"b", "B"}})}, {"x.txt", ""}}),
    };
    for (const char* operation :
         {"ProductPathData::getFullPath", "ZipPhysicalPackage", "Package", "FileSystemManager",
          "Package::open", "FileSystemManager::getAllLeafs", "DocResourceParser::isValidFilename"}) {
        zwhost::fault::Scope faults;
        zwhost::fault::failOn(operation, 1);
        EXPECT_EQ(titles(read(packages), {u"a", u"b"}), "- B") << operation;
    }
}

} // namespace
