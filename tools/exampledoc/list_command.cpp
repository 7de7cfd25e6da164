#include <fnmatch.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "catalogue/catalogue_parser.hpp"
#include "commands.hpp"
#include "json_output.hpp"
#include "text_output.hpp"
#include "zwhost/settings.hpp"
#include "zwhost/skip_watch.hpp"
#include "zwhost/unicode.hpp"

namespace exampledoc {
namespace {

using example::docparser::ExampleCatalogues;
using reference::docparser::ParsingInfo;
using zwhost::unicode::utf16ToUtf8;

// The catalogues under `root` as getDocExampleFiles reads them, driven as it drives the parse, and
// in the same pass how many files and packages were skipped: those the host could not read, open
// or list, and those the parser refused.
std::pair<ExampleCatalogues, std::size_t> readCatalogues(const std::u16string& root) {
    std::size_t refused = 0;
    const ParsingInfo<ExampleCatalogues>::JsonParsingFcn parse = [&refused](const std::string& text) {
        try {
            return example::docparser::detail::parseExampleCatalogue(text);
        } catch (...) {
            ++refused;
            throw;
        }
    };
    const zwhost::reference::SkipWatch watch;
    ExampleCatalogues catalogues = example::docparser::detail::readExampleCatalogues(root, parse);
    return {std::move(catalogues), refused + watch.count()};
}

// Keeps the help folders, kinds and ids that the options ask for; a folder that an id or kind
// filter leaves empty goes too. Names a wanted help folder that is not there. Gives back the id
// globs that no kept example matches.
std::vector<std::string> filter(example::docparser::ExampleCatalogues& catalogues, const Options& options,
                                std::ostream& err) {
    for (const auto& wanted : options.folders) {
        if (!catalogues.contains(zwhost::unicode::utf8ToUtf16(wanted))) {
            err << "exampledoc list: warning: no help folder \"" << wanted << "\"\n";
        }
    }
    const std::vector<std::string>& globs = options.operands;
    std::vector<bool> matched(globs.size(), false);
    const bool filtersItems = options.kind || !globs.empty();
    for (auto folder = catalogues.begin(); folder != catalogues.end();) {
        const std::string name = utf16ToUtf8(folder->first);
        if (!options.folders.empty() &&
            std::find(options.folders.begin(), options.folders.end(), name) == options.folders.end()) {
            folder = catalogues.erase(folder);
            continue;
        }
        auto& items = folder->second.items;
        for (auto entry = items.begin(); entry != items.end();) {
            std::erase_if(entry->second, [&](const example::docparser::ExampleItem& item) {
                return options.kind &&
                       example::docparser::ExampleType::enumToString(item.getExampleType()) != *options.kind;
            });
            bool keep = !entry->second.empty();
            if (keep && !globs.empty()) {
                const std::string id = utf16ToUtf8(entry->first);
                keep = false;
                for (std::size_t glob = 0; glob < globs.size(); ++glob) {
                    if (fnmatch(globs[glob].c_str(), id.c_str(), 0) == 0) {
                        matched[glob] = true;
                        keep = true;
                    }
                }
            }
            entry = keep ? std::next(entry) : items.erase(entry);
        }
        folder = filtersItems && items.empty() ? catalogues.erase(folder) : std::next(folder);
    }
    std::vector<std::string> unmatched;
    for (std::size_t glob = 0; glob < globs.size(); ++glob) {
        if (!matched[glob]) {
            unmatched.push_back(globs[glob]);
        }
    }
    return unmatched;
}

// Names each id glob that no listed example matches; one that names a folder is most likely a
// tree meant for --root.
void warnUnmatched(const std::vector<std::string>& globs, std::ostream& err) {
    for (const std::string& glob : globs) {
        err << "exampledoc list: warning: no example id matches \"" << escapeControls(glob) << "\"";
        std::error_code error;
        if (std::filesystem::is_directory(glob, error)) {
            err << "; to read the documentation tree there, give --root " << escapeControls(glob);
        }
        err << "\n";
    }
}

} // namespace

int listCommand(const Options& options, std::ostream& out, std::ostream& err) {
    const std::u16string root = applyOptions(options);
    auto [catalogues, skipped] = readCatalogues(root);
    const bool found = !catalogues.empty();
    warnUnmatched(filter(catalogues, options, err), err);
    if (options.json) {
        writeCataloguesJson(out, std::move(catalogues));
        return 0;
    }
    out << "Examples under " << escapeControls(utf16ToUtf8(root)) << " for locale "
        << utf16ToUtf8(zwhost::settings::currentLocale()) << "\n\n";
    if (found && catalogues.empty()) {
        out << "No examples match.\n";
    } else {
        printListing(out, catalogues, options.color);
    }
    if (skipped > 0) {
        err << "exampledoc list: " << skipped
            << (skipped == 1 ? " file or package was" : " files or packages were")
            << " skipped; 'exampledoc check' tells why\n";
    }
    return 0;
}

} // namespace exampledoc
