#pragma once
// Catalogues as JSON, for scripts.

#include <boost/json/value.hpp>

#include "example/docparser/doc_example_parser.hpp"

namespace exampledoc {

/** One object keyed by help folder; each value holds the header and every item with all its fields. */
boost::json::value cataloguesToJson(const example::docparser::ExampleCatalogues& catalogues);

} // namespace exampledoc
