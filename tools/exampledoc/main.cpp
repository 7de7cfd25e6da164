// exampledoc: reads example catalogues the way the library does and shows what it finds.

#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "catalogue/catalogue_parser.hpp"
#include "text_output.hpp"

namespace {

constexpr const char* kUsage =
    "usage: exampledoc parse FILE\n"
    "\n"
    "  parse FILE   read one catalogue file and print its records\n";

int parseCommand(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        std::cerr << "exampledoc: cannot open " << path << '\n';
        return 2;
    }
    std::ostringstream text;
    text << file.rdbuf();
    try {
        exampledoc::printCatalogues(std::cout, example::docparser::detail::parseExampleCatalogue(text.str()));
    } catch (const std::exception& error) {
        std::cerr << "exampledoc: " << path << " is not a valid catalogue: " << error.what() << '\n';
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "--help" || command == "-h") {
        std::cout << kUsage;
        return 0;
    }
    if (command == "parse" && argc == 3) {
        return parseCommand(argv[2]);
    }
    std::cerr << kUsage;
    return 2;
}
