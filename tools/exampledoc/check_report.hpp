#pragma once
// What `exampledoc check` finds: each problem as a finding, each file with its status and
// locales, and the writers that print a report as text, JSON or SARIF.

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <map>

namespace exampledoc {

/** How much a finding weighs: an error is what makes the library skip a file. */
enum class Severity { Error, Warning, Note };

/** "error", "warning" or "note". */
std::string_view severityName(Severity severity);

/** One problem in one file. Line and column are 1-based and count characters; 0 where the
    problem has no place in a text (a package, a folder). */
struct Finding {
    Severity severity = Severity::Error;
    std::string file; // relative to the root; "pkg.zip!dir/entry.json" for a package entry
    std::size_t line = 0;
    std::size_t column = 0;
    std::string jsonPath; // a JSON pointer such as "/exampleItems/2/relative_path"
    std::string exampleId;
    std::string rule;
    std::string message;
};

/** A file, package or package entry the check looked at. */
struct CheckedFile {
    enum class Kind { Catalogue, Package, Path };
    std::string file;
    Kind kind = Kind::Catalogue;
    bool english = true;              // an English base catalogue, read under every locale
    std::vector<std::string> locales; // the checked locales under which the library reads it
    std::string helpFolder;           // empty unless it was read
    std::size_t examples = 0;
};

/** Findings of each severity. */
struct SeverityCounts {
    std::size_t errors = 0;
    std::size_t warnings = 0;
    std::size_t notes = 0;
};

/** Everything one check found. Findings are in the order in which the report prints them. */
struct CheckReport {
    std::string root;
    std::vector<std::string> locales;
    std::vector<CheckedFile> files;
    std::vector<Finding> findings;

    std::size_t count(Severity severity) const;
    /** The findings of each severity in one file, as counted by finish. */
    SeverityCounts countsOf(const std::string& file) const;
    /** Whether a file has an error: the library skips it. */
    bool hasErrors(const std::string& file) const;
    /** How many catalogues were checked, and how many files and packages are skipped. */
    std::size_t catalogues() const { return catalogues_; }
    std::size_t skipped() const { return skipped_; }

    /** Puts the findings in report order (by file, files with errors first, then by severity
        and place) and counts them, once, for the writers. */
    void finish();

private:
    std::map<std::string, SeverityCounts> perFile_;
    SeverityCounts total_;
    std::size_t catalogues_ = 0;
    std::size_t skipped_ = 0;
};

/** The version of the JSON report's schema; raised when a member changes or goes. */
inline constexpr int kCheckJsonVersion = 1;

/** The report for people: findings grouped by file, errors first, and one summary line. */
void writeCheckText(std::ostream& out, const CheckReport& report, bool color);

/** The report as one JSON object: version, root, locales, files, findings and summary. */
void writeCheckJson(std::ostream& out, const CheckReport& report);

/** The report as a SARIF 2.1.0 log with one run. */
void writeCheckSarif(std::ostream& out, const CheckReport& report);

} // namespace exampledoc
