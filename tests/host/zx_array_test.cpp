// The array library: the release rule, and the shapes and classes of numeric arrays.

#include <cstdint>
#include <cstring>

#include <gtest/gtest.h>

#include "matrix/matrix.hpp"
#include "support/host_leak_check.hpp"

namespace {

using ZxArray = zwtest::HostLeakCheck;

TEST_F(ZxArray, ReleaseDestroysOnlyTheLastUnheldReference) {
    const struct {
        std::uint32_t count;
        std::uint32_t hold;
        bool destroyed;
        std::uint32_t countAfter;
    } cases[] = {{0, 0, true, 0}, {1, 0, true, 0}, {2, 0, false, 1}, {1, 1, false, 0}, {3, 2, false, 2}};
    for (const auto& c : cases) {
        SCOPED_TRACE("count " + std::to_string(c.count) + ", hold " + std::to_string(c.hold));
        zxArray_tag* array = matrix::createCharRow(u"x");
        const std::int64_t before = zwhost::arrays::liveCount();
        array->refCount = c.count;
        array->holdWord = c.hold;
        intrusive_ptr_release(array);
        EXPECT_EQ(zwhost::arrays::liveCount(), before - (c.destroyed ? 1 : 0));
        if (!c.destroyed) {
            EXPECT_EQ(array->refCount, c.countAfter);
            matrix::destroyArray(array);
        }
    }
}

TEST_F(ZxArray, NumericArraysOfAnyClassShapeAndComplexity) {
    const struct {
        zxClassID classID;
        zxComplexity complexity;
        std::size_t elementBytes;
    } cases[] = {{zxDOUBLE_CLASS, zxREAL, 8},
                 {zxUINT32_CLASS, zxREAL, 4},
                 {zxINT16_CLASS, zxCOMPLEX, 2},
                 {zxUINT8_CLASS, zxCOMPLEX, 1},
                 {zxINT64_CLASS, zxREAL, 8}};
    const unsigned long dims[] = {2, 3, 4};
    for (const auto& c : cases) {
        const matrix::zx_array_handle array(
            matrix::detail::do_create_uninitnumeric(dims, c.classID, c.complexity));
        EXPECT_EQ(zxGetNumberOfElements(array.get()), 24u);
        EXPECT_EQ(array->elementBytes, c.elementBytes);
        EXPECT_EQ(array->imagData != nullptr, c.complexity == zxCOMPLEX);
        std::memset(array->realData, 0xff, 24 * c.elementBytes);
    }
    const unsigned long square[] = {2, 2};
    EXPECT_EQ(matrix::getCharText(matrix::zx_array_handle(matrix::createCharArray(square, u"abcd")).get()),
              u"abcd");
    EXPECT_EQ(matrix::zx_array_handle(matrix::createCharRow(u""))->dims, (std::vector<std::uint64_t>{1, 0}));
}

} // namespace
