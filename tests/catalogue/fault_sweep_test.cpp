// A failure at every host call of a whole read, one run per call.

#include <cerrno>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include <boost/algorithm/string/replace.hpp>
#include <gtest/gtest.h>

#include "example/docparser/doc_example_parser.hpp"
#include "support/case_tree.hpp"
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
    const std::map<std::string, int> errors = {{"EACCES", EACCES}, {"EINTR", EINTR}, {"EIO", EIO}};
    // Each line of tests/data/trees/FAULTS: a host call, or a system call and the error it gives,
    // failing at its n-th call, how many files and packages the host counts as given up, and what
    // is left of the tree or the failure that ends the whole call.
    for (const auto& fields : zwtest::caseLines(ZW_TEST_DATA "/trees/FAULTS")) {
        const std::string& operation = fields.at(0);
        const std::uint64_t call = std::stoull(fields.at(1));
        zwhost::fault::Scope faults;
        if (const std::size_t slash = operation.find('/'); slash != std::string::npos) {
            zwhost::fault::failSystemCall(operation.substr(0, slash), call,
                                          errors.at(operation.substr(slash + 1)));
        } else {
            zwhost::fault::failOn(operation, call);
        }
        const zwhost::reference::SkipWatch watch;
        std::string got;
        try {
            got = zwtest::titles(read(u"ja_JP"));
        } catch (const std::exception& failure) {
            got = failure.what();
            boost::replace_all(got, dir.path().string(), "TREE");
        }
        EXPECT_EQ(got, fields.at(3)) << operation << " fails at call " << call;
        EXPECT_EQ(watch.count(), std::stoull(fields.at(2))) << operation << " fails at call " << call;
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
