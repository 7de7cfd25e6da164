#include "text_output.hpp"

#include <algorithm>
#include <iomanip>

#include "zwhost/unicode.hpp"

namespace exampledoc {

void printListing(std::ostream& out, const example::docparser::ExampleCatalogues& catalogues) {
    using example::docparser::ExampleType;
    using zwhost::unicode::utf16ToUtf8;
    if (catalogues.empty()) {
        out << "No example catalogues found.\n";
        return;
    }
    for (const auto& [helpFolder, catalogue] : catalogues) {
        std::size_t count = 0;
        std::size_t idWidth = 0;
        for (const auto& [id, items] : catalogue.items) {
            count += items.size();
            idWidth = std::max(idWidth, utf16ToUtf8(id).size());
        }
        const auto& header = catalogue.header;
        out << utf16ToUtf8(helpFolder) << "  (" << utf16ToUtf8(header.getProduct()) << ' '
            << utf16ToUtf8(header.getVersion()) << ", " << utf16ToUtf8(header.getLocale()) << ", " << count
            << (count == 1 ? " example)\n" : " examples)\n");
        for (const auto& [id, items] : catalogue.items) {
            for (const auto& item : items) {
                out << "  " << std::left << std::setw(static_cast<int>(idWidth)) << utf16ToUtf8(id) << "  "
                    << std::setw(11) << ExampleType::enumToString(item.getExampleType()) << "  "
                    << utf16ToUtf8(item.getTitle()) << '\n'
                    << "  " << std::string(idWidth + 2, ' ') << std::string(13, ' ') << "> "
                    << utf16ToUtf8(item.getOpenCommand()) << '\n';
            }
        }
        out << '\n';
    }
}

} // namespace exampledoc
