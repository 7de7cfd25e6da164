#include "bridge/require_scalar_error.hpp"

namespace component_ZENTAB::catalog_class {

key_RequireScalar::key_RequireScalar() : resource_core::BaseMsgID{{}, "ZENTAB:class", "RequireScalar"} {}

} // namespace component_ZENTAB::catalog_class

namespace foundation::core::except {

using RequireScalarException =
    Exception<component_ZENTAB::catalog_class::key_RequireScalar, std::exception, void>;

RequireScalarException::Exception(const component_ZENTAB::catalog_class::key_RequireScalar& key)
    : msgID(key), errorID(get_error_id(key)) {}

RequireScalarException::Exception(const Exception& other)
    : IMsgIDException(other), std::exception(other), msgID(other.msgID), errorID(other.errorID) {}

RequireScalarException::~Exception() noexcept = default;

const boost::exception_detail::clone_base* RequireScalarException::clone() const {
    return new Exception(*this);
}

void RequireScalarException::rethrow() const {
    throw Exception(*this);
}

const char* RequireScalarException::what() const noexcept {
    return IException::what();
}

std::string RequireScalarException::GetID() const {
    return errorID;
}

const resource_core::BaseMsgID& RequireScalarException::GetBaseMsgIDObj() const {
    return msgID;
}

} // namespace foundation::core::except
