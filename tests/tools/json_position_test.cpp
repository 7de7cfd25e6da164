#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "json_position.hpp"

namespace {

std::string repeated(std::string_view text, std::size_t count) {
    std::string out;
    for (std::size_t i = 0; i < count; ++i) {
        out += text;
    }
    return out;
}

struct PointerCase {
    std::string text;
    const char* pointer;
    std::size_t line; // 0: the text does not hold the pointer
    std::size_t column;
};

TEST(JsonPosition, FindsEachPointerAtItsKeyOrValueInCharacters) {
    // clang-format off
    const PointerCase cases[] = {
        {"  {}", "", 1, 3},
        {R"({"a/b":{"~":[1, {"x":true}]}})", "/a~1b/~0/1/x", 1, 18},
        {R"({"a/b":{"~":[1, {"x":true}]}})", "/a~1b/~0/0", 1, 14},
        {"[\n  \"\xE6\x97\xA5\xE6\x9C\xAC\", 5]", "/1", 2, 9},
        {"{\"k\\u0041\":null,\n\"n\":[[],{}]}", "/kA", 1, 2},
        {"{\"k\\u0041\":null,\n\"n\":[[],{}]}", "/n/1", 2, 9},
        {R"(["a\\", "b\"c", 7])", "/2", 1, 17},
        {R"({"a":1})", "/b", 0, 0},
        {R"({"a":[1,2]})", "/a/2", 0, 0},
        // Lines and characters that straddle the places where characters are counted ahead.
        {"[\"" + repeated("\xE6\x97\xA5", 3000) + "\", 7]", "/1", 1, 3006},
        {std::string(3000, ' ') + "{\"a\":\n\"" + repeated("\xC3\xA9", 2000) + "\", \"b\":1}", "/b", 2, 2005},
    };
    // clang-format on
    for (const PointerCase& c : cases) {
        SCOPED_TRACE(c.text.substr(0, 40) + " " + c.pointer);
        const std::size_t offset = exampledoc::locateJsonPointers(c.text, {c.pointer}).at(0);
        const auto position = offset == std::string::npos ? exampledoc::TextPosition{}
                                                          : exampledoc::LineIndex(c.text).at(offset);
        EXPECT_EQ(position.line, c.line);
        EXPECT_EQ(position.column, c.column);
    }
}

} // namespace
