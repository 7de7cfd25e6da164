#include <dlfcn.h>

#include <algorithm>
#include <initializer_list>
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

namespace {

using example::docparser::DocExampleParser;
using zwtest::catalogueText;
using zwtest::Files;

const std::string kHead = "{\"header\":{\"helpFolder\":\"h\"},\"exampleItems\":[\n";

std::string withEntry(const std::string& members) {
    return kHead + R"({"name":"n","component":"c","title":"t","thumbnail":"")" + members + "}]}";
}

// clang-format off
const Files kSarif = {{"a b/ex.json", "{\"header\":{},\n \"exampleItems\":[{}]}"}, {"p.zip!c/x.json", "{"}, {"q.zip", "no zip"}};
// clang-format on

class Exampledoc : public zwtest::HostLeakCheck {};

void expectRows(std::initializer_list<zwtest::ToolCase> rows) {
    for (const auto& row : rows) {
        zwtest::expectTool(row);
    }
}

// The conventions of the command line: help, usage, version and unknown commands.
TEST_F(Exampledoc, Usage) {
    // clang-format off
    expectRows({
        {{}, "--version", 0, {"exampledoc 0.1.0\n"}},
        {{}, "help list", 0, {"Usage: exampledoc list [OPTIONS] [ID...]"}},
        {{}, "show --help", 0, {"Usage: exampledoc show [OPTIONS] ID"}},
        {{}, "", 2, {"Usage: exampledoc [OPTIONS] [SUBCOMMAND]"}},
        {{}, "lst", 2, {"exampledoc: 'lst' is not a command; did you mean 'list'?"}},
        {{}, "frobnicate", 2, {"exampledoc: 'frobnicate' is not a command\n"}},
        {{}, "help lisst", 2, {"exampledoc help: 'lisst' is not a command"}},
    });
    // clang-format on
}

// What list writes, and how it reads locales, colour, filters and what it skips.
TEST_F(Exampledoc, List) {
    // clang-format off
    const Files widths = {{"w/w.json", catalogueText("w", "en", {{"ピーク", "T1"}, {"é", "T2"}, {"e\u0301", "T4"}, {"ｆｕｌｌ", "T5"}, {"流线 a", "T6"}, {"plain", "T3\\n\\t\\u001b[2J\\u007f\\u0085é"}})}};
    const Files escapes = {{"q/q.json", catalogueText("q", "en", {{"a", "quote \\\" back \\\\ tab \\t nul \\u0000 \\u007f é"}})}};
    const Files skipped = {{"a/ex.json", catalogueText("a", "en_US", {})}, {"a/ex_zh_CN.json", "{"}, {"a/ex_ja_JP.json", "[]"}, {"b/p.zip", "no zip"}, {"c/q.zip", "<copy>tests/data/zips/7z-Deflate64.zip"}};
    expectRows({
        {{}, "list --locale ja_JP", 0, {"@list_ja_JP.txt"}},
        {{}, "list --locale zh_CN", 0, {"@list_zh_CN.txt"}},
        {{}, "list --locale ja_JP --json", 0, {"@list_ja_JP.json"}},
        {widths, "list --locale en_US", 0, {"@list_widths.txt"}},
        {escapes, "list --locale en_US --json", 0, {"@list_escapes.json"}},
        {{}, "list --locale=ja_JP.UTF-8", 0, {"for locale ja_JP\n"}},
        {{}, "list --locale ko_KR@euro --folder=stats", 0, {"for locale ko_KR\n"}},
        {{}, "list --locale C", 0, {"for locale en_US\n"}},
        {{}, "list --jsn", 2, {"exampledoc list: unknown option '--jsn'; did you mean '--json'?"}},
        {{}, "list --locale fr_FR.UTF-8", 2, {"use English (en_US) or one of ja_JP, ko_KR, zh_CN"}},
        {{}, "list --locale japanese", 2, {"locale \"japanese\" has no catalogues"}},
        {{}, "list --kind movie", 2, {"exampledoc list: --kind: movie not in"}},
        {{}, "list --color=sometimes", 2, {"exampledoc list: --color: sometimes not in"}},
        {{}, "list --root /no/such/root", 2, {"no example catalogues at /no/such/root"}},
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
        {{}, "list --locale en_US / graphics/S*", 0, {"graphics/SurfacePlotOfPeaks", "no example id matches \"/\"; to read the documentation tree there, give --root /", "!matches \"graphics/S*\""}},
        {{}, "list --locale en_US --kind app graphics/S*", 0, {"No examples match.", "no example id matches \"graphics/S*\"\n"}},
        {skipped, "list --locale ja_JP", 0, {"exampledoc list: 4 files or packages were skipped; 'exampledoc check' tells why\n"}},
        {skipped, "list --locale en_US", 0, {"exampledoc list: 2 files or packages were skipped; 'exampledoc check' tells why\n"}},
        {skipped, "list --locale ja_JP --json", 0, {"!skipped"}},
    });
    // clang-format on
}

// What show writes for one example, and its errors.
TEST_F(Exampledoc, Show) {
    // clang-format off
    expectRows({
        {{}, "show graphics/SurfacePlotOfPeaks --locale zh_CN", 0, {"@show_zh_CN.txt"}},
        {{}, "show graphics/SurfacePlotOfPeaks --locale en_US", 0, {"@show_en_US.txt"}},
        {{}, "show graphics/NoSuchExample", 1, {"exampledoc show: no example with id graphics/NoSuchExample"}},
        {{}, "show -- graphics/SurfacePlotOfPeaks", 0, {"Title: \"Surface Plot of the Peaks"}},
        {{}, "show --json x/y", 2, {"exampledoc show: unknown option '--json'"}},
        {{}, "show", 2, {"exampledoc show: ID is required"}},
    });
    // clang-format on
}

// Each rule of check at its place, with its pointer and id; every locale and format; --strict.
TEST_F(Exampledoc, Check) {
    const std::string check = "check --format json";
    // clang-format off
    const Files locales = {{"s/ex.json", catalogueText("s", "en_US", {{"a", "A"}})}, {"s/ex_zh_CN.json", "{"}, {"s/ex_ja_JP.json", catalogueText("s", "ja_JP", {{"a", "A"}})},
                           {"p/p.zip!c/p.json", catalogueText("p", "en_US", {})}, {"p/p.zip!c/p_ko_KR.json", catalogueText("p", "ko_KR", {})}};
    const Files errorAndWarning = {{"a/ex.json", catalogueText("a", "en_US", {{"x", ""}})}, {"b/ex_ja_JP.json", "{\"header\":{},\n\"exampleItems\":{}}"}};
    expectRows({
        {{}, "check", 0, {"checked 10 catalogues for ja_JP, ko_KR, zh_CN: 0 errors, 1 warning, 0 notes"}},
        {{}, "check --format xml", 2, {"exampledoc check: --format: xml not in"}},
        {{{"h/ex.json", "{\"header\":{},\n \"exampleItems\": [,]}"}}, check, 1, {"h/ex.json:2:19 [json-syntax] unexpected ','"}},
        {{{"h/ex.json", R"({"header":{},"exampleItems":[],})"}}, check, 1, {"h/ex.json:1:31 [json-syntax] a comma may not come before '}'"}},
        {{{"h/ex.json", "{\"header\":{} // note\n}"}}, check, 1, {"h/ex.json:1:14 [json-syntax] comments are not allowed"}},
        {{{"h/ex.json", "{\"header\":{}"}}, check, 1, {"h/ex.json:1:13 [json-syntax] the text ends before the JSON is complete"}},
        {{{"h/ex.json", "\xEF\xBB\xBF{}"}}, check, 1, {"h/ex.json:1:1 [byte-order-mark] the text begins with a byte order mark; save it as UTF-8 without one"}},
        {{{"h/ex.json", "{\"header\":{\"product\":\"\xE6\x97\xA5" "caf\xE9\"}}"}}, check, 1, {"h/ex.json:1:27 [not-utf8] the text is not UTF-8: byte 0xE9 begins no valid sequence; save the file as UTF-8"}},
        {{{"h/ex.json", std::string(40, '[') + std::string(40, ']')}}, check, 1, {"h/ex.json:1:33 [too-deep] arrays and objects are nested deeper than 32"}},
        {{{"h/ex.json", "[]"}}, check, 1, {"h/ex.json:1:1 [wrong-type] the catalogue must be a JSON object, found an array"}},
        {{{"h/ex.json", R"({"exampleItems":[]})"}}, check, 1, {"h/ex.json:1:1 [missing-member] the catalogue has no \"header\" member"}},
        {{{"h/ex.json", R"({"header":{}})"}}, check, 1, {"h/ex.json:1:1 [missing-member] the catalogue has no \"exampleItems\" member"}},
        {{{"h/ex.json", R"({"header":{"locale":5},"exampleItems":[]})"}}, check, 1, {"h/ex.json:1:12 /header/locale [wrong-type] header \"locale\" must be a string, found a number"}},
        {{{"h/ex.json", kHead + R"({"name":"n","component":"c","thumbnail":""}]})"}}, check, 1, {"h/ex.json:2:1 /exampleItems/0 (c/n) [missing-member] exampleItems[0] (c/n) has no \"title\""}},
        {{{"h/ex.json", withEntry(R"(,"relative_path":"p")")}}, check, 1, {"h/ex.json:2:56 /exampleItems/0/relative_path (c/n) [wrong-type] exampleItems[0] (c/n): \"relative_path\" must be an array, found a string"}},
        {{{"h/ex.json", withEntry(R"(,"supporting_files":["a",5])")}}, check, 1, {"h/ex.json:2:80 /exampleItems/0/supporting_files/1 (c/n) [wrong-type] exampleItems[0] (c/n): \"supporting_files\"[1] must be a string, found a number"}},
        {{{"h/ex.json", withEntry(R"(,"docid_links":{})")}}, check, 1, {"h/ex.json:2:56 /exampleItems/0/docid_links (c/n) [wrong-type] exampleItems[0] (c/n): \"docid_links\" must be an array, found an object"}},
        {{{"h/ex.json", withEntry(R"(,"docid_links":[{"docid":"d"}])")}}, check, 1, {"h/ex.json:2:71 /exampleItems/0/docid_links/0 (c/n) [missing-member] exampleItems[0] (c/n): \"docid_links\"[0] has no \"target\""}},
        {{{"h/ex.json", withEntry(R"(,"docid_links":[true])")}}, check, 1, {"h/ex.json:2:71 /exampleItems/0/docid_links/0 (c/n) [wrong-type] exampleItems[0] (c/n): \"docid_links\"[0] must be an object, found true or false"}},
        {{{"h/ex.json", withEntry(R"(,"exampleType":6)")}}, check, 1, {"h/ex.json:2:56 /exampleItems/0/exampleType (c/n) [wrong-type] exampleItems[0] (c/n): \"exampleType\" must be a string, found a number"}},
        {{{"h/ex.json", withEntry(R"(,"name":"m","title":null)")}}, check, 1, {"h/ex.json:2:29 /exampleItems/0/title (c/m) [wrong-type] exampleItems[0] (c/m): \"title\" must be a string, found null"}},
        {{{"h/ex.json", "{\"header\":{},\"exampleItems\":[\n 7]}"}}, check, 1, {"h/ex.json:2:2 /exampleItems/0 [wrong-type] exampleItems[0] must be an object, found a number"}},
        {{{"h/p.zip", "not a zip"}}, check, 1, {"h/p.zip [bad-package] the package is not read: refused package {root}/docCatalog/exampleapi/h/p.zip: too short to be a zip file"}},
        {{{"h/p.zip", "<copy>fuzz/corpus/package_reader/bomb.zip"}}, check, 1, {"h/p.zip!bomb.json [unreadable] not read: entry 0 inflates more than 1024 times its compressed size"}},
        {{{"h/p.zip", "<copy>tests/data/zips/7z-Deflate64.zip"}}, check, 1, {"h/p.zip!cat.json [unsupported-compression] not read: compression method 9 (Deflate64) is not supported"}},
        {{{"h/p.zip", "<copy>tests/data/zips/python-duplicate.zip"}}, check, 1, {"h/p.zip!cat.json [duplicate-entry] not read: a second entry of this name; the first one is read"}},
        {{{"h/ex.json", catalogueText("h", "en_US", {{"a", "A"}, {"b", "B"}, {"a", "C"}})}}, check, 0, {"h/ex.json:1:189 /exampleItems/2 (c/a) [duplicate-id] exampleItems[2] (c/a): exampleItems[0] has the same id; both are kept under it"}},
        {{{"h/ex.json", withEntry(R"(,"exampleType":"Live_Script")")}}, check, 0, {"h/ex.json:2:56 /exampleItems/0/exampleType (c/n) [unknown-kind] exampleItems[0] (c/n): \"Live_Script\" is not a kind; the example is read as Unknown (did you mean \"Live Script\"?)"}},
        {{{"h/ex.json", catalogueText("h", "en_US", {{"a", "  "}})}}, check, 0, {"h/ex.json:1:105 /exampleItems/0/title (c/a) [empty-field] exampleItems[0] (c/a): \"title\" is empty"}},
        {{{"h/ex.json", kHead + R"({"name":"n","component":"","title":"t","thumbnail":""}]})"}}, check, 0, {"h/ex.json:2:13 /exampleItems/0/component (/n) [empty-field] exampleItems[0] (/n): \"component\" is empty; the id becomes \"/n\""}},
        {{{"h/ex.json", catalogueText("h", "en_US", {{"a", "A"}})}, {"h/ex_ja_JP.json", catalogueText("h", "ja_JP", {{"a", "A"}, {"b", "B"}})}}, check, 0, {"h/ex_ja_JP.json:1:133 /exampleItems/1 (c/b) [orphan-id] exampleItems[1] (c/b): no English example of this help folder has the id \"c/b\""}},
        {{{"h/ex.json", catalogueText("h", "en_US", {})}, {"h/ex_ko_KR.json", catalogueText("g", "ko_KR", {})}}, check, 0, {"h/ex_ko_KR.json:1:26 /header/helpFolder [help-folder-mismatch] help folder \"g\" differs from \"h\" of its English catalogue: it is not merged with it"}},
        {{{"k/p.zip!cat/x.json", catalogueText("k", "en_US", {})}, {"k/p.zip!cat/x_zh_CN.json", catalogueText("K", "zh_CN", {})}}, check, 0, {"k/p.zip!cat/x_zh_CN.json:1:26 /header/helpFolder [help-folder-mismatch] help folder \"K\" differs from \"k\" of its English catalogue: it is not merged with it"}},
        {{{"c/g.zip!g.json", catalogueText("g", "en_US", {})}, {"c/g_ja_JP.zip!x_ja_JP.json", catalogueText("G", "ja_JP", {})}}, check, 0, {"c/g_ja_JP.zip!x_ja_JP.json:1:26 /header/helpFolder [help-folder-mismatch] help folder \"G\" differs from \"g\" of its English catalogue: it is not merged with it"}},
        {{{"h/ex_zh_CN.json", catalogueText("h", "ja_JP", {})}}, check, 0, {"h/ex_zh_CN.json:1:43 /header/locale [locale-mismatch] the header says locale \"ja_JP\" but the file name says zh_CN"}},
        {{{"h/ex.json", catalogueText("h", "ko_KR", {})}}, check, 0, {"h/ex.json:1:43 /header/locale [locale-mismatch] the header says locale \"ko_KR\" but the file name says English"}},
        {{{"h/a.json", catalogueText("h", "en_US", {})}, {"z/p.zip!p.json", catalogueText("h", "en_US", {})}}, check, 0, {"h/a.json:1:26 /header/helpFolder [duplicate-catalogue] another English catalogue of help folder \"h\", z/p.zip!p.json, is read first: its header and its examples of the same ids win"}},
        {{{"f.json", "<fifo>"}}, check, 0, {"f.json [left-out] not read: it is not a regular file"}},
        {{{"l.json", "<link>none.json"}}, check, 0, {"l.json [left-out] not read: it is a link to nothing"}},
        {{{"b\xFF.json", "{}"}}, check, 0, {"b\xEF\xBF\xBD.json [left-out] not read: its name is not valid UTF-8"}},
        {{{"1/2/3/4/5/6/7/8/9/10/11/12/13/14/15/16/17/x.json", "{}"}}, check, 0, {"1/2/3/4/5/6/7/8/9/10/11/12/13/14/15/16/17 [left-out] not read: it lies below the depth limit of the walk"}},
        {{{"h/p.zip!readme.txt", "notes"}}, check, 0, {"h/p.zip [no-catalogue] the package holds no catalogue read under the checked locales"}},
        {locales, "check --format json", 1, {"@check_all.json"}},
        {locales, "check --format json --locale ja_JP", 0, {"@check_ja_JP.json"}},
        {errorAndWarning, "check --locale ja_JP", 1, {"@check_ja_JP.txt"}},
        {{{"a/ex.json", catalogueText("a", "en_US", {{"x", ""}})}}, "check --locale ja_JP --strict", 1, {}},
        {kSarif, "check --format sarif", 1, {"@check.sarif"}},
    });
    // clang-format on
}

// What coverage counts, and what it says of what is not read.
TEST_F(Exampledoc, Coverage) {
    // clang-format off
    const Files coverage = {{"h/ex.json", catalogueText("h", "en_US", {{"a", ""}, {"b", ""}, {"c", ""}})}, {"h/ex_ja_JP.json", catalogueText("h", "ja_JP", {{"a", ""}, {"x", ""}})},
                            {"g/p.zip!g.json", catalogueText("g", "en_US", {{"a", ""}})}, {"g/p.zip!g_zh_CN.json", catalogueText("g", "zh_CN", {{"a", ""}})}, {"g/bad_ko_KR.json", "{"}};
    expectRows({
        {{}, "coverage --format sarif", 2, {"exampledoc coverage: --format: sarif not in"}},
        {coverage, "coverage --format json", 0, {"@coverage.json", "exampledoc coverage: 1 catalogue or package is not read; 'exampledoc check' tells why\n"}},
        {coverage, "coverage --locale ja_JP", 0, {"@coverage_ja_JP.txt"}},
    });
    // clang-format on
}

TEST_F(Exampledoc, SarifFollowsTheSchema) {
    const zwtest::TempDir dir;
    const auto log = dir.write("check.sarif", zwtest::runTool(kSarif, "check --format sarif").out);
    const std::string validate =
        "python3 -c 'import json, sys, jsonschema; jsonschema.validate(json.load(open(sys.argv[1])), "
        "json.load(open(sys.argv[2])))' '" +
        log.string() + "' '" ZW_SOURCE_DIR "/tests/data/sarif/sarif-schema-2.1.0.json'";
    EXPECT_EQ(std::system(validate.c_str()), 0);
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
    const std::string manual = zwtest::fileText(tools + "exampledoc.1");
    const std::regex paragraph(R"re(\.S[HS] "?(exampledoc )?([^"\n]*)"?\n|\.TP\n([^\n]*))re");
    const std::regex commandName(R"re(^\.B[IR]? "?(\w+))re");
    const std::regex option(R"re(\\-\\-([a-z][a-z-]*))re");
    std::map<std::string, Names> documented;
    std::string section;
    for (std::sregex_iterator it(manual.begin(), manual.end(), paragraph), end; it != end; ++it) {
        const std::string definition = (*it)[3];
        std::smatch match;
        if ((*it)[2].matched) {
            section = (*it)[2];
        } else if (section == "COMMANDS" && std::regex_search(definition, match, commandName)) {
            documented[section].insert(match[1]);
        } else if (section != "COMMANDS") {
            for (std::sregex_iterator o(definition.begin(), definition.end(), option); o != end; ++o) {
                documented[section].insert("--" + (*o)[1].str());
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

    const std::string completion = zwtest::fileText(tools + "exampledoc.bash");
    std::map<std::string, Names> completed;
    const std::regex commandOptions(R"re((\w+)\) opts="([^"]*)")re");
    for (std::sregex_iterator it(completion.begin(), completion.end(), commandOptions), end; it != end;
         ++it) {
        std::istringstream words((*it)[2].str());
        completed[(*it)[1].str()] = Names(std::istream_iterator<std::string>(words), {});
    }
    EXPECT_EQ(completed, expected);
    std::string commandList;
    for (const std::string& command : commands) {
        commandList += (commandList.empty() ? "" : " ") + command;
    }
    EXPECT_NE(completion.find("commands=\"" + commandList + "\""), std::string::npos);
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
