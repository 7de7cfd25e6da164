// exampledoc preview as readers see it: every page it writes, loaded by headless Chromium.

#include <cstdio>
#include <set>

#include "support/tool_run.hpp"

namespace {

namespace fs = std::filesystem;
using zwtest::Files;

// The DOM that headless Chromium builds from `page`, with a profile of its own and no network.
std::string renderedDom(const fs::path& page) {
    const zwtest::TempDir profile;
    const std::string command =
        "timeout 120 chromium --headless --no-sandbox --disable-gpu --no-first-run "
        "--disable-background-networking --disable-component-update --disable-sync --user-data-dir='" +
        profile.path().string() + "' --dump-dom 'file://" + page.string() + "' 2>/dev/null";
    std::string dom;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) {
        ADD_FAILURE() << "cannot run " << command;
        return dom;
    }
    char buffer[4096];
    for (std::size_t got; (got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
        dom.append(buffer, got);
    }
    EXPECT_EQ(::pclose(pipe), 0) << command;
    return dom;
}

std::size_t occurrences(const std::string& text, const std::string& what) {
    std::size_t count = 0;
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + what.size())) {
        ++count;
    }
    return count;
}

// The examples that `list --json` gives under `locale`, and the English examples that `coverage`
// finds its catalogues lack.
std::pair<std::size_t, std::size_t> expectedCards(const Files& files, const std::string& locale) {
    std::size_t cards = 0;
    const boost::json::value list =
        boost::json::parse(zwtest::runTool(files, "list --json --locale " + locale).out);
    for (const auto& folder : list.as_object()) {
        cards += folder.value().at("items").as_array().size();
    }
    std::size_t untranslated = 0;
    if (locale != "en_US") {
        const auto coverage =
            boost::json::parse(zwtest::runTool(files, "coverage --format json --locale " + locale).out);
        for (const auto& folder : coverage.at("helpFolders").as_array()) {
            untranslated += folder.at("locales").at(locale).at("missingCount").to_number<std::size_t>();
        }
    }
    return {cards, untranslated};
}

struct PreviewCase {
    Files files; // none: the sample tree
    std::string options;
    std::vector<std::string> pages;
    std::vector<std::pair<std::string, std::string>> shown; // a page and a text it shows
    std::vector<std::string> thumbnails;                    // the thumbnails copied
};

TEST(Preview, EveryPageShowsTheLibrarysExamplesAsTextAndRunsNothing) {
    // A help folder whose catalogues hold markup, links and paths out of their folder, with one
    // thumbnail that is there.
    const Files hostile = zwtest::caseTree("hostile");
    const std::vector<PreviewCase> cases = {
        {{},
         "",
         {"en_US", "ja_JP", "ko_KR", "zh_CN"},
         {{"ja_JP", "ピーク関数のサーフェスプロット"},
          {"ja_JP", "English only"},
          {"ja_JP", "<html lang=\"ja\">"},
          {"zh_CN", "<html lang=\"zh-CN\">"},
          {"index", "ja_JP.html#folder-graphics"}},
         {"graphics/images/SurfacePlotOfPeaks.png", "control/images/PIDTuning.png"}},
        {hostile,
         "",
         {"en_US", "ja_JP", "ko_KR", "zh_CN"},
         {{"en_US", "&lt;img src=x onerror=alert(1)&gt;"},
          {"en_US", "&lt;script&gt;alert(2)&lt;/script&gt;"},
          {"en_US", "&lt;/code&gt;&lt;b&gt;bold&lt;/b&gt;"},
          {"en_US", "c\"&gt;&lt;script&gt;alert(3)&lt;/script&gt;/b"},
          {"en_US", "&lt;a href=x&gt;t&lt;/a&gt; <code>javascript:alert(5)</code>"},
          {"en_US", "&lt;iframe src=x&gt;"},
          {"en_US", "3 thumbnails missing"},
          {"en_US", "h/ex.json</code> thumbnail \"images/none.png\" is not there"},
          {"en_US", "<img src=\"thumbnails/h/images/a%20b%231.png\""},
          {"ja_JP", "6 examples · 4 in English"},
          {"index", "2 translated (33%)"},
          {"ja_JP", "&lt;b&gt;太字&lt;/b&gt;"},
          {"zh_CN", "乙"}},
         {"h/images/t.png", "h/images/a b#1.png"}},
        {hostile, "--locale zh_CN", {"zh_CN"}, {{"zh_CN", "乙"}}, {"h/images/t.png"}},
    };
    for (const PreviewCase& c : cases) {
        SCOPED_TRACE("preview " + c.options + (c.files.empty() ? " of the sample tree" : ""));
        const zwtest::TempDir out;
        const std::string command = "preview --out " + out.path().string() + " " + c.options;
        const zwtest::ToolRun run = zwtest::runTool(c.files, command);
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_NE(run.err.find("open " + (out.path() / "index.html").string()), std::string::npos) << run.err;

        std::set<std::string> written;
        for (const auto& entry : fs::recursive_directory_iterator(out.path())) {
            if (entry.is_regular_file()) {
                written.insert(fs::relative(entry.path(), out.path()).string());
            }
        }
        std::set<std::string> expected = {"index.html"};
        for (const std::string& page : c.pages) {
            expected.insert(page + ".html");
        }
        for (const std::string& thumbnail : c.thumbnails) {
            EXPECT_TRUE(written.count("thumbnails/" + thumbnail)) << thumbnail;
        }
        std::erase_if(written, [](const std::string& file) { return file.starts_with("thumbnails/"); });
        EXPECT_EQ(written, expected);

        std::map<std::string, std::string> doms;
        for (const std::string& page : c.pages) {
            SCOPED_TRACE(page);
            const std::string dom = doms[page] = renderedDom(out.path() / (page + ".html"));
            const auto [cards, untranslated] = expectedCards(c.files, page);
            EXPECT_EQ(occurrences(dom, "<article class=\"card\" data-example-id="), cards);
            EXPECT_EQ(occurrences(dom, " data-untranslated"), untranslated);
            // The only images are copied thumbnails; every other card shows the placeholder.
            EXPECT_EQ(occurrences(dom, "<img "), occurrences(dom, "<img src=\"thumbnails/"));
            EXPECT_EQ(occurrences(dom, "<img ") + occurrences(dom, "data-missing-thumbnail"), cards);
            for (const char* element : {"<script", "<iframe", "<b>", "<a href=\"x", "<a href=\"javascript"}) {
                EXPECT_EQ(dom.find(element), std::string::npos) << element;
            }
        }
        doms["index"] = renderedDom(out.path() / "index.html");
        for (const auto& [page, text] : c.shown) {
            EXPECT_NE(doms[page].find(text), std::string::npos) << page << ": " << text;
        }

        const zwtest::ToolRun again = zwtest::runTool(c.files, command);
        EXPECT_EQ(again.status, 2);
        EXPECT_NE(again.err.find("already exists; give --force"), std::string::npos) << again.err;
        EXPECT_EQ(zwtest::runTool(c.files, command + " --force").status, 0);
    }
}

} // namespace
