#include "bridge/doc_id_link_arrays.hpp"

#include <utility>

#include "bridge/class_identity.hpp"
#include "example/docparser/example_item.hpp"
#include "zcos/cos_class.hpp"
#include "zcos/om.hpp"

namespace example::docparser {

const zxArray_tag* ExampleItem::getDocIDLinksProperty() const {
    const detail::DocIDLinksToArray toArray = &detail::docIDLinksToSharedArray;
    return detail::accessDocIDLinksCache(docIDLinksCache, docIDLinks, toArray);
}

void ExampleItem::setDocIDLinksProperty(const zxArray_tag* value) {
    detail::setDocIDLinksAndCache(value, docIDLinksCache, docIDLinks);
}

namespace detail {

const zxArray_tag* accessDocIDLinksCache(SharedZxArrayPtr& cache, const std::vector<DocIDLink>& links,
                                         const DocIDLinksToArray& toArray) {
    if (!cache) {
        cache = toArray(links);
    }
    return cache.get();
}

void setDocIDLinksAndCache(const zxArray_tag* value, SharedZxArrayPtr& cache, std::vector<DocIDLink>& links) {
    const DocIDLinkArrayConverters converters{&docIDLinksToSharedArray, &docIDLinksFromArray};
    if (value == nullptr) {
        return;
    }
    // The elements are read before anything is replaced, so `value` may be the cached array.
    std::vector<DocIDLink> fromHost = converters.fromArray(value);
    links = std::move(fromHost);
    // Rebuilt from the stored links rather than keeping `value`: its objects stay the host's.
    cache = converters.toArray(links);
}

SharedZxArrayPtr docIDLinksToSharedArray(const std::vector<DocIDLink>& links) {
    return docIDLinksToArray(links, true);
}

matrix::zx_array_handle docIDLinksToArray(const std::vector<DocIDLink>& links, bool forCache) {
    const auto className = makeClassIdentifier(getFullClassName<DocIDLink>());
    matrix::zx_array_handle array = matrix::from_zentab(omCreateZCOSMatrix(1, links.size(), className));
    for (std::size_t index = 0; index < links.size(); ++index) {
        const zcos::COSInterfacePtr object = wrapDocIDLink(links[index]);
        omSetArrayElement(array.get(), index, object);
    }
    zcosConvertArrayToInternalInPlace(array.get(), true);
    matrix::detail::noninlined::zx_array_api::zxSetArrayScope(array.get(),
                                                              forCache ? zxSCOPE_CACHED : zxSCOPE_TEMPORARY);
    return array;
}

zcos::COSInterfacePtr wrapDocIDLink(const DocIDLink& link) {
    const auto className = makeClassIdentifier(getFullClassName<DocIDLink>());
    zcos::COSClass* cls = zcos::COSClass::getClass(className);
    DocIDLink local = link.copy();
    // The heap link belongs to the host object from the call on, also if the call fails.
    return omWrapData(new DocIDLink(std::move(local)), cls);
}

std::vector<DocIDLink> docIDLinksFromArray(const zxArray_tag* array) {
    std::vector<DocIDLink> links;
    const std::uint64_t count = omGetNumberOfElementsInUnderlyingArray(array);
    links.reserve(count);
    for (std::uint64_t index = 0; index < count; ++index) {
        links.push_back(getDocIDLinkElement(array, index)->copy());
    }
    return links;
}

const DocIDLink* getDocIDLinkElement(const zxArray_tag* array, std::size_t index) {
    const zcos::COSInterfacePtr element = omGetArrayElement(array, index);
    const zcos::COSKey key = element->getDescriptor()->getKey();
    return static_cast<const DocIDLink*>(element->getDataByKey(&key));
}

} // namespace detail
} // namespace example::docparser
