// String and string-vector properties of items and links.

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "bridge/bridge_fixture.hpp"
#include "support/item_caches.hpp"
#include "zwhost/messages.hpp"

namespace {

using zwtest::DocIDLink;
using zwtest::ExampleItem;
using Strings = std::vector<std::u16string>;
using StringProperties = zwtest::BridgeTest;
using Caches = example::docparser::detail::ExampleItemCaches;

TEST_F(StringProperties, SettersChangeTheFieldThatBothGettersGive) {
    struct Case {
        const char* name;
        void (ExampleItem::*set)(const std::u16string*);
        const std::u16string& (ExampleItem::*property)() const;
        const std::u16string& (ExampleItem::*plain)() const;
    };
    const Case cases[] = {
        {"Name", &ExampleItem::setNameProperty, &ExampleItem::getNameProperty, &ExampleItem::getName},
        {"Component", &ExampleItem::setComponentProperty, &ExampleItem::getComponentProperty,
         &ExampleItem::getComponent},
        {"Title", &ExampleItem::setTitleProperty, &ExampleItem::getTitleProperty, &ExampleItem::getTitle},
        {"Description", &ExampleItem::setDescriptionProperty, &ExampleItem::getDescriptionProperty,
         &ExampleItem::getDescription},
        {"Thumbnail", &ExampleItem::setThumbnailProperty, &ExampleItem::getThumbnailProperty,
         &ExampleItem::getThumbnail},
        {"OpenCommand", &ExampleItem::setOpenCommandProperty, &ExampleItem::getOpenCommandProperty,
         &ExampleItem::getOpenCommand},
    };
    for (const Case& c : cases) {
        ExampleItem item = makeItem();
        const std::u16string before = (item.*c.plain)();
        (item.*c.set)(nullptr);
        EXPECT_EQ((item.*c.plain)(), before) << c.name;
        const std::u16string value = u"new \u00e9";
        (item.*c.set)(&value);
        EXPECT_EQ((item.*c.property)(), value) << c.name;
        EXPECT_EQ(&(item.*c.property)(), &(item.*c.plain)()) << c.name;
    }
    DocIDLink link(u"id", u"target");
    const std::u16string docID = u"other";
    link.setDocIDProperty(&docID);
    link.setTargetProperty(nullptr);
    EXPECT_EQ(link.getDocID(), u"other");
    EXPECT_EQ(link.getTargetProperty(), u"target");
}

struct VectorProperty {
    const char* name;
    const zxArray_tag* (ExampleItem::*get)() const;
    void (ExampleItem::*set)(const zxArray_tag*);
    const Strings& (ExampleItem::*plain)() const;
    SharedZxArrayPtr& (*cache)(const ExampleItem&);
};

const VectorProperty kVectorProperties[] = {
    {"RelativePaths", &ExampleItem::getRelativePathsProperty, &ExampleItem::setRelativePathsProperty,
     &ExampleItem::getRelativePaths, &Caches::relativePaths},
    {"SupportingFiles", &ExampleItem::getSupportingFilesProperty, &ExampleItem::setSupportingFilesProperty,
     &ExampleItem::getSupportingFiles, &Caches::supportingFiles},
};

TEST_F(StringProperties, VectorIsBuiltOnceAndFollowsEverySet) {
    for (const VectorProperty& p : kVectorProperties) {
        ExampleItem item = makeItem();
        zwhost::fault::reset();
        const zxArray_tag* first = (item.*p.get)();
        const std::uint64_t builds = zwhost::fault::callsOf("matrix::createArray");
        EXPECT_EQ((item.*p.get)(), first) << p.name;
        EXPECT_EQ(zwhost::fault::callsOf("matrix::createArray"), builds) << p.name;
        EXPECT_EQ(matrix::getTextList(first), (item.*p.plain)()) << p.name;

        // The very array the getter returned, then a column, which comes back as a row.
        (item.*p.set)(first);
        EXPECT_NE((item.*p.get)(), first) << p.name;
        const unsigned long column[] = {3, 1};
        matrix::zx_array_handle value(matrix::createCellArray(column));
        const Strings texts = {u"x", u"y", u"z"};
        for (std::size_t i = 0; i < texts.size(); ++i) {
            value->cells[i] = matrix::from_zentab(matrix::createCharRow(texts[i]));
        }
        (item.*p.set)(value.get());
        EXPECT_EQ((item.*p.plain)(), texts) << p.name;
        EXPECT_EQ((item.*p.get)()->dims, (std::vector<std::uint64_t>{1, 3})) << p.name;
        EXPECT_EQ(matrix::getTextList((item.*p.get)()), texts) << p.name;
    }
}

TEST_F(StringProperties, ValueOfAnotherKindChangesNothing) {
    for (const VectorProperty& p : kVectorProperties) {
        ExampleItem item = makeItem();
        const zxArray_tag* cached = (item.*p.get)();
        const Strings before = (item.*p.plain)();
        EXPECT_THROW((item.*p.set)(zwtest::makeScalar(1).get()), zwhost::messages::MsgIDError) << p.name;
        (item.*p.set)(nullptr);
        EXPECT_EQ((item.*p.plain)(), before) << p.name;
        EXPECT_EQ((item.*p.get)(), cached) << p.name;
    }
}

TEST_F(StringProperties, FailedBuildLeavesTheCacheEmpty) {
    for (const VectorProperty& p : kVectorProperties) {
        ExampleItem item = makeItem();
        zwhost::fault::failOn("matrix::createArray", 2);
        EXPECT_THROW((item.*p.get)(), zwhost::fault::InjectedFault) << p.name;
        EXPECT_FALSE(p.cache(item)) << p.name;
        const zxArray_tag* built = (item.*p.get)();
        EXPECT_EQ(matrix::getTextList(built), (item.*p.plain)()) << p.name;
    }
}

} // namespace
