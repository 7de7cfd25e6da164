#pragma once
// Catalogues as JSON, for scripts.

#include <ostream>

#include "example/docparser/doc_example_parser.hpp"

namespace exampledoc {

/** Writes one object keyed by help folder, each value holding the header and every item with all
    its fields, and a newline. Each help folder is written and then released in turn, so that no
    more than one folder's text is held at once. */
void writeCataloguesJson(std::ostream& out, example::docparser::ExampleCatalogues&& catalogues);

} // namespace exampledoc
