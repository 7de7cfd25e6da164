#include <boost/json/serialize.hpp>

#include "commands.hpp"
#include "json_output.hpp"
#include "text_output.hpp"
#include "tree_check.hpp"
#include "zwhost/settings.hpp"
#include "zwhost/unicode.hpp"

namespace exampledoc {

int listCommand(const Options& options, std::ostream& out, std::ostream& err) {
    const std::u16string root = applyOptions(options);
    const auto catalogues = example::docparser::DocExampleParser::getDocExampleFiles(root);
    if (options.json) {
        out << boost::json::serialize(cataloguesToJson(catalogues)) << '\n';
        return 0;
    }
    out << "Examples under " << zwhost::unicode::utf16ToUtf8(root) << " for locale "
        << zwhost::unicode::utf16ToUtf8(zwhost::settings::currentLocale()) << "\n\n";
    printListing(out, catalogues);
    if (const std::size_t skipped = countSkipped(root); skipped > 0) {
        err << "exampledoc list: " << skipped
            << (skipped == 1 ? " file or package was" : " files or packages were")
            << " skipped; 'exampledoc check' tells why\n";
    }
    return 0;
}

} // namespace exampledoc
