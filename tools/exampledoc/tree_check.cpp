#include "tree_check.hpp"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "check_rules.hpp"
#include "json_position.hpp"
#include "opc/package_error.hpp"
#include "reference/docparser/read_zip_files.hpp"
#include "thumbnail_check.hpp"
#include "zwhost/product_walk.hpp"
#include "zwhost/unicode.hpp"

namespace exampledoc {
namespace {

using reference::docparser::DocResourceParser;
using reference::docparser::ProductPathData;
using ParsingTools = DocResourceParser::ParsingTools;
using zwhost::unicode::utf16ToUtf8;

std::string_view leftOutReason(zwhost::reference::LeftOut::Why why) {
    using Why = zwhost::reference::LeftOut::Why;
    switch (why) {
    case Why::NotUtf8:
        return "its name is not valid UTF-8";
    case Why::DanglingLink:
        return "it is a link to nothing";
    case Why::LinkLoop:
        return "it is a link in a loop of links";
    case Why::NotRegularFile:
        return "it is not a regular file";
    case Why::TooDeep:
        return "it lies below the depth limit of the walk";
    case Why::Unlistable:
        return "the folder cannot be listed";
    }
    return "it is passed over";
}

// The part of `path` before its last "/", or empty.
std::u16string folderOf(const std::u16string& path) {
    const std::size_t slash = path.rfind(u'/');
    return slash == std::u16string::npos ? std::u16string() : path.substr(0, slash);
}

// Why one read failed, with the rule that names it.
struct ReadFailure {
    std::string_view rule;
    std::string reason;
};

ReadFailure readFailure(const std::exception& error) {
    const auto* package = dynamic_cast<const opc::PackageError*>(&error);
    const bool unsupported =
        package != nullptr && package->kind() == opc::PackageErrorKind::UnsupportedMethod;
    return {unsupported ? "unsupported-compression" : "unreadable", error.what()};
}

// How reading one package entry went under each checked locale.
struct EntryOutcome {
    std::size_t file = 0; // its place in the report's files
    bool checked = false; // its text was checked once
    std::vector<std::u16string> failedFor;
    std::optional<ReadFailure> failure;
};

// A localised entry of a package as the pass of its locale read it.
struct LocalisedEntry {
    std::u16string path;
    std::string label;
    std::u16string partner;
    std::optional<ReadFailure> failure;
};

// Reads every catalogue of the tree the way the library does, once for each checked locale as a
// user of that locale reads it: the walk and each package's choice of catalogues for that
// locale, and each package's catalogues read in its order through one manager, so that the
// package's budget is spent as the library spends it. English catalogues are checked first so
// that each localised one can be held against them. Keeps ids and small facts, never a whole
// catalogue.
class TreeCheck {
public:
    TreeCheck(CheckReport& report, const TreeScope& scope, const CatalogueRead& read)
        : report_(report), root_(scope.root), docRoot_(documentationRoot(scope.root)),
          docLocales_(scope.docLocales), checked_(scope.checked), read_(read) {
        if (checked_.empty()) {
            checked_.push_back(ParsingTools::getCurrentLocale());
        }
    }

    void run() {
        std::vector<reference::docparser::AllProducts> passes;
        for (const std::u16string& locale : checked_) {
            passes.push_back(zwhost::reference::walkProducts(root_, docLocales_,
                                                             ParsingTools::kLocaleSeparator + locale,
                                                             [&](const zwhost::reference::LeftOut& path) {
                                                                 if (passes.empty()) {
                                                                     leftOut(path);
                                                                 }
                                                             }));
        }
        const auto storage = storage::microservicestoragesystem::GetStorageSystemReference();
        const opc::FileSystemOpsSelector selector(storage);
        // Packages before loose files, as the library reads them; English catalogues first.
        for (std::size_t pass = 0; pass < passes.size(); ++pass) {
            for (const ProductPathData& product : passes[pass].packageProducts) {
                readPackage(product, selector, checked_[pass]);
            }
        }
        for (const ProductPathData& product : passes.front().looseProducts) {
            if (!product.isNonEnglishLocale()) {
                looseCatalogue(product, {});
            }
        }
        reportEnglishFailures();
        for (std::size_t pass = 0; pass < passes.size(); ++pass) {
            for (const ProductPathData& product : passes[pass].packageProducts) {
                checkLocalised(product, selector, checked_[pass]);
            }
        }
        for (std::size_t pass = 0; pass < passes.size(); ++pass) {
            for (const ProductPathData& product : passes[pass].looseProducts) {
                if (product.isNonEnglishLocale()) {
                    looseCatalogue(product, checked_[pass]);
                }
            }
        }
        for (const auto& [label, any] : packages_) {
            if (!any) {
                addFinding(label, "no-catalogue",
                           "the package holds no catalogue read under the checked locales");
            }
        }
    }

private:
    void leftOut(const zwhost::reference::LeftOut& path) {
        addFinding(utf16ToUtf8(zwhost::unicode::utf8ToUtf16Replacing(path.path)), "left-out",
                   "not read: " + std::string(leftOutReason(path.why)) +
                       (path.detail.empty() ? "" : " (" + path.detail + ")"));
    }

