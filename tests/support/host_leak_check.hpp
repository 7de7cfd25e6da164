#pragma once
// A test fixture that fails a test which leaves host arrays alive or drops them twice.

#include <cstdint>

#include <gtest/gtest.h>

#include "matrix/matrix.hpp"

namespace zwtest {

class HostLeakCheck : public ::testing::Test {
protected:
    void TearDown() override {
        EXPECT_EQ(zwhost::arrays::liveCount(), arraysAtStart_) << "host arrays leaked or lost";
    }

private:
    std::int64_t arraysAtStart_ = zwhost::arrays::liveCount();
};

/** A new 1-by-1 double array with one reference, owned by the handle. */
inline matrix::zx_array_handle makeScalar(double value) {
    const unsigned long dims[] = {1, 1};
    matrix::zx_array_handle array(matrix::detail::do_create_uninitnumeric(dims, zxDOUBLE_CLASS, zxREAL));
    *reinterpret_cast<double*>(array->realData) = value;
    return array;
}

} // namespace zwtest
