#include "catalogue_check.hpp"

#include <algorithm>
#include <cctype>
#include <map>

#include <boost/json/monotonic_resource.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/stream_parser.hpp>

#include "catalogue/catalogue_parser.hpp"
#include "check_rules.hpp"
#include "example_kinds.hpp"
#include "json_position.hpp"
#include "reference/docparser/catalogue_format_error.hpp"
#include "thumbnail_check.hpp"
#include "zwhost/unicode.hpp"

namespace exampledoc {
namespace {

using example::docparser::ExampleType;
using example::docparser::detail::parseExampleCatalogue;
using zwhost::unicode::utf16ToUtf8;

constexpr std::size_t kNone = std::string::npos;

// A finding before it has its place: where it lies as an offset or as a JSON pointer.
struct Pending {
    Finding finding;
    std::size_t offset = kNone;
};

std::string inQuotes(std::string_view text) {
    return '"' + std::string(text) + '"';
}

// The library's words for a JSON kind, as people say them.
std::string kindPhrase(std::string_view kind) {
    static const std::map<std::string_view, std::string_view> phrases = {
        {"string", "a string"}, {"int64", "a number"},     {"uint64", "a number"},
        {"double", "a number"}, {"bool", "true or false"}, {"null", "null"},
        {"array", "an array"},  {"object", "an object"},   {"nothing", "nothing"}};
    const auto found = phrases.find(kind);
    return found == phrases.end() ? std::string(kind) : std::string(found->second);
}

// An exception's text without the source location Boost.JSON appends to it.
std::string failureText(const std::exception& error) {
    std::string text = error.what();
    if (const std::size_t location = text.find(" [boost."); location != kNone) {
        text.resize(location);
    }
    return text;
}

// The steps of a JSON pointer, unescaped.
std::vector<std::string> pointerSteps(std::string_view pointer) {
    std::vector<std::string> steps;
    while (!pointer.empty()) {
        pointer.remove_prefix(1);
        const std::size_t end = std::min(pointer.find('/'), pointer.size());
        std::string step;
        for (std::size_t i = 0; i < end; ++i) {
            if (pointer[i] == '~' && i + 1 < end) {
                step += pointer[++i] == '1' ? '/' : '~';
            } else {
                step += pointer[i];
            }
        }
        steps.push_back(std::move(step));
        pointer.remove_prefix(end);
    }
    return steps;
}

bool isIndex(const std::string& step) {
    return !step.empty() &&
           std::all_of(step.begin(), step.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// The steps below an entry as people read them: "relative_path"[1] or "docid_links"[0]: "docid".
std::string stepsPhrase(const std::vector<std::string>& steps, std::size_t from) {
    std::string phrase;
    for (std::size_t i = from; i < steps.size(); ++i) {
        if (isIndex(steps[i]) && i > from) {
            phrase += "[" + steps[i] + "]";
        } else {
            phrase += (phrase.empty() ? "" : ": ") + inQuotes(steps[i]);
        }
    }
    return phrase;
}

std::string_view expectedPhrase(reference::docparser::CatalogueFormatError::Expected expected) {
    using Expected = reference::docparser::CatalogueFormatError::Expected;
    return expected == Expected::Object ? "an object" : expected == Expected::Array ? "an array" : "a string";
}

class CatalogueCheck {
public:
    CatalogueCheck(const std::string& text, const CatalogueContext& context)
        : text_(text), context_(context) {}

    CatalogueFacts run(std::vector<Finding>& findings) {
        CatalogueFacts facts;
        example::docparser::ExampleCatalogues result;
        try {
            result = parseExampleCatalogue(text_);
            facts.read = true;
            const auto& [helpFolder, catalogue] = *result.begin();
            facts.helpFolder = helpFolder;
            for (const auto& [id, items] : catalogue.items) {
                facts.ids.push_back(id);
                facts.examples += items.size();
            }
            checkRead(catalogue);
        } catch (const reference::docparser::CatalogueFormatError& error) {
            explainRefusal(error);
        } catch (const std::exception& error) {
            explainFailure(failureText(error));
        }
        place(findings);
        if (facts.read) {
            checkThumbnails(context_.docRoot, facts.helpFolder, result.begin()->second, context_.file,
                            findings);
        }
        return facts;
    }

private:
    void add(std::string_view rule, std::string pointer, std::string id, std::string message,
             std::size_t offset = kNone) {
        Finding finding;
        finding.severity = checkRule(rule).severity;
        finding.file = context_.file;
        finding.rule = rule;
        finding.jsonPath = std::move(pointer);
        finding.exampleId = std::move(id);
        finding.message = std::move(message);
        pending_.push_back({std::move(finding), offset});
    }

    // Gives each finding its line and column: from its offset, else from where its pointer begins.
    void place(std::vector<Finding>& findings) {
        std::vector<std::string> pointers;
        for (const Pending& item : pending_) {
            if (item.offset == kNone) {
                pointers.push_back(item.finding.jsonPath);
            }
        }
        const std::vector<std::size_t> offsets =
            pointers.empty() ? std::vector<std::size_t>{} : locateJsonPointers(text_, pointers);
        const LineIndex lines(text_);
        std::size_t next = 0;
        for (Pending& item : pending_) {
            const std::size_t offset = item.offset != kNone ? item.offset : offsets[next++];
            if (offset != kNone) {
                const TextPosition position = lines.at(offset);
                item.finding.line = position.line;
                item.finding.column = position.column;
            }
            findings.push_back(std::move(item.finding));
        }
    }

    // The escape of a surrogate (\\uD800 to \\uDFFF) that the parser stopped at or just past, or npos.
    std::size_t surrogateEscape(std::size_t offset) const {
        const std::size_t last = std::min(offset, text_.size());
        for (std::size_t at = last + 1; at-- > (last >= 12 ? last - 12 : 0);) {
            if (text_.compare(at, 3, "\\ud") == 0 || text_.compare(at, 3, "\\uD") == 0) {
                if (at + 6 <= text_.size() &&
                    std::string_view("89abcdefABCDEF").find(text_[at + 3]) != kNone) {
                    return at;
                }
            }
        }
        return kNone;
    }

    // Why the library's parser refused the text.
    void explainFailure(const std::string& complaint) {
        boost::json::stream_parser syntax;
        boost::json::error_code error;
        const std::size_t consumed = std::min(syntax.write(text_.data(), text_.size(), error), text_.size());
        if (!error) {
            syntax.finish(error);
        }
        if (error) {
            explainSyntax(error, consumed);
            return;
        }
        add("bad-catalogue", "", {}, complaint);
    }

    void explainSyntax(const boost::json::error_code& error, std::size_t offset) {
        if (std::string_view(text_).starts_with("\xEF\xBB\xBF")) {
            add("byte-order-mark", {}, {},
                "the text begins with a byte order mark; save it as UTF-8 without one", 0);
            return;
        }
        if (const std::size_t bad = zwhost::unicode::firstMalformedUtf8(text_);
            bad != kNone && bad <= offset) {
            static constexpr char kHex[] = "0123456789ABCDEF";
            const auto byte = static_cast<unsigned char>(text_[bad]);
            add("not-utf8", {}, {},
                std::string("the text is not UTF-8: byte 0x") + kHex[byte >> 4U] + kHex[byte & 0xFU] +
                    " begins no valid sequence; save the file as UTF-8",
                bad);
            return;
        }
        const std::size_t escape = surrogateEscape(offset);
        if (escape != kNone &&
            (error == boost::json::error::illegal_leading_surrogate ||
             error == boost::json::error::illegal_trailing_surrogate || escape + 6 == offset)) {
            add("json-syntax", {}, {},
                "'" + text_.substr(escape, 6) +
                    "' is a lone surrogate: a character past U+FFFF is written as a pair of escapes, "
                    "\\uD800 to \\uDBFF then \\uDC00 to \\uDFFF",
                escape);
            return;
        }
        if (error == boost::json::error::too_deep) {
            add("too-deep", {}, {}, "arrays and objects are nested deeper than 32", offset);
            return;
        }
        std::string message;
        if (offset >= text_.size()) {
            message = "the text ends before the JSON is complete";
        } else {
            const char c = text_[offset];
            const std::size_t before = text_.find_last_not_of(" \t\r\n", offset == 0 ? 0 : offset - 1);
            if (c == '/') {
                message = "comments are not allowed";
            } else if ((c == '}' || c == ']') && offset > 0 && before != kNone && text_[before] == ',') {
                message = std::string("a comma may not come before '") + c + "'";
                offset = before;
            } else {
                // The text is UTF-8 up to here and beyond, so the character is whole.
                const auto lead = static_cast<unsigned char>(c);
                const std::size_t length = lead < 0xC0U ? 1 : lead < 0xE0U ? 2 : lead < 0xF0U ? 3 : 4;
                message = "unexpected " + (lead < 0x20U ? std::string("control character")
                                                        : "'" + text_.substr(offset, length) + "'");
                if (error != boost::json::error::syntax) {
                    message += ": " + error.message();
                }
            }
        }
        add("json-syntax", {}, {}, message, offset);
    }

    static std::string entryId(const boost::json::value& entry) {
        const boost::json::object* object = entry.if_object();
        if (object == nullptr) {
            return {};
        }
        const boost::json::value* component = object->if_contains("component");
        const boost::json::value* name = object->if_contains("name");
        if (component == nullptr || name == nullptr || !component->is_string() || !name->is_string()) {
            return {};
        }
        return std::string(component->get_string()) + "/" + std::string(name->get_string());
    }

    static std::string entryLabel(std::size_t index, const std::string& id) {
        std::string label = "exampleItems[" + std::to_string(index) + "]";
        return id.empty() ? label : label + " (" + id + ")";
    }

    // Names the value the parser refused, from the place the refusal carries.
    void explainRefusal(const reference::docparser::CatalogueFormatError& refusal) {
        if (!refusal.placed()) {
            add("bad-catalogue", "", {}, failureText(refusal));
            return;
        }
        const std::string pointer(refusal.pointer());
        const std::vector<std::string> steps = pointerSteps(pointer);
        const bool missing = !refusal.found().has_value();
        std::string id;
        std::string subject;
        if (steps.size() >= 2 && steps[0] == "exampleItems" && isIndex(steps[1])) {
            const boost::json::value root = boost::json::parse(text_);
            const std::size_t index = std::stoul(steps[1]);
            id = entryId(root.at("exampleItems").at(index));
            subject = entryLabel(index, id);
            const std::string below = stepsPhrase(steps, 2);
            if (!below.empty() && !(missing && steps.size() == 3)) {
                subject += ": " + (missing ? stepsPhrase({steps.begin(), steps.end() - 1}, 2) : below);
            }
        } else if (steps.size() == 2 && steps[0] == "header") {
            subject = "header " + inQuotes(steps[1]);
        } else if (steps.empty()) {
            subject = "the catalogue";
        } else if (!missing) {
            subject = inQuotes(steps.back());
        }
        if (missing) {
            const std::string parent = pointer.substr(0, pointer.rfind('/'));
            add("missing-member", parent, id,
                (subject.empty() ? "the catalogue has no " + inQuotes(steps.back()) + " member"
                                 : subject + " has no " + inQuotes(steps.back())));
            return;
        }
        const std::string expected =
            steps.empty() ? "a JSON object" : std::string(expectedPhrase(refusal.expected()));
        add("wrong-type", pointer, id,
            subject + " must be " + expected + ", found " +
                kindPhrase(std::string_view(boost::json::to_string(*refusal.found()))));
    }

    // Warnings about a catalogue the library reads.
    void checkRead(const reference::docparser::DocResource<example::docparser::ExampleItem>& catalogue) {
        const auto& header = catalogue.header;
        const std::u16string& helpFolder = header.getHelpFolder();
        const bool english = context_.locale.empty();
        if (english && context_.firstEnglish) {
            if (const std::string* first = context_.firstEnglish(helpFolder)) {
                add("duplicate-catalogue", "/header/helpFolder", {},
                    "another English catalogue of help folder " + inQuotes(utf16ToUtf8(helpFolder)) + ", " +
                        *first + ", is read first: its header and its examples of the same ids win");
            }
        }
        const std::u16string& locale = header.getLocale();
        if (!locale.empty()) {
            const bool supported = std::find(context_.docLocales.begin(), context_.docLocales.end(),
                                             locale) != context_.docLocales.end();
            if (english ? supported : locale != context_.locale) {
                add("locale-mismatch", "/header/locale", {},
                    "the header says locale " + inQuotes(utf16ToUtf8(locale)) + " but the file name says " +
                        (english ? std::string("English") : utf16ToUtf8(context_.locale)));
            }
        }
        if (!english && context_.partnerHelpFolder && *context_.partnerHelpFolder != helpFolder) {
            add("help-folder-mismatch", "/header/helpFolder", {},
                "help folder " + inQuotes(utf16ToUtf8(helpFolder)) + " differs from " +
                    inQuotes(utf16ToUtf8(*context_.partnerHelpFolder)) +
                    " of its English catalogue: it is not merged with it");
        }
        const std::set<std::u16string>* englishIds =
            english || !context_.englishIds ? nullptr : context_.englishIds(helpFolder);
        bool suspect = false;
        for (const auto& [id, items] : catalogue.items) {
            suspect = suspect || items.size() > 1 || (englishIds != nullptr && englishIds->count(id) == 0);
            for (const auto& item : items) {
                suspect = suspect || item.getTitle().empty() || item.getName().empty() ||
                          item.getComponent().empty() || item.getExampleType() == ExampleType::Unknown;
            }
        }
        if (suspect) {
            checkEntries(catalogue, englishIds);
        }
    }

    // Finds the entries behind the suspicions: the k-th entry of an id in the text is the k-th
    // item the library keeps under that id.
    void checkEntries(const reference::docparser::DocResource<example::docparser::ExampleItem>& catalogue,
                      const std::set<std::u16string>* englishIds) {
        // Freed as a whole, as the library's parser frees its own value.
        boost::json::monotonic_resource memory;
        const boost::json::value root = boost::json::parse(text_, &memory);
        const boost::json::array& entries = root.at("exampleItems").as_array();
        struct Seen {
            std::size_t first; // the index of the first entry of the id
            std::size_t kept;  // how many of its items the entries so far were
        };
        std::map<std::u16string, Seen> seen;
        for (std::size_t index = 0; index < entries.size(); ++index) {
            const boost::json::object& entry = entries[index].as_object();
            const auto& component = entry.at("component").get_string();
            const auto& name = entry.at("name").get_string();
            const auto [at, unseen] =
                seen.try_emplace(zwhost::unicode::utf8ToUtf16({component.data(), component.size()}) + u'/' +
                                     zwhost::unicode::utf8ToUtf16({name.data(), name.size()}),
                                 Seen{index, 0});
            const std::u16string& id = at->first;
            const auto& item = catalogue.items.at(id).at(at->second.kept++);
            const boost::json::value* kind = entry.if_contains("exampleType");
            const bool unknownKind = item.getExampleType() == ExampleType::Unknown && kind != nullptr &&
                                     kind->get_string() != "Unknown";
            const bool orphan = englishIds != nullptr && englishIds->count(id) == 0;
            if (unseen && !unknownKind && !orphan && !item.getName().empty() &&
                !item.getComponent().empty() && !item.getTitle().empty()) {
                continue;
            }
            const std::string idText = utf16ToUtf8(id);
            const std::string pointer = "/exampleItems/" + std::to_string(index);
            const std::string label = entryLabel(index, idText);
            if (!unseen) {
                add("duplicate-id", pointer, idText,
                    label + ": exampleItems[" + std::to_string(at->second.first) +
                        "] has the same id; both are kept under it");
            }
            for (const auto& [field, value] :
                 {std::pair<std::string_view, const std::u16string*>{"name", &item.getName()},
                  {"component", &item.getComponent()},
                  {"title", &item.getTitle()}}) {
                if (value->empty()) {
                    add("empty-field", pointer + "/" + std::string(field), idText,
                        label + ": " + inQuotes(field) + " is empty" +
                            (field == "title" ? "" : "; the id becomes " + inQuotes(idText)));
                }
            }
            if (unknownKind) {
                add("unknown-kind", pointer + "/exampleType", idText,
                    label + ": " + inQuotes(std::string(kind->get_string())) +
                        " is not a kind; the example is read as Unknown" + suggestKind(kind->get_string()));
            }
            if (orphan) {
                add("orphan-id", pointer, idText,
                    label + ": no English example of this help folder has the id " + inQuotes(idText));
            }
        }
    }

    // "; did you mean ..." when the text is a kind but for case, blanks or underscores.
    static std::string suggestKind(std::string_view text) {
        const auto folded = [](std::string_view kind) {
            std::string result;
            for (const char c : kind) {
                if (c != ' ' && c != '_' && c != '-') {
                    result += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
                }
            }
            return result;
        };
        // "Unknown" is the kind of an example of no kind: it is never suggested.
        std::vector<std::string_view> kinds = catalogueKindForms();
        std::erase(kinds, ExampleType::enumToString(ExampleType::getDefaultValue()));
        std::string all;
        for (std::size_t i = 0; i < kinds.size(); ++i) {
            if (folded(kinds[i]) == folded(text)) {
                return " (did you mean " + inQuotes(kinds[i]) + "?)";
            }
            all += (i == 0 ? "" : i + 1 == kinds.size() ? " and " : ", ") + inQuotes(kinds[i]);
        }
        return " (the kinds are " + all + ")";
    }

    const std::string& text_;
    const CatalogueContext& context_;
    std::vector<Pending> pending_;
};

} // namespace

CatalogueFacts checkCatalogue(const std::string& text, const CatalogueContext& context,
                              std::vector<Finding>& findings) {
    return CatalogueCheck(text, context).run(findings);
}

} // namespace exampledoc
