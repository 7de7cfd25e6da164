#include "zcos/om.hpp"

#include <memory>
#include <stdexcept>
#include <string>

#include "zwhost/fault.hpp"
#include "zwhost/zcos.hpp"

namespace {

constexpr zcos::COSClient kPublicClient("public");

/** Deletes data through its class until an object owns it. */
struct WrappedDataDeleter {
    zcos::COSClass::Deleter deleteData;
    void operator()(void* data) const noexcept {
        if (deleteData != nullptr) {
            deleteData(data);
        }
    }
};

zcos::COSObject& objectAt(const zxArray_tag* array, unsigned long index) {
    if (array->classID != zxOBJECT_CLASS) {
        throw std::invalid_argument("not an object array");
    }
    const auto& element = array->objects.at(index);
    if (!element) {
        throw std::invalid_argument("element " + std::to_string(index) + " holds no object");
    }
    return static_cast<zcos::COSObject&>(*element);
}

} // namespace

const zcos::COSClient* COSGetPublicClient() {
    return &kPublicClient;
}

zcos::COSInterfacePtr omWrapData(void* data, zcos::COSClass* cls) {
    // The data is ours from here on: whatever fails below deletes it.
    std::unique_ptr<void, WrappedDataDeleter> owned(data, WrappedDataDeleter{cls->definition().deleteData});
    zwhost::fault::point("omWrapData");
    auto* object = new zcos::COSObject(*cls, owned.get(), nullptr);
    owned.release();
    return zcos::COSInterfacePtr(object);
}

zxArray_tag* omCreateZCOSMatrix(unsigned long rows, unsigned long cols,
                                const zcos::COSInternedBase<zcos::internal::IdEmptyPolicy>& className) {
    zwhost::fault::point("omCreateZCOSMatrix");
    const unsigned long dims[] = {rows, cols};
    return matrix::createObjectArray(dims, zcos::COSClass::getClass(className));
}

void omSetArrayElement(zxArray_tag* array, unsigned long index, const zcos::COSInterfacePtr& object) {
    zwhost::fault::point("omSetArrayElement");
    if (array->classID != zxOBJECT_CLASS || !object || &object.get()->getClass() != array->objectClass) {
        throw std::invalid_argument("omSetArrayElement: object of another class");
    }
    array->objects.at(index) = object.get();
}

zcos::COSInterfacePtr omGetArrayElement(const zxArray_tag* array, unsigned long index) {
    return zcos::COSInterfacePtr(&objectAt(array, index));
}

zxArray_tag*
omConstructObjectWithClient(const zcos::COSInternedBase<zcos::internal::IdEmptyPolicy>& className, int argc,
                            const zxArray_tag** argv, const zcos::COSClient* client) {
    zwhost::fault::point("omConstructObjectWithClient");
    if (client == nullptr) {
        throw std::invalid_argument("omConstructObjectWithClient: no client");
    }
    const zcos::COSClass* cls = zcos::COSClass::getClass(className);
    const auto& construct = cls->definition().construct;
    if (!construct) {
        throw std::invalid_argument("class " + std::string(className.str()) +
                                    " can't be constructed from arguments");
    }
    return zwhost::zcos::makeObjectArray(construct(*cls, argc, argv)).release();
}

const zxArray_tag* omGetUnderlyingArray(const zxArray_tag* array) {
    if (array->realData != nullptr) {
        return array;
    }
    if (array->classID == zxOBJECT_CLASS && array->objects.size() == 1) {
        if (const zxArray_tag* underlying = objectAt(array, 0).underlyingArray()) {
            return underlying;
        }
    }
    throw std::invalid_argument("omGetUnderlyingArray: neither data nor a single value object");
}

std::uint64_t omGetNumberOfElementsInUnderlyingArray(const zxArray_tag* array) {
    if (array->classID == zxOBJECT_CLASS && array->objects.size() == 1 && array->objects.front()) {
        if (const zxArray_tag* underlying = objectAt(array, 0).underlyingArray()) {
            return zxGetNumberOfElements(underlying);
        }
    }
    return zxGetNumberOfElements(array);
}

void zcosConvertArrayToInternalInPlace(zxArray_tag* array, bool checkElements) {
    zwhost::fault::point("zcosConvertArrayToInternalInPlace");
    if (checkElements) {
        for (const auto& element : array->objects) {
            if (!element) {
                throw std::invalid_argument("zcosConvertArrayToInternalInPlace: empty element");
            }
        }
    }
    array->internalForm = true;
}

namespace zwhost::zcos {

::zcos::COSInterfacePtr makeValueObject(const ::zcos::COSClass& cls, SharedZxArrayPtr underlying) {
    return ::zcos::COSInterfacePtr(new ::zcos::COSObject(cls, nullptr, std::move(underlying)));
}

matrix::zx_array_handle makeObjectArray(const ::zcos::COSInterfacePtr& object) {
    const unsigned long dims[] = {1, 1};
    matrix::zx_array_handle array(matrix::createObjectArray(dims, &object.get()->getClass()));
    array->objects.front() = object.get();
    return array;
}

matrix::zx_array_handle getProperty(const zxArray_tag* objects, std::size_t index, std::string_view name) {
    const ::zcos::COSObject& object = objectAt(objects, index);
    const auto& property = object.getClass().property(name);
    if (!property.get) {
        throw std::out_of_range("property \"" + std::string(name) + "\" can't be read");
    }
    return property.get(object);
}

void setProperty(const zxArray_tag* objects, std::size_t index, std::string_view name,
                 const zxArray_tag* value) {
    ::zcos::COSObject& object = objectAt(objects, index);
    const auto& property = object.getClass().property(name);
    if (!property.set) {
        throw std::out_of_range("property \"" + std::string(name) + "\" can't be written");
    }
    property.set(object, value);
}

} // namespace zwhost::zcos
