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
template struct Expose<&ExampleItem::relativePathsCache, &ExampleItem::supportingFilesCache,
                       &ExampleItem::exampleTypeCache, &ExampleItem::docIDLinksCache>;

} // namespace

// The caches are mutable members; a member pointer does not carry that, so constness is cast off.
SharedZxArrayPtr& ExampleItemCaches::cache(const ExampleItem& item, std::size_t which) {
    return const_cast<ExampleItem&>(item).*members(Tag{})[which];
}

} // namespace example::docparser::detail
