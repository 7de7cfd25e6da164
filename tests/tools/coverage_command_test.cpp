#include <sstream>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

#include "commands.hpp"
#include "example/docparser/doc_example_parser.hpp"
#include "support/catalogue_text.hpp"
#include "support/temp_tree.hpp"
#include "zwhost/settings.hpp"

namespace {

using zwtest::catalogueText;

class CoverageCommand : public ::testing::Test {
protected:
    ~CoverageCommand() override {
        zwhost::settings::resetToDefaults();
        example::docparser::DocExampleParser::restoreDefaultSettings();
    }
};

TEST_F(CoverageCommand, CountsLocalisedMissingAndOrphanIdsPerHelpFolderAndLocale) {
    const zwtest::TempDir dir;
    dir.write("docCatalog/exampleapi/h/ex.json",
              catalogueText("h", "en_US", {{"a", ""}, {"b", ""}, {"c", ""}}));
    dir.write("docCatalog/exampleapi/h/ex_ja_JP.json", catalogueText("h", "ja_JP", {{"a", ""}, {"x", ""}}));
    dir.writeZip("docCatalog/exampleapi/g/p.zip",
                 {{"g.json", catalogueText("g", "en_US", {{"a", ""}})},
                  {"g_zh_CN.json", catalogueText("g", "zh_CN", {{"a", ""}})}});
    dir.write("docCatalog/exampleapi/g/bad_ko_KR.json", "{");
    exampledoc::Options options;
    options.root = dir.path().string();
    options.format = "json";
    std::ostringstream out;
    std::ostringstream err;
    EXPECT_EQ(exampledoc::coverageCommand(options, out, err), 0);
    const auto json = boost::json::parse(out.str()).as_object();
    const auto& h = json.at("helpFolders").at(1).at("locales").as_object();
    EXPECT_EQ(h.at("ja_JP"),
              boost::json::parse(R"({"english":3,"localised":1,"missingCount":2,"orphanCount":1,
        "hasCatalogue":true,"missing":["c/b","c/c"],"orphans":["c/x"]})"));
    EXPECT_EQ(h.at("zh_CN").at("hasCatalogue"), false);
    EXPECT_EQ(json.at("totals"), boost::json::parse(R"({
        "ja_JP":{"english":4,"localised":1,"missingCount":3,"orphanCount":1},
        "ko_KR":{"english":4,"localised":0,"missingCount":4,"orphanCount":0},
        "zh_CN":{"english":4,"localised":1,"missingCount":3,"orphanCount":0}})"));
    EXPECT_EQ(err.str(),
              "exampledoc coverage: 1 catalogue or package is not read; 'exampledoc check' tells why\n");

    options.format = "text";
    options.locale = "ja_JP";
    std::ostringstream text;
    exampledoc::coverageCommand(options, text, err);
    EXPECT_EQ(text.str(), "g  (1 English example)\n"
                          "  ja_JP  0 of 1 example localised (0%), 1 missing: no catalogue\n"
                          "\n"
                          "h  (3 English examples)\n"
                          "  ja_JP  1 of 3 examples localised (33%), 2 missing, 1 orphan\n"
                          "         missing  c/b\n"
                          "         missing  c/c\n"
                          "         orphan   c/x\n"
                          "\n"
                          "total\n"
                          "  ja_JP  1 of 4 examples localised (25%), 3 missing, 1 orphan\n");
    options.format = "sarif";
    EXPECT_THROW(exampledoc::coverageCommand(options, text, err), exampledoc::UsageError);
}

} // namespace
