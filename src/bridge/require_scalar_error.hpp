#pragma once
// The error of a property set with a value that has to be a scalar and isn't one.

#include <exception>
#include <string>

#include "foundation/core/except/exception.hpp"
#include "resource_core/base_msg_id.hpp"

namespace component_ZENTAB::catalog_class {

/** The message "RequireScalar" of the catalogue "ZENTAB:class"; it takes no arguments. */
struct key_RequireScalar : resource_core::BaseMsgID {
    key_RequireScalar();
};

} // namespace component_ZENTAB::catalog_class

namespace foundation::core::except {

template <>
class Exception<component_ZENTAB::catalog_class::key_RequireScalar, std::exception, void>
    : public IMsgIDException, public std::exception {
public:
    /** Keeps its own copy of `key` and works out the error identifier once. */
    explicit Exception(const component_ZENTAB::catalog_class::key_RequireScalar& key);
    /** Copies the identifier as text: a copy never works it out again. */
    Exception(const Exception& other);
    ~Exception() noexcept override;

    /** A heap copy, owned by the caller. */
    const boost::exception_detail::clone_base* clone() const override;
    /** Throws a copy as this type. */
    [[noreturn]] void rethrow() const override;
    /** The catalogue's text of the message. */
    const char* what() const noexcept override;
    std::string GetID() const override;
    /** The object's own copy of the key. */
    const resource_core::BaseMsgID& GetBaseMsgIDObj() const override;

private:
    component_ZENTAB::catalog_class::key_RequireScalar msgID;
    std::string errorID;
};

} // namespace foundation::core::except

namespace example::docparser::detail {

using RequireScalarError =
    foundation::core::except::Exception<component_ZENTAB::catalog_class::key_RequireScalar, std::exception,
                                        void>;

} // namespace example::docparser::detail
