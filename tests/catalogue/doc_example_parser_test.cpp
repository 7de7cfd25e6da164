#include "example/docparser/doc_example_parser.hpp"

#include <gtest/gtest.h>

#include "support/host_leak_check.hpp"
#include "support/small_tree.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/settings.hpp"

namespace {

using example::docparser::DocExampleParser;
using example::docparser::ExampleCatalogues;
using zwtest::catalogueText;

constexpr char16_t kSuffix[] = u"/docCatalog/exampleapi";

class DocExampleParserTest : public zwtest::HostLeakCheck {
protected:
    DocExampleParserTest() { zwhost::settings::setCurrentLocale(u"ja_JP"); }
    ~DocExampleParserTest() override { zwhost::settings::resetToDefaults(); }

    std::u16string root() const { return zwtest::u16(dir.path().string()); }

    zwtest::TempDir dir;
    zwhost::fault::Scope faults;
};

TEST_F(DocExampleParserTest, PackagesAreReadBeforeLooseFiles) {
    // The stems of the package's one catalogue and of the loose one, and which wins the shared id.
    const struct {
        const char* package;
        const char* loose;
        const char* expected;
    } rows[] = {
        {"ex", "ex", "h(pkg): c/l=loose c/p=pkg c/s=pkg\n"}, // English beside English: the package was first
        {"ex_ja_JP", "ex_ja_JP",
         "h(loose): c/l=loose c/p=pkg c/s=loose\n"},               // both localised: the loose file was last
        {"ex_ja_JP", "ex", "h(pkg): c/l=loose c/p=pkg c/s=pkg\n"}, // localised wins although read first
        {"ex", "ex_ja_JP", "h(loose): c/l=loose c/p=pkg c/s=loose\n"},
    };
    for (const auto& row : rows) {
        zwtest::TempDir tree;
        tree.writeZip(
            std::string("h/") + row.package + ".zip",
            {{std::string(row.package) + ".json", catalogueText("h", "pkg", {{"s", "pkg"}, {"p", "pkg"}})}});
        tree.write(std::string("h/") + row.loose + ".json",
                   catalogueText("h", "loose", {{"s", "loose"}, {"l", "loose"}}));
        const auto result = DocExampleParser::getDocExampleFiles(zwtest::u16(tree.path().string()));
        EXPECT_EQ(zwtest::titles(result), row.expected) << row.package << " + " << row.loose;
    }
}

TEST_F(DocExampleParserTest, OtherLocalesAreNotReadAndBadFilesLeaveGaps) {
    dir.write("a/ex.json", catalogueText("h", "en", {{"a", "en"}, {"b", "en"}}));
    dir.write("a/ex_ja_JP.json", catalogueText("h", "ja", {{"a", "ja"}}));
    dir.write("a/ex_zh_CN.json", catalogueText("h", "zh", {{"a", "zh"}, {"b", "zh"}}));
    dir.write("b/broken.json", "{\"header\":");
    dir.write("b/good.json", catalogueText("g", "en", {{"x", "x"}}));
    dir.write("b/not_a_catalogue.json", "[]");
    dir.write("c/bad.zip", "no zip");
    dir.writeZip("c/inside_bad.zip", {{"ex.json", "{\"header\":7}"}});
    const auto result = DocExampleParser::getDocExampleFiles(root());
    EXPECT_EQ(zwtest::titles(result), "g(en): c/x=x\nh(ja): c/a=ja c/b=en\n");
}

TEST_F(DocExampleParserTest, AnEmptyRootAsksNothingAndAnyOtherSetsUpStorage) {
    const auto read = [](const std::u16string& at) {
        try {
            return zwtest::titles(DocExampleParser::getDocExampleFiles(at));
        } catch (const zwhost::fault::InjectedFault& fault) {
            return std::string(fault.what());
        }
    };
    zwhost::fault::failOn("DocResourceParser::getAllProducts", 1);
    zwhost::fault::failOn("GetStorageSystemReference", 1);
    EXPECT_EQ(read(u""), "");
    EXPECT_EQ(read(root()), "injected fault in DocResourceParser::getAllProducts");
    EXPECT_EQ(read(root()), "injected fault in GetStorageSystemReference") << "a root with no products";
}

TEST_F(DocExampleParserTest, TheRootIsComputedOnceAndTheSuffixAddedOnEverySet) {
    zwhost::fault::failOn("DocResourceParser::getReferenceRoots", 1);
    EXPECT_THROW(DocExampleParser::getExampleRoot(), zwhost::fault::InjectedFault) << "leaves it unset";
    zwhost::settings::setDocumentationRoot(u"/docs");
    const auto first = DocExampleParser::getExampleRoot();
    EXPECT_EQ(*first, std::u16string(u"/docs") + kSuffix);
    zwhost::settings::setDocumentationRoot(u"/later");
    EXPECT_EQ(first.get(), DocExampleParser::getExampleRoot().get());
    const std::u16string r = u"/r";
    // clang-format off
    const std::pair<std::u16string, std::u16string> sets[] = {
        {r, r + kSuffix}, {r + kSuffix, r + kSuffix + kSuffix}, {u"", kSuffix}, {r + u'/', r + u'/' + kSuffix}};
    // clang-format on
    for (const auto& [given, held] : sets) {
        DocExampleParser::setExampleRoot(given);
        EXPECT_EQ(*DocExampleParser::getExampleRoot(), held);
    }
    EXPECT_EQ(*first, std::u16string(u"/docs") + kSuffix) << "a held root never changes";
    dir.write("ex.json", catalogueText("h", "en", {{"a", "given"}}));
    EXPECT_EQ(zwtest::titles(DocExampleParser::getDocExampleFiles(root())), "h(en): c/a=given\n")
        << "read from the root given";
    zwhost::settings::setDocumentationRoot(u"/moved");
    DocExampleParser::restoreDefaultSettings();
    zwhost::settings::setDocumentationRoot(u"/later");
    EXPECT_EQ(*DocExampleParser::getExampleRoot(), std::u16string(u"/moved") + kSuffix)
        << "asked at the restore";
}

} // namespace
