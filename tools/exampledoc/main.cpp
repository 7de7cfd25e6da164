// exampledoc: lists and checks the example catalogues of a documentation tree, reading them the
// way the library does.

#include <iostream>
#include <string>
#include <vector>

#include "commands.hpp"

namespace {

constexpr const char* kProgramHelp =
    "usage: exampledoc COMMAND [OPTIONS]\n"
    "\n"
    "Reads the example catalogues of a documentation tree.\n"
    "\n"
    "commands:\n"
    "  list     the catalogues by help folder, with each example's id, kind, title and open command\n"
    "  check    report every catalogue file or package that would be skipped, and why\n"
    "\n"
    "Run 'exampledoc COMMAND --help' for the options of a command.\n";

constexpr const char* kCommonOptions =
    "  --root DIR       documentation root: the folder that holds docCatalog/exampleapi\n"
    "                   (default: the host setting, ZW_DOC_ROOT or the bundled sample tree)\n"
    "  --locale ll_CC   read the catalogues of this locale, such as ja_JP (default: from LANG)\n";

constexpr const char* kListHelp =
    "usage: exampledoc list [--root DIR] [--locale ll_CC] [--json]\n"
    "\n"
    "Lists the catalogues by help folder: each example's id, kind, title and open command.\n"
    "Localised catalogues are merged over the English ones.\n"
    "\n";

constexpr const char* kCheckHelp =
    "usage: exampledoc check [--root DIR] [--locale ll_CC]\n"
    "\n"
    "Reads every catalogue file and package under the root as the library does and names each\n"
    "one the library would skip, with the reason. Exit status: 0 if all are good, 1 if any\n"
    "would be skipped, 2 for bad arguments or a root that cannot be read.\n"
    "\n";

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words.empty() || words[0] == "--help" || words[0] == "-h" || words[0] == "help") {
        (words.empty() ? std::cerr : std::cout) << kProgramHelp;
        return words.empty() ? 2 : 0;
    }
    const std::string& command = words[0];
    const std::vector<std::string> args(words.begin() + 1, words.end());
    const bool isList = command == "list";
    if (!isList && command != "check") {
        std::cerr << "exampledoc: unknown command '" << command << "'\n\n" << kProgramHelp;
        return 2;
    }
    const char* help = isList ? kListHelp : kCheckHelp;
    try {
        const exampledoc::Options options = exampledoc::parseOptions(args, isList);
        if (options.help) {
            std::cout << help << "options:\n" << kCommonOptions << (isList ? "  --json           print JSON for scripts\n" : "");
            return 0;
        }
        if (!options.operands.empty()) {
            throw exampledoc::UsageError("unexpected argument '" + options.operands.front() + "'");
        }
        return isList ? exampledoc::listCommand(options, std::cout, std::cerr)
                      : exampledoc::checkCommand(options, std::cout, std::cerr);
    } catch (const exampledoc::UsageError& error) {
        std::cerr << "exampledoc " << command << ": " << error.what() << "\n(see 'exampledoc " << command
                  << " --help')\n";
        return 2;
    } catch (const std::exception& error) {
        std::cerr << "exampledoc " << command << ": cannot read the documentation root: " << error.what() << '\n';
        return 2;
    }
}
