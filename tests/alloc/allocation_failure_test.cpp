// Allocation failures at every allocation of the parser, the bridge's accessors, the copies of
// the records and a whole read; and the memory a hostile package may take.

#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <new>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "alloc/counting_new.hpp"
#include "bridge/bridge_fixture.hpp"
#include "bridge/require_scalar_error.hpp"
#include "catalogue/catalogue_parser.hpp"
#include "support/item_caches.hpp"
#include "support/small_tree.hpp"
#include "zwhost/settings.hpp"

namespace {

namespace allocation = zwtest::allocation;
using example::docparser::DocExampleParser;
using example::docparser::ExampleCatalogues;
using zwtest::ExampleItem;
using zwtest::ExampleType;
using Caches = example::docparser::detail::ExampleItemCaches;

using Guarded = std::function<void(const std::function<void()>& operation)>;

// Calls `run` again and again; each time, the operation it hands to `guarded` runs with its first
// allocation failing, then its second, and so on, until a run makes fewer allocations than the
// one due to fail. `run` checks the outcome; host arrays and objects, and the bytes allocated,
// must be back to their count after each run. Gives the number of allocations of a whole run.

std::uint64_t sweep(const std::function<void(const Guarded& guarded)>& run) {
    // A first run without failure makes what the host keeps for good (interned names, settings).
    run([](const std::function<void()>& operation) { operation(); });
    for (std::uint64_t n = 1;; ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n) + " fails");
        const std::int64_t arrays = zwhost::arrays::liveCount();
        const std::int64_t objects = zwhost::zcos::liveObjectCount();
        const std::size_t bytes = allocation::liveBytes();
        bool fired = false;
        run([&](const std::function<void()>& operation) {
            allocation::failAt(n);
            try {
                operation();
            } catch (...) {
                fired = allocation::failed();
                allocation::failAt(0);
                throw;
            }
            fired = allocation::failed();
            allocation::failAt(0);
        });
        EXPECT_EQ(zwhost::arrays::liveCount(), arrays);
        EXPECT_EQ(zwhost::zcos::liveObjectCount(), objects);
        EXPECT_EQ(allocation::liveBytes(), bytes);
        if (!fired || ::testing::Test::HasFailure()) {
            return n - 1;
        }
    }
}

class AllocationFailure : public zwtest::BridgeTest {};

TEST_F(AllocationFailure, ParserGivesTheWholeCatalogueOrNothing) {
    const std::string text =
        R"({"header":{"product":"P","version":"1","helpFolder":"graphics","locale":"en_US"},"exampleItems":[)"
        R"({"name":"SurfacePlotOfPeaksFunction","component":"graphics","title":" Surface Plot of Peaks ",)"
        R"("description":"A shaded surface plot of the peaks function.","thumbnail":"images/peaks.png",)"
        R"("exampleType":"Live Script","relative_path":["graphics/surface/SurfacePlotOfPeaks.zlx"],)"
        R"("supporting_files":[" peaksData.zat "],"docid_links":[{"docid":"graphics/ref/surf","target":"surf"}]},)"
        R"({"name":"n","component":"c","title":"t","thumbnail":"","exampleType":"App","openCmd":"run this one"}]})";
    const std::string whole = zwtest::describe(example::docparser::detail::parseExampleCatalogue(text));
    const std::uint64_t allocations = sweep([&](const auto& guarded) {
        ExampleCatalogues result;
        try {
            guarded([&] { result = example::docparser::detail::parseExampleCatalogue(text); });
        } catch (const std::bad_alloc&) {
            return;
        }
        EXPECT_EQ(zwtest::describe(result), whole);
    });
    EXPECT_GT(allocations, 20U);
}

TEST_F(AllocationFailure, FailedCopyLeavesTheSourceAsItWas) {
    const ExampleItem item = makeItem(ExampleType::Chart, links({{u"a", u"1"}, {u"b", u"2"}}));
    const std::string before = zwtest::describe(item);
    sweep([&](const auto& guarded) {
        std::optional<ExampleItem> copy;
        try {
            guarded([&] { copy.emplace(item.copy()); });
            EXPECT_EQ(zwtest::describe(*copy), before);
        } catch (const std::bad_alloc&) {
        }
        EXPECT_EQ(zwtest::describe(item), before);
    });
}

