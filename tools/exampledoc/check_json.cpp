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

} // namespace

void writeCheckJson(std::ostream& out, const CheckReport& report) {
    boost::json::array files;
    for (const CheckedFile& file : report.files) {
        const bool package = file.kind == CheckedFile::Kind::Package;
        const SeverityCounts counts = report.countsOf(file.file);
        const bool read = counts.errors == 0;
        boost::json::object entry{
            {"file", file.file},
            {"kind", package ? "package" : "catalogue"},
            {"status", read ? "read" : "skipped"},
            {"errors", counts.errors},
            {"warnings", counts.warnings},
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
        {"summary", boost::json::object{{"catalogues", report.catalogues()},
                                        {"skipped", report.skipped()},
                                        {"errors", report.count(Severity::Error)},
                                        {"warnings", report.count(Severity::Warning)},
                                        {"notes", report.count(Severity::Note)}}},
    };
    out << boost::json::serialize(document) << '\n';
}

} // namespace exampledoc
