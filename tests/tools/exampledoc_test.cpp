#include <dlfcn.h>

#include <algorithm>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "cli.hpp"
#include "foundation/log/diagnostic_logger.hpp"
#include "support/catalogue_text.hpp"
#include "support/host_leak_check.hpp"
#include "support/tool_run.hpp"
#include "text_output.hpp"

namespace {

using example::docparser::DocExampleParser;
using zwtest::catalogueText;

class Exampledoc : public zwtest::HostLeakCheck {};

TEST_F(Exampledoc, CommandLinesFollowTheUsualConventions) {
    const zwtest::Files widths = {
        {"w/w.json",
         catalogueText("w", "en", {{"ピーク", "T1"}, {"é", "T2"}, {"plain", "T3\\n\\u001b[2J"}})}};
    const zwtest::Files escapes = {
        {"q/q.json",
         catalogueText("q", "en", {{"a", "quote \\\" back \\\\ tab \\t nul \\u0000 \\u007f é"}})}};
    // clang-format off
    const zwtest::ToolCase cases[] = {
        {{}, "list --locale ja_JP", 0, {"@list_ja_JP.txt"}},
        {{}, "list --locale zh_CN", 0, {"@list_zh_CN.txt"}},
        {{}, "list --locale ja_JP --json", 0, {"@list_ja_JP.json"}},
        {widths, "list --locale en_US", 0, {"@list_widths.txt"}},
        {escapes, "list --locale en_US --json", 0, {"@list_escapes.json"}},
        {{}, "show graphics/SurfacePlotOfPeaks --locale zh_CN", 0, {"@show_zh_CN.txt"}},
        {{}, "show graphics/SurfacePlotOfPeaks --locale en_US", 0, {"@show_en_US.txt"}},
        {{}, "show graphics/NoSuchExample", 1, {"exampledoc show: no example with id graphics/NoSuchExample"}},
        {{}, "check", 0, {"checked 10 catalogues for ja_JP, ko_KR, zh_CN: 0 errors, 1 warning, 0 notes"}},
        {{}, "--version", 0, {"exampledoc 0.1.0\n"}},
        {{}, "help list", 0, {"Usage: exampledoc list [OPTIONS] [ID...]"}},
        {{}, "show --help", 0, {"Usage: exampledoc show [OPTIONS] ID"}},
        {{}, "list --locale=ja_JP.UTF-8", 0, {"for locale ja_JP\n"}},
        {{}, "list --locale ko_KR@euro --folder=stats", 0, {"for locale ko_KR\n"}},
        {{}, "list --locale C", 0, {"for locale en_US\n"}},
        {{}, "show -- graphics/SurfacePlotOfPeaks", 0, {"Title: \"Surface Plot of the Peaks"}},
        {{}, "", 2, {"Usage: exampledoc [OPTIONS] [SUBCOMMAND]"}},
        {{}, "lst", 2, {"exampledoc: 'lst' is not a command; did you mean 'list'?"}},
        {{}, "frobnicate", 2, {"exampledoc: 'frobnicate' is not a command\n"}},
        {{}, "list --jsn", 2, {"exampledoc list: unknown option '--jsn'; did you mean '--json'?"}},
        {{}, "show --json x/y", 2, {"exampledoc show: unknown option '--json'"}},
        {{}, "help lisst", 2, {"exampledoc help: 'lisst' is not a command"}},
        {{}, "list --locale fr_FR.UTF-8", 2, {"use English (en_US) or one of ja_JP, ko_KR, zh_CN"}},
        {{}, "list --locale japanese", 2, {"locale \"japanese\" has no catalogues"}},
        {{}, "list --kind movie", 2, {"exampledoc list: --kind: movie not in"}},
        {{}, "list --color=sometimes", 2, {"exampledoc list: --color: sometimes not in"}},
        {{}, "check --format xml", 2, {"exampledoc check: --format: xml not in"}},
        {{}, "coverage --format sarif", 2, {"exampledoc coverage: --format: sarif not in"}},
        {{}, "list --root /no/such/root", 2, {"no example catalogues at /no/such/root"}},
        {{}, "show", 2, {"exampledoc show: ID is required"}},
        {{}, "LC_ALL=bogus.UTF-8 list --folder stats", 0, {"warning: the locale \"bogus\" from the environment has no catalogues; reading English ones (supported: ja_JP, ko_KR, zh_CN)"}},
        {{}, "list --locale en_US --color=auto", 0, {"!\x1b["}},
        {{}, "TTY=1 list --locale en_US --color=auto", 0, {"\x1b["}},
        {{}, "NO_COLOR=1 TTY=1 list --locale en_US --color=auto", 0, {"!\x1b["}},
        {{}, "NO_COLOR= TTY=1 list --locale en_US", 0, {"\x1b["}},
        {{}, "NO_COLOR=1 list --locale en_US --color=always", 0, {"\x1b["}},
        {{}, "TTY=1 list --locale en_US --color=never", 0, {"!\x1b["}},
        {{}, "list --locale en_US --folder stats --folder=signal", 0, {"stats  (", "signal  (", "!graphics  (", "!control  ("}},
        {{}, "list --locale en_US --kind app", 0, {"graphics/BarChartDashboard", "!control  (", "!graphics/SurfacePlotOfPeaks"}},
        {{}, "list --locale en_US graphics/S*", 0, {"graphics/SurfacePlotOfPeaks", "!graphics/BarChartDashboard", "!stats  ("}},
        {{}, "list --locale en_US --kind=Live_Script -- control/*", 0, {"control/PIDTuning", "!control/BodePlotGallery"}},
        {{}, "list --folder nosuch --json", 0, {"@list_none.json", "no help folder \"nosuch\""}},
    };
    // clang-format on
    for (const auto& c : cases) {
        zwtest::expectTool(c);
    }
}

TEST_F(Exampledoc, TextIsMeasuredByDisplayWidthAndControlsAreEscaped) {
    const std::pair<std::string, std::size_t> widths[] = {
        {"abc", 3}, {"ピーク", 6}, {"é", 1}, {"e\u0301", 1}, {"流线 a", 6}, {"ｆｕｌｌ", 8}, {"", 0}};
    for (const auto& [text, width] : widths) {
        EXPECT_EQ(exampledoc::displayWidth(text), width) << text;
    }
    EXPECT_EQ(exampledoc::escapeControls("a\nb\tc\x1b[31m\x7f\u0085é"), "a\\nb\\tc\\x1b[31m\\x7f\\u{85}é");
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
    const std::string tools = ZW_SOURCE_DIR "/tools/exampledoc/";
    std::istringstream lines(zwtest::readFile(tools + "exampledoc.1"));
    const std::regex heading(R"re(\.S[HS] "?(exampledoc )?([^"]*)"?)re");
    const std::regex commandName(R"re(^\.B[IR]? "?(\w+))re");
    const std::regex option(R"re(\\-\\-([a-z][a-z-]*))re");
    std::map<std::string, Names> documented;
    std::string section;
    bool definition = false;
    for (std::string line; std::getline(lines, line); definition = line == ".TP") {
        std::smatch match;
        if (std::regex_match(line, match, heading)) {
            section = match[2];
        } else if (definition && section == "COMMANDS" && std::regex_search(line, match, commandName)) {
            documented[section].insert(match[1]);
        } else if (definition) {
            for (std::sregex_iterator it(line.begin(), line.end(), option), end; it != end; ++it) {
                documented[section].insert("--" + (*it)[1].str());
            }
        }
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

    const std::string completion = zwtest::readFile(tools + "exampledoc.bash");
    std::map<std::string, Names> completed;
    const std::regex commandOptions(R"re((\w+)\) opts="([^"]*)")re");
    for (std::sregex_iterator it(completion.begin(), completion.end(), commandOptions), end; it != end;
         ++it) {
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
    DocExampleParser::restoreDefaultSettings();
}

} // namespace
