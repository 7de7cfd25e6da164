#pragma once
// The catalogue records built with nlohmann::json: what a caller would write without the
// library, for comparison.

#include <string>

#include "example/docparser/doc_example_parser.hpp"

namespace zwbench {

/** The same map, fields, defaults and UTF-16 strings as the library's parser gives for `text`. */
example::docparser::ExampleCatalogues parseWithNlohmann(const std::string& text);

} // namespace zwbench
