#pragma once
// Reaches the cache fields of an item, so that tests can fill them and watch them.

#include <cstddef>

#include "example/docparser/example_item.hpp"

namespace example::docparser::detail {

struct ExampleItemCaches {
    static SharedZxArrayPtr& relativePaths(const ExampleItem& item) { return cache(item, 0); }
    static SharedZxArrayPtr& supportingFiles(const ExampleItem& item) { return cache(item, 1); }
    static SharedZxArrayPtr& exampleType(const ExampleItem& item) { return cache(item, 2); }
    static SharedZxArrayPtr& docIDLinks(const ExampleItem& item) { return cache(item, 3); }

    /** The cache field `which`, in the order of the getters above. */
    static SharedZxArrayPtr& cache(const ExampleItem& item, std::size_t which);
};

} // namespace example::docparser::detail
