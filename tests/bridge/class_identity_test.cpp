// Class identity: full class names and the identifiers interned from them.

#include <gtest/gtest.h>

#include "bridge/class_identity.hpp"
#include "example/docparser/doc_id_link.hpp"
#include "example/docparser/example_type.hpp"
#include "zwhost/fault.hpp"

namespace {

using example::docparser::DocIDLink;
using example::docparser::ExampleType;
namespace detail = example::docparser::detail;

TEST(ClassIdentity, FullNamesJoinNamespaceAndClassWithOneDot) {
    EXPECT_STREQ(DocIDLink::getZCOSNamespaceName(), ExampleType::getZCOSNamespaceName());
    EXPECT_STRNE(DocIDLink::getZCOSClassName(), ExampleType::getZCOSClassName());
    EXPECT_EQ(detail::getFullClassName<DocIDLink>(), "zentab.internal.example.docparser.DocIDLink");
    EXPECT_EQ(detail::getFullClassName<ExampleType>(), "zentab.internal.example.docparser.ExampleType");
}

TEST(ClassIdentity, IdentifiersAreInternedAfreshAndAgree) {
    zwhost::fault::Scope faults;
    const auto first = detail::makeClassIdentifier(detail::getFullClassName<DocIDLink>());
    const auto second = detail::makeClassIdentifier(detail::getFullClassName<DocIDLink>());
    EXPECT_EQ(first, second);
    EXPECT_EQ(zwhost::fault::callsOf("makeInterned"), 2u);
    EXPECT_EQ(detail::makeClassIdentifier("").get(), &zcos::internal::nullValue);
    EXPECT_EQ(zwhost::fault::callsOf("makeInterned"), 2u);
}

} // namespace
