#include "example/docparser/doc_example_parser.hpp"

#include <gtest/gtest.h>

#include "catalogue/catalogue_parser.hpp"
#include "reference/docparser/parse_multiple_product_files.hpp"
#include "support/catalogue_text.hpp"
#include "support/host_leak_check.hpp"
#include "support/temp_tree.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/settings.hpp"

namespace {

using example::docparser::DocExampleParser;
using example::docparser::ExampleCatalogues;
using reference::docparser::DocResourceParser;
using zwtest::catalogueText;

constexpr char16_t kSuffix[] = u"/docCatalog/exampleapi";

class DocExampleParserTest : public zwtest::HostLeakCheck {
protected:
    DocExampleParserTest() { zwhost::settings::setCurrentLocale(u"ja_JP"); }
    ~DocExampleParserTest() override { zwhost::settings::resetToDefaults(); }

    std::u16string root() const { return zwtest::u16(dir.path().string()); }

    static std::string title(const ExampleCatalogues& result, const std::u16string& name) {
        const auto& items = result.at(u"h").items;
        const auto it = items.find(u"c/" + name);
        std::string out;
        for (char16_t c : it == items.end() ? std::u16string(u"-") : it->second.at(0).getTitle()) {
            out += static_cast<char>(c);
        }
        return out;
    }

