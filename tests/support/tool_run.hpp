#pragma once
// Runs command lines of exampledoc over small trees, and checks what they say: the cases of
// tests/data/exampledoc/MANIFEST over the trees of tests/data/exampledoc/TREES.

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <boost/algorithm/string/replace.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

#include "cli.hpp"
#include "example/docparser/doc_example_parser.hpp"
#include "support/case_tree.hpp"
#include "support/temp_tree.hpp"
#include "zwhost/settings.hpp"

namespace zwtest {

struct ToolRun {
    int status;
    std::string out, err;
};

inline std::string findingLines(const std::string& out) {
    boost::system::error_code error;
    const boost::json::value report = boost::json::parse(out, error);
    if (error || !report.is_object() || !report.as_object().contains("findings")) {
        return {};
    }
    std::string lines;
    for (const auto& finding : report.at("findings").as_array()) {
        const auto text = [&](const char* key) {
            const boost::json::value& value = finding.at(key);
            return value.is_string() ? std::string(value.as_string())
                   : value.is_null() ? std::string()
                                     : boost::json::serialize(value);
        };
        lines += text("file") + (text("line").empty() ? "" : ':' + text("line") + ':' + text("column")) +
                 (text("jsonPath").empty() ? "" : ' ' + text("jsonPath")) +
                 (text("exampleId").empty() ? "" : " (" + text("exampleId") + ')') + " [" + text("rule") +
                 "] " + text("message") + '\n';
    }
    return lines;
}

// Writes `files` under a fresh root and runs `command` over it as a new process would.
inline ToolRun runTool(const Files& files, const std::string& command) {
    const TempDir dir;
    writeFiles(dir.path() / "docCatalog/exampleapi", files);

    const std::string root = files.empty() ? ZW_SAMPLE_DOCROOT : dir.path().string();
    std::vector<std::string> args;
    // Only the row's own words set the environment the tool reads.
    std::vector<std::string> variables = {"LC_ALL", "LC_MESSAGES", "LANG", "NO_COLOR", "ZW_DOC_ROOT"};
    for (const std::string& variable : variables) {
        ::unsetenv(variable.c_str());
    }
    ::setenv("ZW_DOC_ROOT", root.c_str(), 1);
    bool terminal = false;
    std::istringstream words(command);
    for (std::string word; words >> word;) {
        const auto equals = word.find('=');
        if (!args.empty() || equals == std::string::npos ||
            !std::isupper(static_cast<unsigned char>(word[0]))) {
            args.push_back(word);
        } else if (word == "TTY=1") {
            terminal = true;
        } else {
            variables.push_back(word.substr(0, equals));
            ::setenv(variables.back().c_str(), word.substr(equals + 1).c_str(), 1);
        }
    }
    zwhost::settings::resetToDefaults();
    example::docparser::DocExampleParser::restoreDefaultSettings();
    std::ostringstream out;
    std::ostringstream err;
    ToolRun run{exampledoc::run(args, out, err, terminal), out.str(), err.str()};
    for (const std::string& variable : variables) {
        ::unsetenv(variable.c_str());
    }
    boost::algorithm::replace_all(run.out, root, "{root}");
    boost::algorithm::replace_all(run.err, root, "{root}");
    return run;
}

/** Runs each case of tests/data/exampledoc/MANIFEST named "`command`-...": its line gives the
    name, the tree ("-": the sample tree), the exit status, the command line (words split at spaces,
    after any NAME=value words that set the environment as a shell does; TTY=1 makes standard output
    a terminal) and what it expects. Each expected text is found in the output, standard error or the
    findings of a JSON report (one line each: "file:line:column /pointer (id) [rule] message");
    "!text" is found in none of them, and "@name" is the whole output: tests/data/exampledoc/name,
    with the tree's root as {root}. */
inline void expectManifestCases(const std::string& command) {
    int cases = 0;
    for (const auto& fields : caseLines(ZW_SOURCE_DIR "/tests/data/exampledoc/MANIFEST")) {
        if (!fields.at(0).starts_with(command + '-')) {
            continue;
        }
        SCOPED_TRACE("case " + fields.at(0) + ": exampledoc " + fields.at(3));
        const ToolRun run = runTool(fields.at(1) == "-" ? Files{} : caseTree(fields.at(1)), fields.at(3));
        const std::string said = run.out + '\n' + run.err + '\n' + findingLines(run.out);
        EXPECT_EQ(run.status, std::stoi(fields.at(2))) << said;
        for (const std::string& expected : std::span(fields).subspan(4)) {
            if (expected.starts_with('@')) {
                EXPECT_EQ(run.out, fileText(ZW_SOURCE_DIR "/tests/data/exampledoc/" + expected.substr(1)));
            } else if (expected.starts_with('!')) {
                EXPECT_EQ(said.find(expected.substr(1)), std::string::npos) << expected.substr(1) << '\n'
                                                                            << said;
            } else {
                EXPECT_NE(said.find(expected), std::string::npos) << expected << '\n' << said;
            }
        }
        ++cases;
    }
    EXPECT_GT(cases, 0) << "no case of " << command;
}

} // namespace zwtest
