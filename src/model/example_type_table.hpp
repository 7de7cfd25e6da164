#pragma once
// The table from the catalogue form of each kind to its value. Defined in load_order.cpp.

#include <functional>
#include <string_view>

#include <boost/container/flat_map.hpp>

#include "example/docparser/example_type.hpp"

namespace example::docparser::detail {

using ExampleTypeTable = boost::container::flat_map<std::string_view, ExampleType::Value, std::less<void>>;

/** Catalogue form of each kind to its value, sorted by key. Read-only after load. */
extern const ExampleTypeTable exampleTypeByName;

} // namespace example::docparser::detail
