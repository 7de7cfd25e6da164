// Arbitrary text through the catalogue parser and the item's host values: the parser gives one
// catalogue with every item filed under its component, "/" and its name (also when a half is
// empty, where the item's own getID is empty), or throws a standard exception; building and
// dropping the host values of the items leaves no host array or object behind.

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>

#include "catalogue/catalogue_parser.hpp"
#include "matrix/matrix.hpp"
#include "zwhost/classes.hpp"
#include "zwhost/zcos.hpp"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    zwhost::classes::registerDocParserClasses();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::int64_t arrays = zwhost::arrays::liveCount();
    const std::int64_t objects = zwhost::zcos::liveObjectCount();
    {
        example::docparser::ExampleCatalogues catalogues;
        try {
            catalogues = example::docparser::detail::parseExampleCatalogue(
                std::string(reinterpret_cast<const char*>(data), size));
        } catch (const std::exception&) {
            return 0;
        }
        if (catalogues.size() != 1) {
            __builtin_trap();
        }
        for (const auto& [id, items] : catalogues.begin()->second.items) {
            for (const example::docparser::ExampleItem& item : items) {
                if (item.getComponent() + u'/' + item.getName() != id) {
                    __builtin_trap();
                }
                const example::docparser::ExampleItem copy = item.copy();
                copy.getRelativePathsProperty();
                copy.getSupportingFilesProperty();
                copy.getExampleTypeProperty();
                copy.getDocIDLinksProperty();
            }
        }
    }
    if (zwhost::arrays::liveCount() != arrays || zwhost::zcos::liveObjectCount() != objects) {
        __builtin_trap();
    }
    return 0;
}
