#pragma once
// Places in a JSON text: lines and columns in characters, where a JSON pointer begins, and
// where the text stops being UTF-8.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace exampledoc {

/** A 1-based line and a 1-based column counted in characters (code points), not bytes. */
struct TextPosition {
    std::size_t line = 0;
    std::size_t column = 0;
};

/** Line starts of one text, to turn byte offsets into lines and columns. Keeps a view of the text. */
class LineIndex {
public:
    explicit LineIndex(std::string_view text);

    /** The position of the byte at `offset` (the end of the text for a larger offset). */
    TextPosition at(std::size_t offset) const;

private:
    // Characters are counted ahead once for every this many bytes, so that a position costs at
    // most this much however long its line is.
    static constexpr std::size_t kStride = 4096;

    std::size_t charactersBefore(std::size_t offset) const;

    std::string_view text_;
    std::vector<std::size_t> starts_;
    std::vector<std::size_t> characters_; // before each stride's first byte
};

/** For each JSON pointer, the byte offset where it begins in the JSON text `text`: a member at
    the opening quote of its key, an array element and the root at their first byte; npos for a
    pointer the text does not hold, or past a syntax error. */
std::vector<std::size_t> locateJsonPointers(std::string_view text, const std::vector<std::string>& pointers);

} // namespace exampledoc
