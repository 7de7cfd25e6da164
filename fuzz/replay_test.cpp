// Runs one fuzz target over its committed inputs, its seed corpus and the inputs of past
// crashes, so that every test run checks that each of them still runs cleanly and leaks nothing.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "support/host_leak_check.hpp"
#include "support/temp_tree.hpp"

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

using ZW_FUZZ_SUITE = zwtest::HostLeakCheck;

TEST_F(ZW_FUZZ_SUITE, EveryCommittedInputRunsCleanly) {
    LLVMFuzzerInitialize(nullptr, nullptr);
    std::size_t inputs = 0;
    for (const char* folder : {ZW_FUZZ_CORPUS, ZW_FUZZ_CRASHES}) {
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (!entry.is_regular_file() || entry.path().filename().string().starts_with('.')) {
                continue;
            }
            SCOPED_TRACE(entry.path().string());
            const std::string bytes = zwtest::fileText(entry.path());
            EXPECT_EQ(
                LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()), 0);
            ++inputs;
        }
    }
    EXPECT_GT(inputs, 0U) << "no committed inputs in " << ZW_FUZZ_CORPUS;
}
