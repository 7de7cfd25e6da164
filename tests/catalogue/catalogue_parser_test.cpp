#include "catalogue/catalogue_parser.hpp"

#include <filesystem>
#include <string>
#include <utility>

#include <boost/json/kind.hpp>
#include <boost/system/system_error.hpp>
#include <gtest/gtest.h>

#include "reference/docparser/catalogue_format_error.hpp"
#include "support/case_tree.hpp"
#include "support/host_leak_check.hpp"
#include "support/result_text.hpp"

namespace {

using example::docparser::detail::parseExampleCatalogue;

using CatalogueParser = zwtest::HostLeakCheck;

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

// Each text of the fuzz corpus reads or fails the whole file as its MANIFEST line says, and where
// the line goes on to describe the items (zwtest::describe), each is built so from its members
// and their defaults, in id order, two items of one id in file order.
TEST_F(CatalogueParser, EachCorpusTextGivesWhatTheManifestSays) {
    const std::filesystem::path corpus = ZW_FUZZ_DIR "/corpus/catalogue_parser";
    for (const auto& fields : zwtest::corpusManifest(corpus)) {
        const std::string text = zwtest::fileText(corpus / fields.at(0));
        EXPECT_EQ(outcome(text), fields.at(1)) << fields.at(0);
        if (fields.size() > 3) {
            EXPECT_EQ(zwtest::describe(parseExampleCatalogue(text)), zwtest::unescaped(fields.at(3)))
                << fields.at(0);
        }
    }
    // The links, the id, the default open command and the lists are built at their size.
    const auto none = parseExampleCatalogue(zwtest::fileText(corpus / "members-null.json"));
    EXPECT_EQ(none.begin()->second.items.at(u"c/n").at(0).getDocIDLinks().capacity(), 0U);
    const auto built = parseExampleCatalogue(zwtest::fileText(corpus / "built-at-size.json"));
    const auto& [id, items] = *built.begin()->second.items.begin();
    EXPECT_EQ(id.capacity(), id.size());
    EXPECT_EQ(items.at(0).getOpenCommand().capacity(), items.at(0).getOpenCommand().size());
    EXPECT_EQ(items.at(0).getRelativePaths().capacity(), 3U);
    EXPECT_EQ(items.at(0).getDocIDLinks().capacity(), 3U);
    EXPECT_EQ(built.begin()->second.header.getProduct(), u"Core");
}

} // namespace
