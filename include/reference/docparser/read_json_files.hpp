#pragma once
// Reading catalogue files and merging their catalogues into a parse result.

#include <utility>
#include <vector>

#include "reference/docparser/doc_resource_parser.hpp"

namespace reference::docparser {

namespace detail {

/** Moves the nodes of `from` whose keys `into` lacks across, uncopied; the others stay behind.
    Both maps are walked in key order, so each key is found a few steps on from the last one,
    and a full search from the root is made only when the next key lies further on. */
template <class Map>
void mergeMissing(Map& into, Map& from) {
    constexpr int kSteps = 4;
    auto held = into.begin();
    for (auto next = from.begin(); next != from.end();) {
        const auto& key = next->first;
        int steps = 0;
        while (held != into.end() && into.key_comp()(held->first, key)) {
            if (++steps > kSteps) {
                held = into.lower_bound(key);
                break;
            }
            ++held;
        }
        if (held != into.end() && !into.key_comp()(key, held->first)) {
            ++next;
            continue;
        }
        auto node = from.extract(next++);
        into.insert(held, std::move(node));
    }
}

} // namespace detail

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
                    detail::mergeMissing(held->second.items, value.items);
                }
                selected.swap(local);
            }
        } catch (...) {
        }
    }
}

} // namespace reference::docparser
