#include "support/item_caches.hpp"

namespace example::docparser::detail {
namespace {

using CacheMember = SharedZxArrayPtr ExampleItem::*;

// An explicit instantiation may name private members; each one below defines memberOf for its
// tag, which hands the member pointer out. The item's header thus needs no friend for tests.
struct RelativePathsTag {};
struct ExampleTypeTag {};
struct SupportingFilesTag {};
struct DocIDLinksTag {};
CacheMember memberOf(RelativePathsTag);
CacheMember memberOf(ExampleTypeTag);
CacheMember memberOf(SupportingFilesTag);
CacheMember memberOf(DocIDLinksTag);

template <class Tag, CacheMember Member>
struct Expose {
    friend CacheMember memberOf(Tag) { return Member; }
};
template struct Expose<RelativePathsTag, &ExampleItem::relativePathsCache>;
template struct Expose<ExampleTypeTag, &ExampleItem::exampleTypeCache>;
template struct Expose<SupportingFilesTag, &ExampleItem::supportingFilesCache>;
template struct Expose<DocIDLinksTag, &ExampleItem::docIDLinksCache>;

// The caches are mutable members; a member pointer does not carry that, so constness is cast off.
SharedZxArrayPtr& cache(const ExampleItem& item, CacheMember member) {
    return const_cast<ExampleItem&>(item).*member;
}

} // namespace

SharedZxArrayPtr& ExampleItemCaches::relativePaths(const ExampleItem& item) {
    return cache(item, memberOf(RelativePathsTag{}));
}
SharedZxArrayPtr& ExampleItemCaches::exampleType(const ExampleItem& item) {
    return cache(item, memberOf(ExampleTypeTag{}));
}
SharedZxArrayPtr& ExampleItemCaches::supportingFiles(const ExampleItem& item) {
    return cache(item, memberOf(SupportingFilesTag{}));
}
SharedZxArrayPtr& ExampleItemCaches::docIDLinks(const ExampleItem& item) {
    return cache(item, memberOf(DocIDLinksTag{}));
}

} // namespace example::docparser::detail
