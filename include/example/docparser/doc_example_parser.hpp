#pragma once
// The front of the library: the example root setting and the reading of every catalogue
// under a root.

#include <map>
#include <memory>
#include <string>

#include "example/docparser/example_item.hpp"
#include "example/docparser/export.hpp"
#include "reference/docparser/doc_resource.hpp"

namespace example::docparser {

/** Catalogues by help folder, each with its items by example id. */
using ExampleCatalogues = std::map<std::u16string, reference::docparser::DocResource<ExampleItem>>;

class DocExampleParser {
public:
    DocExampleParser() = delete;

    /** Sets the example root to `root` followed by "/docCatalog/exampleapi". */
    ZW_DOCPARSER_API static void setExampleRoot(const std::u16string& root);

    /** The example root, computed from the reference root on first use. The text never changes:
        a later set replaces it, and the holder keeps what it got. */
    ZW_DOCPARSER_API static std::shared_ptr<const std::u16string> getExampleRoot();

    /** Recomputes the default example root from the reference root, at once. */
    ZW_DOCPARSER_API static void restoreDefaultSettings();

    /** Every catalogue under `root`, by help folder; localised catalogues merged over English.
        A bad file or package is left out; a failure of the set-up throws. Empty root: empty map. */
    ZW_DOCPARSER_API static ExampleCatalogues getDocExampleFiles(const std::u16string& root);
};

} // namespace example::docparser
