#pragma once
// The walk of `exampledoc check` over a documentation tree: every catalogue of every checked
// locale, read by the library's own code, English ones first.

#include <functional>
#include <string>
#include <vector>

#include "catalogue_check.hpp"
#include "check_report.hpp"
#include "options.hpp"

namespace exampledoc {

/** What a check covers: the root, the supported locales and the locales checked, each read as
    the library reads the tree for a user of that locale. */
struct TreeScope {
    std::u16string root;
    std::vector<std::u16string> docLocales;
    std::vector<std::u16string> checked;
};

/** The scope of `options`: every supported locale, or --locale alone. Applies the options;
    throws UsageError as applyOptions does. */
TreeScope scopeOf(const Options& options);

/** Called for each catalogue the library reads, with its locale (empty for English). */
using CatalogueRead = std::function<void(const std::u16string& locale, const CatalogueFacts& facts)>;

/** Checks every catalogue of `scope` and gives the report, its findings in report order. */
CheckReport checkTree(const TreeScope& scope, const CatalogueRead& read = {});

} // namespace exampledoc
