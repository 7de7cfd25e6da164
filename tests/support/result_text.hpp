#pragma once
// What a read gives, as text, and a check that the result of a run that lost some of a tree is a
// consistent part of the whole.

#include <string>

#include "example/docparser/doc_example_parser.hpp"
#include "support/case_tree.hpp"
#include "support/temp_tree.hpp"
#include "zwhost/unicode.hpp"

namespace zwtest {

/** Every field of an item, as one line of text. */
inline std::string describe(const example::docparser::ExampleItem& item) {
    std::u16string text = item.getID() + u'|' + item.getTitle() + u'|' + item.getDescription() + u'|' +
                          item.getThumbnail() + u'|' + item.getOpenCommand() + u'|' +
                          static_cast<char16_t>(u'0' + item.getExampleType());
    for (const auto* strings : {&item.getRelativePaths(), &item.getSupportingFiles()}) {
        for (const std::u16string& s : *strings) {
            text += u'|' + s;
        }
    }
    for (const auto& link : item.getDocIDLinks()) {
        text += u'|' + link.getDocID() + u'>' + link.getTarget();
    }
    return zwhost::unicode::utf16ToUtf8(text);
}

/** Every item of a result, one line each, under the name of its help folder. */
inline std::string describe(const example::docparser::ExampleCatalogues& result) {
    std::string text;
    for (const auto& [folder, catalogue] : result) {
        text += zwhost::unicode::utf16ToUtf8(folder) + ":\n";
        for (const auto& [id, items] : catalogue.items) {
            for (const auto& item : items) {
                text += describe(item) + '\n';
            }
        }
    }
    return text;
}

/** Each help folder as "folder(locale): id=title ...", one line each: which file won what. */
inline std::string titles(const example::docparser::ExampleCatalogues& result) {
    std::string text;
    for (const auto& [folder, catalogue] : result) {
        text += zwhost::unicode::utf16ToUtf8(folder + u'(' + catalogue.header.getLocale() + u"):");
        for (const auto& [id, items] : catalogue.items) {
            for (const auto& item : items) {
                text += zwhost::unicode::utf16ToUtf8(u' ' + id + u'=' + item.getTitle());
            }
        }
        text += '\n';
    }
    return text;
}

/** Empty if every help folder of `part` is in `whole`, and every id there has the items `whole`
    gives it or those `english` gives it; otherwise the first id that breaks this. */
inline std::string inconsistency(const example::docparser::ExampleCatalogues& part,
                                 const example::docparser::ExampleCatalogues& whole,
                                 const example::docparser::ExampleCatalogues& english) {
    const auto itemsOf = [](const example::docparser::ExampleCatalogues& result, const std::u16string& folder,
                            const std::u16string& id) {
        const auto catalogue = result.find(folder);
        if (catalogue == result.end() || !catalogue->second.items.contains(id)) {
            return std::string("-");
        }
        std::string text;
        for (const auto& item : catalogue->second.items.at(id)) {
            text += describe(item) + ";";
        }
        return text;
    };
    for (const auto& [folder, catalogue] : part) {
        if (!whole.contains(folder)) {
            return "help folder " + zwhost::unicode::utf16ToUtf8(folder) + " is not in the whole";
        }
        for (const auto& [id, items] : catalogue.items) {
            const std::string got = itemsOf(part, folder, id);
            if (got != itemsOf(whole, folder, id) && got != itemsOf(english, folder, id)) {
                return zwhost::unicode::utf16ToUtf8(folder + u": " + id) + ": " + got;
            }
        }
    }
    return {};
}

} // namespace zwtest
