#pragma once
// The catalogue records built by plain code from a parsed JSON value, with no checks beyond what
// the JSON layer makes: what a caller would write without the library. The two readers differ
// only in their JSON layer.

#include <string>

#include "example/docparser/doc_example_parser.hpp"

namespace zwbench {

/** The same map, fields, defaults and UTF-16 strings as the library's parser gives for `text`,
    read with nlohmann::json. */
example::docparser::ExampleCatalogues parseWithNlohmann(const std::string& text);

/** The same, read with the parse the library's parser makes, into the same resource, and each
    member found by the same in-line search. */
example::docparser::ExampleCatalogues parseWithBoostJson(const std::string& text);

} // namespace zwbench
