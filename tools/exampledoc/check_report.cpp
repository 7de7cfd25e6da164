#include "check_report.hpp"

#include <algorithm>
#include <set>
#include <tuple>

namespace exampledoc {

std::string_view severityName(Severity severity) {
    switch (severity) {
    case Severity::Error:
        return "error";
    case Severity::Warning:
        return "warning";
    case Severity::Note:
        return "note";
    }
    return "note";
}

std::size_t CheckReport::count(Severity severity) const {
    return static_cast<std::size_t>(
        std::count_if(findings.begin(), findings.end(),
                      [&](const Finding& finding) { return finding.severity == severity; }));
}

bool CheckReport::hasErrors(const std::string& file) const {
    return std::any_of(findings.begin(), findings.end(), [&](const Finding& finding) {
        return finding.severity == Severity::Error && finding.file == file;
    });
}

void CheckReport::sortFindings() {
    std::set<std::string> withErrors;
    for (const Finding& finding : findings) {
        if (finding.severity == Severity::Error) {
            withErrors.insert(finding.file);
        }
    }
    std::stable_sort(findings.begin(), findings.end(), [&](const Finding& a, const Finding& b) {
        return std::make_tuple(withErrors.count(a.file) == 0, std::cref(a.file), a.severity, a.line,
                               a.column) < std::make_tuple(withErrors.count(b.file) == 0, std::cref(b.file),
                                                           b.severity, b.line, b.column);
    });
}

} // namespace exampledoc
