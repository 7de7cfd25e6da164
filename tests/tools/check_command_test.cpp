#include <string>

#include <gtest/gtest.h>

#include "support/catalogue_text.hpp"
#include "support/host_leak_check.hpp"
#include "support/tool_run.hpp"

namespace {

using zwtest::catalogueText;
using zwtest::Files;

const std::string kHead = "{\"header\":{\"helpFolder\":\"h\"},\"exampleItems\":[\n";

std::string withEntry(const std::string& members) {
    return kHead + R"({"name":"n","component":"c","title":"t","thumbnail":"")" + members + "}]}";
}

const Files kSarif = {{"a b/ex.json", "{\"header\":{},\n \"exampleItems\":[{}]}"},
                      {"p.zip!c/x.json", "{"},
                      {"q.zip", "no zip"}};

class CheckCommand : public zwtest::HostLeakCheck {};

TEST_F(CheckCommand, FindsEachProblemAtItsPlaceAndReportsItInEveryFormat) {
    const std::string json = "check --format json";
    // clang-format off
    const Files locales = {{"s/ex.json", catalogueText("s", "en_US", {{"a", "A"}})}, {"s/ex_zh_CN.json", "{"}, {"s/ex_ja_JP.json", catalogueText("s", "ja_JP", {{"a", "A"}})},
                           {"p/p.zip!c/p.json", catalogueText("p", "en_US", {})}, {"p/p.zip!c/p_ko_KR.json", catalogueText("p", "ko_KR", {})}};
    const Files errorAndWarning = {{"a/ex.json", catalogueText("a", "en_US", {{"x", ""}})}, {"b/ex_ja_JP.json", "{\"header\":{},\n\"exampleItems\":{}}"}};
    const Files skipped = {{"a/ex.json", catalogueText("a", "en_US", {})}, {"a/ex_zh_CN.json", "{"}, {"a/ex_ja_JP.json", "[]"}, {"b/p.zip", "no zip"}};
    const Files coverage = {{"h/ex.json", catalogueText("h", "en_US", {{"a", ""}, {"b", ""}, {"c", ""}})}, {"h/ex_ja_JP.json", catalogueText("h", "ja_JP", {{"a", ""}, {"x", ""}})},
                            {"g/p.zip!g.json", catalogueText("g", "en_US", {{"a", ""}})}, {"g/p.zip!g_zh_CN.json", catalogueText("g", "zh_CN", {{"a", ""}})}, {"g/bad_ko_KR.json", "{"}};
    const zwtest::ToolCase cases[] = {
        {{{"h/ex.json", "{\"header\":{},\n \"exampleItems\": [,]}"}}, json, 1, {"h/ex.json:2:19 [json-syntax] unexpected ','"}},
        {{{"h/ex.json", R"({"header":{},"exampleItems":[],})"}}, json, 1, {"h/ex.json:1:31 [json-syntax] a comma may not come before '}'"}},
        {{{"h/ex.json", "{\"header\":{} // note\n}"}}, json, 1, {"h/ex.json:1:14 [json-syntax] comments are not allowed"}},
        {{{"h/ex.json", "{\"header\":{}"}}, json, 1, {"h/ex.json:1:13 [json-syntax] the text ends before the JSON is complete"}},
        {{{"h/ex.json", "\xEF\xBB\xBF{}"}}, json, 1, {"h/ex.json:1:1 [byte-order-mark] the text begins with a byte order mark; save it as UTF-8 without one"}},
        {{{"h/ex.json", "{\"header\":{\"product\":\"\xE6\x97\xA5" "caf\xE9\"}}"}}, json, 1, {"h/ex.json:1:27 [not-utf8] the text is not UTF-8: byte 0xE9 begins no valid sequence; save the file as UTF-8"}},
        {{{"h/ex.json", std::string(40, '[') + std::string(40, ']')}}, json, 1, {"h/ex.json:1:33 [too-deep] arrays and objects are nested deeper than 32"}},
        {{{"h/ex.json", "[]"}}, json, 1, {"h/ex.json:1:1 [wrong-type] the catalogue must be a JSON object, found an array"}},
        {{{"h/ex.json", R"({"exampleItems":[]})"}}, json, 1, {"h/ex.json:1:1 [missing-member] the catalogue has no \"header\" member"}},
        {{{"h/ex.json", R"({"header":{}})"}}, json, 1, {"h/ex.json:1:1 [missing-member] the catalogue has no \"exampleItems\" member"}},
        {{{"h/ex.json", R"({"header":{"locale":5},"exampleItems":[]})"}}, json, 1, {"h/ex.json:1:12 /header/locale [wrong-type] header \"locale\" must be a string, found a number"}},
        {{{"h/ex.json", kHead + R"({"name":"n","component":"c","thumbnail":""}]})"}}, json, 1, {"h/ex.json:2:1 /exampleItems/0 (c/n) [missing-member] exampleItems[0] (c/n) has no \"title\""}},
        {{{"h/ex.json", withEntry(R"(,"relative_path":"p")")}}, json, 1, {"h/ex.json:2:56 /exampleItems/0/relative_path (c/n) [wrong-type] exampleItems[0] (c/n): \"relative_path\" must be an array of strings, found a string"}},
        {{{"h/ex.json", withEntry(R"(,"supporting_files":["a",5])")}}, json, 1, {"h/ex.json:2:80 /exampleItems/0/supporting_files/1 (c/n) [wrong-type] exampleItems[0] (c/n): \"supporting_files\"[1] must be a string, found a number"}},
        {{{"h/ex.json", withEntry(R"(,"docid_links":{})")}}, json, 1, {"h/ex.json:2:56 /exampleItems/0/docid_links (c/n) [wrong-type] exampleItems[0] (c/n): \"docid_links\" must be an array of objects, found an object"}},
        {{{"h/ex.json", withEntry(R"(,"docid_links":[{"docid":"d"}])")}}, json, 1, {"h/ex.json:2:71 /exampleItems/0/docid_links/0 (c/n) [missing-member] exampleItems[0] (c/n): \"docid_links\"[0] has no \"target\""}},
        {{{"h/ex.json", withEntry(R"(,"docid_links":[true])")}}, json, 1, {"h/ex.json:2:71 /exampleItems/0/docid_links/0 (c/n) [wrong-type] exampleItems[0] (c/n): \"docid_links\"[0] must be an object, found true or false"}},
        {{{"h/ex.json", withEntry(R"(,"exampleType":6)")}}, json, 1, {"h/ex.json:2:56 /exampleItems/0/exampleType (c/n) [wrong-type] exampleItems[0] (c/n): \"exampleType\" must be a string, found a number"}},
        {{{"h/ex.json", withEntry(R"(,"name":"m","title":null)")}}, json, 1, {"h/ex.json:2:29 /exampleItems/0/title (c/m) [wrong-type] exampleItems[0] (c/m): \"title\" must be a string, found null"}},
        {{{"h/ex.json", "{\"header\":{},\"exampleItems\":[\n 7]}"}}, json, 1, {"h/ex.json:2:2 /exampleItems/0 [wrong-type] exampleItems[0] must be an object, found a number"}},
        {{{"h/p.zip", "not a zip"}}, json, 1, {"h/p.zip [bad-package] the package is not read: refused package {root}/docCatalog/exampleapi/h/p.zip: too short to be a zip file"}},
        {{{"h/p.zip", "<copy>fuzz/corpus/package_reader/bomb.zip"}}, json, 1, {"h/p.zip!bomb.json [unreadable] not read: entry 0 inflates more than 1024 times its compressed size"}},
        {{{"h/p.zip", "<copy>tests/data/zips/7z-Deflate64.zip"}}, json, 1, {"h/p.zip!cat.json [unsupported-compression] not read: compression method 9 (Deflate64) is not supported"}},
        {{{"h/p.zip", "<copy>tests/data/zips/python-duplicate.zip"}}, json, 1, {"h/p.zip!cat.json [duplicate-entry] not read: a second entry of this name; the first one is read"}},
        {{{"h/ex.json", catalogueText("h", "en_US", {{"a", "A"}, {"b", "B"}, {"a", "C"}})}}, json, 0, {"h/ex.json:1:189 /exampleItems/2 (c/a) [duplicate-id] exampleItems[2] (c/a): exampleItems[0] has the same id; both are kept under it"}},
        {{{"h/ex.json", withEntry(R"(,"exampleType":"Live_Script")")}}, json, 0, {"h/ex.json:2:56 /exampleItems/0/exampleType (c/n) [unknown-kind] exampleItems[0] (c/n): \"Live_Script\" is not a kind; the example is read as Unknown (did you mean \"Live Script\"?)"}},
        {{{"h/ex.json", catalogueText("h", "en_US", {{"a", "  "}})}}, json, 0, {"h/ex.json:1:105 /exampleItems/0/title (c/a) [empty-field] exampleItems[0] (c/a): \"title\" is empty"}},
        {{{"h/ex.json", kHead + R"({"name":"n","component":"","title":"t","thumbnail":""}]})"}}, json, 0, {"h/ex.json:2:13 /exampleItems/0/component (/n) [empty-field] exampleItems[0] (/n): \"component\" is empty; the id becomes \"/n\""}},
        {{{"h/ex.json", catalogueText("h", "en_US", {{"a", "A"}})}, {"h/ex_ja_JP.json", catalogueText("h", "ja_JP", {{"a", "A"}, {"b", "B"}})}}, json, 0, {"h/ex_ja_JP.json:1:133 /exampleItems/1 (c/b) [orphan-id] exampleItems[1] (c/b): no English example of this help folder has the id \"c/b\""}},
        {{{"h/ex.json", catalogueText("h", "en_US", {})}, {"h/ex_ko_KR.json", catalogueText("g", "ko_KR", {})}}, json, 0, {"h/ex_ko_KR.json:1:26 /header/helpFolder [help-folder-mismatch] help folder \"g\" differs from \"h\" of its English catalogue: it is not merged with it"}},
        {{{"k/p.zip!cat/x.json", catalogueText("k", "en_US", {})}, {"k/p.zip!cat/x_zh_CN.json", catalogueText("K", "zh_CN", {})}}, json, 0, {"k/p.zip!cat/x_zh_CN.json:1:26 /header/helpFolder [help-folder-mismatch] help folder \"K\" differs from \"k\" of its English catalogue: it is not merged with it"}},
        {{{"c/g.zip!g.json", catalogueText("g", "en_US", {})}, {"c/g_ja_JP.zip!x.json", catalogueText("G", "ja_JP", {})}}, json, 0, {"c/g_ja_JP.zip!x.json:1:26 /header/helpFolder [help-folder-mismatch] help folder \"G\" differs from \"g\" of its English catalogue: it is not merged with it"}},
        {{{"h/ex_zh_CN.json", catalogueText("h", "ja_JP", {})}}, json, 0, {"h/ex_zh_CN.json:1:43 /header/locale [locale-mismatch] the header says locale \"ja_JP\" but the file name says zh_CN"}},
        {{{"h/ex.json", catalogueText("h", "ko_KR", {})}}, json, 0, {"h/ex.json:1:43 /header/locale [locale-mismatch] the header says locale \"ko_KR\" but the file name says English"}},
        {{{"h/a.json", catalogueText("h", "en_US", {})}, {"z/p.zip!p.json", catalogueText("h", "en_US", {})}}, json, 0, {"h/a.json:1:26 /header/helpFolder [duplicate-catalogue] another English catalogue of help folder \"h\", z/p.zip!p.json, is read first: its header and its examples of the same ids win"}},
        {{{"f.json", "<fifo>"}}, json, 0, {"f.json [left-out] not read: it is not a regular file"}},
        {{{"l.json", "<link>none.json"}}, json, 0, {"l.json [left-out] not read: it is a link to nothing"}},
        {{{"b\xFF.json", "{}"}}, json, 0, {"b\xEF\xBF\xBD.json [left-out] not read: its name is not valid UTF-8"}},
        {{{"1/2/3/4/5/6/7/8/9/10/11/12/13/14/15/16/17/", ""}}, json, 0, {"1/2/3/4/5/6/7/8/9/10/11/12/13/14/15/16/17 [left-out] not read: it lies below the depth limit of the walk"}},
        {{{"h/p.zip!readme.txt", "notes"}}, json, 0, {"h/p.zip [no-catalogue] the package holds no catalogue read under the checked locales"}},
        {locales, "check --format json", 1, {"@check_all.json"}},
        {locales, "check --format json --locale ja_JP", 0, {"@check_ja_JP.json"}},
        {errorAndWarning, "check --locale ja_JP", 1, {"@check_ja_JP.txt"}},
        {{{"a/ex.json", catalogueText("a", "en_US", {{"x", ""}})}}, "check --locale ja_JP --strict", 1, {}},
        {kSarif, "check --format sarif", 1, {"@check.sarif"}},
        {skipped, "list --locale ja_JP", 0, {"exampledoc list: 2 files or packages were skipped; 'exampledoc check' tells why\n"}},
        {skipped, "list --locale en_US", 0, {"exampledoc list: 1 file or package was skipped; 'exampledoc check' tells why\n"}},
        {skipped, "list --locale ja_JP --json", 0, {"!skipped"}},
        {coverage, "coverage --format json", 0, {"@coverage.json", "exampledoc coverage: 1 catalogue or package is not read; 'exampledoc check' tells why\n"}},
        {coverage, "coverage --locale ja_JP", 0, {"@coverage_ja_JP.txt"}},
    };
    // clang-format on
    for (const auto& c : cases) {
        zwtest::expectTool(c);
    }
}

TEST_F(CheckCommand, SarifFollowsTheSchema) {
    const zwtest::TempDir dir;
    const auto log = dir.write("check.sarif", zwtest::runTool(kSarif, "check --format sarif").out);
    const std::string validate =
        "python3 -c 'import json, sys, jsonschema; jsonschema.validate(json.load(open(sys.argv[1])), "
        "json.load(open(sys.argv[2])))' '" +
        log.string() + "' '" ZW_SOURCE_DIR "/tests/data/sarif/sarif-schema-2.1.0.json'";
    EXPECT_EQ(std::system(validate.c_str()), 0);
}

} // namespace
