#include "tree_check.hpp"

#include <algorithm>
#include <cctype>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "check_rules.hpp"
#include "json_position.hpp"
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

// Reads every catalogue of the tree the way the library does, English ones first so that each
// localised one can be held against them. Keeps ids and small facts, never a whole catalogue.
class TreeCheck {
public:
    TreeCheck(CheckReport& report, const TreeScope& scope, const CatalogueRead& read)
        : report_(report), root_(scope.root), docLocales_(scope.docLocales), checked_(scope.checked),
          suffix_(scope.suffix), errorsOnly_(scope.errorsOnly), read_(read) {}

    void run() {
        const auto products = zwhost::reference::walkProducts(
            root_, docLocales_, suffix_, [&](const zwhost::reference::LeftOut& path) { leftOut(path); });
        const auto storage = storage::microservicestoragesystem::GetStorageSystemReference();
        const opc::FileSystemOpsSelector selector(storage);
        // Packages first, then loose files, in each phase: the order in which the library reads them.
        for (const bool localised : {false, true}) {
            for (const ProductPathData& product : products.packageProducts) {
                package(product, selector, localised);
            }
            for (const ProductPathData& product : products.looseProducts) {
                if (product.isNonEnglishLocale() == localised) {
                    const std::u16string& path = product.getFullPath();
                    catalogue(relative(path), localeOf(product.getStem(), localised),
                              folderOf(path) + u'/' + baseStem(product.getStem(), localised),
                              [&] { return DocResourceParser::openAndReadFile(product); });
                }
            }
        }
    }

private:
    void leftOut(const zwhost::reference::LeftOut& path) {
        Finding finding;
        finding.severity = Severity::Warning;
        finding.file = utf16ToUtf8(zwhost::unicode::utf8ToUtf16Replacing(path.path));
        finding.rule = "left-out";
        finding.message = "not read: " + std::string(leftOutReason(path.why)) +
                          (path.detail.empty() ? "" : " (" + path.detail + ")");
        report_.findings.push_back(std::move(finding));
    }

    void package(const ProductPathData& product, const opc::FileSystemOpsSelector& selector, bool localised) {
        const std::string label = relative(product.getFullPath());
        if (localised && !withLocalised_.count(label)) {
            return;
        }
        try {
            opc::zippackage::ZipPhysicalPackage physical(product.getFullPath(), selector, true);
            opc::model::Package package(physical);
            opc::zwservices::FileSystemManager manager(package, selector);
            package.open(opc::interfaces::OpenMode::ReadOnly);
            const auto leaves = manager.getAllLeafs();
            const auto records = reference::docparser::detail::selectCatalogueLeaves(
                leaves, product, docLocales_, suffix_, manager);
            if (!localised) {
                packageFound(label, manager, records.empty());
            }
            for (const auto& record : records) {
                if (record.isNonEnglishLocale() != localised) {
                    withLocalised_.insert(label);
                    continue;
                }
                // A package of one catalogue has the name and locale of the package.
                const bool single = leaves.size() == 1;
                const std::u16string& stem = single ? product.getStem() : record.getStem();
                const std::u16string partner =
                    single ? folderOf(product.getFullPath()) + u'/' + baseStem(stem, localised)
                           : product.getFullPath() + u'!' + folderOf(record.getEntry().getPath()) + u'/' +
                                 baseStem(stem, localised);
                catalogue(label + "!" + utf16ToUtf8(record.getEntry().getPath()), localeOf(stem, localised),
                          partner, [&] { return DocResourceParser::openAndReadFile(record); });
            }
        } catch (const std::exception& error) {
            // Whatever fails while the package is opened or listed costs the library the whole package.
            if (!localised) {
                packageFound(label, std::nullopt, false);
                addFinding(label, "bad-package", "the package is not read: " + std::string(error.what()));
            }
        }
    }