TEST_F(AllocationFailure, FailedGetLeavesTheCacheEmptyForTheNextGet) {
    const struct {
        const char* name;
        const zxArray_tag* (ExampleItem::*get)() const;
        SharedZxArrayPtr& (*cache)(const ExampleItem&);
    } getters[] = {
        {"RelativePaths", &ExampleItem::getRelativePathsProperty, &Caches::relativePaths},
        {"SupportingFiles", &ExampleItem::getSupportingFilesProperty, &Caches::supportingFiles},
        {"ExampleType", &ExampleItem::getExampleTypeProperty, &Caches::exampleType},
        {"DocIDLinks", &ExampleItem::getDocIDLinksProperty, &Caches::docIDLinks},
    };
    for (const auto& getter : getters) {
        SCOPED_TRACE(getter.name);
        const std::uint64_t allocations = sweep([&](const auto& guarded) {
            const ExampleItem item = makeItem(ExampleType::Chart, links({{u"a", u"1"}, {u"b", u"2"}}));
            const zxArray_tag* got = nullptr;
            try {
                guarded([&] { got = (item.*getter.get)(); });
                EXPECT_NE(got, nullptr);
            } catch (const std::bad_alloc&) {
                EXPECT_EQ(getter.cache(item), nullptr);
                EXPECT_NE((item.*getter.get)(), nullptr);
            }
        });
        EXPECT_GT(allocations, 0U);
    }
}

TEST_F(AllocationFailure, FailedSetLeavesTheItemAsItWasOrAsSet) {
    const auto cellRow = [] {
        const unsigned long dims[] = {1, 2};
        matrix::zx_array_handle value(matrix::createCellArray(dims));
        value->cells[0] = matrix::from_zentab(matrix::createCharRow(u"x.m"));
        value->cells[1] = matrix::from_zentab(matrix::createCharRow(u"y.m"));
        return value;
    };
    const auto kind = [](unsigned long cols) {
        const unsigned long dims[] = {1, cols};
        matrix::zx_array_handle value(matrix::detail::do_create_uninitnumeric(dims, zxUINT32_CLASS, zxREAL));
        for (unsigned long i = 0; i < cols; ++i) {
            const std::uint32_t app = ExampleType::App;
            std::memcpy(value->realData + 4 * i, &app, 4);
        }
        return value;
    };
    const std::u16string name = u"a longer name than fits in place";
    const struct {
        const char* name;
        std::function<matrix::zx_array_handle()> value;
        std::function<void(ExampleItem&, const zxArray_tag*)> set;
    } setters[] = {
        {"Name", nullptr, [&](ExampleItem& item, const zxArray_tag*) { item.setNameProperty(&name); }},
        {"RelativePaths", cellRow,
         [](ExampleItem& item, const zxArray_tag* v) { item.setRelativePathsProperty(v); }},
        {"SupportingFiles", cellRow,
         [](ExampleItem& item, const zxArray_tag* v) { item.setSupportingFilesProperty(v); }},
        {"ExampleType", [&] { return kind(1); },
         [](ExampleItem& item, const zxArray_tag* v) { item.setExampleTypeProperty(v); }},
        {"ExampleType, not a scalar", [&] { return kind(2); },
         [](ExampleItem& item, const zxArray_tag* v) {
             try {
                 item.setExampleTypeProperty(v);
                 ADD_FAILURE() << "a kind of two elements was taken";
             } catch (const example::docparser::detail::RequireScalarError&) {
             }
         }},
        {"DocIDLinks",
         [] {
             return linkArray(1, 2, links({{u"x", u"9"}, {u"y", u"8"}}));
         },
         [](ExampleItem& item, const zxArray_tag* v) { item.setDocIDLinksProperty(v); }},
    };
    for (const auto& setter : setters) {
        SCOPED_TRACE(setter.name);
        std::string after;
        {
            ExampleItem item = makeItem();
            const auto value = setter.value ? setter.value() : matrix::zx_array_handle();
            setter.set(item, value.get());
            after = zwtest::describe(item);
        }
        sweep([&](const auto& guarded) {
            ExampleItem item = makeItem();
            item.getRelativePathsProperty();
            item.getSupportingFilesProperty();
            item.getExampleTypeProperty();
            item.getDocIDLinksProperty();
            const std::string before = zwtest::describe(item);
            const auto value = setter.value ? setter.value() : matrix::zx_array_handle();
            try {
                guarded([&] { setter.set(item, value.get()); });
                EXPECT_EQ(zwtest::describe(item), after);
            } catch (const std::bad_alloc&) {
                const std::string now = zwtest::describe(item);
                EXPECT_TRUE(now == before || now == after) << now;
            }
        });
    }
}

