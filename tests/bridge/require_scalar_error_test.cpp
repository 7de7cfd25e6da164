// The scalar requirement error: its identity, computed once, and what copies keep of it.

#include <exception>
#include <memory>
#include <string>

#include <boost/exception/get_error_info.hpp>
#include <boost/exception/info.hpp>
#include <gtest/gtest.h>

#include "bridge/require_scalar_error.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/messages.hpp"

namespace {

using example::docparser::detail::RequireScalarError;
using foundation::core::except::IException;
using foundation::core::except::IMsgIDException;

RequireScalarError makeError() {
    return RequireScalarError(component_ZENTAB::catalog_class::key_RequireScalar());
}

TEST(RequireScalarError, CarriesItsOwnCopyOfTheKey) {
    const RequireScalarError error = makeError();
    const resource_core::BaseMsgID& id = error.GetBaseMsgIDObj();
    EXPECT_EQ(id.catalog, "ZENTAB:class");
    EXPECT_EQ(id.key, "RequireScalar");
    EXPECT_TRUE(id.arguments.empty());
    EXPECT_EQ(error.GetID(), "ZENTAB:class:RequireScalar");
    EXPECT_EQ(error.GetUnicodeMessageTxt(), u"Value must be a scalar.");
    EXPECT_EQ(error.ToUstringImpl(), u"Value must be a scalar.");
}

TEST(RequireScalarError, WhatIsTheSameThroughEitherBase) {
    std::string asStandard;
    std::string asFramework;
    try {
        throw makeError();
    } catch (const std::exception& error) {
        asStandard = error.what();
    }
    try {
        throw makeError();
    } catch (const IException& error) {
        asFramework = error.what();
    }
    EXPECT_EQ(asStandard, "Value must be a scalar.");
    EXPECT_EQ(asFramework, asStandard);
}

TEST(RequireScalarError, CloneAndRethrowKeepTheIdentifierWorkedOutOnce) {
    const std::uint64_t callsBefore = zwhost::messages::errorIdCalls();
    const RequireScalarError error = makeError();
    std::unique_ptr<const boost::exception_detail::clone_base> clone(error.clone());
    const auto* clonedError = dynamic_cast<const IMsgIDException*>(clone.get());
    ASSERT_NE(clonedError, nullptr);
    EXPECT_EQ(clonedError->GetID(), "ZENTAB:class:RequireScalar");
    try {
        clone->rethrow();
    } catch (const RequireScalarError& rethrown) {
        EXPECT_EQ(rethrown.GetID(), "ZENTAB:class:RequireScalar");
        EXPECT_EQ(rethrown.GetBaseMsgIDObj().key, "RequireScalar");
    }
    EXPECT_EQ(zwhost::messages::errorIdCalls(), callsBefore + 1);
}

struct ErrorDetail;
using ErrorDetailInfo = boost::error_info<ErrorDetail, std::string>;

TEST(RequireScalarError, ACloneSharesTheErrorInformation) {
    std::unique_ptr<const boost::exception_detail::clone_base> clone;
    {
        RequireScalarError error = makeError();
        error << ErrorDetailInfo("shared");
        clone.reset(error.clone());
    }
    const auto* info = boost::get_error_info<ErrorDetailInfo>(dynamic_cast<const boost::exception&>(*clone));
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(*info, "shared");
}

TEST(RequireScalarError, AFailingIdentifierLeavesNoHalfBuiltError) {
    zwhost::fault::Scope faults;
    zwhost::fault::failOn("get_error_id", 1);
    EXPECT_THROW(makeError(), zwhost::fault::InjectedFault);
}

} // namespace
