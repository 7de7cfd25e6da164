#include "catalogue/catalogue_parser.hpp"

#include <optional>
#include <string>
#include <utility>

#include <boost/system/system_error.hpp>
#include <gtest/gtest.h>

#include "reference/docparser/catalogue_format_error.hpp"
#include "support/host_leak_check.hpp"
#include "support/small_tree.hpp"
#include "zwhost/fault.hpp"

namespace {

using example::docparser::detail::parseExampleCatalogue;

std::string catalogue(const std::string& items) {
    return R"({"header":{"product":"Core","version":"1.0","helpFolder":"graphics","locale":"en_US"},)"
           R"("exampleItems":[)" +
           items + "]}";
}

std::string entry(const std::string& component, const std::string& name, const std::string& extra = "") {
    return R"({"name":")" + name + R"(","component":")" + component +
           R"(","title":" T ","thumbnail":"t.png")" + extra + "}";
}

using CatalogueParser = zwtest::HostLeakCheck;

TEST_F(CatalogueParser, BuildsEachItemFromItsMembersWithTheirDefaults) {
    // Each item as described: id|title|description|thumbnail|open command|kind|paths, files|links.
    const struct {
        std::string items;
        const char* described;
    } rows[] = {
        {"", "graphics:\n"},
        {entry("graphics", "plot3",
               R"(,"description":"  Lines \u00e9\ud83d\ude00 ","exampleType":"Live Script",)"
               R"("openCmd":" run(1) ","relative_path":[" a/b.m "],"supporting_files":[" data.csv "],)"
               R"("docid_links":[{"docid":"d1","target":"t1"},{"docid":"d2","target":""}],"extra":7)"),
         "graphics:\ngraphics/plot3|T|Lines \u00e9\U0001F600|t.png|run(1)|0| a/b.m |data.csv|d1>t1|d2>\n"},
        {entry("c", "n", R"(,"docid_links":[],"description":null,"openCmd":null)"),
         "graphics:\nc/n|T||t.png|openExample('c/n');|6\n"},
        {entry("c", "it's", R"(,"openCmd":"")") + "," + entry("", "lonely", R"(,"openCmd":"  ")"),
         "graphics:\n|T||t.png|openExample('/lonely');|6\nc/it's|T||t.png|openExample('c/it's');|6\n"},
        // Ids in code-unit order; two items of one id keep their order in the file.
        {entry("b", "x", R"(,"openCmd":"first")") + "," + entry("a", "\u00e9") + "," + entry("a", "Z") + "," +
             entry("b", "x", R"(,"openCmd":"second")"),
         "graphics:\na/Z|T||t.png|openExample('a/Z');|6\na/\u00e9|T||t.png|openExample('a/\u00e9');|6\n"
         "b/x|T||t.png|first|6\nb/x|T||t.png|second|6\n"},
    };
    for (const auto& row : rows) {
        const auto result = parseExampleCatalogue(catalogue(row.items));
        EXPECT_EQ(zwtest::describe(result), row.described);
        EXPECT_EQ(result.begin()->second.header.getProduct(), u"Core");
    }
    const auto result = parseExampleCatalogue(catalogue(entry("c", "n", R"(,"docid_links":[])")));
    EXPECT_EQ(result.begin()->second.items.at(u"c/n").at(0).getDocIDLinks().capacity(), 0U);
    // The id, the default open command and the lists are built at their size, without growing.
    const auto built =
        parseExampleCatalogue(catalogue(entry("component", "longname", R"(,"relative_path":["a","b","c"])")));
    const auto& [id, items] = *built.begin()->second.items.begin();
    EXPECT_EQ(id.capacity(), id.size());
    EXPECT_EQ(items.at(0).getOpenCommand().capacity(), items.at(0).getOpenCommand().size());
    EXPECT_EQ(items.at(0).getRelativePaths().capacity(), 3U);
}

