#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

#include "cli.hpp"
#include "commands.hpp"
#include "example/docparser/doc_example_parser.hpp"
#include "foundation/log/diagnostic_logger.hpp"
#include "support/catalogue_text.hpp"
#include "support/host_leak_check.hpp"
#include "support/temp_tree.hpp"
#include "text_output.hpp"
#include "zwhost/settings.hpp"

namespace {

using example::docparser::DocExampleParser;

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

// An output that refuses every write, as a full disk does.
class FullBuffer : public std::streambuf {
protected:
    int_type overflow(int_type) override { return traits_type::eof(); }
    std::streamsize xsputn(const char*, std::streamsize) override { return 0; }
};

// Every test ends with the host's live arrays and objects back where they started.
class Exampledoc : public zwtest::HostLeakCheck {
protected:
    ~Exampledoc() override {
        zwhost::settings::resetToDefaults();
        DocExampleParser::restoreDefaultSettings();
    }

    static Outcome run(const std::vector<std::string>& args, bool terminal = false) {
        std::ostringstream out;
        std::ostringstream err;
        const int status = exampledoc::run(args, out, err, terminal);
        return {status, out.str(), err.str()};
    }

    static std::string readFile(const std::filesystem::path& file) {
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    const std::string sampleRoot = ZW_SAMPLE_DOCROOT;
};

TEST_F(Exampledoc, ListShowsTheSampleTreeInTheChosenLocale) {
    const Outcome ja = run({"list", "--root", sampleRoot, "--locale", "ja_JP"});
    EXPECT_EQ(ja.status, 0);
    for (const char* expected :
         {"graphics  (Zentab 24.2, ja_JP", "signal  (Zentab 24.2, ja_JP", "control  (",
          "stats  (Zentab 24.2, en_US", "ピーク関数のサーフェスプロット", "Live_Script",
          "> openExample('graphics/BarChartDashboard');", "> signalLabeler"}) {
        EXPECT_NE(ja.out.find(expected), std::string::npos) << expected << "\n" << ja.out;
    }
    const Outcome zh = run({"list", "--root", sampleRoot, "--locale", "zh_CN"});
    EXPECT_NE(zh.out.find("流线动画"), std::string::npos);
    EXPECT_EQ(zh.out.find("ピーク"), std::string::npos);
}

TEST_F(Exampledoc, JsonHoldsEveryFieldOfEveryItem) {
    const Outcome en = run({"list", "--root", sampleRoot, "--locale", "en_US", "--json"});
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
        const Outcome check = run({"check", "--root", sampleRoot, "--locale", locale});
        EXPECT_EQ(check.status, 0) << check.out;
    }
}

TEST_F(Exampledoc, ShowReadsEveryPropertyThroughTheHostClasses) {
    const Outcome shown =
        run({"show", "graphics/SurfacePlotOfPeaks", "--root", sampleRoot, "--locale", "zh_CN"});
    EXPECT_EQ(shown.status, 0);
    for (const char* expected :
         {"(locale zh_CN)", "  Name: \"SurfacePlotOfPeaks\"", "  Title: \"Peaks 函数的曲面图\"",
          "  RelativePaths: 1-by-1 cell\n      - \"graphics/surface/SurfacePlotOfPeaks.zlx\"",
          "  ExampleType: Live_Script (0)", "  SupportingFiles: 1-by-1 cell",
          "  DocIDLinks: 1-by-0 DocIDLink (empty)"}) {
        EXPECT_NE(shown.out.find(expected), std::string::npos) << expected << "\n" << shown.out;
    }
    const Outcome links =
        run({"show", "graphics/SurfacePlotOfPeaks", "--root", sampleRoot, "--locale", "en_US"});
    EXPECT_NE(links.out.find(
                  "  DocIDLinks: 1-by-2 DocIDLink\n      - DocID \"graphics/ref/surf\", Target \"surf\""),
              std::string::npos)
        << links.out;
    EXPECT_EQ(run({"show", "graphics/NoSuchExample", "--root", sampleRoot}).status, 1);
}

TEST_F(Exampledoc, CommandLinesFollowTheUsualConventions) {
    struct Case {
        std::vector<std::string> args;
        int status;
        std::string expected; // in standard output for status 0, else in standard error
    };
    const std::string root = "--root=" + sampleRoot;
    const Case cases[] = {
        {{"--version"}, 0, "exampledoc 0.1.0\n"},
        {{"help", "list"}, 0, "Usage: exampledoc list [OPTIONS] [ID...]"},
        {{"show", "--help"}, 0, "Usage: exampledoc show [OPTIONS] ID"},
        {{"list", root, "--locale=ja_JP.UTF-8"}, 0, "for locale ja_JP\n"},
        {{"list", root, "--locale", "ko_KR@euro", "--folder=stats"}, 0, "for locale ko_KR\n"},
        {{"list", root, "--locale", "C"}, 0, "for locale en_US\n"},
        {{"show", root, "--", "graphics/SurfacePlotOfPeaks"}, 0, "Title: \"Surface Plot of the Peaks"},
        {{}, 2, "Usage: exampledoc [OPTIONS] [SUBCOMMAND]"},
        {{"lst"}, 2, "exampledoc: 'lst' is not a command; did you mean 'list'?"},
        {{"frobnicate"}, 2, "exampledoc: 'frobnicate' is not a command\n"},
        {{"list", "--jsn"}, 2, "exampledoc list: unknown option '--jsn'; did you mean '--json'?"},
        {{"show", root, "--json", "x/y"}, 2, "exampledoc show: unknown option '--json'"},
        {{"help", "lisst"}, 2, "exampledoc help: 'lisst' is not a command"},
        {{"list", root, "--locale", "fr_FR.UTF-8"}, 2, "use English (en_US) or one of ja_JP, ko_KR, zh_CN"},
        {{"list", root, "--locale", "japanese"}, 2, "locale \"japanese\" has no catalogues"},
        {{"list", root, "--kind", "movie"}, 2, "exampledoc list: --kind: movie not in"},
        {{"list", root, "--color=sometimes"}, 2, "exampledoc list: --color: sometimes not in"},
        {{"check", root, "--format", "xml"}, 2, "exampledoc check: --format: xml not in"},
        {{"coverage", root, "--format", "sarif"}, 2, "exampledoc coverage: --format: sarif not in"},
        {{"list", "--root", "/no/such/root"}, 2, "no example catalogues at /no/such/root"},
        {{"show", root}, 2, "exampledoc show: ID is required"},
    };
    for (const Case& c : cases) {
        const Outcome outcome = run(c.args);
        std::string line;
        for (const auto& arg : c.args) {
            line += arg + ' ';
        }
        EXPECT_EQ(outcome.status, c.status) << line << '\n' << outcome.err;
        const std::string& text = c.status == 0 ? outcome.out : outcome.err;
        EXPECT_NE(text.find(c.expected), std::string::npos) << line << '\n' << text;
    }
}

TEST_F(Exampledoc, AnEnvironmentLocaleWithoutCataloguesIsNamedOnStandardError) {
    const char* saved = std::getenv("LC_ALL");
    const std::string savedValue = saved == nullptr ? "" : saved;
    ::setenv("LC_ALL", "bogus.UTF-8", 1);
    zwhost::settings::resetToDefaults();
    const Outcome outcome = run({"list", "--root", sampleRoot, "--folder", "stats"});
    saved == nullptr ? ::unsetenv("LC_ALL") : ::setenv("LC_ALL", savedValue.c_str(), 1);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(
        outcome.err.find("warning: the locale \"bogus\" from the environment has no catalogues; reading "
                         "English ones (supported: ja_JP, ko_KR, zh_CN)"),
        std::string::npos)
        << outcome.err;
}

TEST_F(Exampledoc, AFailedWriteEndsWithStatusOne) {
    FullBuffer full;
    std::ostream out(&full);
    std::ostringstream err;
    EXPECT_EQ(exampledoc::run({"list", "--root", sampleRoot}, out, err, false), 1);
    EXPECT_NE(err.str().find("exampledoc list: cannot write the output"), std::string::npos) << err.str();
}

TEST_F(Exampledoc, TextIsMeasuredByDisplayWidthAndControlsAreEscaped) {
    const std::pair<std::string, std::size_t> widths[] = {
        {"abc", 3}, {"ピーク", 6}, {"é", 1}, {"e\u0301", 1}, {"流线 a", 6}, {"ｆｕｌｌ", 8}, {"", 0}};
    for (const auto& [text, width] : widths) {
        EXPECT_EQ(exampledoc::displayWidth(text), width) << text;
    }
    EXPECT_EQ(exampledoc::escapeControls("a\nb\tc\x1b[31m\x7f\u0085é"), "a\\nb\\tc\\x1b[31m\\x7f\\u{85}é");

    zwtest::TempDir dir;
    dir.write(
        "docCatalog/exampleapi/w/w.json",
        zwtest::catalogueText("w", "en", {{"ピーク", "T1"}, {"é", "T2"}, {"plain", "T3\\n\\u001b[2J"}}));
    const Outcome listed = run({"list", "--root", dir.path().string(), "--locale", "en_US"});
    ASSERT_EQ(listed.status, 0) << listed.err;
    std::istringstream lines(listed.out);
    std::vector<std::size_t> titleColumns;
    for (std::string line; std::getline(lines, line);) {
        if (const auto title = line.find("  T"); title != std::string::npos) {
            titleColumns.push_back(exampledoc::displayWidth(line.substr(0, title)));
        }
    }
    EXPECT_EQ(titleColumns.size(), 3U) << listed.out;
    EXPECT_EQ(std::count(titleColumns.begin(), titleColumns.end(), titleColumns.front()), 3) << listed.out;
    EXPECT_NE(listed.out.find("T3\\n\\x1b[2J\n"), std::string::npos) << listed.out;
}

TEST_F(Exampledoc, ColourOnlyOnATerminalUnlessAskedOrRefused) {
    struct Case {
        const char* color;
        bool terminal;
        const char* noColor;
        bool coloured;
    };
    const Case cases[] = {
        {"auto", false, nullptr, false}, {"auto", true, nullptr, true}, {"auto", true, "1", false},
        {"auto", true, "", true},        {"always", false, "1", true},  {"never", true, nullptr, false},
    };
    for (const Case& c : cases) {
        c.noColor == nullptr ? ::unsetenv("NO_COLOR") : ::setenv("NO_COLOR", c.noColor, 1);
        const Outcome outcome =
            run({"list", "--root", sampleRoot, "--locale", "en_US", std::string("--color=") + c.color},
                c.terminal);
        EXPECT_EQ(outcome.out.find("\x1b[") != std::string::npos, c.coloured)
            << c.color << ' ' << c.terminal << ' ' << (c.noColor == nullptr ? "unset" : c.noColor);
    }
    ::unsetenv("NO_COLOR");
}

TEST_F(Exampledoc, ListFiltersByFolderKindAndIdGlob) {
    struct Case {
        std::vector<std::string> filters;
        std::vector<std::string> present;
        std::vector<std::string> absent;
    };
    const Case cases[] = {
        {{"--folder", "stats", "--folder=signal"}, {"stats  (", "signal  ("}, {"graphics  (", "control  ("}},
        {{"--kind", "app"}, {"graphics/BarChartDashboard"}, {"control  (", "graphics/SurfacePlotOfPeaks"}},
        {{"graphics/S*"}, {"graphics/SurfacePlotOfPeaks"}, {"graphics/BarChartDashboard", "stats  ("}},
        {{"--kind=Live_Script", "--", "control/*"}, {"control/PIDTuning"}, {"control/BodePlotGallery"}},
    };
    for (const Case& c : cases) {
        std::vector<std::string> args = {"list", "--root", sampleRoot, "--locale", "en_US"};
        args.insert(args.end(), c.filters.begin(), c.filters.end());
        const Outcome outcome = run(args);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        for (const auto& text : c.present) {
            EXPECT_NE(outcome.out.find(text), std::string::npos) << text << '\n' << outcome.out;
        }
        for (const auto& text : c.absent) {
            EXPECT_EQ(outcome.out.find(text), std::string::npos) << text << '\n' << outcome.out;
        }
    }
    const Outcome missing = run({"list", "--root", sampleRoot, "--folder", "nosuch", "--json"});
    EXPECT_EQ(missing.out, "{}\n");
    EXPECT_NE(missing.err.find("no help folder \"nosuch\""), std::string::npos) << missing.err;
}

TEST_F(Exampledoc, JsonIsWrittenAsBeforeByteForByte) {
    const Outcome ja = run({"list", "--root", sampleRoot, "--locale", "ja_JP", "--json"});
    EXPECT_EQ(ja.out, readFile(std::filesystem::path(ZW_TEST_DATA) / "exampledoc" / "list_ja_JP.json"));
    zwtest::TempDir dir;
    dir.write(
        "docCatalog/exampleapi/q/q.json",
        zwtest::catalogueText("q", "en", {{"a", "quote \\\" back \\\\ tab \\t nul \\u0000 \\u007f é"}}));
    const Outcome odd = run({"list", "--root", dir.path().string(), "--locale", "en_US", "--json"});
    EXPECT_EQ(odd.out, boost::json::serialize(boost::json::parse(odd.out)) + '\n');
}

TEST_F(Exampledoc, ManualPageAndCompletionNameEveryOptionOfEveryCommand) {
    using Names = std::set<std::string>;
    std::map<std::string, Names> expected;
    Names commands = {"help"};
    for (const auto& command : exampledoc::commandSpellings()) {
        expected[command.name] = Names(command.options.begin(), command.options.end());
        commands.insert(command.name);
    }
    Names common = expected.begin()->second;
    for (const auto& command : expected) {
        std::erase_if(common, [&](const std::string& option) { return !command.second.contains(option); });
    }

    // The manual page defines each command, and each option in the section of its command or in
    // "Every command" for the options that all commands share, in a .TP paragraph.
    const std::string manual = readFile(std::filesystem::path(ZW_TOOL_DIR) / "exampledoc.1");
    const std::regex heading(R"re(\.S[HS] "?(exampledoc )?([^"]*)"?)re");
    const std::regex commandName(R"re(^\.B[IR]? "?(\w+))re");
    const std::regex option(R"re(\\-\\-([a-z][a-z-]*))re");
    std::map<std::string, Names> documented;
    std::string section;
    bool definition = false;
    std::istringstream lines(manual);
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (std::regex_match(line, match, heading)) {
            section = match[2];
        } else if (definition && section == "COMMANDS" && std::regex_search(line, match, commandName)) {
            documented[section].insert(match[1]);
        } else if (definition) {
            for (auto it = std::sregex_iterator(line.begin(), line.end(), option);
                 it != std::sregex_iterator(); ++it) {
                documented[section].insert("--" + (*it)[1].str());
            }
        }
        definition = line == ".TP";
    }
    EXPECT_EQ(documented["COMMANDS"], commands);
    EXPECT_EQ(documented["Every command"], common);
    EXPECT_EQ(documented["\\-\\-version"], Names{"--version"});
    for (const auto& [name, options] : expected) {
        Names specific;
        std::set_difference(options.begin(), options.end(), common.begin(), common.end(),
                            std::inserter(specific, specific.end()));
        EXPECT_EQ(documented[name], specific) << name;
    }

    const std::string completion = readFile(std::filesystem::path(ZW_TOOL_DIR) / "exampledoc.bash");
    std::map<std::string, Names> completed;
    const std::regex commandOptions(R"re((\w+)\) opts="([^"]*)")re");
    for (auto it = std::sregex_iterator(completion.begin(), completion.end(), commandOptions);
         it != std::sregex_iterator(); ++it) {
        std::istringstream words((*it)[2].str());
        completed[(*it)[1].str()] = Names(std::istream_iterator<std::string>(words), {});
    }
    EXPECT_EQ(completed, expected);
    EXPECT_NE(completion.find("commands=\"check coverage help list show\""), std::string::npos);
}

TEST_F(Exampledoc, TheToolsProcessHoldsOneCopyOfTheLibrary) {
    const auto loggers = zwhost::log::registeredLoggers();
    EXPECT_EQ(std::count(loggers.begin(), loggers.end(), "exampleApi::docparser"), 1);
    // Any shared object of the process reaches the library by its exported name; that road must
    // lead to the copy the tool uses, or to none.
    using GetRoot = std::shared_ptr<const std::u16string> (*)();
    DocExampleParser::setExampleRoot(u"/one/road");
    if (auto* other = reinterpret_cast<GetRoot>(
            dlsym(RTLD_DEFAULT, "_ZN7example9docparser16DocExampleParser14getExampleRootB5cxx11Ev"))) {
        EXPECT_EQ(*other(), *DocExampleParser::getExampleRoot());
    }
    EXPECT_EQ(*DocExampleParser::getExampleRoot(), u"/one/road/docCatalog/exampleapi");
}

} // namespace
