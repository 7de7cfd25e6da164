#include "example/docparser/example_item.hpp"

#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/host_leak_check.hpp"
#include "support/item_caches.hpp"

namespace {

using example::docparser::DocIDLink;
using example::docparser::ExampleItem;
using example::docparser::ExampleType;
using Caches = example::docparser::detail::ExampleItemCaches;

ExampleItem makeItem(std::u16string component, std::u16string name,
                     ExampleType::Value kind = ExampleType::Model, std::size_t links = 2) {
    std::vector<DocIDLink> docIDLinks;
    for (std::size_t i = 0; i < links; ++i) {
        docIDLinks.emplace_back(u"doc" + std::u16string(1, char16_t(u'0' + i)), u"target");
    }
    return ExampleItem(std::move(name), std::move(component), u"Title", u"Description", {u"a/b.m", u"c.slx"},
                       u"thumb.png", kind, u"open()", {u"data.mat"}, std::move(docIDLinks));
}

// Fills the four caches with arrays of their own and gives back the pointers.
std::vector<const zxArray_tag*> fillCaches(const ExampleItem& item) {
    SharedZxArrayPtr* caches[] = {&Caches::relativePaths(item), &Caches::exampleType(item),
                                  &Caches::supportingFiles(item), &Caches::docIDLinks(item)};
    std::vector<const zxArray_tag*> pointers;
    for (SharedZxArrayPtr* cache : caches) {
        *cache = zwtest::makeScalar(1.0);
        pointers.push_back(cache->get());
    }
    return pointers;
}

using ExampleItemTest = zwtest::HostLeakCheck;

TEST_F(ExampleItemTest, GetIDJoinsComponentAndNameOrGivesNothing) {
    const struct {
        std::u16string component, name, id;
    } rows[] = {
        {u"a", u"b", u"a/b"}, {u"a/b", u"c", u"a/b/c"}, {u"", u"b", u""}, {u"a", u"", u""}, {u"", u"", u""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(makeItem(row.component, row.name).getID(), row.id);
    }
}

TEST_F(ExampleItemTest, CopyDuplicatesTheFieldsAndDropsTheCaches) {
    const ExampleItem source = makeItem(u"comp", u"name", static_cast<ExampleType::Value>(200));
    const std::vector<const zxArray_tag*> cached = fillCaches(source);
    const auto live = zwhost::arrays::liveCount();

    const ExampleItem duplicate = source.copy();

    EXPECT_EQ(zwhost::arrays::liveCount(), live);
    for (const zxArray_tag* array : cached) {
        EXPECT_EQ(array->refCount, 1U);
    }
    EXPECT_EQ(Caches::relativePaths(source).get(), cached[0]);
    EXPECT_EQ(Caches::docIDLinks(source).get(), cached[3]);
    EXPECT_FALSE(Caches::relativePaths(duplicate));
    EXPECT_FALSE(Caches::exampleType(duplicate));
    EXPECT_FALSE(Caches::supportingFiles(duplicate));
    EXPECT_FALSE(Caches::docIDLinks(duplicate));

    EXPECT_EQ(duplicate.getExampleType(), 200U);
    EXPECT_EQ(duplicate.getName(), u"name");
    EXPECT_EQ(duplicate.getRelativePaths(), source.getRelativePaths());
    EXPECT_NE(duplicate.getRelativePaths().data(), source.getRelativePaths().data());
    ASSERT_EQ(duplicate.getDocIDLinks().size(), 2U);
    EXPECT_EQ(duplicate.getDocIDLinks()[1].getDocID(), u"doc1");
    EXPECT_EQ(duplicate.getDocIDLinks().capacity(), 2U);
}

TEST_F(ExampleItemTest, EmptyItemAndEmptyLinkAreLegal) {
    const ExampleItem empty(u"", u"", u"", u"", {}, u"", ExampleType::Unknown, u"", {}, {});
    EXPECT_EQ(empty.getID(), u"");
    const ExampleItem duplicate = empty.copy();
    EXPECT_TRUE(duplicate.getDocIDLinks().empty());
    EXPECT_TRUE(duplicate.getOpenCommand().empty());

    const DocIDLink link(u"", u"");
    const DocIDLink linkCopy = link.copy();
    EXPECT_EQ(linkCopy.getDocID(), link.getDocID());
    EXPECT_EQ(linkCopy.getTarget(), link.getTarget());
}

TEST_F(ExampleItemTest, CachesTravelWithTheItemWhenTheVectorGrows) {
    std::vector<ExampleItem> items;
    items.push_back(makeItem(u"c", u"first"));
    const std::vector<const zxArray_tag*> cached = fillCaches(items.front());
    const auto live = zwhost::arrays::liveCount();
    for (int i = 0; i < 100; ++i) {
        items.push_back(makeItem(u"c", u"more"));
    }
    EXPECT_EQ(Caches::relativePaths(items.front()).get(), cached[0]);
    EXPECT_EQ(Caches::exampleType(items.front()).get(), cached[1]);
    EXPECT_EQ(Caches::supportingFiles(items.front()).get(), cached[2]);
    EXPECT_EQ(Caches::docIDLinks(items.front()).get(), cached[3]);
    EXPECT_EQ(zwhost::arrays::liveCount(), live);
    EXPECT_EQ(cached[0]->refCount, 1U);
}

TEST_F(ExampleItemTest, MoveLeavesTheSourceCachesEmpty) {
    ExampleItem source = makeItem(u"c", u"n");
    const std::vector<const zxArray_tag*> cached = fillCaches(source);
    const ExampleItem target = std::move(source);
    EXPECT_FALSE(Caches::relativePaths(source));
    EXPECT_FALSE(Caches::docIDLinks(source));
    EXPECT_EQ(Caches::exampleType(target).get(), cached[1]);
}

TEST_F(ExampleItemTest, DestructionReleasesEachCacheOnce) {
    const auto live = zwhost::arrays::liveCount();
    SharedZxArrayPtr shared;
    {
        const ExampleItem item = makeItem(u"c", u"n");
        fillCaches(item);
        shared = Caches::supportingFiles(item);
        EXPECT_EQ(shared->refCount, 2U);
    }
    EXPECT_EQ(shared->refCount, 1U);
    EXPECT_EQ(zwhost::arrays::liveCount(), live + 1);
}

} // namespace
