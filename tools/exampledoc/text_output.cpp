#include "text_output.hpp"

#include <cstdint>

namespace exampledoc {
namespace {

void appendCodePoint(std::string& out, std::uint32_t code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (code >> 18));
        out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

void printList(std::ostream& out, const char* label, const std::vector<std::u16string>& values) {
    out << "    " << label << ':';
    if (values.empty()) {
        out << " (none)";
    }
    for (const auto& value : values) {
        out << "\n      - " << toUtf8(value);
    }
    out << '\n';
}

} // namespace

std::string toUtf8(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::uint32_t code = text[i];
        if (code >= 0xD800 && code <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] <= 0xDFFF) {
            code = 0x10000 + ((code - 0xD800) << 10) + (text[i + 1] - 0xDC00);
            ++i;
        } else if (code >= 0xD800 && code <= 0xDFFF) {
            code = 0xFFFD;
        }
        appendCodePoint(out, code);
    }
    return out;
}

void printCatalogues(std::ostream& out, const example::docparser::ExampleCatalogues& catalogues) {
    using example::docparser::ExampleType;
    for (const auto& [helpFolder, catalogue] : catalogues) {
        const auto& header = catalogue.header;
        out << "Help folder \"" << toUtf8(helpFolder) << "\" (product " << toUtf8(header.getProduct())
            << ' ' << toUtf8(header.getVersion()) << ", locale " << toUtf8(header.getLocale()) << ")\n";
        for (const auto& [id, items] : catalogue.items) {
            for (const auto& item : items) {
                out << "  " << toUtf8(id) << '\n'
                    << "    kind: " << ExampleType::enumToString(item.getExampleType()) << '\n'
                    << "    title: " << toUtf8(item.getTitle()) << '\n'
                    << "    description: " << toUtf8(item.getDescription()) << '\n'
                    << "    thumbnail: " << toUtf8(item.getThumbnail()) << '\n'
                    << "    open: " << toUtf8(item.getOpenCommand()) << '\n';
                printList(out, "relative paths", item.getRelativePaths());
                printList(out, "supporting files", item.getSupportingFiles());
                out << "    links:";
                if (item.getDocIDLinks().empty()) {
                    out << " (none)";
                }
                for (const auto& link : item.getDocIDLinks()) {
                    out << "\n      - " << toUtf8(link.getDocID()) << " -> " << toUtf8(link.getTarget());
                }
                out << '\n';
            }
        }
    }
}

} // namespace exampledoc
