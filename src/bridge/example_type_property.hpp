#pragma once
// The kind of an item as an object of the host's enumeration class.

#include "example/docparser/example_type.hpp"
#include "zx/zx_array.hpp"

namespace example::docparser::detail {

/** Stores the first 32-bit word under `value` in `type`, then a shared copy of `value` in
    `cache`; null changes nothing. @throw RequireScalarError unless `value` has one element. */
void setExampleTypeAndCache(SharedZxArrayPtr& cache, const zxArray_tag* value, ExampleType::Value& type);

} // namespace example::docparser::detail
