#include "options.hpp"

#include <filesystem>
#include <regex>

#include "example/docparser/doc_example_parser.hpp"
#include "zwhost/settings.hpp"
#include "zwhost/unicode.hpp"

namespace exampledoc {

Options parseOptions(const std::vector<std::string>& args, bool allowJson) {
    Options options;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        const auto value = [&]() -> std::string {
            if (i + 1 >= args.size()) {
                throw UsageError("option " + arg + " needs a value");
            }
            return args[++i];
        };
        if (arg == "--help" || arg == "-h") {
            options.help = true;
        } else if (arg == "--root") {
            options.root = value();
        } else if (arg == "--locale") {
            options.locale = value();
        } else if (arg == "--json" && allowJson) {
            options.json = true;
        } else if (!arg.empty() && arg[0] == '-') {
            throw UsageError("unknown option " + arg);
        } else {
            options.operands.push_back(arg);
        }
    }
    return options;
}

std::u16string applyOptions(const Options& options) {
    using example::docparser::DocExampleParser;
    if (options.locale) {
        static const std::regex localePattern("[a-z]{2,3}_[A-Z]{2}");
        if (!std::regex_match(*options.locale, localePattern)) {
            throw UsageError("locale \"" + *options.locale + "\" is not of the form ll_CC, such as ja_JP");
        }
        zwhost::settings::setCurrentLocale(zwhost::unicode::utf8ToUtf16(*options.locale));
    }
    if (options.root) {
        DocExampleParser::setExampleRoot(zwhost::unicode::utf8ToUtf16(*options.root));
    }
    const std::u16string exampleRoot = *DocExampleParser::getExampleRoot();
    std::error_code error;
    const std::filesystem::path folder(zwhost::unicode::utf16ToUtf8(exampleRoot));
    if (!std::filesystem::is_directory(folder, error)) {
        throw UsageError("no example catalogues at " + folder.string() +
                         " (a documentation root holds docCatalog/exampleapi)");
    }
    return exampleRoot;
}

} // namespace exampledoc
