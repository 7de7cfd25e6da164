#pragma once
// The rules of `exampledoc check`: a stable name, a severity and what each one finds.

#include <string_view>
#include <vector>

#include "check_report.hpp"

namespace exampledoc {

struct CheckRule {
    std::string_view name;
    Severity severity;
    std::string_view summary;
};

/** Every rule, errors first, in the order the documentation lists them. */
const std::vector<CheckRule>& checkRules();

/** The rule named `name`; throws std::out_of_range for a name that is no rule. */
const CheckRule& checkRule(std::string_view name);

} // namespace exampledoc
