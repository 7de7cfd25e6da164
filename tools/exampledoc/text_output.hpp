#pragma once
// Readable output for people: listings of catalogues, terminal-safe text and colour.

#include <ostream>
#include <string>
#include <string_view>

#include "example/docparser/doc_example_parser.hpp"

namespace exampledoc {

/** How many terminal columns UTF-8 `text` takes: East Asian wide and fullwidth characters take
    two, combining marks and zero-width characters none, every other character one. */
std::size_t displayWidth(std::string_view text);

/** `text` with every control character written as an escape (\n, \t, \x1b, \u{85}), so that
    what a catalogue holds can neither break a line nor command the terminal. */
std::string escapeControls(std::string_view text);

/** `text` followed by spaces up to `width` columns. */
std::string padToWidth(std::string_view text, std::size_t width);

/** `text` in the colour of the example kind `kind`, or as it is when `color` is false. */
std::string paintKind(std::string_view text, example::docparser::ExampleType::Value kind, bool color);

/** Writes each catalogue with its header line and, per example, id, kind, title and open command. */
void printListing(std::ostream& out, const example::docparser::ExampleCatalogues& catalogues, bool color);

} // namespace exampledoc
