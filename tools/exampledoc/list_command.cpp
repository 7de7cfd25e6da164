#include <fnmatch.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "commands.hpp"
#include "json_output.hpp"
#include "text_output.hpp"
#include "tree_check.hpp"
#include "zwhost/settings.hpp"
#include "zwhost/unicode.hpp"

namespace exampledoc {
namespace {

using zwhost::unicode::utf16ToUtf8;

bool matchesAny(const std::vector<std::string>& globs, const std::string& id) {
    return globs.empty() || std::any_of(globs.begin(), globs.end(), [&](const std::string& glob) {
               return fnmatch(glob.c_str(), id.c_str(), 0) == 0;
           });
}

// Keeps the help folders, kinds and ids that the options ask for; a folder that an id or kind
// filter leaves empty goes too. Names a wanted help folder that is not there.
void filter(example::docparser::ExampleCatalogues& catalogues, const Options& options, std::ostream& err) {
    for (const auto& wanted : options.folders) {
        if (!catalogues.contains(zwhost::unicode::utf8ToUtf16(wanted))) {
            err << "exampledoc list: warning: no help folder \"" << wanted << "\"\n";
        }
    }
    const bool filtersItems = options.kind || !options.operands.empty();
    for (auto folder = catalogues.begin(); folder != catalogues.end();) {
        auto& items = folder->second.items;
        for (auto entry = items.begin(); entry != items.end();) {
            std::erase_if(entry->second, [&](const example::docparser::ExampleItem& item) {
                return options.kind &&
                       example::docparser::ExampleType::enumToString(item.getExampleType()) != *options.kind;
            });
            const bool keep =
                !entry->second.empty() && matchesAny(options.operands, utf16ToUtf8(entry->first));
            entry = keep ? std::next(entry) : items.erase(entry);
        }
        const std::string name = utf16ToUtf8(folder->first);
        const bool wanted =
            options.folders.empty() ||
            std::find(options.folders.begin(), options.folders.end(), name) != options.folders.end();
        folder = wanted && !(filtersItems && items.empty()) ? std::next(folder) : catalogues.erase(folder);
    }
}

// Names each id glob that no listed example matches; one that names a folder is most likely a
// tree meant for --root.
void warnUnmatched(const example::docparser::ExampleCatalogues& catalogues, const Options& options,
                   std::ostream& err) {
    for (const std::string& glob : options.operands) {
        const bool matched = std::any_of(catalogues.begin(), catalogues.end(), [&](const auto& folder) {
            return std::any_of(
                folder.second.items.begin(), folder.second.items.end(),
                [&](const auto& entry) { return matchesAny({glob}, utf16ToUtf8(entry.first)); });
        });
        if (matched) {
            continue;
        }
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
    auto catalogues = example::docparser::DocExampleParser::getDocExampleFiles(root);
    const bool found = !catalogues.empty();
    filter(catalogues, options, err);
    warnUnmatched(catalogues, options, err);
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
    if (const std::size_t skipped = countSkipped(root); skipped > 0) {
        err << "exampledoc list: " << skipped
            << (skipped == 1 ? " file or package was" : " files or packages were")
            << " skipped; 'exampledoc check' tells why\n";
    }
    return 0;
}

} // namespace exampledoc
