// The links of an item as an object array of the host's link class.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "bridge/bridge_fixture.hpp"
#include "bridge/doc_id_link_arrays.hpp"
#include "support/item_caches.hpp"

namespace {

using zwtest::DocIDLink;
using zwtest::ExampleItem;
using zwtest::ExampleType;
using Caches = example::docparser::detail::ExampleItemCaches;
using DocIDLinkArrays = zwtest::BridgeTest;
using Ids = std::vector<std::u16string>;

const zcos::COSClass* linkClass() {
    return zwhost::zcos::findClass(zwhost::classes::kDocIDLinkClass);
}

TEST_F(DocIDLinkArrays, GetterBuildsOneCachedRowOfCopies) {
    for (const std::size_t count : {0u, 1u, 3u}) {
        std::vector<DocIDLink> source;
        for (std::size_t i = 0; i < count; ++i) {
            source.emplace_back(u"id" + std::u16string(1, u'0' + i), u"target");
        }
        const ExampleItem item = makeItem(ExampleType::Model, std::move(source));
        zwhost::fault::reset();
        const zxArray_tag* array = item.getDocIDLinksProperty();
        EXPECT_EQ(item.getDocIDLinksProperty(), array);
        EXPECT_EQ(zwhost::fault::callsOf("omCreateZCOSMatrix"), 1u);
        EXPECT_EQ(zwhost::fault::callsOf("makeInterned"), count + 1);
        EXPECT_EQ(array->dims, (std::vector<std::uint64_t>{1, count}));
        EXPECT_EQ(array->objectClass, linkClass());
        EXPECT_EQ(array->scope, zxSCOPE_CACHED);
        EXPECT_TRUE(array->internalForm);
        EXPECT_EQ(docIDsOf(array), docIDsOf(item.getDocIDLinks()));
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_NE(&example::docparser::detail::getDocIDLinkElement(array, i)->getDocID(),
                      &item.getDocIDLinks()[i].getDocID());
        }
    }
}

TEST_F(DocIDLinkArrays, SetTakesCopiesOfAnyShapeAndRebuilds) {
    const std::vector<DocIDLink> three = links({{u"a", u"1"}, {u"b", u"2"}, {u"c", u"3"}});
    const std::vector<DocIDLink> none;
    struct Case {
        const char* what;
        unsigned long rows;
        unsigned long cols;
        std::size_t count;
    };
    const Case cases[] = {{"column", 3, 1, 3}, {"matrix", 1, 3, 3}, {"empty", 0, 0, 0}};
    for (const Case& c : cases) {
        ExampleItem item = makeItem(ExampleType::Model, links({{u"old", u"x"}}));
        item.getDocIDLinksProperty();
        matrix::zx_array_handle value = linkArray(c.rows, c.cols, c.count == 0 ? none : three);
        item.setDocIDLinksProperty(value.get());
        const zxArray_tag* rebuilt = item.getDocIDLinksProperty();
        EXPECT_NE(rebuilt, value.get()) << c.what;
        EXPECT_EQ(rebuilt->dims, (std::vector<std::uint64_t>{1, c.count})) << c.what;
        EXPECT_EQ(docIDsOf(item.getDocIDLinks()), docIDsOf(value.get())) << c.what;
        EXPECT_EQ(docIDsOf(rebuilt), docIDsOf(value.get())) << c.what;
    }
    ExampleItem item = makeItem(ExampleType::Model, links({{u"old", u"x"}}));
    const unsigned long emptyCells[] = {0, 0};
    item.setDocIDLinksProperty(matrix::zx_array_handle(matrix::createCellArray(emptyCells)).get());
    EXPECT_TRUE(item.getDocIDLinks().empty());
    EXPECT_EQ(item.getDocIDLinksProperty()->objectClass, linkClass());
}

TEST_F(DocIDLinkArrays, SetWithTheCachedArrayOrNull) {
    ExampleItem item = makeItem(ExampleType::Model, links({{u"a", u"1"}, {u"b", u"2"}}));
    const zxArray_tag* cached = item.getDocIDLinksProperty();
    item.setDocIDLinksProperty(nullptr);
    EXPECT_EQ(item.getDocIDLinksProperty(), cached);
    item.setDocIDLinksProperty(cached);
    EXPECT_NE(item.getDocIDLinksProperty(), cached);
    EXPECT_EQ(docIDsOf(item.getDocIDLinksProperty()), (Ids{u"a", u"b"}));
    EXPECT_EQ(docIDsOf(item.getDocIDLinks()), (Ids{u"a", u"b"}));
}

TEST_F(DocIDLinkArrays, HostChangesToAnElementStayInTheHostObject) {
    ExampleItem item = makeItem(ExampleType::Model, links({{u"a", u"1"}}));
    const zxArray_tag* array = item.getDocIDLinksProperty();
    zwhost::zcos::setProperty(array, 0, "DocID",
                              matrix::zx_array_handle(matrix::createCharRow(u"changed")).get());
    EXPECT_EQ(item.getDocIDLinks()[0].getDocID(), u"a");
    EXPECT_EQ(item.getDocIDLinksProperty(), array);
    EXPECT_EQ(docIDsOf(array), Ids{u"changed"});
    const ExampleItem copy = item.copy();
    EXPECT_EQ(docIDsOf(copy.getDocIDLinksProperty()), Ids{u"a"});
}

TEST_F(DocIDLinkArrays, FailedBuildLeavesTheCacheEmptyAndNothingBehind) {
    const struct {
        const char* operation;
        std::uint64_t nth;
    } cases[] = {{"makeInterned", 1},
                 {"omCreateZCOSMatrix", 1},
                 {"makeInterned", 3},
                 {"COSClass::getClass", 3},
                 {"omWrapData", 2},
                 {"omSetArrayElement", 2},
                 {"zcosConvertArrayToInternalInPlace", 1},
                 {"zxSetArrayScope", 1}};
    for (const auto& c : cases) {
        const ExampleItem item = makeItem(ExampleType::Model, links({{u"a", u"1"}, {u"b", u"2"}}));
        zwhost::fault::failOn(c.operation, c.nth);
        EXPECT_THROW(item.getDocIDLinksProperty(), zwhost::fault::InjectedFault) << c.operation;
        EXPECT_FALSE(Caches::docIDLinks(item)) << c.operation;
        EXPECT_EQ(docIDsOf(item.getDocIDLinksProperty()), (Ids{u"a", u"b"})) << c.operation;
    }
}

TEST_F(DocIDLinkArrays, FailedSetKeepsWhatTheFailedStepHadNotReplaced) {
    ExampleItem item = makeItem(ExampleType::Model, links({{u"old", u"x"}}));
    const zxArray_tag* cached = item.getDocIDLinksProperty();
    const matrix::zx_array_handle value = linkArray(1, 2, links({{u"a", u"1"}, {u"b", u"2"}}));

    zwhost::fault::failOn("omGetArrayElement", 2);
    EXPECT_THROW(item.setDocIDLinksProperty(value.get()), zwhost::fault::InjectedFault);
    EXPECT_EQ(docIDsOf(item.getDocIDLinks()), Ids{u"old"});
    EXPECT_EQ(item.getDocIDLinksProperty(), cached);

    zwhost::fault::failOn("omCreateZCOSMatrix", 1);
    EXPECT_THROW(item.setDocIDLinksProperty(value.get()), zwhost::fault::InjectedFault);
    EXPECT_EQ(docIDsOf(item.getDocIDLinks()), (Ids{u"a", u"b"}));
    EXPECT_EQ(item.getDocIDLinksProperty(), cached);
}

} // namespace
