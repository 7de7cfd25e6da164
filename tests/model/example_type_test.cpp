#include "example/docparser/example_type.hpp"

#include <cstdint>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using example::docparser::ExampleType;
using namespace std::string_literals;

TEST(ExampleType, EachCatalogueFormYieldsItsValue) {
    const struct {
        std::string_view text;
        ExampleType::Value value;
    } rows[] = {
        {"Live Script", ExampleType::Live_Script},
        {"Script", ExampleType::Script},
        {"Model", ExampleType::Model},
        {"Example", ExampleType::Example},
        {"Chart", ExampleType::Chart},
        {"App", ExampleType::App},
        {"Unknown", ExampleType::Unknown},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ExampleType::stringToEnum(row.text), row.value) << row.text;
    }
}

TEST(ExampleType, OnlyExactWholeMatchesAreKinds) {
    const std::string_view misses[] = {
        "Live_Script",
        "live script",
        "SCRIPT",
        "script",
        "mODEL",
        " App",
        "App ",
        "Ap",
        "Apps",
        "Scripts",
        "Live",
        "",
        "Zzz",
        "\xff",
        "Chart\t",
        std::string_view("App\0", 4),
        std::string_view("Model\0x", 7),
    };
    for (std::string_view text : misses) {
        EXPECT_EQ(ExampleType::stringToEnum(text), ExampleType::Unknown) << '"' << text << '"';
    }
    EXPECT_EQ(ExampleType::stringToEnum(std::string_view()), ExampleType::Unknown);
}

TEST(ExampleType, TextFormsDifferOnlyForLiveScript) {
    EXPECT_EQ(ExampleType::enumToString(ExampleType::Live_Script), "Live_Script");
    for (std::uint32_t v = 0; v <= 6; ++v) {
        const auto value = static_cast<ExampleType::Value>(v);
        const auto back = ExampleType::stringToEnum(ExampleType::enumToString(value));
        EXPECT_EQ(back, v == 0 ? ExampleType::Unknown : value) << v;
    }
}

TEST(ExampleType, NumbersBeyondTheEnumeratorsAreUnknown) {
    for (std::uint32_t v : {6U, 7U, 200U, 4294967295U}) {
        EXPECT_EQ(ExampleType::enumToString(static_cast<ExampleType::Value>(v)), "Unknown") << v;
    }
}

TEST(ExampleType, DefaultIsTheUnknownRow) {
    EXPECT_EQ(ExampleType::getDefaultValue(), 6U);
    EXPECT_EQ(ExampleType::getDefaultValue(), ExampleType::stringToEnum("no such kind"));
    EXPECT_EQ(ExampleType::getDefaultValue(), ExampleType::stringToEnum("Unknown"));
}

TEST(ExampleType, ClassIdentity) {
    EXPECT_STREQ(ExampleType::getZCOSNamespaceName(), "zentab.internal.example.docparser");
    EXPECT_STREQ(ExampleType::getZCOSClassName(), "ExampleType");
}

} // namespace
