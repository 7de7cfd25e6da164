// A failure at every host call of a whole read, one run per call.

#include <set>
#include <string>
#include <tuple>
#include <utility>

#include <gtest/gtest.h>

#include "example/docparser/doc_example_parser.hpp"
#include "support/host_leak_check.hpp"
#include "support/small_tree.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/settings.hpp"
#include "zwhost/skip_watch.hpp"

namespace {

using example::docparser::DocExampleParser;
using example::docparser::ExampleCatalogues;

class FaultSweep : public zwtest::HostLeakCheck {
protected:
    FaultSweep() { zwtest::writeSmallTree(dir); }
    ~FaultSweep() override { zwhost::settings::resetToDefaults(); }

    ExampleCatalogues read(const std::u16string& locale) {
        zwhost::settings::setCurrentLocale(locale);
        return DocExampleParser::getDocExampleFiles(zwtest::u16(dir.path().string()));
    }

    zwtest::TempDir dir;
};

TEST_F(FaultSweep, AFailedCallCostsItsFileItsPackageOrTheWholeCall) {
    // A host call failing at its n-th call, and what is left of the tree, or the failure that ends
    // the whole call, and how many files and packages the host counts as given up.
    // clang-format off
    const struct {
        const char* operation;
        std::uint64_t call;
        const char* left;
        std::size_t givenUp;
    } rows[] = {
        {"DocResourceParser::getAllProducts", 1, "injected fault in DocResourceParser::getAllProducts", 0},
        {"GetStorageSystemReference", 1, "injected fault in GetStorageSystemReference", 0},
        {"FileSystemOpsSelector", 1, "injected fault in FileSystemOpsSelector", 0},
        {"ZipPhysicalPackage", 1, "g(ja): c/p=ja c/q=en\nh(ja): c/a=ja c/b=en c/c=ja\n", 1},
        {"ZipPhysicalPackage", 2, "g(en): c/p=en c/q=en\nh(ja): c/a=ja c/b=en c/c=ja\nk(ja): c/x=ja c/y=en\n", 1},
        {"Package::open", 2, "g(en): c/p=en c/q=en\nh(ja): c/a=ja c/b=en c/c=ja\nk(ja): c/x=ja c/y=en\n", 1},
        {"FileSystemManager", 1, "g(ja): c/p=ja c/q=en\nh(ja): c/a=ja c/b=en c/c=ja\n", 1},
        {"FileSystemManager::getAllLeafs", 1, "g(ja): c/p=ja c/q=en\nh(ja): c/a=ja c/b=en c/c=ja\n", 1},
        {"DocResourceParser::isValidFilename", 3, "g(ja): c/p=ja c/q=en\nh(ja): c/a=ja c/b=en c/c=ja\n", 1},
        {"FileSystemManager::readEntry", 2, "g(ja): c/p=ja c/q=en\nh(ja): c/a=ja c/b=en c/c=ja\nk(en): c/x=en c/y=en\n", 1},
        {"DocResourceParser::openAndReadFile", 4, "g(ja): c/p=ja c/q=en\nh(ja): c/a=ja c/c=ja\nk(ja): c/x=ja c/y=en\n", 1},
        {"DocResourceParser::openAndReadFile", 5, "g(ja): c/p=ja c/q=en\nh(en): c/a=en c/b=en\nk(ja): c/x=ja c/y=en\n", 1},
        {"ParsingTools::getHeaderInfo", 6, "g(ja): c/p=ja\nh(ja): c/a=ja c/b=en c/c=ja\nk(ja): c/x=ja c/y=en\n", 0},
        {"ParsingTools::getFluStringWithFallback", 1, "g(ja): c/p=ja c/q=en\nh(ja): c/a=ja c/b=en c/c=ja\nk(ja): c/x=ja\n", 0},
    };
    // clang-format on
    for (const auto& [operation, call, left, givenUp] : rows) {
        zwhost::fault::Scope faults;
        zwhost::fault::failOn(operation, call);
        const zwhost::reference::SkipWatch watch;
        std::string got;
        try {
            got = zwtest::titles(read(u"ja_JP"));
        } catch (const zwhost::fault::InjectedFault& fault) {
            got = fault.what();
        }
        EXPECT_EQ(got, left) << operation << " fails at call " << call;
        EXPECT_EQ(watch.count(), givenUp) << operation << " fails at call " << call;
    }
}

TEST_F(FaultSweep, EveryFailedCallLeavesAConsistentPartOrFailsTheSetUp) {
    const ExampleCatalogues english = read(u"ko_KR");
    zwhost::fault::Scope faults;
    const ExampleCatalogues whole = read(u"ja_JP");
    const std::uint64_t points = zwhost::fault::pointsReached();
    ASSERT_EQ(whole.size(), 3U);
    std::set<std::string> setUpFailures;
    for (std::uint64_t k = 1; k <= points; ++k) {
        SCOPED_TRACE("failure at call " + std::to_string(k));
        zwhost::fault::reset();
        zwhost::fault::failAtPoint(k);
        try {
            const ExampleCatalogues result = read(u"ja_JP");
            EXPECT_EQ(zwtest::inconsistency(result, whole, english), "");
            EXPECT_NE(zwtest::describe(result), zwtest::describe(whole))
                << "each file and package of the tree gives something";
        } catch (const zwhost::fault::InjectedFault& fault) {
            setUpFailures.insert(fault.what());
        }
    }
    const std::set<std::string> expected = {
        "injected fault in DocResourceParser::getAllProducts",
        "injected fault in GetStorageSystemReference",
        "injected fault in FileSystemOpsSelector",
    };
    EXPECT_EQ(setUpFailures, expected);
}

} // namespace
