// Arbitrary bytes as a zip package, read through the package services and then by the library
// over a documentation tree that holds it: the services read it or refuse it with a standard
// exception, and the library leaves a refused package out without failing.

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>

#include "example/docparser/doc_example_parser.hpp"
#include "support/open_package.hpp"
#include "support/temp_tree.hpp"
#include "zwhost/settings.hpp"

// Small enough that an entry which inflates without end is stopped quickly.
static constexpr std::uint64_t kReadLimit = std::uint64_t{1} << 20;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    zwhost::settings::setReadLimit(kReadLimit);
    zwhost::settings::setCurrentLocale(u"ja_JP");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const zwtest::TempDir tree;
    tree.clear();
    const auto file = tree.write("h/pkg.zip", std::string(reinterpret_cast<const char*>(data), size));
    try {
        for (const auto& [path, text] : zwtest::readPackage(file, kReadLimit)) {
            if (text.size() > kReadLimit) {
                __builtin_trap();
            }
        }
    } catch (const std::exception&) {
    }
    example::docparser::DocExampleParser::getDocExampleFiles(zwtest::u16(tree.path().string()));
    return 0;
}
