// The array library: the release rule, shapes and classes of arrays, and what destroying an
// array drops.

#include <cstdint>
#include <cstring>
#include <stdexcept>

#include <gtest/gtest.h>

#include "matrix/matrix.hpp"
#include "support/host_leak_check.hpp"
#include "zwhost/fault.hpp"

namespace {

using ZxArray = zwtest::HostLeakCheck;

TEST_F(ZxArray, ReleaseRuleDestroysOnlyTheLastUnheldReference) {
    struct Case {
        std::uint32_t count;
        std::uint32_t hold;
        bool destroyed;
        std::uint32_t countAfter;
    };
    const Case cases[] = {
        {0, 0, true, 0}, {1, 0, true, 0}, {2, 0, false, 1}, {1, 1, false, 0}, {3, 2, false, 2}};
    for (const Case& c : cases) {
        zxArray_tag* array = matrix::createCharRow(u"x");
        const std::int64_t before = zwhost::arrays::liveCount();
        array->refCount = c.count;
        array->holdWord = c.hold;
        intrusive_ptr_release(array);
        EXPECT_EQ(zwhost::arrays::liveCount(), before - (c.destroyed ? 1 : 0))
            << "count " << c.count << ", hold " << c.hold;
        if (!c.destroyed) {
            EXPECT_EQ(array->refCount, c.countAfter);
            matrix::destroyArray(array);
        }
    }
}

TEST_F(ZxArray, HandleMovesIntoSharedPointerWithoutCountChange) {
    SharedZxArrayPtr shared = matrix::from_zentab(matrix::createCharRow(u"abc"));
    EXPECT_EQ(shared->refCount, 1u);
    SharedZxArrayPtr second = shared;
    EXPECT_EQ(shared->refCount, 2u);
}

TEST_F(ZxArray, NumericArraysOfAnyClassShapeAndComplexity) {
    struct Case {
        zxClassID classID;
        zxComplexity complexity;
        std::size_t elementBytes;
    };
    const Case cases[] = {{zxDOUBLE_CLASS, zxREAL, 8},
                          {zxUINT32_CLASS, zxREAL, 4},
                          {zxINT16_CLASS, zxCOMPLEX, 2},
                          {zxUINT8_CLASS, zxCOMPLEX, 1},
                          {zxINT64_CLASS, zxREAL, 8}};
    const unsigned long dims[] = {2, 3, 4};
    for (const Case& c : cases) {
        matrix::zx_array_handle array(matrix::detail::do_create_uninitnumeric(dims, c.classID, c.complexity));
        EXPECT_EQ(zxGetNumberOfElements(array.get()), 24u);
        EXPECT_EQ(array->elementBytes, c.elementBytes);
        EXPECT_EQ(array->imagData != nullptr, c.complexity == zxCOMPLEX);
        std::memset(array->realData, 0xff, 24 * c.elementBytes);
    }
    EXPECT_THROW(matrix::detail::do_create_uninitnumeric(dims, zxCELL_CLASS, zxREAL), std::invalid_argument);
}

TEST_F(ZxArray, CharacterArraysKeepTheirTextInAnyShape) {
    const unsigned long square[] = {2, 2};
    matrix::zx_array_handle array(matrix::createCharArray(square, u"abcd"));
    EXPECT_EQ(matrix::getCharText(array.get()), u"abcd");
    EXPECT_THROW(matrix::createCharArray(square, u"abc"), std::invalid_argument);
    EXPECT_THROW(matrix::getCharText(zwtest::makeScalar(1.0).get()), std::invalid_argument);
    matrix::zx_array_handle empty(matrix::createCharRow(u""));
    EXPECT_EQ(empty->dims, (std::vector<std::uint64_t>{1, 0}));
}

TEST_F(ZxArray, DestroyingACellArrayDropsItsElements) {
    const unsigned long dims[] = {1, 2};
    matrix::zx_array_handle cells(matrix::createCellArray(dims));
    SharedZxArrayPtr text = matrix::from_zentab(matrix::createCharRow(u"kept"));
    cells->cells[0] = text;
    cells->cells[1] = matrix::from_zentab(matrix::createCharRow(u"dropped"));
    EXPECT_EQ(text->refCount, 2u);
    matrix::destroyArray(cells.release());
    EXPECT_EQ(text->refCount, 1u);
}

TEST_F(ZxArray, FailedCreationLeavesNothingAlive) {
    zwhost::fault::Scope faults;
    const unsigned long dims[] = {1, 1};
    for (const char* operation : {"do_create_uninitnumeric", "matrix::createArray"}) {
        zwhost::fault::failOn(operation, 1);
        EXPECT_THROW(matrix::detail::do_create_uninitnumeric(dims, zxUINT32_CLASS, zxREAL),
                     zwhost::fault::InjectedFault)
            << operation;
    }
}

} // namespace
