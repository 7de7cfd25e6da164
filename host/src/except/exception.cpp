#include "foundation/core/except/exception.hpp"

#include "zwhost/fault.hpp"
#include "zwhost/messages.hpp"
#include "zwhost/unicode.hpp"

namespace foundation::core::except {

IException::~IException() noexcept = default;

const char* IException::what() const noexcept {
    // The text is made on first use: the message identity is only reachable once the most
    // derived object stands.
    try {
        if (whatText_.empty()) {
            const auto* withID = dynamic_cast<const IMsgIDException*>(this);
            whatText_ = withID != nullptr ? zwhost::messages::formatMessage(withID->GetBaseMsgIDObj())
                                          : "unidentified error";
        }
        return whatText_.c_str();
    } catch (...) {
        return "error text unavailable";
    }
}

std::string IUserException::convert_str(const std::u16string& text) const {
    return zwhost::unicode::utf16ToUtf8(text);
}

std::u16string IUserException::convert_str(const std::string& text) const {
    return zwhost::unicode::utf8ToUtf16Replacing(text);
}

std::u16string IUserException::ToUstringImpl() const {
    return convert_str(std::string(IException::what()));
}

std::u16string IMsgIDException::GetUnicodeMessageTxt() const {
    return convert_str(zwhost::messages::formatMessage(GetBaseMsgIDObj()));
}

std::string IMsgIDException::get_error_id(const resource_core::BaseMsgID& id) const {
    zwhost::fault::point("get_error_id");
    return id.catalog + ":" + id.key;
}

} // namespace foundation::core::except

namespace zwhost::messages {

MsgIDError::MsgIDError(resource_core::BaseMsgID id) : msgID_(std::move(id)), errorID_(get_error_id(msgID_)) {}

const boost::exception_detail::clone_base* MsgIDError::clone() const {
    return new MsgIDError(*this);
}

void MsgIDError::rethrow() const {
    throw MsgIDError(*this);
}

const char* MsgIDError::what() const noexcept {
    return IException::what();
}

std::string MsgIDError::GetID() const {
    return errorID_;
}

const resource_core::BaseMsgID& MsgIDError::GetBaseMsgIDObj() const {
    return msgID_;
}

} // namespace zwhost::messages
