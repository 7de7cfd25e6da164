// exampledoc: lists and checks the example catalogues of a documentation tree, reading them the
// way the library does.

#include <unistd.h>

#include <iostream>
#include <string>
#include <vector>

#include "cli.hpp"

int main(int argc, char** argv) {
    return exampledoc::run(std::vector<std::string>(argv + 1, argv + argc), std::cout, std::cerr,
                           isatty(STDOUT_FILENO) == 1);
}
