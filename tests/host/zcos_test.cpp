// The class system: interned names, the class registry, objects and their interface, object
// arrays, value objects and property access by name.

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "support/host_leak_check.hpp"
#include "zcos/om.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/zcos.hpp"

namespace {

int deletedData = 0;

struct Counter {
    int value;
};

void deleteCounter(void* data) noexcept {
    ++deletedData;
    delete static_cast<Counter*>(data);
}

// A handle class wrapping a Counter with one property, and a value class built from a scalar.
zcos::COSClass& handleClass() {
    static zcos::COSClass& cls = zwhost::zcos::registerClass({
        "test.zcos.Handle",
        {},
        &deleteCounter,
        {{"Value",
          [](const zcos::COSObject& object) {
              return matrix::from_zentab(matrix::createCharRow(
                  std::u16string(1, static_cast<char16_t>(static_cast<Counter*>(object.data())->value))));
          },
          [](zcos::COSObject& object, const zxArray_tag* value) {
              static_cast<Counter*>(object.data())->value = matrix::getCharText(value).at(0);
          }}},
    });
    return cls;
}

zcos::COSClass& valueClass() {
    static zcos::COSClass& cls = zwhost::zcos::registerClass({
        "test.zcos.Value",
        [](const zcos::COSClass& self, int argc, const zxArray_tag* const* argv) {
            if (argc != 1) {
                throw std::invalid_argument("one argument");
            }
            return zwhost::zcos::makeValueObject(self, SharedZxArrayPtr(argv[0]));
        },
        nullptr,
        {},
    });
    return cls;
}

zcos::COSInterfacePtr wrapCounter(int value) {
    return omWrapData(new Counter{value}, &handleClass());
}

class Zcos : public zwtest::HostLeakCheck {
protected:
    void SetUp() override {
        handleClass();
        valueClass();
        deletedData = 0;
    }
    zwhost::fault::Scope faults;
};

TEST_F(Zcos, InterningGivesOneAddressPerText) {
    const std::string name = "test.zcos.Handle";
    EXPECT_EQ(zcos::internal::makeInterned(name), zcos::internal::makeInterned(std::string(name)));
    EXPECT_NE(zcos::internal::makeInterned(name), zcos::internal::makeInterned("test.zcos.Value"));
    EXPECT_EQ(zcos::internal::makeInterned(""), &zcos::internal::nullValue);
    EXPECT_TRUE(zcos::COSClassName().empty());
    EXPECT_EQ(zcos::COSClass::getClass(zcos::internal::makeInterned(name)), &handleClass());
    EXPECT_EQ(zwhost::zcos::findClass(name), &handleClass());
    EXPECT_EQ(zwhost::zcos::findClass("test.zcos.None"), nullptr);
}

TEST_F(Zcos, UnknownAndDuplicateClassesAreRefused) {
    EXPECT_THROW(zcos::COSClass::getClass(zcos::internal::makeInterned("test.zcos.None")), std::out_of_range);
    EXPECT_THROW(zcos::COSClass::getClass(&zcos::internal::nullValue), std::out_of_range);
    EXPECT_THROW(zwhost::zcos::registerClass({"test.zcos.Handle", {}, nullptr, {}}), std::invalid_argument);
}

TEST_F(Zcos, WrappedDataIsDeletedWithTheLastReference) {
    {
        zcos::COSInterfacePtr object = wrapCounter(1);
        zcos::COSInterfacePtr second = object;
        EXPECT_EQ(zwhost::zcos::liveObjectCount(), 1);
    }
    EXPECT_EQ(deletedData, 1);
}

TEST_F(Zcos, InterfaceGivesTheDataUnderItsClassKeyOnly) {
    zcos::COSInterfacePtr object = wrapCounter(7);
    const zcos::COSKey key = object->getDescriptor()->getKey();
    EXPECT_EQ(static_cast<Counter*>(object->getDataByKey(&key))->value, 7);
    const zcos::COSKey otherKey = valueClass().getKey();
    EXPECT_THROW(object->getDataByKey(&otherKey), std::invalid_argument);
}

TEST_F(Zcos, ObjectArraysHoldTheirElementsUntilDestroyed) {
    const zcos::COSClassName name = handleClass().getName();
    {
        matrix::zx_array_handle array(omCreateZCOSMatrix(2, 3, name));
        EXPECT_EQ(array->dims, (std::vector<std::uint64_t>{2, 3}));
        EXPECT_THROW(zcosConvertArrayToInternalInPlace(array.get(), true), std::invalid_argument);
        for (unsigned long i = 0; i < 6; ++i) {
            omSetArrayElement(array.get(), i, wrapCounter(static_cast<int>(i)));
        }
        zcosConvertArrayToInternalInPlace(array.get(), true);
        EXPECT_TRUE(array->internalForm);
        EXPECT_EQ(omGetNumberOfElementsInUnderlyingArray(array.get()), 6u);
        const zcos::COSInterfacePtr fifth = omGetArrayElement(array.get(), 4);
        EXPECT_EQ(static_cast<Counter*>(fifth.get()->data())->value, 4);
        EXPECT_THROW(omGetArrayElement(array.get(), 6), std::out_of_range);
        EXPECT_THROW(omSetArrayElement(array.get(), 6, fifth), std::out_of_range);
    }
    EXPECT_EQ(deletedData, 6);
    matrix::zx_array_handle empty(omCreateZCOSMatrix(1, 0, name));
    EXPECT_EQ(omGetNumberOfElementsInUnderlyingArray(empty.get()), 0u);
    zcosConvertArrayToInternalInPlace(empty.get(), true);
}

TEST_F(Zcos, ElementsOfAnotherClassOrNoneAreRefused) {
    matrix::zx_array_handle array(omCreateZCOSMatrix(1, 1, valueClass().getName()));
    EXPECT_THROW(omSetArrayElement(array.get(), 0, wrapCounter(1)), std::invalid_argument);
    EXPECT_THROW(omGetArrayElement(array.get(), 0), std::invalid_argument);
    EXPECT_THROW(omGetArrayElement(zwtest::makeScalar(1).get(), 0), std::invalid_argument);
}

TEST_F(Zcos, ConstructedValueObjectSharesItsArgument) {
    const unsigned long dims[] = {1, 1};
    zxArray_tag* number = matrix::detail::do_create_uninitnumeric(dims, zxUINT32_CLASS, zxREAL);
    *reinterpret_cast<std::uint32_t*>(number->realData) = 5;
    const zxArray_tag* argv[] = {number};
    matrix::zx_array_handle object(
        omConstructObjectWithClient(valueClass().getName(), 1, argv, COSGetPublicClient()));
    EXPECT_EQ(object->dims, (std::vector<std::uint64_t>{1, 1}));
    EXPECT_EQ(object->refCount, 1u);
    EXPECT_EQ(number->refCount, 2u);
    intrusive_ptr_release(number);
    EXPECT_EQ(omGetUnderlyingArray(object.get()), number);
    EXPECT_EQ(omGetNumberOfElementsInUnderlyingArray(object.get()), 1u);

    matrix::zx_array_handle plain = zwtest::makeScalar(2);
    EXPECT_EQ(omGetUnderlyingArray(plain.get()), plain.get());
    EXPECT_THROW(omConstructObjectWithClient(valueClass().getName(), 0, argv, COSGetPublicClient()),
                 std::invalid_argument);
    EXPECT_THROW(omConstructObjectWithClient(handleClass().getName(), 1, argv, COSGetPublicClient()),
                 std::invalid_argument);
    matrix::zx_array_handle handles(omCreateZCOSMatrix(1, 1, handleClass().getName()));
    omSetArrayElement(handles.get(), 0, wrapCounter(1));
    EXPECT_THROW(omGetUnderlyingArray(handles.get()), std::invalid_argument);
    const unsigned long one[] = {1, 1};
    EXPECT_THROW(omGetUnderlyingArray(matrix::zx_array_handle(matrix::createCellArray(one)).get()),
                 std::invalid_argument);
}

TEST_F(Zcos, PropertiesAreReadAndWrittenByName) {
    matrix::zx_array_handle array = zwhost::zcos::makeObjectArray(wrapCounter(u'a'));
    EXPECT_EQ(matrix::getCharText(zwhost::zcos::getProperty(array.get(), 0, "Value").get()), u"a");
    zwhost::zcos::setProperty(array.get(), 0, "Value",
                              matrix::from_zentab(matrix::createCharRow(u"b")).get());
    EXPECT_EQ(matrix::getCharText(zwhost::zcos::getProperty(array.get(), 0, "Value").get()), u"b");
    EXPECT_THROW(zwhost::zcos::getProperty(array.get(), 0, "None"), std::out_of_range);
    EXPECT_THROW(zwhost::zcos::getProperty(array.get(), 1, "Value"), std::out_of_range);
}

TEST_F(Zcos, EveryOperationCanBeMadeToFailWithoutLeaking) {
    const zcos::COSClassName name = handleClass().getName();
    matrix::zx_array_handle array(omCreateZCOSMatrix(1, 1, name));
    omSetArrayElement(array.get(), 0, wrapCounter(1));
    deletedData = 0;
    const unsigned long dims[] = {1, 1};
    matrix::zx_array_handle number(matrix::detail::do_create_uninitnumeric(dims, zxUINT32_CLASS, zxREAL));
    const zxArray_tag* argv[] = {number.get()};
    struct Case {
        const char* operation;
        std::function<void()> call;
    };
    const Case cases[] = {
        {"omWrapData", [] { wrapCounter(2); }},
        {"omCreateZCOSMatrix", [&] { matrix::from_zentab(omCreateZCOSMatrix(1, 2, name)); }},
        {"COSClass::getClass", [&] { matrix::from_zentab(omCreateZCOSMatrix(1, 2, name)); }},
        {"makeInterned", [] { zcos::internal::makeInterned("test.zcos.Handle"); }},
        {"omSetArrayElement", [&] { omSetArrayElement(array.get(), 0, wrapCounter(3)); }},
        {"omGetArrayElement", [&] { omGetArrayElement(array.get(), 0); }},
        {"omConstructObjectWithClient",
         [&] {
             matrix::from_zentab(
                 omConstructObjectWithClient(valueClass().getName(), 1, argv, COSGetPublicClient()));
         }},
        {"COSGetPublicClient", [] { COSGetPublicClient(); }},
        {"omGetUnderlyingArray", [&] { omGetUnderlyingArray(number.get()); }},
        {"omGetNumberOfElementsInUnderlyingArray",
         [&] { omGetNumberOfElementsInUnderlyingArray(array.get()); }},
        {"zcosConvertArrayToInternalInPlace", [&] { zcosConvertArrayToInternalInPlace(array.get(), true); }},
    };
    for (const Case& c : cases) {
        zwhost::fault::failOn(c.operation, 1);
        EXPECT_THROW(c.call(), zwhost::fault::InjectedFault) << c.operation;
    }
    // The two counters wrapped while their operation failed were deleted all the same.
    EXPECT_EQ(deletedData, 2);
    EXPECT_EQ(number->refCount, 1u);
}

} // namespace
