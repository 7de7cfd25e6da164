#pragma once
// Checks the text of one catalogue as the library reads it, and names every problem found in it
// with its place.

#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "check_report.hpp"

namespace exampledoc {

/** What the check of one catalogue knows of the rest of the tree. */
struct CatalogueContext {
    std::string file;                                // the name findings carry
    std::u16string locale;                           // the file's locale; empty for an English catalogue
    std::vector<std::u16string> docLocales;          // the supported documentation locales
    std::optional<std::u16string> partnerHelpFolder; // a localised file's: its English partner's
    // For a help folder, the ids of its English catalogues read so far, or null for none.
    std::function<const std::set<std::u16string>*(const std::u16string&)> englishIds;
    // For a help folder, the English catalogue read first for it, or null for none.
    std::function<const std::string*(const std::u16string&)> firstEnglish;
    // The documentation root whose thumbnails a read catalogue's examples are held against.
    std::filesystem::path docRoot;
};

/** What is kept of a catalogue once it is checked: enough for the checks across files. */
struct CatalogueFacts {
    bool read = false; // the library reads it
    std::u16string helpFolder;
    std::vector<std::u16string> ids;
    std::size_t examples = 0;
};

/** Parses `text` with the library's parser and appends to `findings` every error that makes the
    library skip it and every warning about what it reads. */
CatalogueFacts checkCatalogue(const std::string& text, const CatalogueContext& context,
                              std::vector<Finding>& findings);

} // namespace exampledoc
