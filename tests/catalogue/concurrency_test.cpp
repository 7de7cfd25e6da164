#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "example/docparser/doc_example_parser.hpp"
#include "support/result_text.hpp"
#include "zwhost/settings.hpp"

namespace {

using example::docparser::DocExampleParser;

TEST(Concurrency, ParsesAndRootOperationsRunSideBySide) {
    zwtest::TempDir dir;
    zwtest::writeTree(dir.path(), "small");
    zwhost::settings::setCurrentLocale(u"ja_JP");
    const std::u16string root = zwtest::u16(dir.path().string());
    const auto expected = DocExampleParser::getDocExampleFiles(root);
    ASSERT_EQ(expected.size(), 3U);

    std::vector<std::thread> threads;
    std::vector<int> mismatches(4, 0);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 20; ++i) {
                if (t % 2 == 0) {
                    const auto result = DocExampleParser::getDocExampleFiles(root);
                    mismatches[t] += zwtest::describe(result) != zwtest::describe(expected);
                } else {
                    const auto held = DocExampleParser::getExampleRoot();
                    const std::u16string before = *held;
                    DocExampleParser::setExampleRoot(u"/t" + std::u16string(1, char16_t(u'0' + t)));
                    if (i % 5 == 0) {
                        DocExampleParser::restoreDefaultSettings();
                    }
                    mismatches[t] += *held != before;
                }
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(mismatches, std::vector<int>(4, 0));
}

} // namespace
