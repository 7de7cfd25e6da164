#include "catalogue/catalogue_parser.hpp"

#include <filesystem>
#include <string>
#include <utility>

#include <boost/json/kind.hpp>
#include <boost/system/system_error.hpp>
#include <gtest/gtest.h>

#include "reference/docparser/catalogue_format_error.hpp"
#include "support/host_leak_check.hpp"
#include "support/manifest.hpp"
#include "support/small_tree.hpp"

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

// What a text gives: "read" and the number of items; "json:" and the JSON error; or "format", where
// the refused value lies, what it should be and what it is, and the message.
std::string outcome(const std::string& text) {
    try {
        return "read " + std::to_string(parseExampleCatalogue(text).begin()->second.items.size());
    } catch (const boost::system::system_error& error) {
        return "json: " + error.code().message();
    } catch (const reference::docparser::CatalogueFormatError& error) {
        const char* const expected[] = {"unknown", "object", "array", "string"};
        return std::string("format ") + (error.placed() ? "" : "unplaced ") +
               (error.pointer().empty() ? "-" : std::string(error.pointer())) + ' ' +
               expected[static_cast<int>(error.expected())] + ' ' +
               (error.found() ? std::string(boost::json::to_string(*error.found())) : "nothing") + ": " +
               error.what();
    }
}

// Each text of the fuzz corpus reads or fails the whole file as its MANIFEST line says.
TEST_F(CatalogueParser, EachCorpusTextGivesWhatTheManifestSays) {
    const std::filesystem::path corpus = ZW_FUZZ_DIR "/corpus/catalogue_parser";
    for (const auto& fields : zwtest::corpusManifest(corpus)) {
        EXPECT_EQ(outcome(zwtest::fileText(corpus / fields.at(0))), fields.at(1)) << fields.at(0);
    }
}

} // namespace