// What a text gives: "read" and the number of items, or why it fails: the JSON error or the
// catalogue's format error.
std::string outcome(const std::string& text) {
    try {
        return "read " + std::to_string(parseExampleCatalogue(text).begin()->second.items.size());
    } catch (const boost::system::system_error& error) {
        return "json: " + error.code().message();
    } catch (const reference::docparser::CatalogueFormatError& error) {
        return std::string("format: ") + error.what();
    }
}

TEST_F(CatalogueParser, MalformedTextFailsTheWholeFileForItsReason) {
    std::string hundred;
    for (int i = 0; i < 100; ++i) {
        hundred += entry("c", "n" + std::to_string(i)) + ",";
    }
    const auto with = [](const std::string& extra) { return catalogue(entry("c", "n", extra)); };
    const auto nested = [](std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
    // clang-format off
    const std::pair<std::string, const char*> rows[] = {
        {catalogue(hundred + entry("c", "last")), "read 101"},
        // The root object and its "extra" member take two levels of the 32 allowed.
        {with(R"(,"extra":)" + nested(29)), "read 1"}, {with(R"(,"extra":)" + nested(30)), "json: too deep"},
        {"", "json: incomplete JSON"}, {"{", "json: incomplete JSON"}, {catalogue(entry("c", "n")) + "//", "json: extra data"},
        {catalogue(entry("c", "n") + ","), "json: syntax error"}, {catalogue(entry("c", "n\xff")), "json: syntax error"},
        {catalogue(entry("c", "n\xed\xa0\x80")), "json: syntax error"},
        {"[]", "format: catalogue root: expected an object, found array"},
        {R"({"exampleItems":[]})", "format: member \"header\": expected an object, found nothing"},
        {R"({"header":[],"exampleItems":[]})", "format: member \"header\": expected an object, found array"},
        {R"({"header":{"helpFolder":3},"exampleItems":[]})", "format: header member \"helpFolder\": expected a string, found int64"},
        {R"({"header":{"locale":null},"exampleItems":[]})", "format: header member \"locale\": expected a string, found null"},
        {catalogue(R"({"name":null,"component":"c","title":"t","thumbnail":"x"})"), "format: member \"name\": expected a string, found null"},
        {with(R"(,"openCmd":[])"), "format: member \"openCmd\": expected a string, found array"},
        {R"({"header":{}})", "format: member \"exampleItems\": expected an array, found nothing"},
        {R"({"header":{},"exampleItems":{}})", "format: member \"exampleItems\": expected an array, found object"},
        {catalogue(hundred + R"({"component":"c","title":"t","thumbnail":"x"})"), "format: member \"name\": expected a string, found nothing"},
        {with(R"(,"relative_path":"a")"), "format: value: expected an array, found string"},
        {with(R"(,"supporting_files":[1])"), "format: array element: expected a string, found int64"},
        {with(R"(,"docid_links":[{"docid":"d"}])"), "format: member \"target\": expected a string, found nothing"},
        {with(R"(,"description":4)"), "format: member \"description\": expected a string, found int64"},
        {catalogue("7"), "format: value is not an object"}, {with(R"(,"docid_links":["d"])"), "format: value is not an object"},
        {with(R"(,"exampleType":5)"), "format: value is not a string"},
    };
    // clang-format on
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(outcome(text), expected) << text;
    }
}

