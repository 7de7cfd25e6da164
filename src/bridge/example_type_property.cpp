#include "bridge/example_type_property.hpp"

#include <cstdint>
#include <cstring>
#include <memory>

#include "bridge/class_identity.hpp"
#include "bridge/require_scalar_error.hpp"
#include "example/docparser/example_item.hpp"
#include "matrix/matrix.hpp"
#include "reference/utils/property_utils.hpp"
#include "zcos/om.hpp"

namespace example::docparser {
namespace {

/** Drops one reference the way the host does: a count of at most 1 with no hold destroys the
    array, anything else loses one from the count. */
struct DropReference {
    void operator()(zxArray_tag* array) const noexcept {
        if (array->refCount <= 1 && array->holdWord == 0) {
            matrix::destroyArray(array);
        } else {
            --array->refCount;
        }
    }
};

} // namespace

const zxArray_tag* ExampleItem::getExampleTypeProperty() const {
    if (exampleTypeCache) {
        return exampleTypeCache.get();
    }
    const unsigned long dims[] = {1, 1};
    std::unique_ptr<zxArray_tag, DropReference> number(
        matrix::detail::do_create_uninitnumeric(dims, zxUINT32_CLASS, zxREAL));
    const std::uint32_t word = exampleType;
    std::memcpy(number->realData, &word, sizeof word);
    const zcos::COSClient* client = COSGetPublicClient();
    const auto className = detail::makeClassIdentifier(detail::getFullClassName<ExampleType>());
    const zxArray_tag* arguments[] = {number.get()};
    matrix::zx_array_handle object =
        matrix::from_zentab(omConstructObjectWithClient(className, 1, arguments, client));
    // The object holds its own reference to the number if it keeps it.
    number.reset();
    exampleTypeCache = std::move(object);
    return exampleTypeCache.get();
}

void ExampleItem::setExampleTypeProperty(const zxArray_tag* value) {
    detail::setExampleTypeAndCache(exampleTypeCache, value, exampleType);
}

namespace detail {

void setExampleTypeAndCache(SharedZxArrayPtr& cache, const zxArray_tag* value, ExampleType::Value& type) {
    if (value == nullptr) {
        return;
    }
    if (omGetNumberOfElementsInUnderlyingArray(value) != 1) {
        throw RequireScalarError(component_ZENTAB::catalog_class::key_RequireScalar());
    }
    // The word is taken as it stands, whatever the class of the array: the host decides what
    // a kind may be.
    std::uint32_t word{};
    std::memcpy(&word, omGetUnderlyingArray(value)->realData, sizeof word);
    type = static_cast<ExampleType::Value>(word);
    // The number is stored before the copy is made: should the copy fail, the new kind stays
    // with the old cache.
    cache = reference::utils::copyZxArrayToSharedZxArrayPtr(value);
}

} // namespace detail
} // namespace example::docparser
