#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "bridge/bridge_fixture.hpp"
#include "example/docparser/example_item.hpp"
#include "example/docparser/example_type.hpp"
#include "support/result_text.hpp"

namespace {

using example::docparser::DocIDLink;
using example::docparser::ExampleItem;
using example::docparser::ExampleType;
using namespace std::string_view_literals;

TEST(ExampleType, OnlyExactWholeCatalogueFormsAreKinds) {
    // Each form at its kind's number; the text form differs only for Live_Script.
    const std::string_view forms[] = {"Live Script", "Script", "Model", "Example", "Chart", "App", "Unknown"};
    for (std::uint32_t v = 0; v <= 6; ++v) {
        const auto value = static_cast<ExampleType::Value>(v);
        EXPECT_EQ(ExampleType::stringToEnum(forms[v]), value) << forms[v];
        EXPECT_EQ(ExampleType::enumToString(value), v == 0 ? "Live_Script" : forms[v]);
    }
    // Other case, other spacing, a part or more of a form, a NUL inside, bytes that are no text.
    const std::string_view misses[] = {"Live_Script", "live script", "SCRIPT",    " App", "App ",
                                       "Chart\t",     "Ap",          "Apps",      "Live", "",
                                       "\xff",        "App\0"sv,     "Model\0x"sv};
    for (const std::string_view miss : misses) {
        EXPECT_EQ(ExampleType::stringToEnum(miss), ExampleType::Unknown) << '"' << miss << '"';
    }
    for (std::uint32_t v : {7U, 200U, 4294967295U}) {
        EXPECT_EQ(ExampleType::enumToString(static_cast<ExampleType::Value>(v)), "Unknown") << v;
    }
    EXPECT_EQ(ExampleType::getDefaultValue(), 6U);
    EXPECT_STREQ(ExampleType::getZCOSNamespaceName(), "zentab.internal.example.docparser");
    EXPECT_STREQ(ExampleType::getZCOSClassName(), "ExampleType");
}

using ExampleItemTest = zwtest::BridgeTest;

TEST_F(ExampleItemTest, GetIDJoinsComponentAndNameOrGivesNothing) {
    const std::u16string rows[][3] = {
        {u"a", u"b", u"a/b"}, {u"a/b", u"c", u"a/b/c"}, {u"", u"b", u""}, {u"a", u"", u""}, {u"", u"", u""}};
    for (const auto& [component, name, id] : rows) {
        EXPECT_EQ(makeItem(ExampleType::Model, component, name).getID(), id);
    }
    const std::u16string joined = makeItem(ExampleType::Model, u"component", u"longname").getID();
    EXPECT_EQ(joined.capacity(), joined.size()) << "built at its size";
}

TEST_F(ExampleItemTest, CopyDuplicatesTheFieldsAndDropsTheCaches) {
    const ExampleItem source = makeItem(static_cast<ExampleType::Value>(200));
    const auto cached = cachesOf(source);
    const auto live = zwhost::arrays::liveCount();
    const ExampleItem duplicate = source.copy();
    EXPECT_EQ(zwhost::arrays::liveCount(), live);
    EXPECT_EQ(cachesOf(source), cached);
    for (std::size_t i = 0; i < cached.size(); ++i) {
        EXPECT_EQ(cached[i]->refCount, 1U) << i;
        EXPECT_NE(cachesOf(duplicate)[i], cached[i]) << i;
    }
    EXPECT_EQ(zwtest::describe(duplicate), zwtest::describe(source));
    EXPECT_NE(duplicate.getRelativePaths().data(), source.getRelativePaths().data());
    const ExampleItem empty =
        ExampleItem(u"", u"", u"", u"", {}, u"", ExampleType::Unknown, u"", {}, {}).copy();
    EXPECT_TRUE(empty.getDocIDLinks().empty());
    EXPECT_EQ(DocIDLink(u"d", u"").copy().getDocID(), u"d");
}

TEST_F(ExampleItemTest, CachesTravelWithTheItemAndAreReleasedOnce) {
    std::vector<ExampleItem> items;
    items.push_back(makeItem());
    const auto cached = cachesOf(items.front());
    const auto live = zwhost::arrays::liveCount();
    for (int i = 0; i < 100; ++i) {
        items.push_back(makeItem());
    }
    EXPECT_EQ(cachesOf(items.front()), cached);
    EXPECT_EQ(zwhost::arrays::liveCount(), live);
    EXPECT_EQ(cached[0]->refCount, 1U);
    SharedZxArrayPtr shared;
    {
        const ExampleItem moved = std::move(items.front());
        EXPECT_EQ(cachesOf(moved), cached);
        const auto rebuilt = cachesOf(items.front());
        for (std::size_t i = 0; i < cached.size(); ++i) {
            EXPECT_NE(rebuilt[i], cached[i]) << "the moved-from item keeps no cache " << i;
        }
        shared = SharedZxArrayPtr(cached[1]);
        EXPECT_EQ(shared->refCount, 2U);
    }
    EXPECT_EQ(shared->refCount, 1U);
}

} // namespace
