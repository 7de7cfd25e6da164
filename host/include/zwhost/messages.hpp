#pragma once
// The host's message catalogue and its own message-id errors, for the host platform and tests.

#include <exception>
#include <string>
#include <string_view>

#include "foundation/core/except/exception.hpp"
#include "resource_core/base_msg_id.hpp"

namespace zwhost::messages {

/** The text of `id` from the catalogue, UTF-8; "catalogue:key" for a message the catalogue
    lacks. */
std::string formatMessage(const resource_core::BaseMsgID& id);

/** An error of the host platform, identified by a message of the catalogue. */
class MsgIDError final : public foundation::core::except::IMsgIDException, public std::exception {
public:
    explicit MsgIDError(resource_core::BaseMsgID id);

    const boost::exception_detail::clone_base* clone() const override;
    void rethrow() const override;
    const char* what() const noexcept override;
    std::string GetID() const override;
    const resource_core::BaseMsgID& GetBaseMsgIDObj() const override;

private:
    resource_core::BaseMsgID msgID_;
    std::string errorID_;
};

} // namespace zwhost::messages
