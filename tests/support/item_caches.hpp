#pragma once
// Reaches the cache fields of an item, so that tests can fill them and watch them.

#include "example/docparser/example_item.hpp"

namespace example::docparser::detail {

struct ExampleItemCaches {
    static SharedZxArrayPtr& relativePaths(const ExampleItem& item);
    static SharedZxArrayPtr& exampleType(const ExampleItem& item);
    static SharedZxArrayPtr& supportingFiles(const ExampleItem& item);
    static SharedZxArrayPtr& docIDLinks(const ExampleItem& item);
};

} // namespace example::docparser::detail
