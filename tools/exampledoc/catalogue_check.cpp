#include "catalogue_check.hpp"

#include <algorithm>
#include <cctype>
#include <map>
#include <regex>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/stream_parser.hpp>

#include "catalogue/catalogue_parser.hpp"
#include "check_rules.hpp"
#include "json_position.hpp"
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

std::string quoted(std::string_view text) {
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

std::string kindPhrase(const boost::json::value& value) {
    return kindPhrase(std::string_view(boost::json::to_string(value.kind())));
}

// An exception's text without the source location Boost.JSON appends to it.
std::string failureText(const std::exception& error) {
    std::string text = error.what();
    if (const std::size_t location = text.find(" [boost."); location != kNone) {
        text.resize(location);
    }
    return text;
}

// What the library's parser said, taken apart: "member "title": expected a string, found int64".
struct Complaint {
    std::string subject; // "member", "header member", "catalogue root", "value", "array element", ...
    std::string key;
    std::string expected;
    std::string found;
};

Complaint readComplaint(const std::string& text) {
    static const std::regex keyed(
        R"re(^(header member|member|value holding member) "(.*)": expected (.*), found (.*)$)re");
    static const std::regex plain(R"re(^(catalogue root|value|array element): expected (.*), found (.*)$)re");
    std::smatch match;
    if (std::regex_match(text, match, keyed)) {
        return {match[1], match[2], match[3], match[4]};
    }
    if (std::regex_match(text, match, plain)) {
        return {match[1], {}, match[2], match[3]};
    }
    return {text, {}, {}, {}};
}

// The library's verdict on one entry under the file's header: empty if it reads it.
std::string probe(const boost::json::value& header, const boost::json::value& entry,
                  example::docparser::ExampleCatalogues* result = nullptr) {
    boost::json::object document;
    document["header"] = header;
    document["exampleItems"] = boost::json::array{entry};
    try {
        auto parsed = parseExampleCatalogue(boost::json::serialize(document));
        if (result != nullptr) {
            *result = std::move(parsed);
        }
        return {};
    } catch (const std::exception& error) {
        return failureText(error);
    }
}

// The member of `entry` that makes the library say `complaint`: members are taken away one by
// one, and the one whose going changes the verdict is it. A member whose absence is a complaint
// of its own is needed, and stays.
std::optional<std::string> culpritMember(const boost::json::value& header, const boost::json::object& entry,
                                         const std::string& complaint) {
    boost::json::object remaining = entry;
    for (const auto& member : entry) {
        boost::json::object trial = remaining;
        trial.erase(member.key());
        const std::string verdict = probe(header, trial);
        if (verdict == complaint) {
            remaining = std::move(trial);
        } else if (verdict.find(quoted(member.key())) == kNone) {
            return std::string(member.key());
        }
    }
    return std::nullopt;
}

class CatalogueCheck {
public:
    CatalogueCheck(const std::string& text, const CatalogueContext& context)
        : text_(text), context_(context) {}

    CatalogueFacts run(std::vector<Finding>& findings) {
        CatalogueFacts facts;
        try {
            const auto result = parseExampleCatalogue(text_);
            facts.read = true;
            const auto& [helpFolder, catalogue] = *result.begin();
            facts.helpFolder = helpFolder;
            for (const auto& [id, items] : catalogue.items) {
                facts.ids.push_back(id);
                facts.examples += items.size();
            }
            if (!context_.errorsOnly) {
                checkRead(catalogue);
            }
        } catch (const std::exception& error) {
            if (context_.errorsOnly) {
                add("bad-catalogue", {}, {}, failureText(error), 0);
            } else {
                explainFailure(failureText(error));
            }
        }
        place(findings);
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
        // Finding the place must never cost the finding: a complaint this check does not know
        // is reported as the parser gave it.
        try {
            explainFormat(syntax.release(), complaint);
        } catch (const std::exception&) {
            add("bad-catalogue", "", {}, complaint);
        }
    }

    void explainSyntax(const boost::json::error_code& error, std::size_t offset) {
        if (std::string_view(text_).starts_with("\xEF\xBB\xBF")) {
            add("byte-order-mark", {}, {},
                "the text begins with a byte order mark; save it as UTF-8 without one", 0);
            return;
        }
        if (const std::size_t bad = firstInvalidUtf8(text_); bad != kNone && bad <= offset) {
            static constexpr char kHex[] = "0123456789ABCDEF";
            const auto byte = static_cast<unsigned char>(text_[bad]);
            add("not-utf8", {}, {},
                std::string("the text is not UTF-8: byte 0x") + kHex[byte >> 4U] + kHex[byte & 0xFU] +
                    " begins no valid sequence; save the file as UTF-8",
                bad);
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

    void explainFormat(const boost::json::value& root, const std::string& said) {
        const Complaint complaint = readComplaint(said);
        if (complaint.subject == "catalogue root") {
            add("wrong-type", "", {},
                "the catalogue must be a JSON object, found " + kindPhrase(complaint.found));
            return;
        }
        if (complaint.subject == "member" && (complaint.key == "header" || complaint.key == "exampleItems")) {
            const std::string what = complaint.key == "header" ? "an object" : "an array";
            if (complaint.found == "nothing") {
                add("missing-member", "", {}, "the catalogue has no " + quoted(complaint.key) + " member");
            } else {
                add("wrong-type", "/" + complaint.key, {},
                    quoted(complaint.key) + " must be " + what + ", found " + kindPhrase(complaint.found));
            }
            return;
        }
        if (complaint.subject == "header member") {
            add("wrong-type", "/header/" + pointerStep(complaint.key), {},
                "header " + quoted(complaint.key) + " must be a string, found " +
                    kindPhrase(complaint.found));
            return;
        }
        const boost::json::object& top = root.as_object();
        const boost::json::value& header = top.at("header");
        const boost::json::array& entries = top.at("exampleItems").as_array();
        for (std::size_t index = 0; index < entries.size(); ++index) {
            if (const std::string verdict = probe(header, entries[index]); !verdict.empty()) {
                explainEntry(header, entries[index], index, verdict);
                return;
            }
        }
        add("bad-catalogue", "", {}, said);
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

    void explainEntry(const boost::json::value& header, const boost::json::value& entry, std::size_t index,
                      const std::string& said) {
        const std::string pointer = "/exampleItems/" + std::to_string(index);
        const std::string id = entryId(entry);
        const std::string label = entryLabel(index, id);
        const Complaint complaint = readComplaint(said);
        if (!entry.is_object()) {
            add("wrong-type", pointer, id, label + " must be an object, found " + kindPhrase(entry));
            return;
        }
        const boost::json::object& object = entry.get_object();
        if (complaint.subject == "member") {
            if (const boost::json::value* member = object.if_contains(complaint.key)) {
                add("wrong-type", pointer + "/" + pointerStep(complaint.key), id,
                    label + ": " + quoted(complaint.key) + " must be " + complaint.expected + ", found " +
                        kindPhrase(*member));
                return;
            }
            if (const auto culprit = culpritMember(header, object, said)) {
                explainElement(object.at(*culprit), pointer + "/" + pointerStep(*culprit), id,
                               label + ": " + quoted(*culprit), complaint);
                return;
            }
            add("missing-member", pointer, id, label + " has no " + quoted(complaint.key));
            return;
        }
        const auto culprit = culpritMember(header, object, said);
        if (!culprit) {
            add("bad-catalogue", pointer, id, label + ": " + said);
            return;
        }
        const boost::json::value& value = object.at(*culprit);
        const std::string memberPointer = pointer + "/" + pointerStep(*culprit);
        const std::string memberLabel = label + ": " + quoted(*culprit);
        if (!value.is_array() || complaint.subject == "value") {
            add("wrong-type", memberPointer, id,
                memberLabel + " must be " + expectedOf(header, object, *culprit) + ", found " +
                    kindPhrase(value));
            return;
        }
        explainElement(value, memberPointer, id, memberLabel, complaint);
    }

    // What a member that the library refused must hold, found by offering it the candidates.
    static std::string expectedOf(const boost::json::value& header, const boost::json::object& entry,
                                  const std::string& key) {
        for (const auto& [candidate, phrase] :
             {std::pair<boost::json::value, std::string_view>{boost::json::array{""}, "an array of strings"},
              {boost::json::array{boost::json::object{}}, "an array of objects"},
              {boost::json::value(""), "a string"}}) {
            boost::json::object trial = entry;
            trial[key] = candidate;
            const std::string verdict = probe(header, trial);
            if (verdict.empty() || readComplaint(verdict).subject == "member") {
                return std::string(phrase);
            }
        }
        return "of another type";
    }

    // The element of the array `value` that the library refused.
    void explainElement(const boost::json::value& value, const std::string& pointer, const std::string& id,
                        const std::string& label, const Complaint& complaint) {
        const boost::json::array* array = value.if_array();
        if (array == nullptr) {
            add("wrong-type", pointer, id, label + " must be an array, found " + kindPhrase(value));
            return;
        }
        for (std::size_t i = 0; i < array->size(); ++i) {
            const boost::json::value& element = (*array)[i];
            const std::string elementPointer = pointer + "/" + std::to_string(i);
            const std::string elementLabel = label + "[" + std::to_string(i) + "]";
            if (complaint.subject == "array element") {
                if (!element.is_string()) {
                    add("wrong-type", elementPointer, id,
                        elementLabel + " must be a string, found " + kindPhrase(element));
                    return;
                }
            } else if (!element.is_object()) {
                add("wrong-type", elementPointer, id,
                    elementLabel + " must be an object, found " + kindPhrase(element));
                return;
            } else if (complaint.subject == "member") {
                const boost::json::value* member = element.get_object().if_contains(complaint.key);
                if (member == nullptr) {
                    add("missing-member", elementPointer, id,
                        elementLabel + " has no " + quoted(complaint.key));
                    return;
                }
                if (!member->is_string()) {
                    add("wrong-type", elementPointer + "/" + pointerStep(complaint.key), id,
                        elementLabel + ": " + quoted(complaint.key) + " must be a string, found " +
                            kindPhrase(*member));
                    return;
                }
            }
        }
        add("bad-catalogue", pointer, id, label + ": " + complaint.subject);
    }

    // Warnings about a catalogue the library reads.
    void checkRead(const reference::docparser::DocResource<example::docparser::ExampleItem>& catalogue) {
        const auto& header = catalogue.header;
        const std::u16string& helpFolder = header.getHelpFolder();
        const bool english = context_.locale.empty();
        if (english && context_.firstEnglish) {
            if (const std::string* first = context_.firstEnglish(helpFolder)) {
                add("duplicate-catalogue", "/header/helpFolder", {},
                    "another English catalogue of help folder " + quoted(utf16ToUtf8(helpFolder)) + ", " +
                        *first + ", is read first: its header and its examples of the same ids win");
            }
        }
        const std::u16string& locale = header.getLocale();
        if (!locale.empty()) {
            const bool supported = std::find(context_.docLocales.begin(), context_.docLocales.end(),
                                             locale) != context_.docLocales.end();
            if (english ? supported : locale != context_.locale) {
                add("locale-mismatch", "/header/locale", {},
                    "the header says locale " + quoted(utf16ToUtf8(locale)) + " but the file name says " +
                        (english ? std::string("English") : utf16ToUtf8(context_.locale)));
            }
        }
        if (!english && context_.partnerHelpFolder && *context_.partnerHelpFolder != helpFolder) {
            add("help-folder-mismatch", "/header/helpFolder", {},
                "help folder " + quoted(utf16ToUtf8(helpFolder)) + " differs from " +
                    quoted(utf16ToUtf8(*context_.partnerHelpFolder)) +
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
            checkEntries(englishIds);
        }
    }

    // Finds the entries behind the suspicions, one at a time through the library's parser.
    void checkEntries(const std::set<std::u16string>* englishIds) {
        const boost::json::value root = boost::json::parse(text_);
        const boost::json::value& header = root.at("header");
        const boost::json::array& entries = root.at("exampleItems").as_array();
        std::map<std::u16string, std::size_t> firstIndex;
        for (std::size_t index = 0; index < entries.size(); ++index) {
            example::docparser::ExampleCatalogues single;
            if (!probe(header, entries[index], &single).empty()) {
                continue;
            }
            const auto& [id, items] = *single.begin()->second.items.begin();
            const auto& item = items.front();
            const std::string idText = utf16ToUtf8(id);
            const std::string pointer = "/exampleItems/" + std::to_string(index);
            const std::string label = entryLabel(index, idText);
            if (const auto [first, inserted] = firstIndex.emplace(id, index); !inserted) {
                add("duplicate-id", pointer, idText,
                    label + ": exampleItems[" + std::to_string(first->second) +
                        "] has the same id; both are kept under it");
            }
            for (const auto& [field, value] :
                 {std::pair<std::string_view, const std::u16string*>{"name", &item.getName()},
                  {"component", &item.getComponent()},
                  {"title", &item.getTitle()}}) {
                if (value->empty()) {
                    add("empty-field", pointer + "/" + std::string(field), idText,
                        label + ": " + quoted(field) + " is empty" +
                            (field == "title" ? "" : "; the id becomes " + quoted(idText)));
                }
            }
            const boost::json::value* kind = entries[index].as_object().if_contains("exampleType");
            if (item.getExampleType() == ExampleType::Unknown && kind != nullptr &&
                kind->get_string() != "Unknown") {
                add("unknown-kind", pointer + "/exampleType", idText,
                    label + ": " + quoted(std::string(kind->get_string())) +
                        " is not a kind; the example is read as Unknown" + suggestKind(kind->get_string()));
            }
            if (englishIds != nullptr && englishIds->count(id) == 0) {
                add("orphan-id", pointer, idText,
                    label + ": no English example of this help folder has the id " + quoted(idText));
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
        for (const char* form : {"Live Script", "Script", "Model", "Example", "Chart", "App"}) {
            if (folded(form) == folded(text)) {
                return std::string(" (did you mean ") + quoted(form) + "?)";
            }
        }
        return " (the kinds are \"Live Script\", \"Script\", \"Model\", \"Example\", \"Chart\" and \"App\")";
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
