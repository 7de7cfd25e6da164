#include "catalogue/catalogue_parser.hpp"

#include <string>

#include <boost/system/system_error.hpp>
#include <gtest/gtest.h>

#include "support/host_leak_check.hpp"
#include "zwhost/fault.hpp"

namespace {

using example::docparser::ExampleItem;
using example::docparser::ExampleType;
using example::docparser::detail::parseExampleCatalogue;

std::string catalogue(const std::string& items, const std::string& helpFolder = "graphics") {
    return R"({"header":{"product":"Core","version":"1.0","helpFolder":")" + helpFolder +
           R"(","locale":"en_US"},"exampleItems":[)" + items + "]}";
}

std::string entry(const std::string& component, const std::string& name, const std::string& extra = "") {
    return R"({"name":")" + name + R"(","component":")" + component +
           R"(","title":" T ","thumbnail":"t.png")" + extra + "}";
}

const ExampleItem& only(const example::docparser::ExampleCatalogues& result, const std::u16string& id) {
    const auto& items = result.begin()->second.items;
    EXPECT_EQ(items.count(id), 1U) << "no id";
    return items.at(id).at(0);
}

using CatalogueParser = zwtest::HostLeakCheck;

TEST_F(CatalogueParser, EmptyItemArrayGivesOneEmptyCatalogueUnderTheHelpFolder) {
    const auto result = parseExampleCatalogue(catalogue(""));
    ASSERT_EQ(result.size(), 1U);
    EXPECT_EQ(result.begin()->first, u"graphics");
    EXPECT_EQ(result.begin()->second.header.getProduct(), u"Core");
    EXPECT_TRUE(result.begin()->second.items.empty());
}

TEST_F(CatalogueParser, ReadsEveryFieldOfAnEntry) {
    const auto result = parseExampleCatalogue(catalogue(
        entry("graphics", "plot3",
              R"(,"description":"  Lines \u00e9\ud83d\ude00 ","exampleType":"Live Script",)"
              R"("openCmd":" run(1) ","relative_path":[" a/b.m "],"supporting_files":[" data.csv "],)"
              R"("docid_links":[{"docid":"d1","target":"t1"},{"docid":"d2","target":""}],"extra":7)")));
    const ExampleItem& item = only(result, u"graphics/plot3");
    EXPECT_EQ(item.getName(), u"plot3");
    EXPECT_EQ(item.getComponent(), u"graphics");
    EXPECT_EQ(item.getTitle(), u"T");
    EXPECT_EQ(item.getDescription(), u"Lines \u00e9\U0001F600");
    EXPECT_EQ(item.getThumbnail(), u"t.png");
    EXPECT_EQ(item.getExampleType(), ExampleType::Live_Script);
    EXPECT_EQ(item.getOpenCommand(), u"run(1)");
    EXPECT_EQ(item.getRelativePaths(), std::vector<std::u16string>{u" a/b.m "});
    EXPECT_EQ(item.getSupportingFiles(), std::vector<std::u16string>{u"data.csv"});
    ASSERT_EQ(item.getDocIDLinks().size(), 2U);
    EXPECT_EQ(item.getDocIDLinks()[0].getDocID(), u"d1");
    EXPECT_EQ(item.getDocIDLinks()[0].getTarget(), u"t1");
    EXPECT_EQ(item.getDocIDLinks()[1].getTarget(), u"");
}

TEST_F(CatalogueParser, AbsentOptionalMembersTakeTheirDefaults) {
    const auto result = parseExampleCatalogue(catalogue(entry("c", "n")));
    const ExampleItem& item = only(result, u"c/n");
    EXPECT_EQ(item.getDescription(), u"");
    EXPECT_EQ(item.getExampleType(), ExampleType::Unknown);
    EXPECT_EQ(item.getOpenCommand(), u"openExample('c/n');");
    EXPECT_TRUE(item.getRelativePaths().empty());
    EXPECT_TRUE(item.getSupportingFiles().empty());
    EXPECT_TRUE(item.getDocIDLinks().empty());
    const auto emptyLinks = parseExampleCatalogue(catalogue(entry("c", "n", R"(,"docid_links":[])")));
    const ExampleItem& withEmptyLinks = only(emptyLinks, u"c/n");
    EXPECT_TRUE(withEmptyLinks.getDocIDLinks().empty());
    EXPECT_EQ(withEmptyLinks.getDocIDLinks().capacity(), 0U);
}

TEST_F(CatalogueParser, KindsAreExactCatalogueForms) {
    const struct {
        const char* text;
        ExampleType::Value kind;
    } rows[] = {{"Live Script", ExampleType::Live_Script},
                {"Live_Script", ExampleType::Unknown},
                {"script", ExampleType::Unknown},
                {"App", ExampleType::App},
                {"", ExampleType::Unknown}};
    for (const auto& row : rows) {
        const auto result = parseExampleCatalogue(
            catalogue(entry("c", "n", std::string(R"(,"exampleType":")") + row.text + "\"")));
        EXPECT_EQ(only(result, u"c/n").getExampleType(), row.kind) << row.text;
    }
}

