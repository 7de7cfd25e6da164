#include "options.hpp"

#include <algorithm>
#include <filesystem>

#include "example/docparser/doc_example_parser.hpp"
#include "zwhost/settings.hpp"
#include "zwhost/unicode.hpp"

namespace exampledoc {

using zwhost::unicode::utf16ToUtf8;

bool isReadableLocale(const std::u16string& locale) {
    if (locale == u"en" || locale.starts_with(u"en_")) {
        return true;
    }
    const auto supported = zwhost::settings::supportedDocLocales();
    return std::find(supported.begin(), supported.end(), locale) != supported.end();
}

std::string supportedLocaleList() {
    std::string list;
    for (const auto& locale : zwhost::settings::supportedDocLocales()) {
        list += (list.empty() ? "" : ", ") + utf16ToUtf8(locale);
    }
    return list;
}

std::u16string applyOptions(const Options& options) {
    using example::docparser::DocExampleParser;
    if (options.locale) {
        const std::u16string locale =
            zwhost::settings::normaliseLocale(zwhost::unicode::utf8ToUtf16(*options.locale));
        if (!isReadableLocale(locale)) {
            throw UsageError("locale \"" + *options.locale +
                             "\" has no catalogues; use English (en_US) or one of " + supportedLocaleList());
        }
        zwhost::settings::setCurrentLocale(locale);
    }
    if (options.root) {
        DocExampleParser::setExampleRoot(zwhost::unicode::utf8ToUtf16(*options.root));
    }
    std::u16string exampleRoot = *DocExampleParser::getExampleRoot();
    std::error_code error;
    const std::filesystem::path folder(utf16ToUtf8(exampleRoot));
    if (!std::filesystem::is_directory(folder, error)) {
        throw UsageError("no example catalogues at " + folder.string() +
                         " (a documentation root holds docCatalog/exampleapi)");
    }
    return exampleRoot;
}

} // namespace exampledoc
