#include "reference/docparser/read_json_files.hpp"

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
using Results = DocResourceParser::ParsingResults<ExampleCatalogues>;
using Info = ParsingInfo<ExampleCatalogues>;

class ReadJsonFiles : public zwtest::HostLeakCheck {
protected:
    ProductPathData file(const std::string& name, bool localised, const std::string& text) {
        return ProductPathData(zwtest::u16(name), localised, zwtest::u16(dir.write(name, text).string()));
    }

    Results read(const std::vector<ProductPathData>& products, Results results = {}) {
        const Info info{parse, installed, {}, u"_ja_JP"};
        DocResourceParser::ParsingTools::readJsonFiles(products, info, results);
        return results;
    }

    static std::u16string title(const Results& results, const std::u16string& id) {
        return results.installed.at(u"h").items.at(id).at(0).getTitle();
    }

    zwtest::TempDir dir;
    Info::JsonParsingFcn parse = &example::docparser::detail::parseExampleCatalogue;
    Info::IsInstalledFcn installed = [](const std::u16string&) { return true; };
};

TEST_F(ReadJsonFiles, PrecedenceBetweenTwoFilesOfOneHelpFolder) {
    const struct {
        bool firstLocalised, secondLocalised;
        const char* winner; // whose header and shared id win
    } rows[] = {
        {false, true, "second"},
        {true, false, "first"},
        {false, false, "first"},
        {true, true, "second"},
    };
    for (const auto& row : rows) {
        const Results results = read({
            file("a.json", row.firstLocalised,
                 zwtest::catalogueText("h", "first", {{"shared", "first"}, {"a", "A"}})),
            file("b.json", row.secondLocalised,
                 zwtest::catalogueText("h", "second", {{"shared", "second"}, {"b", "B"}})),
        });
        const auto& entry = results.installed.at(u"h");
        EXPECT_EQ(entry.header.getLocale(), zwtest::u16(row.winner));
        EXPECT_EQ(title(results, u"c/shared"), zwtest::u16(row.winner));
        ASSERT_EQ(entry.items.at(u"c/shared").size(), 1U) << "vectors of a shared id are never joined";
        EXPECT_EQ(title(results, u"c/a"), u"A");
        EXPECT_EQ(title(results, u"c/b"), u"B");
        EXPECT_TRUE(results.notInstalled.empty());
    }
}

TEST_F(ReadJsonFiles, ABadFileCostsOnlyItselfAndNoFilesChangeNothing) {
    Results results = read({
        file("x_ja_JP.json", true, zwtest::catalogueText("other", "ja", {{"n", "T"}})),
        file("good.json", false, zwtest::catalogueText("h", "en", {{"n", "kept"}})),
        file("bad.json", true, zwtest::catalogueText("h", "ja", {{"n", "lost"}}) + ","),
        ProductPathData(u"missing", true, zwtest::u16((dir.path() / "missing.json").string())),
        file("empty.json", false, ""),
    });
    EXPECT_EQ(results.installed.at(u"other").items.at(u"c/n").at(0).getTitle(), u"T")
        << "no English partner needed";
    EXPECT_EQ(title(results, u"c/n"), u"kept");
    EXPECT_EQ(results.installed.at(u"h").header.getLocale(), u"en");
    parse = [](const std::string&) -> ExampleCatalogues { throw std::logic_error("must not be called"); };
    EXPECT_EQ(title(read({}, std::move(results)), u"c/n"), u"kept");
}

TEST_F(ReadJsonFiles, PredicateChoosesTheMapAndAnEmptyCallableSkipsEveryFile) {
    installed = [](const std::u16string& key) {
        if (key == u"boom") {
            throw std::runtime_error("predicate failed");
        }
        return key != u"out";
    };
    const std::vector<ProductPathData> files = {
        file("in.json", false, zwtest::catalogueText("in", "en", {{"n", "in"}})),
        file("out.json", false, zwtest::catalogueText("out", "en", {{"n", "out"}})),
        file("boom.json", false, zwtest::catalogueText("boom", "en", {{"n", "x"}})),
    };
    const Results results = read(files);
    EXPECT_EQ(results.installed.size(), 1U);
    EXPECT_EQ(results.installed.count(u"in"), 1U);
    EXPECT_EQ(results.notInstalled.size(), 1U);
    EXPECT_EQ(results.notInstalled.count(u"out"), 1U);
    installed = nullptr;
    EXPECT_TRUE(read(files).installed.empty());
    installed = [](const std::u16string&) { return true; };
    parse = nullptr;
    EXPECT_TRUE(read(files).installed.empty());
}

