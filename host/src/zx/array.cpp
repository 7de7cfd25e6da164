#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <numeric>
#include <stdexcept>

#include "matrix/matrix.hpp"
#include "zwhost/fault.hpp"

namespace {

std::atomic<std::int64_t> liveArrays{};

zxArray_tag* newArray(cppcompat::detail::span::span<unsigned long const> dims, zxClassID classID) {
    zwhost::fault::point("matrix::createArray");
    // Owned here until complete: storing the dimensions can run out of memory.
    auto array = std::make_unique<zxArray_tag>();
    array->classID = classID;
    array->dims.assign(dims.begin(), dims.end());
    liveArrays.fetch_add(1, std::memory_order_relaxed);
    return array.release();
}

// Data is padded with zeros to at least one 64-bit word, so that the first word of any array
// with data can be read whatever its class.
constexpr std::uint64_t kMinimumDataBytes = 8;

std::byte* allocateData(std::uint64_t count, std::size_t elementBytes) {
    const std::uint64_t bytes = count * elementBytes;
    if (elementBytes != 0 && bytes / elementBytes != count) {
        throw std::bad_alloc();
    }
    auto* data = static_cast<std::byte*>(::operator new(std::max(bytes, kMinimumDataBytes)));
    if (bytes < kMinimumDataBytes) {
        std::memset(data + bytes, 0, kMinimumDataBytes - bytes);
    }
    return data;
}

} // namespace

void intrusive_ptr_add_ref(const zxObject* object) {
    object->references_.fetch_add(1, std::memory_order_relaxed);
}

void intrusive_ptr_release(const zxObject* object) {
    if (object->references_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete object;
    }
}

void intrusive_ptr_add_ref(const zxArray_tag* array) {
    std::atomic_ref<std::uint32_t>(const_cast<zxArray_tag*>(array)->refCount)
        .fetch_add(1, std::memory_order_relaxed);
}

void intrusive_ptr_release(const zxArray_tag* array) {
    matrix::releaseArray(array);
}

std::uint64_t zxGetNumberOfElements(const zxArray_tag* array) {
    return std::accumulate(array->dims.begin(), array->dims.end(), std::uint64_t{1}, std::multiplies<>());
}

