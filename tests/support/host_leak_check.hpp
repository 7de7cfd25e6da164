#pragma once
// A test fixture that fails a test which leaves host arrays or objects alive or drops them twice.

#include <cstdint>

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

} // namespace zwtest
