#pragma once
// The object manager: object arrays, wrapping data in objects, constructing objects of a class.

#include <cstdint>

#include "zcos/cos_class.hpp"
#include "zcos/cos_object.hpp"
#include "zcos/interned.hpp"
#include "zx/zx_array.hpp"

namespace zcos {

/** On whose behalf objects are constructed. */
class COSClient {
public:
    explicit constexpr COSClient(const char* name) : name_(name) {}
    const char* name() const { return name_; }

private:
    const char* name_;
};

} // namespace zcos

/** The client of public code; static, not owned. */
const zcos::COSClient* COSGetPublicClient();

/** A new object of `cls` that owns `data` from this call on, also if the call throws; the
    class's deleter frees it when the object dies. */
zcos::COSInterfacePtr omWrapData(void* data, zcos::COSClass* cls);

/** A new rows-by-cols object array of the class named `className`, elements still empty, with
    one reference. @throw std::out_of_range for an unknown class. */
zxArray_tag* omCreateZCOSMatrix(unsigned long rows, unsigned long cols,
                                const zcos::COSInternedBase<zcos::internal::IdEmptyPolicy>& className);

/** Stores `object` as element `index` of `array`, dropping the object held there before.
    @throw std::invalid_argument if `array` isn't an object array of the object's class,
    std::out_of_range if `index` is past its end. */
void omSetArrayElement(zxArray_tag* array, unsigned long index, const zcos::COSInterfacePtr& object);

/** A reference to element `index` of `array`.
    @throw std::invalid_argument if `array` isn't an object array or the element is empty,
    std::out_of_range if `index` is past its end. */
zcos::COSInterfacePtr omGetArrayElement(const zxArray_tag* array, unsigned long index);

/** A new 1-by-1 object array, with one reference, holding an object of the class named
    `className` built by the class's constructor from `argc` arguments. The caller keeps `argv`. */
zxArray_tag*
omConstructObjectWithClient(const zcos::COSInternedBase<zcos::internal::IdEmptyPolicy>& className, int argc,
                            const zxArray_tag** argv, const zcos::COSClient* client);

/** The array under `array`: for a one-element array of a value object, the object's array; for
    an array with data of its own (numeric, logical, character), `array` itself. Borrowed.
    @throw std::invalid_argument for any other array. */
const zxArray_tag* omGetUnderlyingArray(const zxArray_tag* array);

/** The number of elements of the array under `array`, whatever its shape. */
std::uint64_t omGetNumberOfElementsInUnderlyingArray(const zxArray_tag* array);

/** Turns a filled array into its internal form, in place. With `checkElements`, every element of
    an object array must hold an object. @throw std::invalid_argument if one doesn't. */
void zcosConvertArrayToInternalInPlace(zxArray_tag* array, bool checkElements);
