// The kind of an item as a host enumeration object.

#include <cstdint>
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "bridge/bridge_fixture.hpp"
#include "bridge/require_scalar_error.hpp"
#include "support/item_caches.hpp"

namespace {

using zwtest::ExampleItem;
using zwtest::ExampleType;
using Caches = example::docparser::detail::ExampleItemCaches;
using ExampleTypeProperty = zwtest::BridgeTest;

matrix::zx_array_handle uint32Array(unsigned long rows, unsigned long cols, std::uint32_t fill) {
    const unsigned long dims[] = {rows, cols};
    matrix::zx_array_handle array(matrix::detail::do_create_uninitnumeric(dims, zxUINT32_CLASS, zxREAL));
    for (std::uint64_t i = 0; i < zxGetNumberOfElements(array.get()); ++i) {
        std::memcpy(array->realData + 4 * i, &fill, 4);
    }
    return array;
}

std::u16string memberName(const zxArray_tag* object) {
    return matrix::getCharText(zwhost::zcos::getProperty(object, 0, "Name").get());
}

TEST_F(ExampleTypeProperty, GetterBuildsOneObjectFromTheNumber) {
    const std::pair<std::uint32_t, const char16_t*> cases[] = {{ExampleType::Live_Script, u"Live_Script"},
                                                               {ExampleType::App, u"App"},
                                                               {ExampleType::Unknown, u"Unknown"},
                                                               {200, u"Unknown"}};
    for (const auto& [kind, name] : cases) {
        const ExampleItem item = makeItem(static_cast<ExampleType::Value>(kind));
        zwhost::fault::reset();
        const zxArray_tag* object = item.getExampleTypeProperty();
        EXPECT_EQ(item.getExampleTypeProperty(), object);
        EXPECT_EQ(zwhost::fault::callsOf("omConstructObjectWithClient"), 1u);
        EXPECT_EQ(zwhost::fault::callsOf("makeInterned"), 1u);
        EXPECT_EQ(object->objectClass, zwhost::zcos::findClass(zwhost::classes::kExampleTypeClass));
        EXPECT_EQ(kindUnder(object), kind);
        EXPECT_EQ(memberName(object), name);
        EXPECT_EQ(object->refCount, 1u);
    }
}

TEST_F(ExampleTypeProperty, SetKeepsTheValueGivenAndReadsItsFirstWord) {
    struct Case {
        const char* what;
        std::function<matrix::zx_array_handle()> make;
        std::uint32_t kind;
    };
    const Case cases[] = {
        {"uint32", [] { return uint32Array(1, 1, ExampleType::Chart); }, ExampleType::Chart},
        {"beyond the enumerators", [] { return uint32Array(1, 1, 200); }, 200},
        {"double 1.0, low word", [] { return zwtest::makeScalar(1.0); }, ExampleType::Live_Script},
        {"enumeration object",
         [] {
             const ExampleItem source = makeItem(ExampleType::Script);
             const zxArray_tag* object = source.getExampleTypeProperty();
             intrusive_ptr_add_ref(object);
             return matrix::from_zentab(const_cast<zxArray_tag*>(object));
         },
         ExampleType::Script},
    };
    for (const Case& c : cases) {
        ExampleItem item = makeItem();
        item.getExampleTypeProperty();
        const matrix::zx_array_handle value = c.make();
        zwhost::fault::reset();
        item.setExampleTypeProperty(value.get());
        EXPECT_EQ(item.getExampleType(), c.kind) << c.what;
        EXPECT_EQ(item.getExampleTypeProperty(), value.get()) << c.what;
        EXPECT_EQ(value->refCount, 2u) << c.what;
        EXPECT_EQ(zwhost::fault::callsOf("omConstructObjectWithClient"), 0u) << c.what;
    }
}

TEST_F(ExampleTypeProperty, CopyBuildsItsOwnObjectFromTheNumber) {
    ExampleItem item = makeItem();
    item.setExampleTypeProperty(uint32Array(1, 1, 200).get());
    const ExampleItem copy = item.copy();
    EXPECT_EQ(copy.getExampleType(), 200u);
    EXPECT_FALSE(Caches::exampleType(copy));
    const zxArray_tag* built = copy.getExampleTypeProperty();
    EXPECT_NE(built, item.getExampleTypeProperty());
    EXPECT_EQ(kindUnder(built), 200u);
}

TEST_F(ExampleTypeProperty, AnythingButOneElementIsRefusedAndChangesNothing) {
    const std::pair<unsigned long, unsigned long> shapes[] = {{0, 0}, {1, 0}, {1, 2}, {2, 2}};
    for (const auto& [rows, cols] : shapes) {
        ExampleItem item = makeItem(ExampleType::Model);
        const zxArray_tag* before = item.getExampleTypeProperty();
        const matrix::zx_array_handle value = uint32Array(rows, cols, ExampleType::App);
        try {
            item.setExampleTypeProperty(value.get());
            ADD_FAILURE() << rows << "x" << cols << " accepted";
        } catch (const foundation::core::except::IMsgIDException& error) {
            EXPECT_EQ(error.GetID(), "ZENTAB:class:RequireScalar");
        }
        EXPECT_EQ(item.getExampleType(), ExampleType::Model);
        EXPECT_EQ(item.getExampleTypeProperty(), before);
        EXPECT_EQ(value->refCount, 1u);
    }
    ExampleItem untouched = makeItem();
    untouched.setExampleTypeProperty(nullptr);
    EXPECT_FALSE(Caches::exampleType(untouched));
}

TEST_F(ExampleTypeProperty, FailedBuildLeavesTheCacheEmpty) {
    for (const char* operation : {"do_create_uninitnumeric", "COSGetPublicClient", "makeInterned",
                                  "omConstructObjectWithClient", "COSClass::getClass"}) {
        const ExampleItem item = makeItem(ExampleType::Chart);
        zwhost::fault::failOn(operation, 1);
        EXPECT_THROW(item.getExampleTypeProperty(), zwhost::fault::InjectedFault) << operation;
        EXPECT_FALSE(Caches::exampleType(item)) << operation;
        EXPECT_EQ(kindUnder(item.getExampleTypeProperty()), ExampleType::Chart) << operation;
    }
}

TEST_F(ExampleTypeProperty, FailedCopyKeepsTheNewKindWithTheOldCache) {
    ExampleItem item = makeItem(ExampleType::Model);
    const zxArray_tag* before = item.getExampleTypeProperty();
    const matrix::zx_array_handle value = uint32Array(1, 1, ExampleType::App);
    zwhost::fault::failOn("copyZxArrayToSharedZxArrayPtr", 1);
    EXPECT_THROW(item.setExampleTypeProperty(value.get()), zwhost::fault::InjectedFault);
    EXPECT_EQ(item.getExampleType(), ExampleType::App);
    EXPECT_EQ(item.getExampleTypeProperty(), before);
    EXPECT_EQ(value->refCount, 1u);
}

} // namespace
