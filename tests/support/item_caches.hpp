#pragma once
// Reaches the cache fields of an item, so that tests can fill them and watch them.

#include "example/docparser/example_item.hpp"

namespace example::docparser::detail {

struct ExampleItemCaches {
    static SharedZxArrayPtr& relativePaths(const ExampleItem& item) { return item.relativePathsCache; }
    static SharedZxArrayPtr& exampleType(const ExampleItem& item) { return item.exampleTypeCache; }
    static SharedZxArrayPtr& supportingFiles(const ExampleItem& item) { return item.supportingFilesCache; }
    static SharedZxArrayPtr& docIDLinks(const ExampleItem& item) { return item.docIDLinksCache; }
};

} // namespace example::docparser::detail
