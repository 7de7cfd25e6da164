// The array library (the release rule, the shapes and classes of numeric arrays) and the host's own
// message-id errors with their text conversions.

#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "matrix/matrix.hpp"
#include "support/host_leak_check.hpp"
#include "zwhost/messages.hpp"

namespace {

// The host's own numbers for classes, complexity and scopes, which compiled host code relies on.
static_assert(zxUNKNOWN_CLASS == 0 && zxCELL_CLASS == 1 && zxCHAR_CLASS == 4 && zxDOUBLE_CLASS == 6 &&
              zxUINT32_CLASS == 13 && zxOBJECT_CLASS == 17 && zxREAL == 0 && zxCOMPLEX == 1 &&
              zxSCOPE_UNSET == 0 && zxSCOPE_TEMPORARY == 4 && zxSCOPE_CACHED == 6);

using ZxArray = zwtest::HostLeakCheck;

TEST_F(ZxArray, ReleaseDestroysOnlyTheLastUnheldReferenceAndNumbersTakeAnyShape) {
    // count, hold, count after the release (-1: destroyed)
    const int releases[][3] = {{0, 0, -1}, {1, 0, -1}, {2, 0, 1}, {1, 1, 0}, {3, 2, 2}};
    for (const auto& [count, hold, after] : releases) {
        SCOPED_TRACE("count " + std::to_string(count) + ", hold " + std::to_string(hold));
        zxArray_tag* array = matrix::createCharRow(u"x");
        const std::int64_t before = zwhost::arrays::liveCount();
        array->refCount = static_cast<std::uint32_t>(count);
        array->holdWord = static_cast<std::uint32_t>(hold);
        intrusive_ptr_release(array);
        EXPECT_EQ(zwhost::arrays::liveCount(), before - (after < 0 ? 1 : 0));
        if (after >= 0) {
            EXPECT_EQ(array->refCount, static_cast<std::uint32_t>(after));
            matrix::destroyArray(array);
        }
    }
    // clang-format off
    const std::tuple<zxClassID, zxComplexity, std::size_t> numbers[] = {{zxDOUBLE_CLASS, zxREAL, 8},
        {zxUINT32_CLASS, zxREAL, 4}, {zxINT16_CLASS, zxCOMPLEX, 2}, {zxUINT8_CLASS, zxCOMPLEX, 1},
        {zxINT64_CLASS, zxREAL, 8}};
    // clang-format on
    const unsigned long dims[] = {2, 3, 4}, square[] = {2, 2};
    for (const auto& [classID, complexity, elementBytes] : numbers) {
        const matrix::zx_array_handle array(
            matrix::detail::do_create_uninitnumeric(dims, classID, complexity));
        EXPECT_EQ(zxGetNumberOfElements(array.get()), 24u);
        EXPECT_EQ(array->elementBytes, elementBytes);
        EXPECT_EQ(array->imagData != nullptr, complexity == zxCOMPLEX);
        std::memset(array->realData, 0xff, 24 * elementBytes);
    }
    const unsigned long one[] = {1, 1}, huge[] = {1UL << 31, 1UL << 31};
    EXPECT_THROW(matrix::detail::do_create_uninitnumeric(huge, zxDOUBLE_CLASS, zxREAL), std::bad_alloc);
    // Data shorter than a word is padded with zeros, whatever the memory held before.
    for (int round = 0; round < 2; ++round) {
        const matrix::zx_array_handle small(
            matrix::detail::do_create_uninitnumeric(one, zxUINT8_CLASS, zxREAL));
        std::uint64_t word = 0;
        std::memcpy(&word, small->realData, sizeof word);
        EXPECT_EQ(word >> 8, 0U) << "round " << round;
        std::memset(small->realData, 0xff, sizeof word);
    }
    EXPECT_EQ(matrix::getCharText(matrix::zx_array_handle(matrix::createCharArray(square, u"abcd")).get()),
              u"abcd");
    EXPECT_EQ(matrix::zx_array_handle(matrix::createCharRow(u""))->dims, (std::vector<std::uint64_t>{1, 0}));
    EXPECT_EQ(matrix::getTextList(zwtest::makeCells(1, 3, {u"a", u"b", u"c"}).get()).capacity(), 3U);
}

TEST(MsgIDError, TakesItsTextFromTheCatalogueAndConvertsBetweenUtf8AndUtf16) {
    // A message is found by its catalogue and key together; one the catalogue lacks is its id.
    const std::pair<resource_core::BaseMsgID, const char*> messages[] = {
        {{{}, "ZENTAB:class", "RequireText"}, "Value must be a character vector."},
        {{{}, "ZENTAB:class", "RequireTextArray"}, "ZENTAB:class:RequireTextArray"},
        {{{}, "ZENTAB:utils", "RequireTextArray"},
         "Value must be a character vector or a cell array of character vectors."},
        {{{}, "ZENTAB:none", "Missing"}, "ZENTAB:none:Missing"}};
    for (const auto& [id, text] : messages) {
        EXPECT_STREQ(zwhost::messages::MsgIDError(id).what(), text);
    }
    const zwhost::messages::MsgIDError error({{}, "ZENTAB:none", "Missing"});
    EXPECT_EQ(error.GetID(), "ZENTAB:none:Missing");
    const std::pair<std::u16string, std::string> both[] = {
        {u"plain", "plain"}, {u"\u00e9\u4e2d", "\xc3\xa9\xe4\xb8\xad"}, {u"\U0001F600", "\xf0\x9f\x98\x80"}};
    for (const auto& [utf16, utf8] : both) {
        EXPECT_EQ(error.convert_str(utf16), utf8);
        EXPECT_EQ(error.convert_str(utf8), utf16);
    }
    EXPECT_EQ(error.convert_str(std::u16string(1, char16_t{0xD800})), "\xef\xbf\xbd");
    EXPECT_EQ(error.convert_str(std::string("a\xff")), u"a\uFFFD");
    EXPECT_EQ(error.convert_str(std::string("\xc0\x80")), u"\uFFFD\uFFFD");
}

} // namespace
