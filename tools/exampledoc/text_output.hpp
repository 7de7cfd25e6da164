#pragma once
// Readable listings of catalogues, for people.

#include <ostream>

#include "example/docparser/doc_example_parser.hpp"

namespace exampledoc {

/** Writes each catalogue with its header line and, per example, id, kind, title and open command. */
void printListing(std::ostream& out, const example::docparser::ExampleCatalogues& catalogues);

} // namespace exampledoc
