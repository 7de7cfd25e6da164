#include "json_position.hpp"

#include <algorithm>
#include <cstdint>
#include <unordered_map>

#include <boost/json/basic_parser_impl.hpp>
#include <boost/locale/utf.hpp>

namespace exampledoc {
namespace {

constexpr std::size_t kNone = std::string_view::npos;

bool isContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

// Follows the parse event by event and notes where each wanted pointer begins. The text is fed
// one byte at a time, so that the offset of every event is known: the handler is told nothing
// of where it stands.
class PointerFinder {
public:
    constexpr static std::size_t max_object_size = static_cast<std::size_t>(-1);
    constexpr static std::size_t max_array_size = static_cast<std::size_t>(-1);
    constexpr static std::size_t max_key_size = static_cast<std::size_t>(-1);
    constexpr static std::size_t max_string_size = static_cast<std::size_t>(-1);

    PointerFinder(std::string_view text, const std::vector<std::string>& pointers)
        : text_(text), offsets_(pointers.size(), kNone) {
        for (std::size_t i = 0; i < pointers.size(); ++i) {
            wanted_.emplace(pointers[i], i);
        }
    }

    void feed(std::size_t position) { position_ = position; }
    bool done() const { return wanted_.empty(); }
    std::vector<std::size_t> take() { return std::move(offsets_); }

    bool on_document_begin(boost::json::error_code&) { return true; }
    bool on_document_end(boost::json::error_code&) { return true; }
    bool on_object_begin(boost::json::error_code&) { return open(false); }
    bool on_object_end(std::size_t, boost::json::error_code&) { return close(); }
    bool on_array_begin(boost::json::error_code&) { return open(true); }
    bool on_array_end(std::size_t, boost::json::error_code&) { return close(); }
    bool on_key_part(boost::json::string_view part, std::size_t, boost::json::error_code&) {
        key_.append(part.data(), part.size());
        return true;
    }
    bool on_key(boost::json::string_view part, std::size_t, boost::json::error_code&) {
        key_.append(part.data(), part.size());
        member_ = path_ + '/' + pointerStep(key_);
        key_.clear();
        found(member_, start());
        lastEnd_ = position_;
        return true;
    }
    bool on_string_part(boost::json::string_view, std::size_t, boost::json::error_code&) {
        begin();
        return true;
    }
    bool on_string(boost::json::string_view, std::size_t, boost::json::error_code&) { return scalar(); }
    bool on_number_part(boost::json::string_view, boost::json::error_code&) {
        begin();
        return true;
    }
    bool on_int64(std::int64_t, boost::json::string_view, boost::json::error_code&) { return scalar(); }
    bool on_uint64(std::uint64_t, boost::json::string_view, boost::json::error_code&) { return scalar(); }
    bool on_double(double, boost::json::string_view, boost::json::error_code&) { return scalar(); }
    bool on_bool(bool, boost::json::error_code&) { return scalar(); }
    bool on_null(boost::json::error_code&) { return scalar(); }
    bool on_comment_part(boost::json::string_view, boost::json::error_code&) { return true; }
    bool on_comment(boost::json::string_view, boost::json::error_code&) { return true; }

private:
    struct Frame {
        bool array;
        std::size_t index;
        std::size_t parentSize; // length of the container's parent pointer
    };

    // The first byte of the value that begins after the last complete event.
    std::size_t start() const {
        std::size_t at = lastEnd_;
        while (at < text_.size() && std::string_view(" \t\r\n,:").find(text_[at]) != kNone) {
            ++at;
        }
        return at;
    }

    // A value begins: an element of an array is found here; a member was found at its key.
    std::string begin() {
        if (started_) {
            return member_;
        }
        started_ = true;
        if (frames_.empty()) {
            member_.clear();
            found(member_, start());
        } else if (frames_.back().array) {
            member_ = path_ + '/' + std::to_string(frames_.back().index);
            found(member_, start());
        }
        return member_;
    }

    bool open(bool array) {
        const std::string pointer = begin();
        frames_.push_back({array, 0, path_.size()});
        path_ = pointer;
        started_ = false;
        lastEnd_ = position_;
        return true;
    }

    bool close() {
        path_.resize(frames_.back().parentSize);
        frames_.pop_back();
        return finished();
    }

    bool scalar() {
        begin();
        return finished();
    }

    bool finished() {
        started_ = false;
        lastEnd_ = position_;
        if (!frames_.empty() && frames_.back().array) {
            ++frames_.back().index;
        }
        return true;
    }

    void found(const std::string& pointer, std::size_t offset) {
        const auto wanted = wanted_.find(pointer);
        if (wanted != wanted_.end()) {
            offsets_[wanted->second] = offset;
            wanted_.erase(wanted);
        }
    }

    std::string_view text_;
    std::vector<std::size_t> offsets_;
    std::unordered_map<std::string, std::size_t> wanted_;
    std::vector<Frame> frames_;
    std::string path_;
    std::string member_;
    std::string key_;
    std::size_t position_ = 0;
    std::size_t lastEnd_ = 0;
    bool started_ = false;
};

} // namespace

LineIndex::LineIndex(std::string_view text) : text_(text) {
    starts_.push_back(0);
    for (std::size_t at = text.find('\n'); at != kNone; at = text.find('\n', at + 1)) {
        starts_.push_back(at + 1);
    }
}

TextPosition LineIndex::at(std::size_t offset) const {
    offset = std::min(offset, text_.size());
    const auto next = std::upper_bound(starts_.begin(), starts_.end(), offset);
    const std::size_t lineStart = *(next - 1);
    const std::string_view before = text_.substr(lineStart, offset - lineStart);
    const auto characters =
        std::count_if(before.begin(), before.end(), [](char c) { return !isContinuation(c); });
    return {static_cast<std::size_t>(next - starts_.begin()), static_cast<std::size_t>(characters) + 1};
}

std::size_t firstInvalidUtf8(std::string_view text) {
    using Utf8 = boost::locale::utf::utf_traits<char>;
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    for (const char* at = begin; at != end;) {
        const char* const sequence = at;
        const auto point = Utf8::decode(at, end);
        if (point == boost::locale::utf::illegal || point == boost::locale::utf::incomplete) {
            return static_cast<std::size_t>(sequence - begin);
        }
    }
    return kNone;
}

std::string pointerStep(std::string_view key) {
    std::string step;
    step.reserve(key.size());
    for (const char c : key) {
        if (c == '~') {
            step += "~0";
        } else if (c == '/') {
            step += "~1";
        } else {
            step += c;
        }
    }
    return step;
}

std::vector<std::size_t> locateJsonPointers(std::string_view text, const std::vector<std::string>& pointers) {
    boost::json::basic_parser<PointerFinder> parser(boost::json::parse_options{}, text, pointers);
    boost::json::error_code error;
    for (std::size_t at = 0; at < text.size() && !error && !parser.handler().done(); ++at) {
        parser.handler().feed(at + 1);
        parser.write_some(true, text.data() + at, 1, error);
    }
    return parser.handler().take();
}

} // namespace exampledoc
