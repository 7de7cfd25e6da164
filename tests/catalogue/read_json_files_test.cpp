#include "reference/docparser/read_json_files.hpp"

#include <gtest/gtest.h>

#include "catalogue/catalogue_parser.hpp"
#include "support/case_tree.hpp"
#include "support/host_leak_check.hpp"
#include "support/result_text.hpp"

namespace {

using example::docparser::ExampleCatalogues;
using reference::docparser::DocResourceParser;
using reference::docparser::ParsingInfo;
using reference::docparser::ProductPathData;
using Results = DocResourceParser::ParsingResults<ExampleCatalogues>;
using Info = ParsingInfo<ExampleCatalogues>;

class ReadJsonFiles : public zwtest::HostLeakCheck {
protected:
    /** The files `names` of the tree `tree` of tests/data/trees/TREES ("*": localised). */
    std::vector<ProductPathData> files(const std::string& tree, const std::string& names) {
        return zwtest::treeProducts(dir.path(), tree, names, ".json");
    }

    Results read(const std::vector<ProductPathData>& products, Results results = {}) {
        const Info info{parse, installed, {}, u"_ja_JP"};
        DocResourceParser::ParsingTools::readJsonFiles(products, info, results);
        return results;
    }

    zwtest::TempDir dir;
    Info::JsonParsingFcn parse = &example::docparser::detail::parseExampleCatalogue;
    Info::IsInstalledFcn installed = [](const std::u16string&) { return true; };
};

TEST_F(ReadJsonFiles, ABadFileCostsOnlyItselfAndNoFilesChangeNothing) {
    Results results = read(files("json-bad", "x_ja_JP* good bad* missing* empty"));
    const std::string expected = "h(en): c/n=kept\nother(ja): c/n=T\n";
    EXPECT_EQ(zwtest::titles(results.installed), expected);
    parse = [](const std::string&) -> ExampleCatalogues { throw std::logic_error("must not be called"); };
    EXPECT_EQ(zwtest::titles(read({}, std::move(results)).installed), expected);
}

TEST_F(ReadJsonFiles, PredicateChoosesTheMapAndAnEmptyCallableSkipsEveryFile) {
    installed = [](const std::u16string& key) {
        if (key == u"boom") {
            throw std::runtime_error("predicate failed");
        }
        return key != u"out";
    };
    const std::vector<ProductPathData> products = files("json-predicate", "in out boom");
    const Results results = read(products);
    EXPECT_EQ(zwtest::titles(results.installed) + zwtest::titles(results.notInstalled),
              "in(en): c/n=in\nout(en): c/n=out\n");
    EXPECT_EQ(zwtest::titles(results.notInstalled), "out(en): c/n=out\n");
    installed = nullptr;
    EXPECT_TRUE(read(products).installed.empty());
    installed = [](const std::u16string&) { return true; };
    parse = nullptr;
    EXPECT_TRUE(read(products).installed.empty());
}

// Allocates from the global heap but fails the allocation that brings the countdown to zero.
int allocationsUntilFailure = 0;
template <class T>
struct CountdownAllocator : std::allocator<T> {
    using value_type = T;
    CountdownAllocator() = default;
    template <class U>
    CountdownAllocator(const CountdownAllocator<U>&) {}
    T* allocate(std::size_t n) {
        if (allocationsUntilFailure > 0 && --allocationsUntilFailure == 0) {
            throw std::bad_alloc();
        }
        return std::allocator<T>::allocate(n);
    }
};

TEST_F(ReadJsonFiles, FailedInsertionLosesTheWholeSelectedMap) {
    using Doc = reference::docparser::DocResource<example::docparser::ExampleItem>;
    using Map =
        std::map<std::u16string, Doc, std::less<>, CountdownAllocator<std::pair<const std::u16string, Doc>>>;
    const ParsingInfo<Map> info{[](const std::string& text) {
                                    Map map;
                                    for (auto& [key, value] :
                                         example::docparser::detail::parseExampleCatalogue(text)) {
                                        map.emplace(key, std::move(value));
                                    }
                                    return map;
                                },
                                [](const std::u16string& key) { return key != u"other"; },
                                {},
                                u"_ja_JP"};
    const std::vector<ProductPathData> keys = files("json-keys", "a other b c");
    DocResourceParser::ParsingResults<Map> results;
    DocResourceParser::ParsingTools::readJsonFiles(std::vector(keys.begin(), keys.begin() + 2), info,
                                                   results);
    // The parse of b.json makes one node; the insertion of "b" into the held map is the next.
    allocationsUntilFailure = 2;
    DocResourceParser::ParsingTools::readJsonFiles(std::vector(keys.begin() + 2, keys.end()), info, results);
    EXPECT_EQ(allocationsUntilFailure, 0);
    EXPECT_EQ(results.installed.size(), 1U) << "\"a\" went with the map; only \"c\" was placed after";
    EXPECT_EQ(results.installed.count(u"c"), 1U);
    EXPECT_EQ(results.notInstalled.count(u"other"), 1U);
}

TEST(MergeMissing, MovesTheNodesOfAbsentKeysAcrossWhateverTheGapsBetweenKeys) {
    // Keys close together and far apart, before, between and after the held ones, so that the
    // walk both steps and searches; each result is checked against the standard merge.
    const auto mapOf = [](const std::vector<int>& keys, const char* value) {
        std::map<int, std::string> map;
        for (const int key : keys) {
            map.emplace(key, value);
        }
        return map;
    };
    for (const auto& heldKeys :
         std::vector<std::vector<int>>{{}, {5}, {0, 2, 4, 6, 8}, {10, 20, 30, 40, 50, 60, 70, 80, 90}}) {
        for (const auto& newKeys : std::vector<std::vector<int>>{{},
                                                                 {5},
                                                                 {1, 3, 5, 7, 9},
                                                                 {0, 1, 2, 3, 4, 5, 6, 7, 8, 99},
                                                                 {-5, 15, 55, 56, 57, 91, 92, 1000}}) {
            auto held = mapOf(heldKeys, "held");
            auto arriving = mapOf(newKeys, "new");
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
                EXPECT_TRUE(value == "held" || &value == addresses.at(key))
                    << "node of " << key << " was copied";
            }
        }
    }
}

} // namespace
