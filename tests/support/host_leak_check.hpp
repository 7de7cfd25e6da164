#pragma once
// A test fixture that fails a test which leaves host arrays or objects alive or drops them twice,
// or leaves a file descriptor open, and the host values tests build.

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "matrix/matrix.hpp"
#include "zwhost/zcos.hpp"

namespace zwtest {

/** What the process's file descriptors refer to, sorted; a file removed meanwhile (as ctest
    replaces its log) is named as it was. */
inline std::vector<std::string> openFiles() {
    std::vector<std::string> files;
    for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code closedMeanwhile;
        std::string file = std::filesystem::read_symlink(descriptor.path(), closedMeanwhile).string();
        if (file.ends_with(" (deleted)")) {
            file.resize(file.size() - std::string_view(" (deleted)").size());
        }
        files.push_back(std::move(file));
    }
    std::sort(files.begin(), files.end());
    return files;
}

class HostLeakCheck : public ::testing::Test {
protected:
    void TearDown() override {
        EXPECT_EQ(zwhost::arrays::liveCount(), arraysAtStart_) << "host arrays leaked or lost";
        EXPECT_EQ(zwhost::zcos::liveObjectCount(), objectsAtStart_) << "host objects leaked or lost";
        EXPECT_EQ(openFiles(), filesAtStart_) << "files left open";
    }

private:
    std::int64_t arraysAtStart_ = zwhost::arrays::liveCount();
    std::int64_t objectsAtStart_ = zwhost::zcos::liveObjectCount();
    std::vector<std::string> filesAtStart_ = openFiles();
};

/** A new rows-by-cols array of doubles, or else of uint32s, holding `fill` in every element, with one
    reference, owned by the handle. */
template <class T>
matrix::zx_array_handle makeNumbers(unsigned long rows, unsigned long cols, T fill) {
    const unsigned long dims[] = {rows, cols};
    const zxClassID classID = std::is_same_v<T, double> ? zxDOUBLE_CLASS : zxUINT32_CLASS;
    matrix::zx_array_handle array(matrix::detail::do_create_uninitnumeric(dims, classID, zxREAL));
    std::fill_n(reinterpret_cast<T*>(array->realData), zxGetNumberOfElements(array.get()), fill);
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
