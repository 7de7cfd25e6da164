#include "reference/docparser/read_zip_files.hpp"

#include <gtest/gtest.h>

#include "catalogue/catalogue_parser.hpp"
#include "support/case_tree.hpp"
#include "support/host_leak_check.hpp"
#include "support/result_text.hpp"
#include "zwhost/fault.hpp"

namespace {

using example::docparser::ExampleCatalogues;
using reference::docparser::DocResourceParser;
using reference::docparser::ParsingInfo;
using reference::docparser::ProductPathData;
using Info = ParsingInfo<ExampleCatalogues>;
using ReadZipFiles = zwtest::HostLeakCheck;

// Each case of tests/data/trees/ZIPS: a tree of TREES, its packages as products in the order read
// ("*": a localised product), the call of GetStorageSystemReference that fails (0: none), and what
// they give or the failure that ends the call.
TEST_F(ReadZipFiles, LeavesAreChosenByStemOrByTheirProductAndStorageIsSetUpOnce) {
    // clang-format off
    const Info info{&example::docparser::detail::parseExampleCatalogue, [](const std::u16string&) { return true; }, {u"ja_JP", u"ko_KR", u"zh_CN"}, u"_ja_JP"};
    // clang-format on
    for (const auto& fields : zwtest::caseLines(ZW_TEST_DATA "/trees/ZIPS")) {
        SCOPED_TRACE(fields.at(4));
        const zwtest::TempDir dir;
        const auto products = zwtest::treeProducts(dir.path(), fields.at(0), fields.at(1), ".zip");
        const zwhost::fault::Scope faults;
        zwhost::fault::failOn("GetStorageSystemReference", std::stoull(fields.at(2)));
        try {
            const auto results = DocResourceParser::ParsingTools::readZipFiles(products, info);
            EXPECT_TRUE(results.notInstalled.empty());
            EXPECT_EQ(zwtest::titles(results.installed), fields.at(3));
        } catch (const zwhost::fault::InjectedFault& fault) {
            EXPECT_EQ(fault.what(), fields.at(3));
        }
    }
}

} // namespace
