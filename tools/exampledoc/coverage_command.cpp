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

/** What coverage found: per help folder and checked locale, then per locale over all of them. */
struct CoverageReport {
    struct HelpFolder {
        std::string name;
        std::size_t english = 0;
        std::vector<std::pair<std::string, Coverage>> locales;
    };
    std::string root;
    std::vector<std::string> locales;
    std::vector<HelpFolder> helpFolders;
    std::vector<std::pair<std::string, Coverage>> totals;
    std::size_t skipped = 0; // catalogues and packages the library does not read
};

CoverageReport coverageReport(const TreeScope& scope) {
    std::map<std::u16string, HelpFolderIds> folders;
    const CheckReport checked =
        checkTree(scope, [&](const std::u16string& locale, const CatalogueFacts& facts) {
            HelpFolderIds& ids = folders[facts.helpFolder];
            Ids& into = locale.empty() ? ids.english : ids.localised[locale];
            into.insert(facts.ids.begin(), facts.ids.end());
        });
    CoverageReport report;
    report.root = checked.root;
    report.locales = checked.locales;
    report.skipped = checked.skipped();
    std::map<std::u16string, Coverage> totals;
    for (const auto& [helpFolder, ids] : folders) {
        CoverageReport::HelpFolder folder{utf16ToUtf8(helpFolder), ids.english.size(), {}};
        for (const std::u16string& locale : scope.checked) {
            Coverage coverage = coverageOf(ids, locale);
            totals[locale].add(coverage);
            folder.locales.emplace_back(utf16ToUtf8(locale), std::move(coverage));
        }
        report.helpFolders.push_back(std::move(folder));
    }
    for (const std::u16string& locale : scope.checked) {
        report.totals.emplace_back(utf16ToUtf8(locale), std::move(totals[locale]));
    }
    return report;
}

void writeCoverageText(std::ostream& out, const CoverageReport& report) {
    for (std::size_t i = 0; i < report.helpFolders.size(); ++i) {
        const CoverageReport::HelpFolder& folder = report.helpFolders[i];
        out << (i == 0 ? "" : "\n") << folder.name << "  (" << folder.english
            << (folder.english == 1 ? " English example)\n" : " English examples)\n");
        for (const auto& [locale, coverage] : folder.locales) {
            writeLine(out, locale, coverage, true);
        }
    }
    out << (report.helpFolders.empty() ? "" : "\n") << "total\n";
    for (const auto& [locale, coverage] : report.totals) {
        writeLine(out, locale, coverage, false);
    }
}

void writeCoverageJson(std::ostream& out, const CoverageReport& report) {
    boost::json::array helpFolders;
    for (const CoverageReport::HelpFolder& folder : report.helpFolders) {
        boost::json::object locales;
        for (const auto& [locale, coverage] : folder.locales) {
            locales[locale] = coverageToJson(coverage, true);
        }
        helpFolders.push_back(boost::json::object{
            {"helpFolder", folder.name}, {"english", folder.english}, {"locales", std::move(locales)}});
    }
    boost::json::object totals;
    for (const auto& [locale, coverage] : report.totals) {
        totals[locale] = coverageToJson(coverage, false);
    }
    out << boost::json::serialize(boost::json::object{
               {"version", kCheckJsonVersion},
               {"root", report.root},
               {"locales", boost::json::array(report.locales.begin(), report.locales.end())},
               {"helpFolders", std::move(helpFolders)},
               {"totals", std::move(totals)}})
        << '\n';
}

} // namespace

// The command line allows only the formats written here.
int coverageCommand(const Options& options, std::ostream& out, std::ostream& err) {
    const CoverageReport report = coverageReport(scopeOf(options));
    if (options.format == "json") {
        writeCoverageJson(out, report);
    } else {
        writeCoverageText(out, report);
    }
    if (report.skipped > 0) {
        err << "exampledoc coverage: " << report.skipped
            << (report.skipped == 1 ? " catalogue or package is" : " catalogues or packages are")
            << " not read; 'exampledoc check' tells why\n";
    }
    return 0;
}

} // namespace exampledoc