    zwtest::TempDir dir;
    zwhost::fault::Scope faults;
};

TEST_F(DocExampleParserTest, PackagesAreReadBeforeLooseFiles) {
    const struct {
        const char* package;  // stem of the package's one catalogue
        const char* loose;    // stem of the loose catalogue
        const char* expected; // titles of shared, package-only, loose-only
    } rows[] = {
        {"ex", "ex", "pkg pkg loose"},               // English beside English: the package was first
        {"ex_ja_JP", "ex_ja_JP", "loose pkg loose"}, // localised beside localised: the loose file was last
        {"ex_ja_JP", "ex", "pkg pkg loose"},         // localised wins although read first
        {"ex", "ex_ja_JP", "loose pkg loose"},
    };
    for (const auto& row : rows) {
        zwtest::TempDir tree;
        tree.writeZip(
            std::string("h/") + row.package + ".zip",
            {{std::string(row.package) + ".json", catalogueText("h", "pkg", {{"s", "pkg"}, {"p", "pkg"}})}});
        tree.write(std::string("h/") + row.loose + ".json",
                   catalogueText("h", "loose", {{"s", "loose"}, {"l", "loose"}}));
        const auto result = DocExampleParser::getDocExampleFiles(zwtest::u16(tree.path().string()));
        EXPECT_EQ(title(result, u"s") + " " + title(result, u"p") + " " + title(result, u"l"), row.expected)
            << row.package << " + " << row.loose;
    }
}

TEST_F(DocExampleParserTest, OtherLocalesAreNotReadAndBadFilesLeaveGaps) {
    dir.write("a/ex.json", catalogueText("h", "en", {{"a", "en"}, {"b", "en"}}));
    dir.write("a/ex_ja_JP.json", catalogueText("h", "ja", {{"a", "ja"}}));
    dir.write("a/ex_zh_CN.json", catalogueText("h", "zh", {{"a", "zh"}, {"b", "zh"}}));
    dir.write("b/broken.json", "{\"header\":");
    dir.write("b/good.json", catalogueText("g", "en", {{"x", "x"}}));
    dir.write("c/bad.zip", "no zip");
    const auto result = DocExampleParser::getDocExampleFiles(root());
    EXPECT_EQ(title(result, u"a") + " " + title(result, u"b"), "ja en");
    EXPECT_EQ(result.size(), 2U);
}

TEST_F(DocExampleParserTest, RootWhereEveryFileFailsGivesAnEmptyResult) {
    dir.write("a/broken.json", "{");
    dir.write("a/not_a_catalogue.json", "[]");
    dir.write("b/bad.zip", "no zip");
    dir.writeZip("b/inside_bad.zip", {{"ex.json", "{\"header\":7}"}});
    EXPECT_TRUE(DocExampleParser::getDocExampleFiles(root()).empty());
}

TEST_F(DocExampleParserTest, EmptyRootReadsNothingAndAsksNothing) {
    EXPECT_TRUE(DocExampleParser::getDocExampleFiles(u"").empty());
    EXPECT_EQ(zwhost::fault::callsOf("ParsingTools::getSupportedDocLocales"), 0U);
    EXPECT_EQ(zwhost::fault::callsOf("DocResourceParser::getAllProducts"), 0U);
    EXPECT_EQ(zwhost::fault::callsOf("GetStorageSystemReference"), 0U);
}

TEST_F(DocExampleParserTest, RootWithoutProductsStillSetsUpStorage) {
    EXPECT_TRUE(DocExampleParser::getDocExampleFiles(root()).empty());
    EXPECT_EQ(zwhost::fault::callsOf("GetStorageSystemReference"), 1U);
    zwhost::fault::failOn("GetStorageSystemReference", 1);
    EXPECT_THROW(DocExampleParser::getDocExampleFiles(root()), zwhost::fault::InjectedFault);
}

TEST_F(DocExampleParserTest, SetUpFailuresReachTheCaller) {
    dir.write("ex.json", catalogueText("h", "en", {}));
    for (const char* operation : {"ParsingTools::getSupportedDocLocales", "ParsingTools::getCurrentLocale",
                                  "DocResourceParser::getAllProducts", "ProductData::isNonEnglishLocale"}) {
        zwhost::fault::Scope scope;
        zwhost::fault::failOn(operation, 1);
        EXPECT_THROW(DocExampleParser::getDocExampleFiles(root()), zwhost::fault::InjectedFault) << operation;
    }
}

TEST_F(DocExampleParserTest, PredicateSendsKeysToTheirOwnMap) {
    dir.write("p/ex.json", catalogueText("in", "en", {{"a", "in"}}));
    dir.write("q/ex.json", catalogueText("out", "en", {{"a", "out"}}));
    const auto results = DocResourceParser::ParsingTools::parseMultipleProductFiles<ExampleCatalogues>(
        root(), &example::docparser::detail::parseExampleCatalogue,
        [](const std::u16string& key) { return key == u"in"; });
    EXPECT_EQ(results.installed.size(), 1U);
    EXPECT_EQ(results.installed.count(u"in"), 1U);
    EXPECT_EQ(results.notInstalled.size(), 1U);
    EXPECT_EQ(results.notInstalled.count(u"out"), 1U);
}

TEST_F(DocExampleParserTest, FirstGetComputesTheDefaultOnce) {
    zwhost::settings::setDocumentationRoot(u"/docs");
    const auto first = DocExampleParser::getExampleRoot();
    const auto second = DocExampleParser::getExampleRoot();
    EXPECT_EQ(*first, std::u16string(u"/docs") + kSuffix);
    EXPECT_EQ(first.get(), second.get());
    EXPECT_EQ(zwhost::fault::callsOf("DocResourceParser::getReferenceRoots"), 1U);
}

TEST_F(DocExampleParserTest, TheSuffixIsAddedOnEverySet) {
    DocExampleParser::setExampleRoot(u"/r");
    const auto held = DocExampleParser::getExampleRoot();
    EXPECT_EQ(*held, std::u16string(u"/r") + kSuffix);
    DocExampleParser::setExampleRoot(*held);
    EXPECT_EQ(*DocExampleParser::getExampleRoot(), std::u16string(u"/r") + kSuffix + kSuffix);
    EXPECT_EQ(*held, std::u16string(u"/r") + kSuffix) << "a held root never changes";
    DocExampleParser::setExampleRoot(u"");
    EXPECT_EQ(*DocExampleParser::getExampleRoot(), kSuffix);
    DocExampleParser::setExampleRoot(u"/r/");
    EXPECT_EQ(*DocExampleParser::getExampleRoot(), std::u16string(u"/r/") + kSuffix);
    EXPECT_EQ(zwhost::fault::callsOf("DocResourceParser::getReferenceRoots"), 0U);
}

TEST_F(DocExampleParserTest, RestoreRecomputesTheDefaultAtOnce) {
    zwhost::settings::setDocumentationRoot(u"/docs");
    DocExampleParser::restoreDefaultSettings();
    EXPECT_EQ(zwhost::fault::callsOf("DocResourceParser::getReferenceRoots"), 1U);
    DocExampleParser::setExampleRoot(u"/mine");
    zwhost::settings::setDocumentationRoot(u"/moved");
    DocExampleParser::restoreDefaultSettings();
    EXPECT_EQ(zwhost::fault::callsOf("DocResourceParser::getReferenceRoots"), 2U);
    EXPECT_EQ(*DocExampleParser::getExampleRoot(), std::u16string(u"/moved") + kSuffix);
}

TEST_F(DocExampleParserTest, FailedRootOperationsKeepTheEarlierRoot) {
    zwhost::fault::failOn("DocResourceParser::getReferenceRoots", 1);
    EXPECT_THROW(DocExampleParser::getExampleRoot(), zwhost::fault::InjectedFault);
    zwhost::settings::setDocumentationRoot(u"/docs");
    EXPECT_EQ(*DocExampleParser::getExampleRoot(), std::u16string(u"/docs") + kSuffix)
        << "still unset, so retried";
    DocExampleParser::setExampleRoot(u"/mine");
    zwhost::fault::failOn("DocResourceParser::getReferenceRoots", 1);
    EXPECT_THROW(DocExampleParser::restoreDefaultSettings(), zwhost::fault::InjectedFault);
    EXPECT_EQ(*DocExampleParser::getExampleRoot(), std::u16string(u"/mine") + kSuffix);
}

TEST_F(DocExampleParserTest, ReadingUsesTheRootGivenNotTheStoredOne) {
    dir.write("ex.json", catalogueText("h", "en", {{"a", "given"}}));
    DocExampleParser::setExampleRoot(u"/nowhere");
    EXPECT_EQ(title(DocExampleParser::getDocExampleFiles(root()), u"a"), "given");
    EXPECT_EQ(zwhost::fault::callsOf("DocResourceParser::getReferenceRoots"), 0U);
}

} // namespace
