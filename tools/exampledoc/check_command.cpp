#include "commands.hpp"
#include "tree_check.hpp"

namespace exampledoc {

// The command line allows only the formats written here.
int checkCommand(const Options& options, std::ostream& out, std::ostream& /*err*/) {
    const CheckReport report = checkTree(scopeOf(options));
    if (options.format == "json") {
        writeCheckJson(out, report);
    } else if (options.format == "sarif") {
        writeCheckSarif(out, report);
    } else {
        writeCheckText(out, report, options.color);
    }
    const bool failed =
        report.count(Severity::Error) > 0 || (options.strict && report.count(Severity::Warning) > 0);
    return failed ? 1 : 0;
}

} // namespace exampledoc
