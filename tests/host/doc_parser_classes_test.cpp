// The host's classes for items, links and kinds, reached by property name as the host does.

#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "bridge/bridge_fixture.hpp"
#include "zwhost/messages.hpp"

namespace {

using zwtest::ExampleItem;
using zwtest::ExampleType;
using DocParserClasses = zwtest::BridgeTest;

std::u16string textProperty(const zxArray_tag* object, const char* name) {
    return matrix::getCharText(zwhost::zcos::getProperty(object, 0, name).get());
}

TEST_F(DocParserClasses, RegistrationIsIdempotent) {
    zwhost::classes::registerDocParserClasses();
    for (const std::string_view name : {zwhost::classes::kDocIDLinkClass, zwhost::classes::kExampleTypeClass,
                                        zwhost::classes::kExampleItemClass}) {
        EXPECT_NE(zwhost::zcos::findClass(name), nullptr) << name;
    }
}

TEST_F(DocParserClasses, EveryItemPropertyIsReadableByName) {
    ExampleItem item = makeItem(ExampleType::App, links({{u"doc", u"page"}}));
    const matrix::zx_array_handle object = zwhost::classes::wrapExampleItem(item);
    const std::pair<const char*, std::u16string> strings[] = {
        {"Name", u"name"},           {"Component", u"component"},
        {"Title", u"title"},         {"Description", u"description"},
        {"Thumbnail", u"thumb.png"}, {"OpenCommand", u"open"}};
    for (const auto& [name, text] : strings) {
        EXPECT_EQ(textProperty(object.get(), name), text) << name;
    }
    EXPECT_EQ(matrix::getTextList(zwhost::zcos::getProperty(object.get(), 0, "RelativePaths").get()),
              (std::vector<std::u16string>{u"a.m", u"b.m"}));
    EXPECT_EQ(matrix::getTextList(zwhost::zcos::getProperty(object.get(), 0, "SupportingFiles").get()),
              std::vector<std::u16string>{u"data.mat"});
    const matrix::zx_array_handle kind = zwhost::zcos::getProperty(object.get(), 0, "ExampleType");
    EXPECT_EQ(textProperty(kind.get(), "Name"), u"App");
    EXPECT_EQ(kind.get(), item.getExampleTypeProperty());
    const matrix::zx_array_handle linksArray = zwhost::zcos::getProperty(object.get(), 0, "DocIDLinks");
    EXPECT_EQ(textProperty(linksArray.get(), "Target"), u"page");
    EXPECT_THROW(zwhost::zcos::getProperty(object.get(), 0, "ID"), std::out_of_range);
}

TEST_F(DocParserClasses, ItemPropertiesAreWritableByName) {
    ExampleItem item = makeItem();
    const matrix::zx_array_handle object = zwhost::classes::wrapExampleItem(item);
    zwhost::zcos::setProperty(object.get(), 0, "Title",
                              matrix::zx_array_handle(matrix::createCharRow(u"retitled")).get());
    EXPECT_EQ(item.getTitle(), u"retitled");
    EXPECT_THROW(zwhost::zcos::setProperty(object.get(), 0, "Title", zwtest::makeScalar(1).get()),
                 zwhost::messages::MsgIDError);
    EXPECT_THROW(zwhost::zcos::setProperty(item.getExampleTypeProperty(), 0, "Name",
                                           matrix::zx_array_handle(matrix::createCharRow(u"App")).get()),
                 std::out_of_range);
    zwhost::zcos::setProperty(object.get(), 0, "ExampleType", zwtest::makeScalar(1.0).get());
    EXPECT_EQ(item.getExampleType(), ExampleType::Live_Script);
}

TEST_F(DocParserClasses, KindIsBuiltFromOneUint32ScalarOnly) {
    const auto name = zcos::internal::makeInterned(std::string(zwhost::classes::kExampleTypeClass));
    const matrix::zx_array_handle number = zwtest::makeScalar(2.0);
    const zxArray_tag* argv[] = {number.get()};
    try {
        omConstructObjectWithClient(name, 1, argv, COSGetPublicClient());
        ADD_FAILURE() << "a double was accepted";
    } catch (const zwhost::messages::MsgIDError& error) {
        EXPECT_EQ(error.GetID(), "ZENTAB:class:RequireUint32Scalar");
    }
    EXPECT_EQ(number->refCount, 1u);
}

} // namespace
