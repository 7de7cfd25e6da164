#pragma once
// Readable text of catalogues, for people.

#include <ostream>
#include <string>

#include "example/docparser/doc_example_parser.hpp"

namespace exampledoc {

/** `text` in UTF-8; unpaired surrogates become U+FFFD. */
std::string toUtf8(std::u16string_view text);

/** Writes every catalogue with its header and every item with all its fields. */
void printCatalogues(std::ostream& out, const example::docparser::ExampleCatalogues& catalogues);

} // namespace exampledoc