TEST_F(CatalogueParser, EmptyOpenCommandGetsTheDefaultWithTheIdUnescaped) {
    const auto result = parseExampleCatalogue(
        catalogue(entry("c", "it's", R"(,"openCmd":"")") + "," + entry("", "lonely", R"(,"openCmd":"  ")")));
    EXPECT_EQ(only(result, u"c/it's").getOpenCommand(), u"openExample('c/it's');");
    const ExampleItem& orphan = only(result, u"/lonely");
    EXPECT_EQ(orphan.getOpenCommand(), u"openExample('/lonely');");
    EXPECT_EQ(orphan.getID(), u"");
}

TEST_F(CatalogueParser, IdsAreOrderedByCodeUnitAndDuplicatesKeepFileOrder) {
    const auto result = parseExampleCatalogue(
        catalogue(entry("b", "x", R"(,"openCmd":"first")") + "," + entry("a", "\u00e9") + "," +
                  entry("a", "Z") + "," + entry("b", "x", R"(,"openCmd":"second")") + "," + entry("a", "z")));
    const auto& items = result.begin()->second.items;
    std::vector<std::u16string> ids;
    for (const auto& [id, vector] : items) {
        ids.push_back(id);
    }
    EXPECT_EQ(ids, (std::vector<std::u16string>{u"a/Z", u"a/z", u"a/\u00e9", u"b/x"}));
    const auto& twins = items.at(u"b/x");
    ASSERT_EQ(twins.size(), 2U);
    EXPECT_EQ(twins[0].getOpenCommand(), u"first");
    EXPECT_EQ(twins[1].getOpenCommand(), u"second");
}

std::string nested(int depth) {
    std::string open(static_cast<std::size_t>(depth), '[');
    return open + std::string(static_cast<std::size_t>(depth), ']');
}

TEST_F(CatalogueParser, NestingUpToThirtyTwoIsAccepted) {
    // The root object and its "extra" member take two levels.
    const auto result = parseExampleCatalogue(catalogue(entry("c", "n", R"(,"extra":)" + nested(29))));
    EXPECT_EQ(result.begin()->second.items.size(), 1U);
    EXPECT_THROW(parseExampleCatalogue(catalogue(entry("c", "n", R"(,"extra":)" + nested(30)))),
                 boost::system::system_error);
}

TEST_F(CatalogueParser, MalformedTextFailsTheWholeFile) {
    const std::string bad[] = {
        "",
        "{",
        catalogue(entry("c", "n")) + "//",
        catalogue(entry("c", "n") + ","),
        catalogue(entry("c", "n\xff")),
        catalogue(entry("c", "n\xed\xa0\x80")),
        "[]",
        R"({"exampleItems":[]})",
        R"({"header":[],"exampleItems":[]})",
        R"({"header":{"helpFolder":3},"exampleItems":[]})",
        R"({"header":{}})",
        R"({"header":{},"exampleItems":{}})",
        catalogue("7"),
        catalogue(R"({"component":"c","title":"t","thumbnail":"x"})"),
        catalogue(entry("c", "n", R"(,"exampleType":5)")),
        catalogue(entry("c", "n", R"(,"relative_path":"a")")),
        catalogue(entry("c", "n", R"(,"supporting_files":[1])")),
        catalogue(entry("c", "n", R"(,"docid_links":[{"docid":"d"}])")),
        catalogue(entry("c", "n", R"(,"docid_links":["d"])")),
        catalogue(entry("c", "n", R"(,"description":4)")),
    };
    for (const std::string& text : bad) {
        EXPECT_ANY_THROW(parseExampleCatalogue(text)) << text;
    }
}

TEST_F(CatalogueParser, NullDescriptionAndOpenCommandFallBack) {
    const auto result =
        parseExampleCatalogue(catalogue(entry("c", "n", R"(,"description":null,"openCmd":null)")));
    const ExampleItem& item = only(result, u"c/n");
    EXPECT_EQ(item.getDescription(), u"");
    EXPECT_EQ(item.getOpenCommand(), u"openExample('c/n');");
}

TEST_F(CatalogueParser, OneBadEntryLosesAHundredGoodOnes) {
    std::string items;
    for (int i = 0; i < 100; ++i) {
        items += entry("c", "n" + std::to_string(i)) + ",";
    }
    EXPECT_EQ(parseExampleCatalogue(catalogue(items + entry("c", "last"))).begin()->second.items.size(),
              101U);
    EXPECT_ANY_THROW(parseExampleCatalogue(catalogue(items + R"({"name":"no component"})")));
}

TEST_F(CatalogueParser, HostFailureInAnyReadEndsTheFile) {
    const std::string text =
        catalogue(entry("c", "n", R"(,"relative_path":["p"],"docid_links":[{"docid":"d","target":"t"}])"));
    for (const char* operation : {"ParsingTools::getHeaderInfo", "ParsingTools::getJsonArray",
                                  "ParsingTools::getFluString", "ParsingTools::getFluStringWithFallback"}) {
        for (std::uint64_t nth = 1;; ++nth) {
            zwhost::fault::Scope faults;
            zwhost::fault::failOn(operation, nth);
            try {
                parseExampleCatalogue(text);
                EXPECT_GT(nth, 1U) << operation;
                break;
            } catch (const zwhost::fault::InjectedFault&) {
            }
        }
    }
}

} // namespace
