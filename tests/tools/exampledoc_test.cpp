#include <sstream>

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>

#include "commands.hpp"
#include "example/docparser/doc_example_parser.hpp"
#include "matrix/matrix.hpp"
#include "support/catalogue_text.hpp"
#include "support/temp_tree.hpp"
#include "zwhost/settings.hpp"
#include "zwhost/zcos.hpp"

namespace {

struct Outcome {
    int status;
    std::string out;
};

class Exampledoc : public ::testing::Test {
protected:
    ~Exampledoc() override {
        zwhost::settings::resetToDefaults();
        example::docparser::DocExampleParser::restoreDefaultSettings();
    }

    static Outcome run(int (*command)(const exampledoc::Options&, std::ostream&, std::ostream&),
                       const std::vector<std::string>& args, bool allowJson = true) {
        std::ostringstream out;
        std::ostringstream err;
        const int status = command(exampledoc::parseOptions(args, allowJson), out, err);
        return {status, out.str()};
    }

    const std::string sampleRoot = ZW_SAMPLE_DOCROOT;
};

TEST_F(Exampledoc, ListShowsTheSampleTreeInTheChosenLocale) {
    const Outcome ja = run(exampledoc::listCommand, {"--root", sampleRoot, "--locale", "ja_JP"});
    EXPECT_EQ(ja.status, 0);
    for (const char* expected :
         {"graphics  (Zentab 24.2, ja_JP", "signal  (Zentab 24.2, ja_JP", "control  (",
          "stats  (Zentab 24.2, en_US", "ピーク関数のサーフェスプロット", "Live_Script",
          "> openExample('graphics/BarChartDashboard');", "> signalLabeler"}) {
        EXPECT_NE(ja.out.find(expected), std::string::npos) << expected << "\n" << ja.out;
    }
    const Outcome zh = run(exampledoc::listCommand, {"--root", sampleRoot, "--locale", "zh_CN"});
    EXPECT_NE(zh.out.find("流线动画"), std::string::npos);
    EXPECT_EQ(zh.out.find("ピーク"), std::string::npos);
}

TEST_F(Exampledoc, JsonHoldsEveryFieldOfEveryItem) {
    const Outcome en = run(exampledoc::listCommand, {"--root", sampleRoot, "--locale", "en_US", "--json"});
    ASSERT_EQ(en.status, 0);
    const auto json = boost::json::parse(en.out).as_object();
    EXPECT_EQ(json.size(), 4U);
    const auto& graphics = json.at("graphics").as_object();
    EXPECT_EQ(graphics.at("header").at("locale"), "en_US");
    const auto& items = graphics.at("items").as_array();
    ASSERT_EQ(items.size(), 5U);
    const auto& first = items[0].as_object();
    for (const char* key :
         {"id", "name", "component", "title", "description", "relativePaths", "thumbnail", "exampleType",
          "exampleTypeValue", "openCommand", "supportingFiles", "docIDLinks"}) {
        EXPECT_TRUE(first.contains(key)) << key;
    }
    EXPECT_EQ(first.at("id"), "graphics/AnimateAStreamline");
    EXPECT_EQ(first.at("exampleTypeValue"), 1);
}

TEST_F(Exampledoc, CheckPassesOnTheSampleTree) {
    for (const char* locale : {"en_US", "ja_JP", "zh_CN", "ko_KR"}) {
        const Outcome check =
            run(exampledoc::checkCommand, {"--root", sampleRoot, "--locale", locale}, false);
        EXPECT_EQ(check.status, 0) << check.out;
    }
}

TEST_F(Exampledoc, ShowReadsEveryPropertyThroughTheHostClasses) {
    const auto arrays = zwhost::arrays::liveCount();
    const auto objects = zwhost::zcos::liveObjectCount();
    const Outcome shown =
        run(exampledoc::showCommand,
            {"graphics/SurfacePlotOfPeaks", "--root", sampleRoot, "--locale", "zh_CN"}, false);
    EXPECT_EQ(shown.status, 0);
    for (const char* expected :
         {"(locale zh_CN)", "  Name: \"SurfacePlotOfPeaks\"", "  Title: \"Peaks 函数的曲面图\"",
          "  RelativePaths: 1-by-1 cell\n      - \"graphics/surface/SurfacePlotOfPeaks.zlx\"",
          "  ExampleType: Live_Script (0)", "  SupportingFiles: 1-by-1 cell",
          "  DocIDLinks: 1-by-0 DocIDLink (empty)"}) {
        EXPECT_NE(shown.out.find(expected), std::string::npos) << expected << "\n" << shown.out;
    }
    const Outcome links =
        run(exampledoc::showCommand,
            {"graphics/SurfacePlotOfPeaks", "--root", sampleRoot, "--locale", "en_US"}, false);
    EXPECT_NE(links.out.find(
                  "  DocIDLinks: 1-by-2 DocIDLink\n      - DocID \"graphics/ref/surf\", Target \"surf\""),
              std::string::npos)
        << links.out;
    EXPECT_EQ(run(exampledoc::showCommand, {"graphics/NoSuchExample", "--root", sampleRoot}, false).status,
              1);
    EXPECT_THROW(run(exampledoc::showCommand, {"--root", sampleRoot}, false), exampledoc::UsageError);
    EXPECT_EQ(zwhost::arrays::liveCount(), arrays);
    EXPECT_EQ(zwhost::zcos::liveObjectCount(), objects);
}

TEST_F(Exampledoc, BadArgumentsAreUsageErrors) {
    EXPECT_THROW(exampledoc::parseOptions({"--frobnicate"}, true), exampledoc::UsageError);
    EXPECT_THROW(exampledoc::parseOptions({"--root"}, true), exampledoc::UsageError);
    EXPECT_THROW(exampledoc::parseOptions({"--json"}, false), exampledoc::UsageError);
    EXPECT_THROW(run(exampledoc::listCommand, {"--locale", "japanese"}), exampledoc::UsageError);
    EXPECT_THROW(run(exampledoc::listCommand, {"--root", "/no/such/root"}), exampledoc::UsageError);
}

} // namespace
