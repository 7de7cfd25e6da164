#pragma once
// Reading catalogue files and merging their catalogues into a parse result.

#include <utility>
#include <vector>

#include "reference/docparser/doc_resource_parser.hpp"

namespace reference::docparser {

// Per file: read, parse, then place each entry of the parsed map under its key. A localised
// file takes over an entry that is already held and lets the held one fill its gaps; an
// English file only fills gaps.
template <class T, class P>
void DocResourceParser::ParsingTools::readJsonFiles(const std::vector<P>& products,
                                                    const ParsingInfo<T>& info, ParsingResults<T>& results) {
    for (const P& product : products) {
        // Asked before the guard: a failure here ends the whole call, not just this file.
        const bool localised = product.isNonEnglishLocale();
        // Whatever goes wrong while reading, parsing or placing costs this file and nothing
        // that was placed before it; the failure is dropped without a word.
        try {
            // The text is a temporary: it is freed as soon as the parse has returned.
            T parsed = info.jsonParsingFcn(DocResourceParser::openAndReadFile(product));
            for (auto& [key, value] : parsed) {
                T& selected = info.isInstalledFcn(key) ? results.installed : results.notInstalled;
                // The selected map is out of `results` while the entry is placed, so a failed
                // insertion loses that whole map and the reading goes on with an empty one.
                T local;
                local.swap(selected);
                const auto held = local.lower_bound(key);
                if (held == local.end() || local.key_comp()(key, held->first)) {
                    local.emplace_hint(held, key, std::move(value));
                } else {
                    if (localised) {
                        std::swap(held->second, value);
                    }
                    // Nodes of ids the held entry lacks move across; shared ids stay behind.
                    held->second.items.merge(value.items);
                }
                selected.swap(local);
            }
        } catch (...) {
        }
    }
}

} // namespace reference::docparser
