#pragma once
// The command line of exampledoc: its commands and options, help, version and suggestions.

#include <ostream>
#include <string>
#include <vector>

namespace exampledoc {

/** Runs the command line `args` (the words after the program's name), writing to `out` and
    `err`; `outIsTerminal` says whether `out` is a terminal, for --color=auto. Gives the exit
    status: 0 on success, 1 when the command finds a problem or `out` cannot be written, 2 for a
    command line that cannot be obeyed. */
int run(const std::vector<std::string>& args, std::ostream& out, std::ostream& err, bool outIsTerminal);

/** A command and its long options ("--root"), as the command line defines them. */
struct CommandSpelling {
    std::string name;
    std::vector<std::string> options;
};

/** Every command with its options, for the manual page to be checked against. */
std::vector<CommandSpelling> commandSpellings();

} // namespace exampledoc
