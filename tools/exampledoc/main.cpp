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
    "  show ID  one example in full, read through the host's class system\n"
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

constexpr const char* kShowHelp =
    "usage: exampledoc show ID [--root DIR] [--locale ll_CC]\n"
    "\n"
    "Shows the example with the id ID (component/name, as 'list' prints it) in full. The item is\n"
    "wrapped as an object of the host's class system and every property is read by name, as the\n"
    "host reads it. Exit status: 0 if found, 1 if no example has the id, 2 for bad arguments.\n"
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
    struct Command {
        const char* name;
        const char* help;
        bool json;
        int (*run)(const exampledoc::Options&, std::ostream&, std::ostream&);
        bool operands;
    };
    static constexpr Command kCommands[] = {
        {"list", kListHelp, true, exampledoc::listCommand, false},
        {"show", kShowHelp, false, exampledoc::showCommand, true},
        {"check", kCheckHelp, false, exampledoc::checkCommand, false},
    };
    const Command* chosen = nullptr;
    for (const Command& candidate : kCommands) {
        if (command == candidate.name) {
            chosen = &candidate;
        }
    }
    if (chosen == nullptr) {
        std::cerr << "exampledoc: unknown command '" << command << "'\n\n" << kProgramHelp;
        return 2;
    }
    try {
        const exampledoc::Options options = exampledoc::parseOptions(args, chosen->json);
        if (options.help) {
            std::cout << chosen->help << "options:\n"
                      << kCommonOptions
                      << (chosen->json ? "  --json           print JSON for scripts\n" : "");
            return 0;
        }
        if (!chosen->operands && !options.operands.empty()) {
            throw exampledoc::UsageError("unexpected argument '" + options.operands.front() + "'");
        }
        return chosen->run(options, std::cout, std::cerr);
    } catch (const exampledoc::UsageError& error) {
        std::cerr << "exampledoc " << command << ": " << error.what() << "\n(see 'exampledoc " << command
                  << " --help')\n";
        return 2;
    } catch (const std::exception& error) {
        std::cerr << "exampledoc " << command << ": cannot read the documentation root: " << error.what()
                  << '\n';
        return 2;
    }
}
