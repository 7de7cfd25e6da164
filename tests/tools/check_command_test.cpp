#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

#include "commands.hpp"
#include "example/docparser/doc_example_parser.hpp"
#include "json_position.hpp"
#include "support/catalogue_text.hpp"
#include "support/temp_tree.hpp"
#include "zwhost/settings.hpp"

namespace {

namespace fs = std::filesystem;
using zwtest::catalogueText;

constexpr int kUnplaced = -1; // the finding has no place in a text
constexpr int kAnywhere = 0;  // its place is not checked

struct Report {
    int status;
    boost::json::object json;
};

class CheckCommand : public ::testing::Test {
protected:
    ~CheckCommand() override {
        zwhost::settings::resetToDefaults();
        example::docparser::DocExampleParser::restoreDefaultSettings();
    }

    static fs::path treeOf(const zwtest::TempDir& dir) { return dir.path() / "docCatalog/exampleapi"; }

    static std::string run(const zwtest::TempDir& dir, exampledoc::Options options, int& status) {
        options.root = dir.path().string();
        std::ostringstream out;
        std::ostringstream err;
        status = exampledoc::checkCommand(options, out, err);
        return out.str();
    }

    static Report check(const zwtest::TempDir& dir, exampledoc::Options options = {}) {
        options.format = "json";
        int status = 0;
        const std::string out = run(dir, options, status);
        return {status, boost::json::parse(out).as_object()};
    }
};

const boost::json::object* findingOf(const boost::json::object& report, const char* rule, const char* file) {
    for (const auto& finding : report.at("findings").as_array()) {
        if (finding.at("rule") == rule && finding.at("file") == file) {
            return &finding.as_object();
        }
    }
    return nullptr;
}

struct RuleCase {
    const char* rule;
    std::vector<std::pair<std::string, std::string>> files; // under docCatalog/exampleapi
    std::function<void(const fs::path& tree)> build;        // what files alone cannot make
    const char* file;
    int line;
    int column;
    const char* jsonPath;
    const char* exampleId;
    const char* message;
};

const std::string kEntry = R"({"name":"n","component":"c","title":"t","thumbnail":"")";

std::string withEntry(const std::string& members) {
    return "{\"header\":{\"helpFolder\":\"h\"},\"exampleItems\":[\n" + kEntry + members + "}]}";
}

TEST_F(CheckCommand, EachRuleFindsItsProblemAtItsPlace) {
    // clang-format off
    const std::vector<RuleCase> cases = {
        {"json-syntax", {{"h/ex.json", "{\"header\":{},\n \"exampleItems\": [,]}"}}, {}, "h/ex.json", 2, 19, "", "", "unexpected ','"},
        {"json-syntax", {{"h/ex.json", R"({"header":{},"exampleItems":[],})"}}, {}, "h/ex.json", 1, 31, "", "", "comma"},
        {"json-syntax", {{"h/ex.json", "{\"header\":{} // note\n}"}}, {}, "h/ex.json", 1, 14, "", "", "comments"},
        {"json-syntax", {{"h/ex.json", "{\"header\":{}"}}, {}, "h/ex.json", 1, 13, "", "", "ends before"},
        {"byte-order-mark", {{"h/ex.json", "\xEF\xBB\xBF{}"}}, {}, "h/ex.json", 1, 1, "", "", "byte order mark"},
        {"not-utf8", {{"h/ex.json", "{\"header\":{\"product\":\"\xE6\x97\xA5" "caf\xE9\"}}"}}, {}, "h/ex.json", 1, 27, "", "", "0xE9"},
        {"too-deep", {{"h/ex.json", std::string(40, '[') + std::string(40, ']')}}, {}, "h/ex.json", 1, kAnywhere, "", "", "32"},
        {"wrong-type", {{"h/ex.json", "[]"}}, {}, "h/ex.json", 1, 1, "", "", "must be a JSON object, found an array"},
        {"missing-member", {{"h/ex.json", R"({"exampleItems":[]})"}}, {}, "h/ex.json", 1, 1, "", "", "no \"header\""},
        {"missing-member", {{"h/ex.json", R"({"header":{}})"}}, {}, "h/ex.json", 1, 1, "", "", "no \"exampleItems\""},
        {"wrong-type", {{"h/ex.json", R"({"header":{"locale":5},"exampleItems":[]})"}}, {}, "h/ex.json", 1, 12, "/header/locale", "", "found a number"},
        {"missing-member", {{"h/ex.json", withEntry("").replace(withEntry("").find(",\"title\":\"t\""), 12, "")}}, {}, "h/ex.json", 2, 1, "/exampleItems/0", "c/n", "exampleItems[0] (c/n) has no \"title\""},
        {"wrong-type", {{"h/ex.json", withEntry(R"(,"relative_path":"p")")}}, {}, "h/ex.json", 2, 56, "/exampleItems/0/relative_path", "c/n",
         "exampleItems[0] (c/n): \"relative_path\" must be an array of strings, found a string"},
        {"wrong-type", {{"h/ex.json", withEntry(R"(,"supporting_files":["a",5])")}}, {}, "h/ex.json", 2, 80, "/exampleItems/0/supporting_files/1", "c/n", "[1] must be a string, found a number"},
        {"wrong-type", {{"h/ex.json", withEntry(R"(,"docid_links":{})")}}, {}, "h/ex.json", 2, 56, "/exampleItems/0/docid_links", "c/n", "an array of objects, found an object"},
        {"missing-member", {{"h/ex.json", withEntry(R"(,"docid_links":[{"docid":"d"}])")}}, {}, "h/ex.json", 2, 71, "/exampleItems/0/docid_links/0", "c/n", "has no \"target\""},
        {"wrong-type", {{"h/ex.json", withEntry(R"(,"docid_links":[true])")}}, {}, "h/ex.json", 2, 71, "/exampleItems/0/docid_links/0", "c/n", "must be an object, found true or false"},
        {"wrong-type", {{"h/ex.json", withEntry(R"(,"exampleType":6)")}}, {}, "h/ex.json", 2, 56, "/exampleItems/0/exampleType", "c/n", "must be a string, found a number"},
        {"wrong-type", {{"h/ex.json", withEntry(R"(,"name":"m","title":null)")}}, {}, "h/ex.json", 2, kAnywhere, "/exampleItems/0/title", "c/m", "found null"},
        {"wrong-type", {{"h/ex.json", "{\"header\":{},\"exampleItems\":[\n 7]}"}}, {}, "h/ex.json", 2, 2, "/exampleItems/0", "", "must be an object, found a number"},
        {"bad-package", {{"h/p.zip", "not a zip"}}, {}, "h/p.zip", kUnplaced, 0, "", "", "not read"},
        {"unreadable", {{"h/ex.json", catalogueText("h", "en_US", {})}}, [](const fs::path&) { zwhost::settings::setReadLimit(8); }, "h/ex.json", kUnplaced, 0, "", "", "read limit"},
        {"unsupported-compression", {}, [](const fs::path& tree) { fs::create_directories(tree / "h"); fs::copy_file(ZW_TEST_DATA "/zips/7z-Deflate64.zip", tree / "h/p.zip"); },
         "h/p.zip!cat.json", kUnplaced, 0, "", "", "compression method 9 (Deflate64) is not supported"},
        {"duplicate-entry", {}, [](const fs::path& tree) {
             // Names of one length: renaming the second in the written bytes makes it a duplicate.
             const fs::path zip = tree / "h/p.zip";
             zwtest::writeZip(zip, {{"a.json", catalogueText("h", "en_US", {})}, {"b.json", "{}"}});
             std::stringstream bytes;
             bytes << std::ifstream(zip, std::ios::binary).rdbuf();
             std::string text = bytes.str();
             for (std::size_t at = text.find("b.json"); at != std::string::npos; at = text.find("b.json", at)) {
                 text[at] = 'a';
             }
             std::ofstream(zip, std::ios::binary) << text;
         }, "h/p.zip!a.json", kUnplaced, 0, "", "", "not read: "},
        {"duplicate-id", {{"h/ex.json", catalogueText("h", "en_US", {{"a", "A"}, {"b", "B"}, {"a", "C"}})}}, {}, "h/ex.json", 1, kAnywhere, "/exampleItems/2", "c/a", "exampleItems[0] has the same id"},
        {"unknown-kind", {{"h/ex.json", withEntry(R"(,"exampleType":"Live_Script")")}}, {}, "h/ex.json", 2, 56, "/exampleItems/0/exampleType", "c/n", "did you mean \"Live Script\""},
        {"empty-field", {{"h/ex.json", catalogueText("h", "en_US", {{"a", "  "}})}}, {}, "h/ex.json", 1, kAnywhere, "/exampleItems/0/title", "c/a", "\"title\" is empty"},
        {"empty-field", {{"h/ex.json", withEntry("").replace(withEntry("").find("\"c\""), 3, "\"\"")}}, {}, "h/ex.json", 2, 13, "/exampleItems/0/component", "/n", "the id becomes \"/n\""},
        {"orphan-id", {{"h/ex.json", catalogueText("h", "en_US", {{"a", "A"}})}, {"h/ex_ja_JP.json", catalogueText("h", "ja_JP", {{"a", "A"}, {"b", "B"}})}}, {}, "h/ex_ja_JP.json", 1, kAnywhere, "/exampleItems/1", "c/b", "no English example"},
        {"help-folder-mismatch", {{"h/ex.json", catalogueText("h", "en_US", {})}, {"h/ex_ko_KR.json", catalogueText("g", "ko_KR", {})}}, {}, "h/ex_ko_KR.json", 1, kAnywhere, "/header/helpFolder", "", "\"g\" differs from \"h\""},
        {"help-folder-mismatch", {}, [](const fs::path& tree) {
             zwtest::writeZip(tree / "k/p.zip", {{"cat/x.json", catalogueText("k", "en_US", {})}, {"cat/x_zh_CN.json", catalogueText("K", "zh_CN", {})}});
         }, "k/p.zip!cat/x_zh_CN.json", 1, kAnywhere, "/header/helpFolder", "", "\"K\" differs from \"k\""},
        {"help-folder-mismatch", {}, [](const fs::path& tree) {
             zwtest::writeZip(tree / "c/g.zip", {{"g.json", catalogueText("g", "en_US", {})}});
             zwtest::writeZip(tree / "c/g_ja_JP.zip", {{"x.json", catalogueText("G", "ja_JP", {})}});
         }, "c/g_ja_JP.zip!x.json", 1, kAnywhere, "/header/helpFolder", "", "\"G\" differs from \"g\""},
        {"locale-mismatch", {{"h/ex_zh_CN.json", catalogueText("h", "ja_JP", {})}}, {}, "h/ex_zh_CN.json", 1, kAnywhere, "/header/locale", "", "says locale \"ja_JP\" but the file name says zh_CN"},
        {"locale-mismatch", {{"h/ex.json", catalogueText("h", "ko_KR", {})}}, {}, "h/ex.json", 1, kAnywhere, "/header/locale", "", "English"},
        {"duplicate-catalogue", {{"h/a.json", catalogueText("h", "en_US", {})}}, [](const fs::path& tree) {
             zwtest::writeZip(tree / "z/p.zip", {{"p.json", catalogueText("h", "en_US", {})}});
         }, "h/a.json", 1, kAnywhere, "/header/helpFolder", "", "z/p.zip!p.json, is read first"},
        {"left-out", {}, [](const fs::path& tree) { ::mkfifo((tree / "f.json").c_str(), 0600); }, "f.json", kUnplaced, 0, "", "", "not a regular file"},
        {"left-out", {}, [](const fs::path& tree) { fs::create_symlink("none.json", tree / "l.json"); }, "l.json", kUnplaced, 0, "", "", "link to nothing"},
        {"left-out", {}, [](const fs::path& tree) { std::ofstream(tree / "b\xFF.json") << "{}"; }, "b\xEF\xBF\xBD.json", kUnplaced, 0, "", "", "not valid UTF-8"},
        {"left-out", {}, [](const fs::path& tree) { fs::create_directories(tree / "1/2/3/4/5/6/7/8/9/10/11/12/13/14/15/16/17"); },
         "1/2/3/4/5/6/7/8/9/10/11/12/13/14/15/16/17", kUnplaced, 0, "", "", "depth limit"},
        {"no-catalogue", {}, [](const fs::path& tree) { zwtest::writeZip(tree / "h/p.zip", {{"readme.txt", "notes"}}); }, "h/p.zip", kUnplaced, 0, "", "", "no catalogue"},
    };
    // clang-format on
    for (const RuleCase& c : cases) {
        SCOPED_TRACE(std::string(c.rule) + " in " + c.file);
        const zwtest::TempDir dir;
        for (const auto& [name, content] : c.files) {
            dir.write("docCatalog/exampleapi/" + name, content);
        }
        fs::create_directories(treeOf(dir));
        if (c.build) {
            c.build(treeOf(dir));
        }
        const Report report = check(dir);
        const boost::json::object* finding = findingOf(report.json, c.rule, c.file);
        ASSERT_NE(finding, nullptr) << boost::json::serialize(report.json);
        const bool error = finding->at("severity") == "error";
        EXPECT_EQ(report.status, error ? 1 : 0);
        if (c.line == kUnplaced) {
            EXPECT_TRUE(finding->at("line").is_null());
        } else if (c.line != kAnywhere) {
            EXPECT_EQ(finding->at("line"), c.line);
            if (c.column != kAnywhere) {
                EXPECT_EQ(finding->at("column"), c.column);
            }
        }
        if (c.line != kUnplaced) {
            EXPECT_EQ(finding->at("jsonPath"), c.jsonPath);
        }
        EXPECT_EQ(finding->at("exampleId"),
                  *c.exampleId == 0 ? boost::json::value(nullptr) : boost::json::value(c.exampleId));
        EXPECT_NE(std::string(finding->at("message").as_string()).find(c.message), std::string::npos)
            << finding->at("message");
        zwhost::settings::resetToDefaults();
    }
}

TEST_F(CheckCommand, ChecksEveryLocaleUnlessOneIsAskedFor) {
    const zwtest::TempDir dir;
    dir.write("docCatalog/exampleapi/s/ex.json", catalogueText("s", "en_US", {{"a", "A"}}));
    dir.write("docCatalog/exampleapi/s/ex_zh_CN.json", "{");
    dir.write("docCatalog/exampleapi/s/ex_ja_JP.json", catalogueText("s", "ja_JP", {{"a", "A"}}));
    dir.writeZip("docCatalog/exampleapi/p/p.zip", {{"c/p.json", catalogueText("p", "en_US", {})},
                                                   {"c/p_ko_KR.json", catalogueText("p", "ko_KR", {})}});
    const Report all = check(dir);
    EXPECT_EQ(all.status, 1);
    EXPECT_NE(findingOf(all.json, "json-syntax", "s/ex_zh_CN.json"), nullptr);
    std::map<std::string, std::string> files;
    for (const auto& file : all.json.at("files").as_array()) {
        files[std::string(file.at("file").as_string())] =
            boost::json::serialize(file.as_object().contains("locales") ? file.at("locales")
                                                                        : file.at("kind")) +
            " " + std::string(file.at("status").as_string());
    }
    const std::map<std::string, std::string> expected = {
        {"p/p.zip", "\"package\" read"},
        {"p/p.zip!c/p.json", R"(["ja_JP","ko_KR","zh_CN"] read)"},
        {"p/p.zip!c/p_ko_KR.json", R"(["ko_KR"] read)"},
        {"s/ex.json", R"(["ja_JP","ko_KR","zh_CN"] read)"},
        {"s/ex_ja_JP.json", R"(["ja_JP"] read)"},
        {"s/ex_zh_CN.json", R"(["zh_CN"] skipped)"},
    };
    EXPECT_EQ(files, expected);
    EXPECT_EQ(all.json.at("summary"),
              boost::json::parse(R"({"catalogues":5,"skipped":1,"errors":1,"warnings":0,"notes":0})"));

    exampledoc::Options japanese;
    japanese.locale = "ja_JP";
    const Report ja = check(dir, japanese);
    EXPECT_EQ(ja.status, 0);
    EXPECT_EQ(ja.json.at("locales"), boost::json::parse(R"(["ja_JP"])"));
    EXPECT_EQ(ja.json.at("files").as_array().size(), 4U);
}

TEST_F(CheckCommand, TextGroupsByFileErrorsFirstAndStrictFailsOnWarnings) {
    const zwtest::TempDir dir;
    dir.write("docCatalog/exampleapi/a/ex.json", catalogueText("a", "en_US", {{"x", ""}}));
    dir.write("docCatalog/exampleapi/b/ex_ja_JP.json", "{\"header\":{},\n\"exampleItems\":{}}");
    exampledoc::Options options;
    options.locale = "ja_JP";
    int status = 0;
    EXPECT_EQ(run(dir, options, status),
              "b/ex_ja_JP.json  (read for ja_JP)\n"
              "  2:1     error    \"exampleItems\" must be an array, found an object  [wrong-type]\n"
              "\n"
              "a/ex.json  (English, read for ja_JP)\n"
              "  1:105   warning  exampleItems[0] (c/x): \"title\" is empty  [empty-field]\n"
              "\n"
              "checked 2 catalogues for ja_JP: 1 error, 1 warning, 0 notes; 1 of them is not read\n");
    EXPECT_EQ(status, 1);
    dir.write("docCatalog/exampleapi/b/ex_ja_JP.json", catalogueText("a", "ja_JP", {}));
    run(dir, options, status);
    EXPECT_EQ(status, 0);
    options.strict = true;
    run(dir, options, status);
    EXPECT_EQ(status, 1);
    options.format = "xml";
    EXPECT_THROW(run(dir, options, status), exampledoc::UsageError);
}

TEST_F(CheckCommand, ListSaysOnStderrHowManyFilesOfItsLocaleWereSkipped) {
    const zwtest::TempDir dir;
    dir.write("docCatalog/exampleapi/a/ex.json", catalogueText("a", "en_US", {}));
    dir.write("docCatalog/exampleapi/a/ex_zh_CN.json", "{");
    dir.write("docCatalog/exampleapi/a/ex_ja_JP.json", "[]");
    dir.write("docCatalog/exampleapi/b/p.zip", "no zip");
    for (const auto& [locale, said] :
         {std::pair<std::string, std::string>{
              "ja_JP", "exampledoc list: 2 files or packages were skipped; 'exampledoc check' tells why\n"},
          {"en_US", "exampledoc list: 1 file or package was skipped; 'exampledoc check' tells why\n"}}) {
        exampledoc::Options options;
        options.root = dir.path().string();
        options.locale = locale;
        std::ostringstream out;
        std::ostringstream err;
        EXPECT_EQ(exampledoc::listCommand(options, out, err), 0);
        EXPECT_EQ(err.str(), said);
        options.json = true;
        std::ostringstream quiet;
        exampledoc::listCommand(options, out, quiet);
        EXPECT_EQ(quiet.str(), "");
    }
}

TEST_F(CheckCommand, SarifFollowsTheSchemaAndPlacesFindingsOnTheirLines) {
    const zwtest::TempDir dir;
    dir.write("docCatalog/exampleapi/a b/ex.json", "{\"header\":{},\n \"exampleItems\":[{}]}");
    dir.writeZip("docCatalog/exampleapi/p.zip", {{"c/x.json", "{"}});
    dir.write("docCatalog/exampleapi/q.zip", "no zip");
    exampledoc::Options options;
    options.format = "sarif";
    int status = 0;
    const std::string log = run(dir, options, status);
    EXPECT_EQ(status, 1);
    const fs::path file = dir.write("check.sarif", log);
    const std::string validate =
        "python3 -c 'import json, sys, jsonschema; jsonschema.validate(json.load(open(sys.argv[1])), "
        "json.load(open(sys.argv[2])))' '" +
        file.string() + "' '" ZW_TEST_DATA "/sarif/sarif-schema-2.1.0.json'";
    EXPECT_EQ(std::system(validate.c_str()), 0) << log;

    const auto results = boost::json::parse(log).at("runs").at(0).at("results").as_array();
    ASSERT_EQ(results.size(), 3U);
    std::map<std::string, std::string> places;
    for (const auto& result : results) {
        const auto& location = result.at("locations").at(0).at("physicalLocation").as_object();
        places[std::string(result.at("ruleId").as_string())] =
            boost::json::serialize(location.at("artifactLocation").at("uri")) +
            (location.contains("region") ? boost::json::serialize(location.at("region")) : "");
    }
    const std::map<std::string, std::string> expected = {
        {"missing-member", R"("a%20b/ex.json"{"startLine":2,"startColumn":18})"},
        {"json-syntax", R"("p.zip")"},
        {"bad-package", R"("q.zip")"},
    };
    EXPECT_EQ(places, expected);
}

} // namespace