    std::u16string suffixOf(const std::u16string& locale) const {
        return ParsingTools::kLocaleSeparator + locale;
    }

    // The stem without the locale's suffix: a localised catalogue's English partner has it.
    std::u16string baseStem(const std::u16string& stem, const std::u16string& locale) const {
        const std::u16string suffix = suffixOf(locale);
        return locale.empty() || !std::u16string_view(stem).ends_with(suffix)
                   ? stem
                   : stem.substr(0, stem.size() - suffix.size());
    }

    // The name and partner of a package's catalogue; one of a package of one catalogue has
    // the package's name and locale.
    std::pair<std::string, std::u16string> entryNames(const ProductPathData& package,
                                                      const reference::docparser::ProductZipData& record,
                                                      bool single, const std::u16string& locale) const {
        const std::u16string& stem = single ? package.getStem() : record.getStem();
        const std::u16string partner =
            single ? folderOf(package.getFullPath()) + u'/' + baseStem(stem, locale)
                   : package.getFullPath() + u'!' + folderOf(record.getEntry().getPath()) + u'/' +
                         baseStem(stem, locale);
        return {relative(package.getFullPath()) + "!" + utf16ToUtf8(record.getEntry().getPath()), partner};
    }

    // Reads the catalogues a user of `locale` reads in one package, in the library's order through
    // one manager, and checks each English one the first time it is read.
    void readPackage(const ProductPathData& product, const opc::FileSystemOpsSelector& selector,
                     const std::u16string& locale) {
        const std::string label = relative(product.getFullPath());
        const bool first = !packages_.count(label);
        try {
            reference::docparser::detail::withPackageCatalogues(
                product, selector, docLocales_, suffixOf(locale),
                [&](const auto& manager, const auto& leaves, const auto& records) {
                    readCatalogues(product, label, locale, first, manager, leaves, records);
                });
        } catch (const std::exception& error) {
            // Whatever fails while the package is opened or listed costs the library the whole package.
            if (first) {
                packageFound(label, nullptr);
                packages_[label] = true;
                addFinding(label, "bad-package", "the package is not read: " + std::string(error.what()));
            }
        }
    }

    // Reads each catalogue of one pass over a package in its order, keeping the localised ones'
    // verdicts for later and checking each English one the first time it is read.
    void readCatalogues(const ProductPathData& product, const std::string& label,
                        const std::u16string& locale, bool first,
                        const opc::zwservices::FileSystemManager& manager,
                        const std::vector<opc::zwservices::FileSystemEntry>& leaves,
                        const std::vector<reference::docparser::ProductZipData>& records) {
        if (first) {
            packageFound(label, &manager);
        }
        packages_[label] = packages_[label] || !records.empty();
        auto& localised = localised_[{label, locale}];
        // Reading is the same whenever a package's same entries are read in the same order: a pass
        // that chooses what an earlier one chose takes its verdicts without reading again.
        std::vector<std::uint64_t> chosen;
        for (const auto& record : records) {
            chosen.push_back(record.getEntry().info().index);
        }
        auto [verdicts, fresh] = verdicts_.try_emplace({label, std::move(chosen)});
        for (std::size_t i = 0; i < records.size(); ++i) {
            const auto& record = records[i];
            const auto [name, partner] =
                entryNames(product, record, leaves.size() == 1, record.isNonEnglishLocale() ? locale : u"");
            std::string text;
            std::optional<ReadFailure> failure;
            if (fresh) {
                try {
                    text = DocResourceParser::openAndReadFile(record);
                } catch (const std::exception& error) {
                    failure = readFailure(error);
                }
                verdicts->second.push_back(failure);
            } else {
                failure = verdicts->second.at(i);
            }
            if (record.isNonEnglishLocale()) {
                localised.push_back({record.getEntry().getPath(), name, partner, std::move(failure)});
                continue;
            }
            auto [outcome, fresh] = english_.try_emplace(name);
            if (fresh) {
                outcome->second.file = newFile(name, {});
            }
            if (failure) {
                outcome->second.failedFor.push_back(locale);
                outcome->second.failure = std::move(failure);
                continue;
            }
            report_.files[outcome->second.file].locales.push_back(utf16ToUtf8(locale));
            if (!outcome->second.checked) {
                outcome->second.checked = true;
                checkText(text, outcome->second.file, {}, partner);
            }
        }
    }

