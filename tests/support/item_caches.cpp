#include "support/item_caches.hpp"

#include <array>

namespace example::docparser::detail {
namespace {

using CacheMember = SharedZxArrayPtr ExampleItem::*;

// An explicit instantiation may name private members; the one below defines members(), which
// hands the member pointers out. The item's header thus needs no friend for tests.
struct Tag {};
std::array<CacheMember, 4> members(Tag);

template <CacheMember... Members>
struct Expose {
    friend std::array<CacheMember, 4> members(Tag) { return {Members...}; }
};
template struct Expose<&ExampleItem::relativePathsCache, &ExampleItem::exampleTypeCache,
                       &ExampleItem::supportingFilesCache, &ExampleItem::docIDLinksCache>;

// The caches are mutable members; a member pointer does not carry that, so constness is cast off.
SharedZxArrayPtr& cache(const ExampleItem& item, std::size_t which) {
    return const_cast<ExampleItem&>(item).*members(Tag{})[which];
}

} // namespace

SharedZxArrayPtr& ExampleItemCaches::relativePaths(const ExampleItem& item) {
    return cache(item, 0);
}
SharedZxArrayPtr& ExampleItemCaches::exampleType(const ExampleItem& item) {
    return cache(item, 1);
}
SharedZxArrayPtr& ExampleItemCaches::supportingFiles(const ExampleItem& item) {
    return cache(item, 2);
}
SharedZxArrayPtr& ExampleItemCaches::docIDLinks(const ExampleItem& item) {
    return cache(item, 3);
}

} // namespace example::docparser::detail
