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
    std::string format = "text";       // check and coverage: text, json or sarif (check only)
    bool strict = false;               // check: warnings count as errors for the exit status
    bool color = false;                // colour severities and kinds in text output
    std::vector<std::string> folders;  // list: only these help folders
    std::optional<std::string> kind;   // list: only examples of this kind
    std::vector<std::string> operands; // list: id globs; show: the id
    std::string of = "catalogue";      // schema: whose schema to print
    std::optional<std::string> out;    // preview: the folder of the pages
    bool force = false;                // preview: replace the pages of an earlier preview
};

/** Applies --locale and --root to the host settings and the library, and gives the example root
    to read. Throws UsageError for a locale that is neither English nor supported, or a root that
    is no documentation root. */
std::u16string applyOptions(const Options& options);

/** Whether catalogues exist for `locale` (normalised, such as "ja_JP"): English or supported. */
bool isReadableLocale(const std::u16string& locale);

/** The supported documentation locales, for messages: "ja_JP, ko_KR, zh_CN". */
std::string supportedLocaleList();

} // namespace exampledoc