    // An English catalogue of a package that some pass could not read: the library drops it for
    // the users of those locales.
    void reportEnglishFailures() {
        for (const auto& [name, outcome] : english_) {
            if (!outcome.failure) {
                continue;
            }
            std::string under;
            if (outcome.failedFor.size() < checked_.size()) {
                for (const std::u16string& locale : outcome.failedFor) {
                    under += (under.empty() ? " for " : ", ") + utf16ToUtf8(locale);
                }
            }
            addFinding(name, outcome.failure->rule, "not read" + under + ": " + outcome.failure->reason);
        }
    }

    // Checks the localised catalogues that the pass of `locale` read in one package.
    void checkLocalised(const ProductPathData& product, const opc::FileSystemOpsSelector& selector,
                        const std::u16string& locale) {
        const auto found = localised_.find({relative(product.getFullPath()), locale});
        if (found == localised_.end() || found->second.empty()) {
            return;
        }
        std::map<std::u16string, const LocalisedEntry*> toRead;
        for (const LocalisedEntry& entry : found->second) {
            const std::size_t file = newFile(entry.label, locale);
            if (entry.failure) {
                addFinding(entry.label, entry.failure->rule, "not read: " + entry.failure->reason);
            } else {
                toRead.emplace(entry.path, &entry);
                files_[entry.label] = file;
            }
        }
        if (toRead.empty()) {
            return;
        }
        // The pass of this locale read these entries within the package's budget; they are read
        // again here for their text alone, through a fresh manager.
        try {
            reference::docparser::detail::withPackageCatalogues(
                product, selector, docLocales_, suffixOf(locale),
                [&](const auto&, const auto&, const auto& records) { readTexts(locale, toRead, records); });
        } catch (const std::exception& error) {
            addFinding(relative(product.getFullPath()), "bad-package",
                       "the package is not read: " + std::string(error.what()));
        }
    }

    // Checks the text of each localised catalogue that its pass read.
    void readTexts(const std::u16string& locale,
                   const std::map<std::u16string, const LocalisedEntry*>& toRead,
                   const std::vector<reference::docparser::ProductZipData>& records) {
        for (const auto& record : records) {
            const auto entry = toRead.find(record.getEntry().getPath());
            if (entry == toRead.end()) {
                continue;
            }
            const std::size_t file = files_.at(entry->second->label);
            try {
                const std::string text = DocResourceParser::openAndReadFile(record);
                report_.files[file].locales.push_back(utf16ToUtf8(locale));
                checkText(text, file, locale, entry->second->partner);
            } catch (const std::exception& error) {
                const ReadFailure failure = readFailure(error);
                addFinding(entry->second->label, failure.rule, "not read: " + failure.reason);
            }
        }
    }

    void looseCatalogue(const ProductPathData& product, const std::u16string& locale) {
        const std::u16string& path = product.getFullPath();
        const std::string label = relative(path);
        const std::size_t file = newFile(label, locale);
        std::string text;
        try {
            text = DocResourceParser::openAndReadFile(product);
        } catch (const std::exception& error) {
            const ReadFailure failure = readFailure(error);
            addFinding(label, failure.rule, "not read: " + failure.reason);
            return;
        }
        if (locale.empty()) {
            for (const std::u16string& checked : checked_) {
                report_.files[file].locales.push_back(utf16ToUtf8(checked));
            }
        } else {
            report_.files[file].locales.push_back(utf16ToUtf8(locale));
        }
        checkText(text, file, locale, folderOf(path) + u'/' + baseStem(product.getStem(), locale));
    }

    std::size_t newFile(const std::string& label, const std::u16string& locale) {
        CheckedFile file;
        file.file = label;
        file.english = locale.empty();
        report_.files.push_back(std::move(file));
        return report_.files.size() - 1;
    }

    void packageFound(const std::string& label, const opc::zwservices::FileSystemManager* manager) {
        CheckedFile file;
        file.file = label;
        file.kind = CheckedFile::Kind::Package;
        report_.files.push_back(std::move(file));
        if (manager == nullptr) {
            return;
        }
        for (const auto& skipped : manager->getSkippedEntries()) {
            addFinding(label + "!" + utf16ToUtf8(skipped.path), "duplicate-entry",
                       "not read: " + skipped.reason);
        }
    }

