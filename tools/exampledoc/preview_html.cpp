#include "preview_html.hpp"

#include <algorithm>
#include <cctype>

#include "zwhost/unicode.hpp"

namespace exampledoc {
namespace {

using example::docparser::ExampleType;
using zwhost::unicode::utf16ToUtf8;

bool isMarkup(char c) {
    return c == '&' || c == '<' || c == '>' || c == '"' || c == '\'';
}

std::string escaped(const std::u16string& text) {
    std::string result;
    appendEscaped(result, text);
    return result;
}

// Nothing loads from elsewhere and no script runs, whatever a catalogue holds.
constexpr std::string_view kHead =
    R"(<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; img-src 'self' file: data:; style-src 'unsafe-inline'; base-uri 'none'; form-action 'none'">
<meta name="referrer" content="no-referrer">
<meta name="viewport" content="width=device-width, initial-scale=1">
<style>
:root{--ink:#1d2330;--muted:#5b6475;--line:#dde1e8;--page:#f4f5f8;--card:#fff;--accent:#2457c5;--warn:#a35a00;--warnbg:#fff4e0;--err:#b3261e;--note:#3a6e3a}
*{box-sizing:border-box}
body{margin:0;font:15px/1.5 system-ui,-apple-system,"Segoe UI","Noto Sans","Noto Sans CJK JP","Noto Sans CJK SC","Noto Sans CJK KR",sans-serif;color:var(--ink);background:var(--page)}
header.top{background:#1d2330;color:#fff;padding:18px clamp(14px,4vw,40px)}
header.top h1{margin:0 0 4px;font-size:1.45rem;font-weight:650}
header.top p{margin:0;color:#c9cfdb}
nav{display:flex;flex-wrap:wrap;gap:6px;margin-top:12px}
nav a{color:#fff;text-decoration:none;padding:3px 10px;border:1px solid #4a5468;border-radius:999px;font-size:.85rem}
nav a[aria-current]{background:#fff;color:#1d2330}
main{padding:8px clamp(14px,4vw,40px) 40px;max-width:1500px;margin:0 auto}
section.folder{margin-top:26px}
section.folder>h2{margin:0;font-size:1.2rem}
.catalogue{margin:2px 0 12px;color:var(--muted);font-size:.85rem}
.cards{display:grid;grid-template-columns:repeat(auto-fill,minmax(min(100%,270px),1fr));gap:16px}
.card{background:var(--card);border:1px solid var(--line);border-radius:10px;overflow:hidden;display:flex;flex-direction:column;box-shadow:0 1px 2px rgba(20,30,50,.06)}
.card[data-untranslated]{border:2px dashed #d99a2b;background:#fffcf5}
.thumb{aspect-ratio:16/10;background:#e9ecf2;display:flex;align-items:center;justify-content:center;flex-direction:column;gap:4px;color:var(--muted);font-size:.8rem;text-align:center;padding:8px;overflow:hidden}
.thumb img{width:100%;height:100%;object-fit:cover;display:block}
.thumb:has(img){padding:0}
.thumb.missing{background:repeating-linear-gradient(45deg,#eef0f4,#eef0f4 10px,#e4e7ee 10px,#e4e7ee 20px)}
.thumb.missing code{word-break:break-all}
.body{padding:12px 14px 14px;display:flex;flex-direction:column;gap:6px;flex:1}
.tags{display:flex;flex-wrap:wrap;gap:6px;margin:0}
.kind,.flag{font-size:.72rem;font-weight:600;letter-spacing:.02em;padding:1px 8px;border-radius:999px}
.kind{background:#e6edfb;color:var(--accent)}
.flag{background:var(--warnbg);color:var(--warn);border:1px solid #efc67a}
.card h3{margin:0;font-size:1.02rem;line-height:1.35;overflow-wrap:anywhere}
.id{margin:0;color:var(--muted);font-size:.78rem;font-family:ui-monospace,"DejaVu Sans Mono",monospace;overflow-wrap:anywhere}
.desc{margin:0;overflow-wrap:anywhere;white-space:pre-line}
dl{margin:4px 0 0;display:grid;grid-template-columns:auto 1fr;gap:3px 10px;font-size:.8rem}
dt{color:var(--muted)}
dd{margin:0;min-width:0}
dd ul{margin:0;padding:0;list-style:none}
code{font-family:ui-monospace,"DejaVu Sans Mono",monospace;font-size:.92em;overflow-wrap:anywhere}
.findings{margin:0 0 12px;padding:8px 12px;list-style:none;background:#fff;border:1px solid var(--line);border-left:4px solid var(--warn);border-radius:6px;font-size:.82rem}
.findings li{margin:2px 0;overflow-wrap:anywhere}
.sev{font-weight:700;text-transform:uppercase;font-size:.7rem;margin-right:6px}
.sev-error{color:var(--err)}.sev-warning{color:var(--warn)}.sev-note{color:var(--note)}
.empty{color:var(--muted)}
table{border-collapse:collapse;background:#fff;border:1px solid var(--line);margin-top:18px;width:100%}
th,td{border:1px solid var(--line);padding:8px 10px;text-align:left;vertical-align:top;font-size:.88rem}
th{background:#eef0f4}
td a{color:var(--accent);font-weight:600}
.meter{height:6px;background:#eef0f4;border-radius:3px;margin-top:4px;overflow:hidden}
.meter span{display:block;height:100%;background:#3c8d5a}
.scroll{overflow-x:auto}
@media (max-width:520px){body{font-size:14px}header.top h1{font-size:1.2rem}}
</style>
)";

std::string kindLabel(ExampleType::Value kind) {
    std::string name = ExampleType::enumToString(kind);
    std::replace(name.begin(), name.end(), '_', ' ');
    return name;
}

void writeStart(std::ostream& out, std::string_view language, const std::string& title) {
    out << "<!DOCTYPE html>\n<html lang=\"" << escapeHtml(language) << "\">\n<head>\n"
        << kHead << "<title>" << escapeHtml(title) << "</title>\n</head>\n<body>\n";
}

void writeNavigation(std::ostream& out, const std::vector<std::string>& locales, std::string_view current) {
    out << "<nav><a href=\"index.html\"" << (current.empty() ? " aria-current=\"page\"" : "")
        << ">Overview</a>";
    for (const std::string& locale : locales) {
        out << "<a href=\"" << percentEncodePath(locale) << ".html\""
            << (locale == current ? " aria-current=\"page\"" : "") << ">" << escapeHtml(locale) << "</a>";
    }
    out << "</nav>\n";
}

void writeFindings(std::ostream& out, const std::vector<const Finding*>& findings) {
    if (findings.empty()) {
        return;
    }
    out << "<ul class=\"findings\">";
    for (const Finding* finding : findings) {
        const std::string severity(severityName(finding->severity));
        std::string place = finding->file;
        if (finding->line != 0) {
            place += ':' + std::to_string(finding->line) + ':' + std::to_string(finding->column);
        }
        out << "<li><span class=\"sev sev-" << severity << "\">" << severity << "</span><code>"
            << escapeHtml(place) << "</code> " << escapeHtml(finding->message) << " <code>["
            << escapeHtml(finding->rule) << "]</code></li>";
    }
    out << "</ul>\n";
}

// `text` escaped, between `before` and `after`.
template <class Text>
void appendBetween(std::string& out, std::string_view before, const Text& text, std::string_view after) {
    out += before;
    appendEscaped(out, text);
    out += after;
}

void addList(std::string& out, std::string_view label, const std::vector<std::u16string>& values) {
    if (values.empty()) {
        return;
    }
    out += "<dt>";
    out += label;
    out += "</dt><dd><ul>";
    for (const std::u16string& value : values) {
        appendBetween(out, "<li><code>", value, "</code></li>");
    }
    out += "</ul></dd>";
}

// Writes the cards with the marks of those the locale lacks.
void writeCards(std::ostream& out, const PreviewSection& section) {
    std::size_t written = 0;
    const auto upTo = [&](std::size_t at) {
        out.write(section.html.data() + written, static_cast<std::streamsize>(at - written));
        written = at;
    };
    for (const PreviewSection::Card& card : section.cards) {
        if (card.untranslated) {
            upTo(card.attributeAt);
            out << " data-untranslated";
            upTo(card.flagAt);
            out << "<span class=\"flag\">English only: not translated</span>";
        }
    }
    upTo(section.html.size());
}

std::string sectionAnchor(const std::u16string& helpFolder) {
    return "folder-" + percentEncodePath(utf16ToUtf8(helpFolder));
}

std::string plural(std::size_t count, std::string_view one, std::string_view many) {
    return std::to_string(count) + ' ' + std::string(count == 1 ? one : many);
}

} // namespace

std::string escapeHtml(std::string_view text) {
    std::string result;
    appendEscaped(result, text);
    return result;
}

void appendEscaped(std::string& out, std::string_view text) {
    while (!text.empty()) {
        const auto special = std::find_if(text.begin(), text.end(), isMarkup);
        const auto plain = static_cast<std::size_t>(special - text.begin());
        out.append(text.data(), plain);
        if (plain == text.size()) {
            break;
        }
        switch (text[plain]) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        default:
            out += "&#39;";
        }
        text.remove_prefix(plain + 1);
    }
}

void appendEscaped(std::string& out, std::u16string_view text) {
    const std::size_t start = out.size();
    zwhost::unicode::appendUtf8(out, text);
    const auto special = std::find_if(out.begin() + static_cast<std::ptrdiff_t>(start), out.end(), isMarkup);
    if (special != out.end()) {
        // Markup in a catalogue is rare: only then is the converted text escaped over again.
        const std::size_t at = static_cast<std::size_t>(special - out.begin());
        const std::string tail = out.substr(at);
        out.resize(at);
        appendEscaped(out, std::string_view(tail));
    }
}

std::string percentEncodePath(std::string_view path) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string result;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) != 0 || c == '-' || c == '.' || c == '_' || c == '~' || c == '/') {
            result += c;
        } else {
            result += '%';
            result += kHex[byte >> 4];
            result += kHex[byte & 0xf];
        }
    }
    return result;
}

std::string htmlLanguage(std::string_view locale) {
    const std::size_t separator = locale.find('_');
    const std::string_view language = locale.substr(0, separator);
    // Chinese is written in two scripts: the region tells which.
    if (language == "zh" && separator != std::string_view::npos) {
        return "zh-" + std::string(locale.substr(separator + 1, 2));
    }
    return std::string(language);
}

void PreviewCounts::add(const PreviewCounts& other) {
    examples += other.examples;
    untranslated += other.untranslated;
    missingThumbnails += other.missingThumbnails;
    findings += other.findings;
}

PreviewSection startSection(const std::u16string& helpFolder, const reference::property::HeaderInfo& header) {
    PreviewSection section;
    section.helpFolder = helpFolder;
    std::string& out = section.catalogue;
    appendEscaped(out, header.getProduct());
    out += ' ';
    appendEscaped(out, header.getVersion());
    out += " · locale ";
    appendEscaped(out, header.getLocale());
    return section;
}

void addCard(PreviewSection& section, const std::u16string& id, const example::docparser::ExampleItem& item,
             std::string_view thumbnailUrl) {
    std::string& out = section.html;
    PreviewSection::Card& card = section.cards.emplace_back();
    card.id = id;
    appendBetween(out, R"(<article class="card" data-example-id=")", id, "\"");
    card.attributeAt = out.size();
    out += '>';
    if (thumbnailUrl.empty()) {
        ++section.missingThumbnails;
        out += "<div class=\"thumb missing\" data-missing-thumbnail><span>No thumbnail</span>";
        if (!item.getThumbnail().empty()) {
            appendBetween(out, "<code>", item.getThumbnail(), "</code>");
        }
        out += "</div>";
    } else {
        appendBetween(out, R"(<div class="thumb"><img src=")", thumbnailUrl, R"(" alt=""></div>)");
    }
    appendBetween(out, R"(<div class="body"><p class="tags"><span class="kind">)",
                  kindLabel(item.getExampleType()), "</span>");
    card.flagAt = out.size();
    appendBetween(out, "</p><h3>", item.getTitle(), "</h3>");
    appendBetween(out, "<p class=\"id\">", id, "</p>");
    if (!item.getDescription().empty()) {
        appendBetween(out, "<p class=\"desc\">", item.getDescription(), "</p>");
    }
    out += "<dl>";
    if (!item.getOpenCommand().empty()) {
        appendBetween(out, "<dt>Open</dt><dd><code>", item.getOpenCommand(), "</code></dd>");
    }
    addList(out, "Files", item.getRelativePaths());
    addList(out, "Supporting", item.getSupportingFiles());
    if (!item.getDocIDLinks().empty()) {
        // Shown as text: the documentation they name is not part of the preview.
        out += "<dt>Links</dt><dd><ul>";
        for (const auto& link : item.getDocIDLinks()) {
            appendBetween(out, "<li>", link.getTarget(), " ");
            appendBetween(out, "<code>", link.getDocID(), "</code></li>");
        }
        out += "</ul></dd>";
    }
    out += "</dl></div></article>\n";
}

PreviewCounts countsOf(const PreviewSection& section) {
    return {section.cards.size(), section.untranslated, section.missingThumbnails, section.findings.size()};
}

void writePreviewPage(std::ostream& out, const PreviewPage& page) {
    PreviewCounts total;
    for (const PreviewSection& section : page.sections) {
        total.add(countsOf(section));
    }
    writeStart(out, htmlLanguage(page.locale), "Examples: " + page.locale);
    out << "<header class=\"top\"><h1>Examples as readers of " << escapeHtml(page.locale)
        << " see them</h1><p>" << plural(total.examples, "example", "examples") << " in "
        << plural(page.sections.size(), "help folder", "help folders")
        << "; <span data-count=\"untranslated\">" << plural(total.untranslated, "example", "examples")
        << " shown in English</span>; "
        << "<span data-count=\"missing-thumbnails\">"
        << plural(total.missingThumbnails, "thumbnail", "thumbnails") << " missing</span></p>\n";
    writeNavigation(out, page.locales, page.locale);
    out << "</header>\n<main>\n";
    if (!page.otherFindings.empty()) {
        out << "<section class=\"folder\"><h2>Files not read into any help folder</h2>\n";
        writeFindings(out, page.otherFindings);
        out << "</section>\n";
    }
    if (page.sections.empty()) {
        out << "<p class=\"empty\">No examples.</p>\n";
    }
    for (const PreviewSection& section : page.sections) {
        out << R"(<section class="folder" id=")" << sectionAnchor(section.helpFolder) << R"("><h2>)"
            << escaped(section.helpFolder) << "</h2><p class=\"catalogue\">" << section.catalogue << " · "
            << plural(section.cards.size(), "example", "examples");
        if (section.untranslated != 0) {
            out << " · " << section.untranslated << " in English";
        }
        if (section.missingThumbnails != 0) {
            out << " · " << plural(section.missingThumbnails, "thumbnail", "thumbnails") << " missing";
        }
        out << "</p>\n";
        writeFindings(out, section.findings);
        out << "<div class=\"cards\">\n";
        writeCards(out, section);
        out << "</div></section>\n";
    }
    out << "</main>\n</body>\n</html>\n";
}

void writePreviewIndex(std::ostream& out, const PreviewIndex& index) {
    writeStart(out, "en", "Example gallery preview");
    out << "<header class=\"top\"><h1>Example gallery preview</h1><p>" << escapeHtml(index.root) << "</p>\n";
    writeNavigation(out, index.locales, "");
    out << "</header>\n<main>\n<div class=\"scroll\"><table><thead><tr><th>Help folder</th>";
    for (const std::string& locale : index.locales) {
        out << "<th>" << escapeHtml(locale) << "</th>";
    }
    out << "</tr></thead><tbody>\n";
    std::map<std::string, PreviewCounts> totals;
    const auto cell = [&](const std::string& locale, const PreviewCounts& counts, const std::string& anchor) {
        const std::size_t translated = counts.examples - counts.untranslated;
        const std::size_t percent = counts.examples == 0 ? 100 : translated * 100 / counts.examples;
        out << "<td><a href=\"" << percentEncodePath(locale) << ".html" << anchor << "\">"
            << plural(counts.examples, "example", "examples") << "</a><br>";
        if (locale == index.english) {
            out << "the English catalogues<br>";
        } else {
            out << translated << " translated (" << percent << R"(%)<div class="meter"><span style="width:)"
                << percent << R"(%"></span></div>)";
        }
        if (counts.missingThumbnails != 0) {
            out << plural(counts.missingThumbnails, "thumbnail", "thumbnails") << " missing<br>";
        }
        if (counts.findings != 0) {
            out << plural(counts.findings, "finding", "findings");
        }
        out << "</td>";
    };
    for (const auto& [helpFolder, locales] : index.folders) {
        out << "<tr><th>" << escaped(helpFolder) << "</th>";
        for (const std::string& locale : index.locales) {
            const auto found = locales.find(locale);
            const PreviewCounts counts = found == locales.end() ? PreviewCounts{} : found->second;
            totals[locale].add(counts);
            cell(locale, counts, '#' + sectionAnchor(helpFolder));
        }
        out << "</tr>\n";
    }
    out << "<tr><th>All</th>";
    for (const std::string& locale : index.locales) {
        cell(locale, totals[locale], "");
    }
    out << "</tr>\n</tbody></table></div>\n</main>\n</body>\n</html>\n";
}

} // namespace exampledoc
