#pragma once
// The host's array: every value of the host's language runtime is a zxArray_tag.
// The first two 32-bit words are the reference count and the hold word; the release rule
// reads both: with a count of at most 1 and a zero hold word the array is destroyed,
// otherwise the count drops by one.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <boost/intrusive_ptr.hpp>

namespace zcos {
class COSClass;
} // namespace zcos

/** Class of the elements of an array. */
enum zxClassID : int {
    zxUNKNOWN_CLASS = 0,
    zxCELL_CLASS = 1,
    zxSTRUCT_CLASS = 2,
    zxLOGICAL_CLASS = 3,
    zxCHAR_CLASS = 4,
    zxVOID_CLASS = 5,
    zxDOUBLE_CLASS = 6,
    zxSINGLE_CLASS = 7,
    zxINT8_CLASS = 8,
    zxUINT8_CLASS = 9,
    zxINT16_CLASS = 10,
    zxUINT16_CLASS = 11,
    zxINT32_CLASS = 12,
    zxUINT32_CLASS = 13,
    zxINT64_CLASS = 14,
    zxUINT64_CLASS = 15,
    zxFUNCTION_CLASS = 16,
    zxOBJECT_CLASS = 17,
};

/** Real or complex numeric data. */
enum zxComplexity : int { zxREAL = 0, zxCOMPLEX = 1 };

/** Where an array lives in the host's workspace; the values are the host's. */
enum zxVariableScope : int {
    zxSCOPE_UNSET = 0,
    zxSCOPE_TEMPORARY = 4,
    zxSCOPE_CACHED = 6,
};

struct zxArray_tag;
using SharedZxArrayPtr = boost::intrusive_ptr<const zxArray_tag>;

/** Base of what an element of an object array refers to: counted, and destroyed by its last
    release. The class system derives its objects from it. */
class zxObject {
public:
    zxObject(const zxObject&) = delete;
    zxObject& operator=(const zxObject&) = delete;

protected:
    zxObject() = default;
    virtual ~zxObject() = default;

private:
    friend void intrusive_ptr_add_ref(const zxObject* object);
    friend void intrusive_ptr_release(const zxObject* object);

    mutable std::atomic<std::uint32_t> references_{0};
};

/** Adds one reference to `object`. */
void intrusive_ptr_add_ref(const zxObject* object);

/** Drops one reference to `object`; the last one destroys it. */
void intrusive_ptr_release(const zxObject* object);

struct zxArray_tag {
    std::uint32_t refCount = 1; // first word
    std::uint32_t holdWord = 0; // second word: holds of the host's workspace
    zxClassID classID = zxUNKNOWN_CLASS;
    zxComplexity complexity = zxREAL;
    zxVariableScope scope = zxSCOPE_UNSET;
    bool internalForm = false;
    std::vector<std::uint64_t> dims;
    std::size_t elementBytes = 0;
    std::byte* realData = nullptr;                       // numeric and character data
    std::byte* imagData = nullptr;                       // imaginary part of complex data
    std::vector<SharedZxArrayPtr> cells;                 // elements of a cell array
    std::vector<boost::intrusive_ptr<zxObject>> objects; // elements of an object array
    const zcos::COSClass* objectClass = nullptr;         // class of an object array
};

/** Adds one reference to `array`. */
void intrusive_ptr_add_ref(const zxArray_tag* array);

/** Drops one reference to `array` by the release rule; may destroy it. */
void intrusive_ptr_release(const zxArray_tag* array);

/** Number of elements: the product of the dimensions. */
std::uint64_t zxGetNumberOfElements(const zxArray_tag* array);
