// A failure at every host call of a whole read, one run per call.

#include <set>
#include <string>

#include <gtest/gtest.h>

#include "example/docparser/doc_example_parser.hpp"
#include "support/host_leak_check.hpp"
#include "support/small_tree.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/settings.hpp"

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

TEST_F(FaultSweep, EachFailedCallCostsAFileAPackageOrTheWholeCall) {
    const ExampleCatalogues english = read(u"ko_KR");
    zwhost::fault::Scope faults;
    const ExampleCatalogues whole = read(u"ja_JP");
    const std::uint64_t points = zwhost::fault::pointsReached();
    ASSERT_EQ(whole.size(), 3U);
    ASSERT_GT(points, 50U);
    for (const char* operation :
         {"DocResourceParser::getAllProducts", "DocResourceParser::isValidFilename",
          "DocResourceParser::openAndReadFile", "ProductPathData::getFullPath", "ZipPhysicalPackage",
          "Package", "Package::open", "FileSystemManager", "FileSystemManager::getAllLeafs",
          "FileSystemManager::readEntry", "ParsingTools::getHeaderInfo", "ParsingTools::getJsonArray",
          "ParsingTools::getFluString", "ParsingTools::getFluStringWithFallback"}) {
        EXPECT_GT(zwhost::fault::callsOf(operation), 0U) << operation << " is never failed";
    }

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
        "injected fault in ParsingTools::getSupportedDocLocales",
        "injected fault in ParsingTools::getCurrentLocale",
        "injected fault in DocResourceParser::getAllProducts",
        "injected fault in GetStorageSystemReference",
        "injected fault in FileSystemOpsSelector",
        "injected fault in ProductData::isNonEnglishLocale",
    };
    EXPECT_EQ(setUpFailures, expected);
}

} // namespace
