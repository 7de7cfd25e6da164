#include "text_output.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include <fmt/color.h>
#include <fmt/ostream.h>

#include "zwhost/unicode.hpp"

namespace exampledoc {
namespace {

using CodeRange = std::pair<char32_t, char32_t>;

// East Asian Wide and Fullwidth blocks.
constexpr std::array<CodeRange, 17> kWide = {{
    {0x1100, 0x115F},
    {0x231A, 0x231B},
    {0x2E80, 0x303E},
    {0x3041, 0x33FF},
    {0x3400, 0x4DBF},
    {0x4E00, 0x9FFF},
    {0xA000, 0xA4CF},
    {0xA960, 0xA97F},
    {0xAC00, 0xD7A3},
    {0xF900, 0xFAFF},
    {0xFE10, 0xFE19},
    {0xFE30, 0xFE6F},
    {0xFF00, 0xFF60},
    {0xFFE0, 0xFFE6},
    {0x1F300, 0x1F64F},
    {0x1F900, 0x1F9FF},
    {0x20000, 0x3FFFD},
}};

// Combining marks, zero-width spaces and joiners, variation selectors.
constexpr std::array<CodeRange, 8> kZeroWidth = {{
    {0x0300, 0x036F},
    {0x0483, 0x0489},
    {0x1AB0, 0x1AFF},
    {0x1DC0, 0x1DFF},
    {0x200B, 0x200F},
    {0x20D0, 0x20FF},
    {0xFE00, 0xFE0F},
    {0xFE20, 0xFE2F},
}};

bool inRanges(char32_t c, const auto& ranges) {
    return std::any_of(ranges.begin(), ranges.end(),
                       [c](const CodeRange& range) { return c >= range.first && c <= range.second; });
}

std::string paint(std::string_view text, fmt::text_style style, bool color) {
    return color ? fmt::format(style, "{}", text) : std::string(text);
}

using zwhost::unicode::nextCodePoint;

} // namespace

std::size_t displayWidth(std::string_view text) {
    std::size_t width = 0;
    for (std::size_t i = 0; i < text.size();) {
        const char32_t c = nextCodePoint(text, i);
        width += inRanges(c, kZeroWidth) ? 0 : inRanges(c, kWide) ? 2 : 1;
    }
    return width;
}

std::string escapeControls(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t start = i;
        const char32_t c = nextCodePoint(text, i);
        if (c == '\n') {
            escaped += "\\n";
        } else if (c == '\t') {
            escaped += "\\t";
        } else if (c == '\r') {
            escaped += "\\r";
        } else if (c < 0x20 || c == 0x7F) {
            escaped += fmt::format("\\x{:02x}", static_cast<unsigned>(c));
        } else if (c >= 0x80 && c < 0xA0) {
            escaped += fmt::format("\\u{{{:x}}}", static_cast<unsigned>(c));
        } else {
            escaped.append(text.substr(start, i - start));
        }
    }
    return escaped;
}

std::string padToWidth(std::string_view text, std::size_t width) {
    std::string padded(text);
    padded.append(width - std::min(width, displayWidth(text)), ' ');
    return padded;
}

std::string paintKind(std::string_view text, example::docparser::ExampleType::Value kind, bool color) {
    using Kind = example::docparser::ExampleType;
    switch (kind) {
    case Kind::Live_Script:
        return paint(text, fmt::fg(fmt::terminal_color::green), color);
    case Kind::Script:
        return paint(text, fmt::fg(fmt::terminal_color::cyan), color);
    case Kind::Model:
        return paint(text, fmt::fg(fmt::terminal_color::blue), color);
    case Kind::Example:
        return paint(text, fmt::fg(fmt::terminal_color::magenta), color);
    case Kind::Chart:
        return paint(text, fmt::fg(fmt::terminal_color::yellow), color);
    case Kind::App:
        return paint(text, fmt::fg(fmt::terminal_color::bright_blue), color);
    default:
        return paint(text, fmt::emphasis::faint, color);
    }
}

void printListing(std::ostream& out, const example::docparser::ExampleCatalogues& catalogues, bool color) {
    using example::docparser::ExampleType;
    using zwhost::unicode::utf16ToUtf8;
    constexpr std::size_t kKindWidth = 11;
    if (catalogues.empty()) {
        fmt::print(out, "No example catalogues found.\n");
        return;
    }
    for (const auto& [helpFolder, catalogue] : catalogues) {
        std::size_t count = 0;
        std::size_t idWidth = 0;
        for (const auto& [id, items] : catalogue.items) {
            count += items.size();
            idWidth = std::max(idWidth, displayWidth(escapeControls(utf16ToUtf8(id))));
        }
        const auto& header = catalogue.header;
        fmt::print(out, "{}  ({} {}, {}, {} example{})\n", escapeControls(utf16ToUtf8(helpFolder)),
                   escapeControls(utf16ToUtf8(header.getProduct())),
                   escapeControls(utf16ToUtf8(header.getVersion())),
                   escapeControls(utf16ToUtf8(header.getLocale())), count, count == 1 ? "" : "s");
        for (const auto& [id, items] : catalogue.items) {
            const std::string shownId = padToWidth(escapeControls(utf16ToUtf8(id)), idWidth);
            for (const auto& item : items) {
                const std::string kind = ExampleType::enumToString(item.getExampleType());
                fmt::print(out, "  {}  {}  {}\n  {:{}}> {}\n", shownId,
                           paintKind(padToWidth(kind, kKindWidth), item.getExampleType(), color),
                           escapeControls(utf16ToUtf8(item.getTitle())), "", idWidth + 2 + kKindWidth + 2,
                           escapeControls(utf16ToUtf8(item.getOpenCommand())));
            }
        }
        fmt::print(out, "\n");
    }
}

} // namespace exampledoc