TEST_F(AllocationFailure, FailedRootOperationsKeepTheEarlierRoot) {
    const std::u16string longer = u"/a documentation root too long to be stored in place";
    zwhost::settings::setDocumentationRoot(longer);
    const struct {
        const char* name;
        std::function<void()> operation;
    } operations[] = {
        {"setExampleRoot", [&] { DocExampleParser::setExampleRoot(longer + u"/set"); }},
        {"restoreDefaultSettings", [] { DocExampleParser::restoreDefaultSettings(); }},
    };
    for (const auto& operation : operations) {
        SCOPED_TRACE(operation.name);
        const std::uint64_t allocations = sweep([&](const auto& guarded) {
            DocExampleParser::setExampleRoot(u"/earlier");
            const auto earlier = DocExampleParser::getExampleRoot();
            try {
                guarded(operation.operation);
            } catch (const std::bad_alloc&) {
                EXPECT_EQ(DocExampleParser::getExampleRoot(), earlier);
            }
            DocExampleParser::setExampleRoot(u"/earlier");
        });
        EXPECT_GT(allocations, 1U);
    }
    zwhost::settings::resetToDefaults();
}

TEST_F(AllocationFailure, WholeReadThrowsOrGivesAConsistentPart) {
    const zwtest::TempDir dir;
    zwtest::writeSmallTree(dir);
    const auto read = [&](const std::u16string& locale) {
        zwhost::settings::setCurrentLocale(locale);
        return DocExampleParser::getDocExampleFiles(zwtest::u16(dir.path().string()));
    };
    const ExampleCatalogues english = read(u"ko_KR");
    const ExampleCatalogues whole = read(u"ja_JP");
    const std::uint64_t allocations = sweep([&](const auto& guarded) {
        ExampleCatalogues result;
        try {
            guarded([&] { result = DocExampleParser::getDocExampleFiles(zwtest::u16(dir.path().string())); });
        } catch (const std::bad_alloc&) {
            return;
        }
        EXPECT_EQ(zwtest::inconsistency(result, whole, english), "");
    });
    zwhost::settings::resetToDefaults();
    EXPECT_GT(allocations, 100U);
}

TEST_F(AllocationFailure, HostilePackagesTakeLittleMemoryAndGoodOnesAreRead) {
    const zwtest::TempDir dir;
    dir.writeZip("a/good.zip", {{"good.json", zwtest::catalogueText("h", "en", {{"a", "A"}})}});
    dir.writeZip("b/bomb.zip", {{"bomb.json", std::string(16 << 20, ' ')}});
    // A stored entry whose central record declares 3 GiB.
    const auto liar = dir.writeZip("c/liar.zip", {{"liar.json", zwtest::catalogueText("l", "en", {})}});
    std::ifstream in(liar, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    const std::size_t central = bytes.find("PK\x01\x02");
    ASSERT_NE(central, std::string::npos);
    bytes.replace(central + 24, 4, "\x00\x00\x00\xC0", 4);
    dir.write("c/liar.zip", bytes);

    zwhost::settings::setReadLimit(std::uint64_t{1} << 20);
    allocation::resetPeak();
    const std::size_t start = allocation::liveBytes();
    const ExampleCatalogues result = DocExampleParser::getDocExampleFiles(zwtest::u16(dir.path().string()));
    const std::size_t peak = allocation::peakBytes() - start;
    zwhost::settings::resetToDefaults();
    EXPECT_EQ(result.size(), 1U);
    EXPECT_EQ(result.count(u"h"), 1U);
    EXPECT_LT(peak, std::size_t{4} << 20) << "bytes alive at once while reading";
}

} // namespace
