#pragma once
// The pages of `exampledoc preview`: one gallery page per locale and an index, as self-contained
// HTML that runs no script. Every text from a catalogue is escaped for where it goes.

#include <cstddef>
#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "check_report.hpp"
#include "example/docparser/doc_example_parser.hpp"

namespace exampledoc {

/** `text` safe as HTML text or as a quoted attribute value: & < > " ' as character references. */
std::string escapeHtml(std::string_view text);

/** A relative path as a URL path: every byte but letters, digits, "-._~" and "/" percent-encoded. */
std::string percentEncodePath(std::string_view path);

/** The language tag of a locale for the lang attribute: "ja" for ja_JP, "zh-CN" for zh_CN. */
std::string htmlLanguage(std::string_view locale);

/** `text` escaped as escapeHtml does, appended to `out`; 16-bit text goes in as UTF-8. */
void appendEscaped(std::string& out, std::string_view text);
void appendEscaped(std::string& out, std::u16string_view text);

/** One help folder of a locale's page. Its cards are rendered as soon as the library has read the
    locale, before the check says which examples the locale's catalogues lack; each card leaves
    the two places where the marks of such an example go. */
struct PreviewSection {
    struct Card {
        std::u16string id;
        std::size_t attributeAt = 0; // where the card's tag takes data-untranslated
        std::size_t flagAt = 0;      // where its tags take the visible mark
        bool untranslated = false;   // shown in English: the locale's catalogues lack it
    };
    std::u16string helpFolder;
    std::string catalogue; // the header's product, version and locale, as HTML
    std::string html;      // the cards, without their marks
    std::vector<Card> cards;
    std::vector<const Finding*> findings;
    std::size_t untranslated = 0;
    std::size_t missingThumbnails = 0;
};

/** Starts the section of `helpFolder`, its catalogue described by `header`. */
PreviewSection startSection(const std::u16string& helpFolder, const reference::property::HeaderInfo& header);

/** Renders one example as a card of `section`; an empty `thumbnailUrl` shows the placeholder. */
void addCard(PreviewSection& section, const std::u16string& id, const example::docparser::ExampleItem& item,
             std::string_view thumbnailUrl);

/** A locale's page: its sections in help folder order, and the findings of no help folder. */
struct PreviewPage {
    std::string locale;
    std::vector<std::string> locales; // every page written, for the navigation
    std::vector<PreviewSection> sections;
    std::vector<const Finding*> otherFindings;
};

/** Writes the gallery page of one locale, each card marked as its section says. */
void writePreviewPage(std::ostream& out, const PreviewPage& page);

/** What the index says of one help folder under one locale. */
struct PreviewCounts {
    std::size_t examples = 0;
    std::size_t untranslated = 0;
    std::size_t missingThumbnails = 0;
    std::size_t findings = 0;
    void add(const PreviewCounts& other);
};

/** The index: counts by help folder, then by locale. */
struct PreviewIndex {
    std::string root;
    std::vector<std::string> locales;
    std::string english; // the locale whose page shows the English catalogues alone; empty for none
    std::map<std::u16string, std::map<std::string, PreviewCounts>> folders;
};

/** Writes the index page, each help folder and locale linking to its section. */
void writePreviewIndex(std::ostream& out, const PreviewIndex& index);

/** The counts of a page's section, for the index. */
PreviewCounts countsOf(const PreviewSection& section);

} // namespace exampledoc
