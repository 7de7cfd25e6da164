#include <cctype>
#include <filesystem>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include "check_report.hpp"
#include "check_rules.hpp"

namespace exampledoc {
namespace {

// `path` as a relative URI reference: every byte but the unreserved ones and "/" escaped.
std::string uriOf(std::string_view path) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string uri;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) != 0 || std::string_view("-._~/").find(c) != std::string_view::npos) {
            uri += c;
        } else {
            uri += '%';
            uri += kHex[byte >> 4U];
            uri += kHex[byte & 0xFU];
        }
    }
    return uri;
}

std::string_view levelOf(Severity severity) {
    return severityName(severity);
}

boost::json::object resultOf(const Finding& finding, std::size_t ruleIndex, const std::string& prefix) {
    // An entry of a package has no file of its own: the result lies on the package, and the
    // entry is named in the message.
    const std::size_t bang = finding.file.find('!');
    const bool inPackage = bang != std::string::npos;
    boost::json::object physical{
        {"artifactLocation", boost::json::object{{"uri", prefix + uriOf(finding.file.substr(0, bang))},
                                                 {"uriBaseId", "%SRCROOT%"}}}};
    if (finding.line != 0 && !inPackage) {
        physical["region"] =
            boost::json::object{{"startLine", finding.line}, {"startColumn", finding.column}};
    }
    boost::json::object location{{"physicalLocation", std::move(physical)}};
    if (finding.line != 0) {
        location["logicalLocations"] = boost::json::array{
            boost::json::object{{"fullyQualifiedName", finding.jsonPath}, {"kind", "member"}}};
    }
    boost::json::object properties{{"file", finding.file}};
    if (finding.line != 0) {
        properties["line"] = finding.line;
        properties["column"] = finding.column;
        properties["jsonPath"] = finding.jsonPath;
    }
    if (!finding.exampleId.empty()) {
        properties["exampleId"] = finding.exampleId;
    }
    const std::string message =
        inPackage ? finding.file.substr(bang + 1) + ": " + finding.message : finding.message;
    return boost::json::object{
        {"ruleId", finding.rule},
        {"ruleIndex", ruleIndex},
        {"level", levelOf(finding.severity)},
        {"message", boost::json::object{{"text", message}}},
        {"locations", boost::json::array{std::move(location)}},
        {"properties", std::move(properties)},
    };
}

} // namespace

void writeCheckSarif(std::ostream& out, const CheckReport& report) {
    // Paths are given from the working folder, as code scanning expects them from the checkout,
    // unless the root lies outside it; then from the root.
    namespace fs = std::filesystem;
    const fs::path root = fs::absolute(report.root).lexically_normal();
    const fs::path fromHere = root.lexically_relative(fs::current_path());
    const bool inside = !fromHere.empty() && *fromHere.begin() != "..";
    const std::string prefix = inside && fromHere != "." ? uriOf(fromHere.string()) + "/" : "";
    std::string base = uriOf((inside ? fs::current_path() : root).string());
    if (base.empty() || base.back() != '/') {
        base += '/';
    }
    const auto& rules = checkRules();
    boost::json::array ruleObjects;
    for (const CheckRule& rule : rules) {
        ruleObjects.push_back(boost::json::object{
            {"id", rule.name},
            {"shortDescription", boost::json::object{{"text", rule.summary}}},
            {"defaultConfiguration", boost::json::object{{"level", levelOf(rule.severity)}}},
        });
    }
    boost::json::array results;
    for (const Finding& finding : report.findings) {
        std::size_t index = 0;
        while (index < rules.size() && rules[index].name != finding.rule) {
            ++index;
        }
        results.push_back(resultOf(finding, index, prefix));
    }
    const boost::json::object log{
        {"$schema", "https://json.schemastore.org/sarif-2.1.0.json"},
        {"version", "2.1.0"},
        {"runs", boost::json::array{boost::json::object{
                     {"tool", boost::json::object{{"driver",
                                                   boost::json::object{{"name", "exampledoc"},
                                                                       {"rules", std::move(ruleObjects)}}}}},
                     {"originalUriBaseIds",
                      boost::json::object{{"%SRCROOT%", boost::json::object{{"uri", "file://" + base}}}}},
                     {"columnKind", "unicodeCodePoints"},
                     {"results", std::move(results)},
                 }}},
    };
    out << boost::json::serialize(log) << '\n';
}

} // namespace exampledoc