TEST_F(ReadJsonFiles, LocaleFlagIsAskedOutsideTheGuard) {
    const std::vector<ProductPathData> files = {
        file("a.json", false, zwtest::catalogueText("a", "en", {})),
        file("b.json", false, zwtest::catalogueText("b", "en", {})),
    };
    zwhost::fault::Scope faults;
    zwhost::fault::failOn("ProductData::isNonEnglishLocale", 2);
    Results results;
    const Info info{parse, installed, {}, u"_ja_JP"};
    EXPECT_THROW(DocResourceParser::ParsingTools::readJsonFiles(files, info, results),
                 zwhost::fault::InjectedFault);
    EXPECT_EQ(results.installed.size(), 1U);
}

// Counts down allocations of CountdownAllocator; the one that brings it to zero fails.
int allocationsUntilFailure = 0;

// Allocates from the global heap but fails on a chosen allocation, to force a failed insertion.
template <class T>
struct CountdownAllocator {
    using value_type = T;
    CountdownAllocator() = default;
    template <class U>
    CountdownAllocator(const CountdownAllocator<U>&) {}
    T* allocate(std::size_t n) {
        if (allocationsUntilFailure > 0 && --allocationsUntilFailure == 0) {
            throw std::bad_alloc();
        }
        return std::allocator<T>().allocate(n);
    }
    void deallocate(T* p, std::size_t n) { std::allocator<T>().deallocate(p, n); }
    friend bool operator==(const CountdownAllocator&, const CountdownAllocator&) { return true; }
};

TEST_F(ReadJsonFiles, FailedInsertionLosesTheWholeSelectedMap) {
    using Doc = reference::docparser::DocResource<example::docparser::ExampleItem>;
    using Map = std::map<std::u16string, Doc, std::less<std::u16string>,
                         CountdownAllocator<std::pair<const std::u16string, Doc>>>;
    using MapResults = DocResourceParser::ParsingResults<Map>;
    const ParsingInfo<Map>::JsonParsingFcn parseIntoMap = [](const std::string& text) {
        Map map;
        for (auto& [key, value] : example::docparser::detail::parseExampleCatalogue(text)) {
            map.emplace(key, std::move(value));
        }
        return map;
    };
    const ParsingInfo<Map>::IsInstalledFcn byName = [](const std::u16string& key) { return key != u"other"; };
    const ParsingInfo<Map> info{parseIntoMap, byName, {}, u"_ja_JP"};
    const std::vector<ProductPathData> files = {
        file("a.json", false, zwtest::catalogueText("a", "en", {})),
        file("o.json", false, zwtest::catalogueText("other", "en", {})),
        file("b.json", false, zwtest::catalogueText("b", "en", {})),
        file("c.json", false, zwtest::catalogueText("c", "en", {})),
    };
    MapResults results;
    // The parse of b.json makes one node; the insertion of "b" into the held map is the next.
    allocationsUntilFailure = 0;
    DocResourceParser::ParsingTools::readJsonFiles(std::vector(files.begin(), files.begin() + 2), info,
                                                   results);
    allocationsUntilFailure = 2;
    DocResourceParser::ParsingTools::readJsonFiles(std::vector(files.begin() + 2, files.end()), info,
                                                   results);
    EXPECT_EQ(allocationsUntilFailure, 0);
    EXPECT_EQ(results.installed.size(), 1U) << "\"a\" went with the map; only \"c\" was placed after";
    EXPECT_EQ(results.installed.count(u"c"), 1U);
    EXPECT_EQ(results.notInstalled.count(u"other"), 1U);
}

} // namespace

namespace {

TEST(MergeMissing, MovesTheNodesOfAbsentKeysAcrossWhateverTheGapsBetweenKeys) {
    // Keys close together and far apart, before, between and after the held ones, so that the
    // walk both steps and searches; each result is checked against the standard merge.
    const std::vector<std::vector<int>> heldKeys = {
        {}, {5}, {0, 2, 4, 6, 8}, {10, 20, 30, 40, 50, 60, 70, 80, 90}};
    const std::vector<std::vector<int>> newKeys = {
        {}, {5}, {1, 3, 5, 7, 9}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 99}, {-5, 15, 55, 56, 57, 91, 92, 1000}};
    for (const auto& heldSet : heldKeys) {
        for (const auto& newSet : newKeys) {
            std::map<int, std::string> held;
            std::map<int, std::string> arriving;
            for (const int key : heldSet) {
                held.emplace(key, "held");
            }
            for (const int key : newSet) {
                arriving.emplace(key, "new");
            }
            auto expectedHeld = held;
            auto expectedLeft = arriving;
            expectedHeld.merge(expectedLeft);

            std::map<int, const std::string*> addresses;
            for (const auto& [key, value] : arriving) {
                addresses.emplace(key, &value);
            }
            reference::docparser::detail::mergeMissing(held, arriving);
            EXPECT_EQ(held, expectedHeld);
            EXPECT_EQ(arriving, expectedLeft);
            for (const auto& [key, value] : held) {
                if (value == "new") {
                    EXPECT_EQ(&value, addresses.at(key)) << "node of " << key << " was copied";
                }
            }
        }
    }
}

} // namespace
