#include "json_position.hpp"

#include <algorithm>
#include <cstdint>
#include <unordered_map>

#include <unordered_set>

#include <boost/json/parse.hpp>

#include "reference/docparser/catalogue_format_error.hpp"

namespace exampledoc {
namespace {

constexpr std::size_t kNone = std::string_view::npos;

bool isContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// Walks a JSON text that Boost.JSON accepts, once, and notes where each wanted pointer begins.
// Only the containers on the way to a wanted pointer are followed; every other value is skipped
// over, so that each byte is looked at a bounded number of times.
class PointerFinder {
public:
    PointerFinder(std::string_view text, const std::vector<std::string>& pointers)
        : text_(text), offsets_(pointers.size(), kNone) {
        for (std::size_t i = 0; i < pointers.size(); ++i) {
            wanted_.emplace(pointers[i], i);
            for (std::size_t slash = pointers[i].find('/'); slash != kNone;
                 slash = pointers[i].find('/', slash + 1)) {
                prefixes_.insert(pointers[i].substr(0, slash));
            }
        }
    }

    std::vector<std::size_t> run() {
        std::string path;
        skipBlank();
        follow(path, 0);
        return std::move(offsets_);
    }

private:
    static constexpr std::size_t kDeepest = 64;

    void skipBlank() {
        while (at_ < text_.size() && isBlank(text_[at_])) {
            ++at_;
        }
    }

    bool take(char c) {
        skipBlank();
        if (at_ < text_.size() && text_[at_] == c) {
            ++at_;
            return true;
        }
        return false;
    }

    // The string that begins at the quote under the cursor, as its text says it (escapes kept).
    std::string_view rawString() {
        const std::size_t begin = at_++;
        // The closing quote is the first one after an even run of backslashes.
        for (std::size_t quote = text_.find('"', at_);; quote = text_.find('"', quote + 1)) {
            if (quote == kNone) {
                at_ = text_.size();
                break;
            }
            std::size_t backslashes = 0;
            while (quote - backslashes > at_ && text_[quote - backslashes - 1] == '\\') {
                ++backslashes;
            }
            if (backslashes % 2 == 0) {
                at_ = quote + 1;
                break;
            }
        }
        return text_.substr(begin, at_ - begin);
    }

    static std::string keyOf(std::string_view raw) {
        if (raw.find('\\') == kNone) {
            return std::string(raw.substr(1, raw.size() >= 2 ? raw.size() - 2 : 0));
        }
        boost::json::error_code error;
        const boost::json::value key = boost::json::parse(raw, error);
        return error || !key.is_string() ? std::string() : std::string(key.get_string());
    }

    // Skips the value under the cursor.
    void skip() {
        std::size_t depth = 0;
        do {
            skipBlank();
            if (at_ >= text_.size()) {
                return;
            }
            const char c = text_[at_];
            if (c == '"') {
                rawString();
            } else if (c == '{' || c == '[') {
                ++depth;
                ++at_;
            } else if (c == '}' || c == ']') {
                depth -= depth > 0 ? 1 : 0;
                ++at_;
            } else if (c == ',' || c == ':') {
                ++at_;
            } else {
                while (at_ < text_.size() && !isBlank(text_[at_]) && text_[at_] != ',' && text_[at_] != ':' &&
                       text_[at_] != ']' && text_[at_] != '}') {
                    ++at_;
                }
            }
        } while (depth > 0);
    }

    // Notes the value under the cursor if it is wanted, and follows it if a wanted one lies in it.
    void follow(std::string& path, std::size_t depth) {
        skipBlank();
        if (const auto wanted = wanted_.find(path);
            wanted != wanted_.end() && offsets_[wanted->second] == kNone) {
            offsets_[wanted->second] = std::min(at_, text_.size());
        }
        if (at_ >= text_.size() || depth > kDeepest || !prefixes_.count(path) ||
            (text_[at_] != '{' && text_[at_] != '[')) {
            skip();
            return;
        }
        const bool array = text_[at_++] == '[';
        const std::size_t parent = path.size();
        if (take(array ? ']' : '}')) {
            return;
        }
        for (std::size_t index = 0;; ++index) {
            skipBlank();
            path += '/';
            if (array) {
                path += std::to_string(index);
            } else {
                const std::size_t keyAt = at_;
                if (at_ >= text_.size() || text_[at_] != '"') {
                    path.resize(parent);
                    return;
                }
                path += reference::docparser::jsonPointerStep(keyOf(rawString()));
                if (const auto wanted = wanted_.find(path);
                    wanted != wanted_.end() && offsets_[wanted->second] == kNone) {
                    offsets_[wanted->second] = keyAt;
                }
                if (!take(':')) {
                    path.resize(parent);
                    return;
                }
            }
            if (array || prefixes_.count(path)) {
                follow(path, depth + 1);
            } else {
                skip();
            }
            path.resize(parent);
            if (!take(',')) {
                take(array ? ']' : '}');
                return;
            }
        }
    }

    std::string_view text_;
    std::size_t at_ = 0;
    std::vector<std::size_t> offsets_;
    std::unordered_map<std::string, std::size_t> wanted_;
    std::unordered_set<std::string> prefixes_;
};

} // namespace

LineIndex::LineIndex(std::string_view text) : text_(text) {
    starts_.push_back(0);
    for (std::size_t at = text.find('\n'); at != kNone; at = text.find('\n', at + 1)) {
        starts_.push_back(at + 1);
    }
    std::size_t characters = 0;
    for (std::size_t block = 0; block < text.size(); block += kStride) {
        characters_.push_back(characters);
        const std::string_view part = text.substr(block, kStride);
        characters += static_cast<std::size_t>(
            std::count_if(part.begin(), part.end(), [](char c) { return !isContinuation(c); }));
    }
}

std::size_t LineIndex::charactersBefore(std::size_t offset) const {
    if (offset == 0) {
        return 0;
    }
    const std::size_t block = (offset - 1) / kStride;
    const std::string_view rest = text_.substr(block * kStride, offset - block * kStride);
    return characters_[block] + static_cast<std::size_t>(std::count_if(
                                    rest.begin(), rest.end(), [](char c) { return !isContinuation(c); }));
}

TextPosition LineIndex::at(std::size_t offset) const {
    offset = std::min(offset, text_.size());
    const auto next = std::upper_bound(starts_.begin(), starts_.end(), offset);
    const std::size_t lineStart = *(next - 1);
    return {static_cast<std::size_t>(next - starts_.begin()),
            charactersBefore(offset) - charactersBefore(lineStart) + 1};
}

std::vector<std::size_t> locateJsonPointers(std::string_view text, const std::vector<std::string>& pointers) {
    return PointerFinder(text, pointers).run();
}

} // namespace exampledoc
