#include "example/docparser/doc_example_parser.hpp"

#include <mutex>
#include <utility>

#include "catalogue/catalogue_parser.hpp"
#include "catalogue/example_root_objects.hpp"
#include "reference/docparser/parse_multiple_product_files.hpp"

namespace example::docparser {
namespace {

using reference::docparser::DocResourceParser;
using reference::docparser::ParsingInfo;

// Both are constant-initialised, so they are ready before any code of the library runs.
std::mutex exampleRootMutex;
// The text behind the pointer is never changed: a write installs a new string, so holders of
// an earlier root keep theirs.
std::shared_ptr<const std::u16string> exampleRoot;

std::shared_ptr<const std::u16string> makeRoot(const std::u16string& base) {
    return std::make_shared<const std::u16string>(base + detail::kExampleRootSuffix);
}

// Called with exampleRootMutex held.
std::shared_ptr<const std::u16string> computeDefaultRoot() {
    return makeRoot(*DocResourceParser::getReferenceRoots());
}

bool isInstalledAlways(const std::u16string& /*helpFolder*/) {
    return true;
}

} // namespace

void DocExampleParser::setExampleRoot(const std::u16string& root) {
    std::lock_guard lock(exampleRootMutex);
    exampleRoot = makeRoot(root);
}

std::shared_ptr<const std::u16string> DocExampleParser::getExampleRoot() {
    std::lock_guard lock(exampleRootMutex);
    if (!exampleRoot) {
        exampleRoot = computeDefaultRoot();
    }
    return exampleRoot;
}

void DocExampleParser::restoreDefaultSettings() {
    std::lock_guard lock(exampleRootMutex);
    exampleRoot = computeDefaultRoot();
}

ExampleCatalogues DocExampleParser::getDocExampleFiles(const std::u16string& root) {
    const ParsingInfo<ExampleCatalogues>::JsonParsingFcn jsonFcn = &detail::parseExampleCatalogue;
    return detail::readExampleCatalogues(root, jsonFcn);
}

namespace detail {

ExampleCatalogues readExampleCatalogues(const std::u16string& root,
                                        const ParsingInfo<ExampleCatalogues>::JsonParsingFcn& parse) {
    DocResourceParser::ParsingResults<ExampleCatalogues> results;
    {
        const ParsingInfo<ExampleCatalogues>::IsInstalledFcn isInstalledFcn = &isInstalledAlways;
        results = DocResourceParser::ParsingTools::parseMultipleProductFiles<ExampleCatalogues>(
            root, parse, isInstalledFcn);
    }
    return std::move(results.installed);
}

} // namespace detail

} // namespace example::docparser
