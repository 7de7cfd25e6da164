#include <algorithm>
#include <iomanip>
#include <map>
#include <set>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include "commands.hpp"
#include "tree_check.hpp"
#include "zwhost/unicode.hpp"

namespace exampledoc {
namespace {

using zwhost::unicode::utf16ToUtf8;
using Ids = std::set<std::u16string>;

// The ids of one help folder: those of its English catalogues and those of each locale's.
struct HelpFolderIds {
    Ids english;
    std::map<std::u16string, Ids> localised;
};

// How far one locale of one help folder (or of all of them) is localised.
struct Coverage {
    std::size_t english = 0;
    std::size_t localised = 0;
    bool hasCatalogue = false;
    std::vector<std::string> missing;
    std::vector<std::string> orphans;

    void add(const Coverage& other) {
        english += other.english;
        localised += other.localised;
        hasCatalogue = hasCatalogue || other.hasCatalogue;
        missing.insert(missing.end(), other.missing.begin(), other.missing.end());
        orphans.insert(orphans.end(), other.orphans.begin(), other.orphans.end());
    }
};

Coverage coverageOf(const HelpFolderIds& ids, const std::u16string& locale) {
    Coverage coverage;
    coverage.english = ids.english.size();
    const auto found = ids.localised.find(locale);
    const Ids none;
    const Ids& localised = found == ids.localised.end() ? none : found->second;
    coverage.hasCatalogue = found != ids.localised.end();
    for (const std::u16string& id : ids.english) {
        if (localised.count(id) != 0) {
            ++coverage.localised;
        } else {
            coverage.missing.push_back(utf16ToUtf8(id));
        }
    }
    for (const std::u16string& id : localised) {
        if (ids.english.count(id) == 0) {
            coverage.orphans.push_back(utf16ToUtf8(id));
        }
    }
    return coverage;
}

std::string percent(const Coverage& coverage) {
    return coverage.english == 0 ? "-" : std::to_string(coverage.localised * 100 / coverage.english) + "%";
}

// "4 of 5 examples localised (80%), 1 missing, 1 orphan", as msgfmt --statistics counts.
void writeLine(std::ostream& out, const std::string& locale, const Coverage& coverage, bool details) {
    out << "  " << std::left << std::setw(7) << locale << coverage.localised << " of " << coverage.english
        << (coverage.english == 1 ? " example" : " examples") << " localised (" << percent(coverage) << ")";
    if (!coverage.missing.empty()) {
        out << ", " << coverage.missing.size() << " missing";
    }
    if (!coverage.orphans.empty()) {
        out << ", " << coverage.orphans.size() << (coverage.orphans.size() == 1 ? " orphan" : " orphans");
    }
    if (!coverage.hasCatalogue && details) {
        out << ": no catalogue";
    }
    out << '\n';
    // A help folder that has no catalogue of the locale at all would list every id: it is said once.
    if (details && coverage.hasCatalogue) {
        for (const auto& [label, ids] :
             {std::pair{"missing", &coverage.missing}, {"orphan ", &coverage.orphans}}) {
            for (const std::string& id : *ids) {
                out << "         " << label << "  " << id << '\n';
            }
        }
    }
}

boost::json::object coverageToJson(const Coverage& coverage, bool lists) {
    boost::json::object object{{"english", coverage.english},
                               {"localised", coverage.localised},
                               {"missingCount", coverage.missing.size()},
                               {"orphanCount", coverage.orphans.size()}};
    if (lists) {
        object["hasCatalogue"] = coverage.hasCatalogue;
        boost::json::array missing(coverage.missing.begin(), coverage.missing.end());
        boost::json::array orphans(coverage.orphans.begin(), coverage.orphans.end());
        object["missing"] = std::move(missing);
        object["orphans"] = std::move(orphans);
    }
    return object;
}

} // namespace

int coverageCommand(const Options& options, std::ostream& out, std::ostream& err) {
    if (options.format != "text" && options.format != "json") {
        throw UsageError("format \"" + options.format + "\" is neither text nor json");
    }
    const TreeScope scope = scopeOf(options);
    std::map<std::u16string, HelpFolderIds> folders;
    const CheckReport report =
        checkTree(scope, [&](const std::u16string& locale, const CatalogueFacts& facts) {
            HelpFolderIds& ids = folders[facts.helpFolder];
            Ids& into = locale.empty() ? ids.english : ids.localised[locale];
            into.insert(facts.ids.begin(), facts.ids.end());
        });

    std::map<std::u16string, Coverage> totals;
    boost::json::array helpFolders;
    for (const auto& [helpFolder, ids] : folders) {
        if (options.format == "text") {
            out << (helpFolders.empty() ? "" : "\n") << utf16ToUtf8(helpFolder) << "  (" << ids.english.size()
                << (ids.english.size() == 1 ? " English example)\n" : " English examples)\n");
        }
        boost::json::object locales;
        for (const std::u16string& locale : scope.checked) {
            const Coverage coverage = coverageOf(ids, locale);
            totals[locale].add(coverage);
            if (options.format == "text") {
                writeLine(out, utf16ToUtf8(locale), coverage, true);
            }
            locales[utf16ToUtf8(locale)] = coverageToJson(coverage, true);
        }
        helpFolders.push_back(boost::json::object{{"helpFolder", utf16ToUtf8(helpFolder)},
                                                  {"english", ids.english.size()},
                                                  {"locales", std::move(locales)}});
    }
    boost::json::object totalJson;
    if (options.format == "text") {
        out << (folders.empty() ? "" : "\n") << "total\n";
    }
    for (const std::u16string& locale : scope.checked) {
        if (options.format == "text") {
            writeLine(out, utf16ToUtf8(locale), totals[locale], false);
        }
        totalJson[utf16ToUtf8(locale)] = coverageToJson(totals[locale], false);
    }
    if (options.format == "json") {
        out << boost::json::serialize(boost::json::object{
                   {"version", kCheckJsonVersion},
                   {"root", report.root},
                   {"locales", boost::json::array(report.locales.begin(), report.locales.end())},
                   {"helpFolders", std::move(helpFolders)},
                   {"totals", std::move(totalJson)}})
            << '\n';
    }
    if (const std::size_t errors = report.count(Severity::Error); errors > 0) {
        err << "exampledoc coverage: " << errors
            << (errors == 1 ? " catalogue or package is" : " catalogues or packages are")
            << " not read; 'exampledoc check' tells why\n";
    }
    return 0;
}

} // namespace exampledoc