    void packageFound(const std::string& label,
                      std::optional<std::reference_wrapper<opc::zwservices::FileSystemManager>> manager,
                      bool empty) {
        CheckedFile file;
        file.file = label;
        file.kind = CheckedFile::Kind::Package;
        report_.files.push_back(std::move(file));
        if (!manager) {
            return;
        }
        for (const auto& skipped : manager->get().getSkippedEntries()) {
            addFinding(label + "!" + utf16ToUtf8(skipped.path), "duplicate-entry",
                       "not read: " + skipped.reason);
        }
        if (empty) {
            addFinding(label, "no-catalogue",
                       "the package holds no catalogue read under the checked locales");
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

    void catalogue(const std::string& label, const std::u16string& locale, const std::u16string& partner,
                   const std::function<std::string()>& read) {
        CheckedFile file;
        file.file = label;
        file.english = locale.empty();
        for (const std::u16string& checked : checked_) {
            if (file.english || checked == locale) {
                file.locales.push_back(utf16ToUtf8(checked));
            }
        }
        std::string text;
        try {
            text = read();
        } catch (const std::exception& error) {
            const std::string reason = error.what();
            std::string lower = reason;
            std::transform(lower.begin(), lower.end(), lower.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
            const bool compression = lower.find("compression method") != std::string::npos;
            addFinding(label, compression ? "unsupported-compression" : "unreadable", "not read: " + reason);
            report_.files.push_back(std::move(file));
            return;
        }
        CatalogueContext context;
        context.file = label;
        context.locale = locale;
        context.docLocales = docLocales_;
        context.errorsOnly = errorsOnly_;
        if (!file.english) {
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
        CatalogueFacts facts = checkCatalogue(text, context, report_.findings);
        if (facts.read && !errorsOnly_) {
            checkThumbnails(documentationRoot(root_), facts.helpFolder, text, label, report_.findings);
        }
        if (facts.read && read_) {
            read_(locale, facts);
        }
        if (facts.read) {
            file.helpFolder = utf16ToUtf8(facts.helpFolder);
            file.examples = facts.examples;
            if (file.english) {
                firstEnglish_.emplace(facts.helpFolder, label);
                englishIds_[facts.helpFolder].insert(std::make_move_iterator(facts.ids.begin()),
                                                     std::make_move_iterator(facts.ids.end()));
                partners_.emplace(partner, facts.helpFolder);
            }
        }
        report_.files.push_back(std::move(file));
    }

    // The supported locale that a localised stem ends with.
    std::u16string localeOf(const std::u16string& stem, bool localised) const {
        if (localised) {
            for (const std::u16string& locale : docLocales_) {
                if (std::u16string_view(stem).ends_with(locale)) {
                    return locale;
                }
            }
        }
        return {};
    }

    // The stem without its locale suffix: a localised catalogue's English partner has this stem.
    std::u16string baseStem(const std::u16string& stem, bool localised) const {
        const std::u16string locale = localeOf(stem, localised);
        std::u16string base = stem.substr(0, stem.size() - locale.size());
        if (!locale.empty() && !base.empty() && base.back() == ParsingTools::kLocaleSeparator) {
            base.pop_back();
        }
        return base;
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
    std::vector<std::u16string> docLocales_;
    std::vector<std::u16string> checked_;
    std::u16string suffix_;
    bool errorsOnly_;
    const CatalogueRead& read_;
    std::set<std::string> withLocalised_;
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
    // Every locale unless one is asked for: the empty suffix lets the walk give every localised file.
    scope.checked = scope.docLocales;
    if (options.locale) {
        scope.checked = {ParsingTools::getCurrentLocale()};
        scope.suffix = ParsingTools::kLocaleSeparator + scope.checked.front();
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
            if (firstInvalidUtf8(*text) != std::string::npos) {
                *text = utf16ToUtf8(zwhost::unicode::utf8ToUtf16Replacing(*text));
            }
        }
    }
    report.sortFindings();
    return report;
}

std::size_t countSkipped(const std::u16string& root) {
    TreeScope scope;
    scope.root = root;
    scope.docLocales = ParsingTools::getSupportedDocLocales();
    scope.checked = {ParsingTools::getCurrentLocale()};
    scope.suffix = ParsingTools::kLocaleSeparator + scope.checked.front();
    scope.errorsOnly = true;
    const CheckReport report = checkTree(scope);
    return static_cast<std::size_t>(
        std::count_if(report.files.begin(), report.files.end(),
                      [&](const CheckedFile& file) { return report.hasErrors(file.file); }));
}

} // namespace exampledoc
