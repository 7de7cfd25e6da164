#include <array>
#include <map>

#include <fmt/color.h>

#include "check_report.hpp"
#include "text_output.hpp"

namespace exampledoc {
namespace {

std::string counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : ", ") + word;
    }
    return text;
}

// What the heading of a file says besides its name: its kind and the locales it is read for.
std::string describe(const CheckedFile* file) {
    if (file == nullptr) {
        return "";
    }
    if (file->kind == CheckedFile::Kind::Package) {
        return "  (package)";
    }
    const std::string read = file->locales.empty() ? "not read" : "read for " + joined(file->locales);
    return file->english ? "  (English, " + read + ")" : "  (" + read + ")";
}

// `text` in the colour of `severity`, or as it is when `color` is false.
std::string paintSeverity(std::string_view text, Severity severity, bool color) {
    static constexpr std::array kStyles = {
        fmt::emphasis::bold | fmt::fg(fmt::terminal_color::red),
        fmt::emphasis::bold | fmt::fg(fmt::terminal_color::yellow),
        fmt::fg(fmt::terminal_color::cyan),
    };
    return color ? fmt::format(kStyles.at(static_cast<std::size_t>(severity)), "{}", text)
                 : std::string(text);
}

} // namespace

void writeCheckText(std::ostream& out, const CheckReport& report, bool color) {
    std::map<std::string, const CheckedFile*> files;
    for (const CheckedFile& file : report.files) {
        files.emplace(file.file, &file);
    }
    const std::size_t catalogues = report.catalogues();
    const std::size_t skipped = report.skipped();
    const std::string* current = nullptr;
    for (const Finding& finding : report.findings) {
        if (current == nullptr || *current != finding.file) {
            const auto file = files.find(finding.file);
            out << (current == nullptr ? "" : "\n") << escapeControls(finding.file)
                << describe(file == files.end() ? nullptr : file->second) << '\n';
            current = &finding.file;
        }
        const std::string place =
            finding.line == 0 ? "" : std::to_string(finding.line) + ":" + std::to_string(finding.column);
        const std::string severity(severityName(finding.severity));
        out << "  " << place << std::string(place.size() < 8 ? 8 - place.size() : 1, ' ')
            << paintSeverity(severity, finding.severity, color) << std::string(9 - severity.size(), ' ')
            << escapeControls(finding.message) << "  [" << finding.rule << "]\n";
    }
    out << (report.findings.empty() ? "" : "\n") << "checked " << counted(catalogues, "catalogue") << " for "
        << joined(report.locales) << ": ";
    if (report.findings.empty()) {
        out << "no problems found\n";
        return;
    }
    out << counted(report.count(Severity::Error), "error") << ", "
        << counted(report.count(Severity::Warning), "warning") << ", "
        << counted(report.count(Severity::Note), "note") << "; " << skipped << " of "
        << (skipped == 1 ? "them is" : "them are") << " not read\n";
}

} // namespace exampledoc