TEST_F(CatalogueParser, RefusalSaysWhereWhatWasExpectedAndWhatWasFound) {
    using Expected = reference::docparser::CatalogueFormatError::Expected;
    using boost::json::kind;
    std::string hundred;
    for (int i = 0; i < 100; ++i) {
        hundred += entry("c", "n" + std::to_string(i)) + ",";
    }
    const auto with = [](const std::string& extra) { return catalogue(entry("c", "n", extra)); };
    // clang-format off
    const struct {
        std::string text;
        const char* pointer;
        Expected expected;
        std::optional<kind> found;
        const char* message;
    } rows[] = {
        {catalogue("7"), "/exampleItems/0", Expected::Object, kind::int64, nullptr},
        {R"({"exampleItems":[]})", "/header", Expected::Object, std::nullopt, "member \"header\": expected an object, found nothing"},
        {R"({"header":[],"exampleItems":[]})", "/header", Expected::Object, kind::array, nullptr},
        {R"({"header":{"helpFolder":3},"exampleItems":[]})", "/header/helpFolder", Expected::String, kind::int64, nullptr},
        {R"({"header":{}})", "/exampleItems", Expected::Array, std::nullopt, nullptr},
        {R"({"header":{},"exampleItems":{}})", "/exampleItems", Expected::Array, kind::object, nullptr},
        {R"(["header"])", "", Expected::Object, kind::array, "catalogue root: expected an object, found array"},
        {catalogue(hundred + R"({"component":"c","title":"t","thumbnail":"x"})"), "/exampleItems/100/name", Expected::String, std::nullopt, "member \"name\": expected a string, found nothing"},
        {with(R"(,"exampleType":5)"), "/exampleItems/0/exampleType", Expected::String, kind::int64, nullptr},
        {with(R"(,"relative_path":"a")"), "/exampleItems/0/relative_path", Expected::Array, kind::string, "value: expected an array, found string"},
        {with(R"(,"supporting_files":["s",[1]])"), "/exampleItems/0/supporting_files/1", Expected::String, kind::array, nullptr},
        {with(R"(,"docid_links":[{"docid":"d","target":"t"},{"docid":"d"}])"), "/exampleItems/0/docid_links/1/target", Expected::String, std::nullopt, nullptr},
        {with(R"(,"docid_links":["d"])"), "/exampleItems/0/docid_links/0", Expected::Object, kind::string, nullptr},
        {with(R"(,"docid_links":null)"), "/exampleItems/0/docid_links", Expected::Array, kind::null, nullptr},
        {with(R"(,"description":4)"), "/exampleItems/0/description", Expected::String, kind::int64, nullptr},
        {catalogue(entry("c", "n") + "," + R"({"name":"a/b~c","component":"c","title":"t","thumbnail":"x","openCmd":[]})"), "/exampleItems/1/openCmd", Expected::String, kind::array, nullptr},
    };
    // clang-format on
    for (const auto& row : rows) {
        try {
            parseExampleCatalogue(row.text);
            ADD_FAILURE() << row.text;
        } catch (const reference::docparser::CatalogueFormatError& error) {
            EXPECT_TRUE(error.placed()) << row.text;
            EXPECT_EQ(error.pointer(), row.pointer) << row.text;
            EXPECT_EQ(error.expected(), row.expected) << row.text;
            EXPECT_EQ(error.found(), row.found) << row.text;
            if (row.message != nullptr) {
                EXPECT_STREQ(error.what(), row.message);
            }
        }
    }
}

TEST_F(CatalogueParser, HostFailureInAnyReadEndsTheFile) {
    const std::string text =
        catalogue(entry("c", "n", R"(,"relative_path":["p"],"docid_links":[{"docid":"d","target":"t"}])"));
    const std::string whole = zwtest::describe(parseExampleCatalogue(text));
    // A failure at any call of a read passes through unchanged and nothing of the file is given;
    // past the last call the whole file is read.
    for (const std::string operation :
         {"ParsingTools::getHeaderInfo", "ParsingTools::getJsonArray", "ParsingTools::getJsonArray(value)",
          "ParsingTools::getFluString", "ParsingTools::getFluString(value)",
          "ParsingTools::getFluStringWithFallback"}) {
        for (std::uint64_t call = 1;; ++call) {
            zwhost::fault::Scope faults;
            zwhost::fault::failOn(operation, call);
            try {
                EXPECT_EQ(zwtest::describe(parseExampleCatalogue(text)), whole) << operation;
                EXPECT_GT(call, 1U) << "a failed first " << operation << " ends the file";
                break;
            } catch (const zwhost::fault::InjectedFault& fault) {
                EXPECT_EQ(fault.what(), "injected fault in " + operation);
            }
        }
    }
}

} // namespace
