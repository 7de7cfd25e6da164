#pragma once
// The links of an item as an object array of the host's link class, and back. Every crossing
// copies: the host's objects and the item's links never share a link.

#include <cstddef>
#include <functional>
#include <vector>

#include "example/docparser/doc_id_link.hpp"
#include "matrix/matrix.hpp"
#include "zcos/cos_object.hpp"
#include "zx/zx_array.hpp"

namespace example::docparser::detail {

using DocIDLinksToArray = std::function<SharedZxArrayPtr(const std::vector<DocIDLink>&)>;
using DocIDLinksFromArray = std::function<std::vector<DocIDLink>(const zxArray_tag*)>;

/** The two conversions the cache logic works with. */
struct DocIDLinkArrayConverters {
    DocIDLinksToArray toArray;
    DocIDLinksFromArray fromArray;
};

/** The array held by `cache`; an empty cache is first filled by `toArray(links)`. Borrowed. */
const zxArray_tag* accessDocIDLinksCache(SharedZxArrayPtr& cache, const std::vector<DocIDLink>& links,
                                         const DocIDLinksToArray& toArray);

/** Replaces `links` with copies of the elements of `value`, then `cache` with a new array built
    from them; null changes nothing. */
void setDocIDLinksAndCache(const zxArray_tag* value, SharedZxArrayPtr& cache, std::vector<DocIDLink>& links);

/** A new 1-by-n array of `links` for a cache. */
SharedZxArrayPtr docIDLinksToSharedArray(const std::vector<DocIDLink>& links);

/** A new 1-by-n object array of copies of `links`, in internal form, scoped as a cached value
    if `forCache`, else as a temporary. */
matrix::zx_array_handle docIDLinksToArray(const std::vector<DocIDLink>& links, bool forCache);

/** A new host object owning a heap copy of `link`. */
zcos::COSInterfacePtr wrapDocIDLink(const DocIDLink& link);

/** Copies of the links under the elements of `array`, in element order, whatever its shape. */
std::vector<DocIDLink> docIDLinksFromArray(const zxArray_tag* array);

/** The link wrapped by element `index` of `array`; borrowed from the array. */
const DocIDLink* getDocIDLinkElement(const zxArray_tag* array, std::size_t index);

} // namespace example::docparser::detail
