#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include "check_report.hpp"

namespace exampledoc {
namespace {

boost::json::array stringsToJson(const std::vector<std::string>& strings) {
    boost::json::array array;
    for (const std::string& text : strings) {
        array.emplace_back(text);
    }
    return array;
}

std::size_t countIn(const CheckReport& report, const std::string& file, Severity severity) {
    std::size_t count = 0;
    for (const Finding& finding : report.findings) {
        count += finding.file == file && finding.severity == severity ? 1 : 0;
    }
    return count;
}

} // namespace

void writeCheckJson(std::ostream& out, const CheckReport& report) {
    boost::json::array files;
    std::size_t catalogues = 0;
    std::size_t skipped = 0;
    for (const CheckedFile& file : report.files) {
        const bool package = file.kind == CheckedFile::Kind::Package;
        const bool read = !report.hasErrors(file.file);
        catalogues += package ? 0 : 1;
        skipped += read ? 0 : 1;
        boost::json::object entry{
            {"file", file.file},
            {"kind", package ? "package" : "catalogue"},
            {"status", read ? "read" : "skipped"},
            {"errors", countIn(report, file.file, Severity::Error)},
            {"warnings", countIn(report, file.file, Severity::Warning)},
        };
        if (!package) {
            entry["english"] = file.english;
            entry["locales"] = stringsToJson(file.locales);
            entry["helpFolder"] = read ? boost::json::value(file.helpFolder) : nullptr;
            entry["examples"] = file.examples;
        }
        files.push_back(std::move(entry));
    }
    boost::json::array findings;
    for (const Finding& finding : report.findings) {
        const bool placed = finding.line != 0;
        findings.push_back(boost::json::object{
            {"severity", severityName(finding.severity)},
            {"rule", finding.rule},
            {"file", finding.file},
            {"line", placed ? boost::json::value(finding.line) : nullptr},
            {"column", placed ? boost::json::value(finding.column) : nullptr},
            {"jsonPath", placed ? boost::json::value(finding.jsonPath) : nullptr},
            {"exampleId",
             finding.exampleId.empty() ? boost::json::value(nullptr) : boost::json::value(finding.exampleId)},
            {"message", finding.message},
        });
    }
    const boost::json::object document{
        {"version", kCheckJsonVersion},
        {"root", report.root},
        {"locales", stringsToJson(report.locales)},
        {"files", std::move(files)},
        {"findings", std::move(findings)},
        {"summary", boost::json::object{{"catalogues", catalogues},
                                        {"skipped", skipped},
                                        {"errors", report.count(Severity::Error)},
                                        {"warnings", report.count(Severity::Warning)},
                                        {"notes", report.count(Severity::Note)}}},
    };
    out << boost::json::serialize(document) << '\n';
}

} // namespace exampledoc
