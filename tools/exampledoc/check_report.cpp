#include "check_report.hpp"

#include <algorithm>
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

namespace {

std::size_t& slot(SeverityCounts& counts, Severity severity) {
    return severity == Severity::Error     ? counts.errors
           : severity == Severity::Warning ? counts.warnings
                                           : counts.notes;
}

} // namespace

std::size_t CheckReport::count(Severity severity) const {
    SeverityCounts counts = total_;
    return slot(counts, severity);
}

SeverityCounts CheckReport::countsOf(const std::string& file) const {
    const auto found = perFile_.find(file);
    return found == perFile_.end() ? SeverityCounts{} : found->second;
}

bool CheckReport::hasErrors(const std::string& file) const {
    return countsOf(file).errors > 0;
}

void CheckReport::finish() {
    perFile_.clear();
    total_ = {};
    for (const Finding& finding : findings) {
        ++slot(perFile_[finding.file], finding.severity);
        ++slot(total_, finding.severity);
    }
    catalogues_ = 0;
    skipped_ = 0;
    for (const CheckedFile& file : files) {
        catalogues_ += file.kind == CheckedFile::Kind::Catalogue ? 1 : 0;
        skipped_ += hasErrors(file.file) ? 1 : 0;
    }
    std::stable_sort(findings.begin(), findings.end(), [&](const Finding& a, const Finding& b) {
        const bool aRead = !hasErrors(a.file);
        const bool bRead = !hasErrors(b.file);
        return std::tie(aRead, a.file, a.severity, a.line, a.column) <
               std::tie(bRead, b.file, b.severity, b.line, b.column);
    });
}

} // namespace exampledoc