namespace matrix {

void destroyArray(zxArray_tag* array) {
    if (array == nullptr) {
        return;
    }
    ::operator delete(array->realData);
    ::operator delete(array->imagData);
    // Deleting the array drops its elements: the cells' arrays and the objects' references.
    delete array;
    liveArrays.fetch_sub(1, std::memory_order_relaxed);
}

void releaseArray(const zxArray_tag* array) {
    if (array == nullptr) {
        return;
    }
    auto* mutableArray = const_cast<zxArray_tag*>(array);
    std::atomic_ref<std::uint32_t> count(mutableArray->refCount);
    if (mutableArray->holdWord == 0) {
        if (count.fetch_sub(1, std::memory_order_acq_rel) <= 1) {
            destroyArray(mutableArray);
        }
        return;
    }
    count.fetch_sub(1, std::memory_order_acq_rel);
}

zx_array_handle from_zentab(zxArray_tag* const& array) {
    return zx_array_handle(array);
}

namespace detail {

zxArray_tag* do_create_uninitnumeric(cppcompat::detail::span::span<unsigned long const> dims,
                                     zxClassID classID, zxComplexity complexity) {
    zwhost::fault::point("do_create_uninitnumeric");
    const std::size_t elementBytes = elementSizeOf(classID);
    if (elementBytes == 0) {
        throw std::invalid_argument("do_create_uninitnumeric: not a numeric class");
    }
    zx_array_handle array(newArray(dims, classID));
    array->complexity = complexity;
    array->elementBytes = elementBytes;
    const std::uint64_t count = zxGetNumberOfElements(array.get());
    array->realData = allocateData(count, elementBytes);
    if (complexity == zxCOMPLEX) {
        array->imagData = allocateData(count, elementBytes);
    }
    return array.release();
}

namespace noninlined::zx_array_api {

void zxSetArrayScope(zxArray_tag* array, zxVariableScope scope) {
    array->scope = scope;
}

} // namespace noninlined::zx_array_api

} // namespace detail

zxArray_tag* createCharRow(std::u16string_view text) {
    const unsigned long dims[] = {1, text.size()};
    return createCharArray(dims, text);
}

zxArray_tag* createCharArray(cppcompat::detail::span::span<unsigned long const> dims,
                             std::u16string_view text) {
    zx_array_handle array(newArray(dims, zxCHAR_CLASS));
    if (zxGetNumberOfElements(array.get()) != text.size()) {
        throw std::invalid_argument("createCharArray: text length differs from the dimensions");
    }
    array->elementBytes = sizeof(char16_t);
    array->realData = allocateData(text.size(), sizeof(char16_t));
    std::memcpy(array->realData, text.data(), text.size() * sizeof(char16_t));
    return array.release();
}

std::u16string getCharText(const zxArray_tag* array) {
    if (array->classID != zxCHAR_CLASS) {
        throw std::invalid_argument("getCharText: not a character array");
    }
    std::u16string text(zxGetNumberOfElements(array), u'\0');
    std::memcpy(text.data(), array->realData, text.size() * sizeof(char16_t));
    return text;
}

bool isCharRow(const zxArray_tag* array) {
    return array->classID == zxCHAR_CLASS && array->dims.size() == 2 &&
           (array->dims[0] == 1 || zxGetNumberOfElements(array) == 0);
}

bool isTextList(const zxArray_tag* array) {
    if (array->classID != zxCELL_CLASS) {
        return isCharRow(array);
    }
    return std::all_of(array->cells.begin(), array->cells.end(),
                       [](const SharedZxArrayPtr& cell) { return cell && isCharRow(cell.get()); });
}

std::vector<std::u16string> getTextList(const zxArray_tag* array) {
    if (!isTextList(array)) {
        throw std::invalid_argument("getTextList: not a list of texts");
    }
    if (array->classID != zxCELL_CLASS) {
        return {getCharText(array)};
    }
    std::vector<std::u16string> texts;
    texts.reserve(array->cells.size());
    for (const SharedZxArrayPtr& cell : array->cells) {
        texts.push_back(getCharText(cell.get()));
    }
    return texts;
}

zxArray_tag* createCellRowOfText(const std::vector<std::u16string>& texts) {
    const unsigned long dims[] = {1, texts.size()};
    zx_array_handle cells(createCellArray(dims));
    for (std::size_t i = 0; i < texts.size(); ++i) {
        cells->cells[i] = from_zentab(createCharRow(texts[i]));
    }
    return cells.release();
}

zxArray_tag* createCellArray(cppcompat::detail::span::span<unsigned long const> dims) {
    zx_array_handle array(newArray(dims, zxCELL_CLASS));
    array->cells.resize(zxGetNumberOfElements(array.get()));
    return array.release();
}

zxArray_tag* createObjectArray(cppcompat::detail::span::span<unsigned long const> dims,
                               const zcos::COSClass* objectClass) {
    zx_array_handle array(newArray(dims, zxOBJECT_CLASS));
    array->objectClass = objectClass;
    array->objects.resize(zxGetNumberOfElements(array.get()));
    return array.release();
}

std::size_t elementSizeOf(zxClassID classID) {
    switch (classID) {
    case zxLOGICAL_CLASS:
    case zxINT8_CLASS:
    case zxUINT8_CLASS:
        return 1;
    case zxINT16_CLASS:
    case zxUINT16_CLASS:
        return 2;
    case zxSINGLE_CLASS:
    case zxINT32_CLASS:
    case zxUINT32_CLASS:
        return 4;
    case zxDOUBLE_CLASS:
    case zxINT64_CLASS:
    case zxUINT64_CLASS:
        return 8;
    default:
        return 0;
    }
}

} // namespace matrix

namespace zwhost::arrays {

std::int64_t liveCount() {
    return liveArrays.load(std::memory_order_relaxed);
}

} // namespace zwhost::arrays
