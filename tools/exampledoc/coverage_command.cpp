#include "commands.hpp"

namespace exampledoc {

int coverageCommand(const Options& /*options*/, std::ostream& /*out*/, std::ostream& err) {
    err << "exampledoc coverage: not available in this build\n";
    return 2;
}

} // namespace exampledoc
