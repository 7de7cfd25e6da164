// A failure at every allocation and at every host call of the parser, the bridge's accessors,
// the copies of the records and a whole read; and the memory a hostile package may take.

#include <cstdint>
#include <cstring>
#include <functional>
#include <new>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include <boost/algorithm/string/join.hpp>
#include <gtest/gtest.h>

#include "alloc/counting_new.hpp"
#include "bridge/bridge_fixture.hpp"
#include "bridge/require_scalar_error.hpp"
#include "catalogue/catalogue_parser.hpp"
#include "support/result_text.hpp"
#include "zwhost/settings.hpp"

namespace {

namespace allocation = zwtest::allocation;
using example::docparser::DocExampleParser;
using example::docparser::ExampleCatalogues;
using zwtest::ExampleItem;
using zwtest::ExampleType;
using zwtest::Strings;

// Runs an operation with one failure armed; gives "" if it ran through, "allocation" if an
// allocation failed, or the name of the host call that failed.
using Guarded = std::function<std::string(const std::function<void()>& operation)>;

// Calls `run` again and again; each time, the operation it hands to `guarded` runs with its first
// allocation failing, then its second, and so on, and then likewise with each of its host calls,
// until a run reaches fewer than the one due to fail. `run` checks the outcome; host arrays and
// objects, and the bytes allocated, must be back to their count after each run. Gives the number
// of allocations of a whole run.
// The host calls whose failure reached the operation's caller in the last sweep.
std::set<std::string> failedCalls;

// Whether the last guarded operation ran through although the failure armed for it happened.
bool failureAbsorbed = false;

// Those host calls in name order, each followed by a space.
std::string failedCallNames() {
    return boost::algorithm::join(failedCalls, " ") + ' ';
}

std::uint64_t sweep(const std::function<void(const Guarded& guarded)>& run) {
    failedCalls.clear();
    failureAbsorbed = false;
    std::string failed; // reserved, so that noting a failure allocates nothing in the run
    failed.reserve(256);
    // A first run without failure makes what the host keeps for good (interned names, settings).
    run([](const std::function<void()>& operation) { return operation(), std::string(); });
    std::uint64_t allocations = 0;
    for (const bool hostCalls : {false, true}) {
        for (std::uint64_t n = 1;; ++n) {
            SCOPED_TRACE((hostCalls ? "host call " : "allocation ") + std::to_string(n) + " fails");
            zwhost::fault::reset();
            const auto counts = [] {
                const std::size_t files = zwtest::openFiles().size(); // freed before the bytes are counted
                return std::tuple(zwhost::arrays::liveCount(), zwhost::zcos::liveObjectCount(),
                                  allocation::liveBytes(), files);
            };
            const auto before = counts();
            bool fired = false;
            run([&](const std::function<void()>& operation) {
                std::string failure;
                zwhost::fault::reset();
                hostCalls ? zwhost::fault::failAtPoint(n) : allocation::failAt(n);
                try {
                    operation();
                } catch (const std::bad_alloc&) {
                    failure = "allocation";
                } catch (const zwhost::fault::InjectedFault& fault) {
                    failure = std::string(fault.what()).substr(std::strlen("injected fault in "));
                }
                fired = hostCalls ? zwhost::fault::pointsReached() >= n : allocation::failed();
                failed = hostCalls ? failure : std::string_view();
                failureAbsorbed = fired && failure.empty();
                allocation::failAt(0);
                zwhost::fault::reset();
                return failure;
            });
            // The host's call counters are part of the bytes alive.
            zwhost::fault::reset();
            EXPECT_EQ(counts(), before) << "host arrays, host objects, bytes, file descriptors";
            if (!failed.empty()) {
                failedCalls.insert(failed);
            }
            if (!fired || ::testing::Test::HasFailure()) {
                allocations = hostCalls ? allocations : n - 1;
                break;
            }
        }
    }
    return allocations;
}

class AllocationFailure : public zwtest::BridgeTest {};

TEST_F(AllocationFailure, ParserGivesTheWholeCatalogueOrNothing) {
    const std::string text = zwtest::fileText(ZW_TEST_DATA "/alloc/catalogue.json");
    const std::string whole = zwtest::describe(example::docparser::detail::parseExampleCatalogue(text));
    const std::uint64_t allocations = sweep([&](const Guarded& guarded) {
        ExampleCatalogues result;
        if (guarded([&] { result = example::docparser::detail::parseExampleCatalogue(text); }).empty()) {
            EXPECT_EQ(zwtest::describe(result), whole);
        }
    });
    EXPECT_GT(allocations, 20U);
    EXPECT_EQ(failedCallNames(), "ParsingTools::getFluString ParsingTools::getFluString(value) "
                                 "ParsingTools::getFluStringWithFallback ParsingTools::getHeaderInfo "
                                 "ParsingTools::getJsonArray ParsingTools::getJsonArray(value) ");
}

TEST_F(AllocationFailure, FailedCopyLeavesTheSourceAsItWas) {
    const ExampleItem item = makeItem(ExampleType::Chart);
    const std::string before = zwtest::describe(item);
    sweep([&](const Guarded& guarded) {
        std::optional<ExampleItem> copy;
        if (guarded([&] { copy.emplace(item.copy()); }).empty()) {
            EXPECT_EQ(zwtest::describe(*copy), before);
        }
        EXPECT_EQ(zwtest::describe(item), before);
    });
}

TEST_F(AllocationFailure, FailedGetLeavesTheCacheEmptyForTheNextGet) {
    // Per property, the host calls of its build, whose failure reaches the host.
    const char* const failing[] = {
        "accessStringVectorCache matrix::createArray ", "accessStringVectorCache matrix::createArray ",
        "COSClass::getClass do_create_uninitnumeric makeInterned matrix::createArray "
        "omConstructObjectWithClient ",
        "COSClass::getClass makeInterned matrix::createArray omCreateZCOSMatrix omSetArrayElement omWrapData "
        "zcosConvertArrayToInternalInPlace "};
    for (std::size_t i = 0; i < 4; ++i) {
        const auto get = zwtest::kArrayProperties[i].get;
        const Strings whole = textsOf((makeItem(ExampleType::Chart).*get)());
        EXPECT_GT(sweep([&](const Guarded& guarded) {
                      const ExampleItem item = makeItem(ExampleType::Chart);
                      const auto live = zwhost::arrays::liveCount();
                      if (!guarded([&] { (item.*get)(); }).empty()) {
                          EXPECT_EQ(zwhost::arrays::liveCount(), live) << "nothing kept in the cache";
                      }
                      EXPECT_EQ(textsOf((item.*get)()), whole);
                  }),
                  0U);
        EXPECT_EQ(failedCallNames(), failing[i]);
    }
}

TEST_F(AllocationFailure, FailedSetLeavesTheItemAsItWasOrAsSetWithItsCaches) {
    using Handle = matrix::zx_array_handle;
    const struct {
        const char* name;
        Handle value;
        const char* failing; // the host calls whose failure reaches the host
        bool leavesItAsSet;  // and leaves the new value with the old cache
    } setters[] = {
        // clang-format off
        {"Name", Handle(matrix::createCharRow(u"a longer name than fits in place")), "setStringProperty ", false},
        {"RelativePaths", zwtest::makeCells(1, 2, {u"x.m", u"y.m"}), "matrix::createArray setStringVectorAndCache ", false},
        {"SupportingFiles", zwtest::makeCells(1, 2, {u"x.m", u"y.m"}), "matrix::createArray setStringVectorAndCache ", false},
        {"ExampleType", zwtest::makeNumbers<std::uint32_t>(1, 1, ExampleType::App), "copyZxArrayToSharedZxArrayPtr ", true},
        {"ExampleType", zwtest::makeNumbers<std::uint32_t>(1, 2, ExampleType::App), "get_error_id ", false}, // refused: not a scalar
        {"DocIDLinks", linkArray(1, 2, {u"x", u"y"}), "COSClass::getClass makeInterned matrix::createArray "
         "omCreateZCOSMatrix omSetArrayElement omWrapData zcosConvertArrayToInternalInPlace ", true},
        // clang-format on
    };
    for (const auto& setter : setters) {
        SCOPED_TRACE(setter.name);
        const auto set = [&](const Handle& object) {
            try {
                zwhost::zcos::setProperty(object.get(), 0, setter.name, setter.value.get());
            } catch (const example::docparser::detail::RequireScalarError&) {
            }
        };
        ExampleItem item = makeItem();
        set(zwhost::classes::wrapExampleItem(item));
        const std::string after = zwtest::describe(item);
        sweep([&](const Guarded& guarded) {
            ExampleItem item = makeItem();
            const Handle object = zwhost::classes::wrapExampleItem(item);
            const auto cachedBefore = cachesOf(item);
            const std::string before = zwtest::describe(item);
            const std::string failure = guarded([&] { set(object); });
            const std::string now = zwtest::describe(item);
            if (failure.empty()) {
                EXPECT_EQ(now, after);
                return;
            }
            EXPECT_EQ(cachesOf(item), cachedBefore) << failure;
            if (failure == "allocation") {
                EXPECT_TRUE(now == before || now == after) << now;
            } else {
                EXPECT_EQ(now, setter.leavesItAsSet ? after : before) << failure;
            }
        });
        EXPECT_EQ(failedCallNames(), setter.failing);
    }
}

TEST_F(AllocationFailure, FailedRootOperationsKeepTheEarlierRoot) {
    const std::u16string longer = u"/a documentation root too long to be stored in place";
    zwhost::settings::setDocumentationRoot(longer);
    for (const std::function<void()>& operation :
         {std::function<void()>([&] { DocExampleParser::setExampleRoot(longer + u"/set"); }),
          std::function<void()>(&DocExampleParser::restoreDefaultSettings)}) {
        EXPECT_GT(sweep([&](const Guarded& guarded) {
                      DocExampleParser::setExampleRoot(u"/earlier");
                      const auto earlier = DocExampleParser::getExampleRoot();
                      if (!guarded(operation).empty()) {
                          EXPECT_EQ(DocExampleParser::getExampleRoot(), earlier);
                      }
                      DocExampleParser::setExampleRoot(u"/earlier");
                  }),
                  1U);
    }
    EXPECT_EQ(failedCallNames(), "DocResourceParser::getReferenceRoots ") << "of restoreDefaultSettings";
    zwhost::settings::resetToDefaults();
}

TEST_F(AllocationFailure, WholeReadThrowsOrGivesAConsistentPart) {
    const zwtest::TempDir dir;
    zwtest::writeTree(dir.path(), "small");
    const auto read = [&] { return DocExampleParser::getDocExampleFiles(zwtest::u16(dir.path().string())); };
    zwhost::settings::setCurrentLocale(u"ko_KR");
    const ExampleCatalogues english = read();
    zwhost::settings::setCurrentLocale(u"ja_JP");
    const ExampleCatalogues whole = read();
    const std::uint64_t allocations = sweep([&](const Guarded& guarded) {
        ExampleCatalogues result;
        if (guarded([&] { result = read(); }).empty()) {
            EXPECT_EQ(zwtest::inconsistency(result, whole, english), "");
            EXPECT_EQ(zwtest::describe(result) == zwtest::describe(whole), !failureAbsorbed)
                << "a failure that reaches no caller costs its file or package";
        }
    });
    zwhost::settings::resetToDefaults();
    EXPECT_GT(allocations, 100U);
    EXPECT_EQ(failedCallNames(),
              "DocResourceParser::getAllProducts FileSystemOpsSelector GetStorageSystemReference ");
}

TEST_F(AllocationFailure, HostilePackagesTakeLittleMemoryAndGoodOnesAreRead) {
    zwhost::settings::setReadLimit(std::uint64_t{1} << 20);
    allocation::resetPeak();
    const std::size_t start = allocation::liveBytes();
    const ExampleCatalogues result =
        DocExampleParser::getDocExampleFiles(u"" ZW_TEST_DATA "/hostile-packages");
    const std::size_t peak = allocation::peakBytes() - start;
    zwhost::settings::resetToDefaults();
    EXPECT_TRUE(result.size() == 1 && result.contains(u"h")) << "only the good package is read";
    EXPECT_LT(peak, std::size_t{4} << 20) << "bytes alive at once while reading";
}

} // namespace
