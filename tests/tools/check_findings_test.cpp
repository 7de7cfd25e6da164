// Findings of `exampledoc check` that name a cause the library's own words do not give.

#include <gtest/gtest.h>

#include "support/host_leak_check.hpp"
#include "support/tool_run.hpp"

namespace {

class CheckFindings : public zwtest::HostLeakCheck {};

TEST_F(CheckFindings, NameTheCauseAndItsPlace) {
    const std::string check = "check --format json";
    const std::string head = "{\"header\":{\"helpFolder\":\"h\"},\"exampleItems\":[\n";
    // clang-format off
    const zwtest::ToolCase cases[] = {
        {{{"h/ex.json", head + R"({"name":"a\ud800b"}]})"}}, check, 1, {"h/ex.json:2:11 [json-syntax] '\\ud800' is a lone surrogate"}},
        {{{"h/ex.json", head + R"({"name":"\ud83d\ude00\udc00"}]})"}}, check, 1, {"h/ex.json:2:22 [json-syntax] '\\udc00' is a lone surrogate"}},
        {{{"h/l.json", "<link>l.json"}}, check, 0, {"h/l.json [left-out] not read: it is a link in a loop of links"}},
    };
    // clang-format on
    for (const auto& c : cases) {
        zwtest::expectTool(c);
    }
}

} // namespace
