#pragma once
// Command-line options shared by the commands of exampledoc.

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace exampledoc {

/** A command line that cannot be obeyed; the tool prints the message and exits with 2. */
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Options {
    std::optional<std::string> root;
    std::optional<std::string> locale;
    bool json = false;
    std::string format = "text"; // check and coverage: text, json or sarif (check only)
    bool strict = false;         // check: warnings count as errors for the exit status
    bool help = false;
    std::vector<std::string> operands;
};

/** Parses `args` (the words after the command); `--json` only where `allowJson`. */
Options parseOptions(const std::vector<std::string>& args, bool allowJson);

/** Applies --locale and --root to the host settings and the library, and gives the example root
    to read. Throws UsageError for a malformed locale or a root that is no documentation root. */
std::u16string applyOptions(const Options& options);

} // namespace exampledoc
