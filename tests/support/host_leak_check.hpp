#pragma once
// A test fixture that fails a test which leaves host arrays or objects alive or drops them twice,
// and the host values tests build.

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "matrix/matrix.hpp"
#include "zwhost/zcos.hpp"

namespace zwtest {

class HostLeakCheck : public ::testing::Test {
protected:
    void TearDown() override {
        EXPECT_EQ(zwhost::arrays::liveCount(), arraysAtStart_) << "host arrays leaked or lost";
        EXPECT_EQ(zwhost::zcos::liveObjectCount(), objectsAtStart_) << "host objects leaked or lost";
    }

private:
    std::int64_t arraysAtStart_ = zwhost::arrays::liveCount();
    std::int64_t objectsAtStart_ = zwhost::zcos::liveObjectCount();
};

/** A new 1-by-1 double array with one reference, owned by the handle. */
inline matrix::zx_array_handle makeScalar(double value) {
    const unsigned long dims[] = {1, 1};
    matrix::zx_array_handle array(matrix::detail::do_create_uninitnumeric(dims, zxDOUBLE_CLASS, zxREAL));
    *reinterpret_cast<double*>(array->realData) = value;
    return array;
}

/** A new rows-by-cols uint32 array holding `fill` in every element. */
inline matrix::zx_array_handle makeUint32s(unsigned long rows, unsigned long cols, std::uint32_t fill) {
    const unsigned long dims[] = {rows, cols};
    matrix::zx_array_handle array(matrix::detail::do_create_uninitnumeric(dims, zxUINT32_CLASS, zxREAL));
    std::fill_n(reinterpret_cast<std::uint32_t*>(array->realData), zxGetNumberOfElements(array.get()), fill);
    return array;
}

/** A new rows-by-cols cell array whose first cells hold `texts`; the rest stay empty. */
inline matrix::zx_array_handle makeCells(unsigned long rows, unsigned long cols,
                                         const std::vector<std::u16string>& texts) {
    const unsigned long dims[] = {rows, cols};
    matrix::zx_array_handle cells(matrix::createCellArray(dims));
    for (std::size_t i = 0; i < texts.size(); ++i) {
        cells->cells[i] = matrix::from_zentab(matrix::createCharRow(texts[i]));
    }
    return cells;
}

} // namespace zwtest
