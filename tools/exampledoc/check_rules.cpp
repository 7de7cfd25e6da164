#include "check_rules.hpp"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace exampledoc {

const std::vector<CheckRule>& checkRules() {
    static const std::vector<CheckRule> rules = {
        {"unreadable", Severity::Error,
         "The file or package entry cannot be read, or exceeds the read limit."},
        {"unsupported-compression", Severity::Error,
         "The package entry is compressed by a method the package reader does not support."},
        {"bad-package", Severity::Error, "The package cannot be opened or listed; none of it is read."},
        {"byte-order-mark", Severity::Error, "The text begins with a byte order mark."},
        {"not-utf8", Severity::Error, "The text is not valid UTF-8."},
        {"json-syntax", Severity::Error, "The text is not valid JSON."},
        {"too-deep", Severity::Error, "Arrays and objects are nested deeper than 32."},
        {"missing-member", Severity::Error, "A member the catalogue needs is absent."},
        {"wrong-type", Severity::Error, "A value is of the wrong JSON type."},
        {"bad-catalogue", Severity::Error, "The text is refused as a catalogue for another reason."},
        {"duplicate-id", Severity::Warning, "Two examples of one catalogue have the same id."},
        {"unknown-kind", Severity::Warning, "An exampleType that is not one of the kinds; read as Unknown."},
        {"empty-field", Severity::Warning, "A title, name or component that is empty or blank."},
        {"orphan-id", Severity::Warning, "A localised example whose id the English catalogue lacks."},
        {"help-folder-mismatch", Severity::Warning,
         "A localised catalogue names another help folder than its English catalogue."},
        {"locale-mismatch", Severity::Warning,
         "The header's locale disagrees with the file's locale suffix."},
        {"duplicate-catalogue", Severity::Warning,
         "A second English catalogue of one help folder; the first one read wins."},
        {"left-out", Severity::Warning, "A path that the walk over the tree passes over."},
        {"duplicate-entry", Severity::Warning,
         "A package entry that the package leaves out, such as a second "
         "entry of one name."},
        {"no-catalogue", Severity::Note, "A package with no catalogue read under the checked locales."},
        {"missing-thumbnail", Severity::Note,
         "A thumbnail that its help folder's documentation folder does not hold."},
    };
    return rules;
}

const CheckRule& checkRule(std::string_view name) {
    const auto& rules = checkRules();
    const auto found =
        std::find_if(rules.begin(), rules.end(), [&](const CheckRule& rule) { return rule.name == name; });
    if (found == rules.end()) {
        throw std::out_of_range("no check rule " + std::string(name));
    }
    return *found;
}

} // namespace exampledoc