    void addFinding(const std::string& file, std::string_view rule, std::string message) {
        Finding finding;
        finding.severity = checkRule(rule).severity;
        finding.file = file;
        finding.rule = rule;
        finding.message = std::move(message);
        report_.findings.push_back(std::move(finding));
    }

    // Checks the text of a catalogue the library read, and keeps what later checks need of it.
    void checkText(const std::string& text, std::size_t index, const std::u16string& locale,
                   const std::u16string& partner) {
        CatalogueContext context;
        context.file = report_.files[index].file;
        context.locale = locale;
        context.docLocales = docLocales_;
        if (!locale.empty()) {
            const auto found = partners_.find(partner);
            if (found != partners_.end()) {
                context.partnerHelpFolder = found->second;
            }
            context.englishIds = [&](const std::u16string& helpFolder) -> const std::set<std::u16string>* {
                const auto ids = englishIds_.find(helpFolder);
                return ids == englishIds_.end() ? nullptr : &ids->second;
            };
        } else {
            context.firstEnglish = [&](const std::u16string& helpFolder) -> const std::string* {
                const auto first = firstEnglish_.find(helpFolder);
                return first == firstEnglish_.end() ? nullptr : &first->second;
            };
        }
        context.docRoot = docRoot_;
        CatalogueFacts facts = checkCatalogue(text, context, report_.findings);
        if (!facts.read) {
            return;
        }
        if (read_) {
            read_(locale, facts);
        }
        CheckedFile& file = report_.files[index];
        file.helpFolder = utf16ToUtf8(facts.helpFolder);
        file.examples = facts.examples;
        if (locale.empty()) {
            firstEnglish_.emplace(facts.helpFolder, file.file);
            englishIds_[facts.helpFolder].insert(std::make_move_iterator(facts.ids.begin()),
                                                 std::make_move_iterator(facts.ids.end()));
            partners_.emplace(partner, facts.helpFolder);
        }
    }

    std::string relative(const std::u16string& path) const {
        const std::u16string_view view(path);
        if (view.starts_with(root_) && view.size() > root_.size() && view[root_.size()] == u'/') {
            return utf16ToUtf8(view.substr(root_.size() + 1));
        }
        return utf16ToUtf8(path);
    }

    CheckReport& report_;
    std::u16string root_;
    std::filesystem::path docRoot_; // where the help folders' thumbnails are
    std::vector<std::u16string> docLocales_;
    std::vector<std::u16string> checked_;
    const CatalogueRead& read_;
    std::map<std::string, bool> packages_; // whether a package has a catalogue read under some locale
    std::map<std::string, EntryOutcome> english_;
    std::map<std::pair<std::string, std::u16string>, std::vector<LocalisedEntry>> localised_;
    std::map<std::string, std::size_t> files_;
    std::map<std::pair<std::string, std::vector<std::uint64_t>>, std::vector<std::optional<ReadFailure>>>
        verdicts_;
    std::map<std::u16string, std::string> firstEnglish_;
    std::map<std::u16string, std::set<std::u16string>> englishIds_;
    std::map<std::u16string, std::u16string> partners_;
};

} // namespace

TreeScope scopeOf(const Options& options) {
    TreeScope scope;
    scope.root = applyOptions(options);
    while (scope.root.size() > 1 && scope.root.back() == u'/') {
        scope.root.pop_back();
    }
    scope.docLocales = ParsingTools::getSupportedDocLocales();
    // Every locale unless one is asked for.
    scope.checked = scope.docLocales;
    if (options.locale) {
        scope.checked = {ParsingTools::getCurrentLocale()};
    }
    return scope;
}

CheckReport checkTree(const TreeScope& scope, const CatalogueRead& read) {
    CheckReport report;
    report.root = utf16ToUtf8(scope.root);
    for (const std::u16string& locale : scope.checked) {
        report.locales.push_back(utf16ToUtf8(locale));
    }
    TreeCheck(report, scope, read).run();
    // Findings are read by people and by JSON parsers: a name or a system's message that is not
    // UTF-8 has each bad byte replaced.
    for (Finding& finding : report.findings) {
        for (std::string* text : {&finding.file, &finding.message}) {
            if (zwhost::unicode::firstMalformedUtf8(*text) != std::string::npos) {
                *text = utf16ToUtf8(zwhost::unicode::utf8ToUtf16Replacing(*text));
            }
        }
    }
    report.finish();
    return report;
}

} // namespace exampledoc
