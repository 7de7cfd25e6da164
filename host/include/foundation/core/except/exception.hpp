#pragma once
// The host's exception framework: exceptions over boost::exception whose text comes from the
// host's message catalogue, identified by a message key rather than by text.

#include <string>

#include <boost/exception/exception.hpp>

#include "resource_core/base_msg_id.hpp"

namespace foundation::core::except {

/** Base of the host's exceptions: cloneable, carrying boost::exception error information. */
class IException : public boost::exception_detail::clone_base, public boost::exception {
public:
    ~IException() noexcept override;

    /** The text of the message, from the host's message catalogue; valid while the object lives. */
    virtual const char* what() const noexcept;

protected:
    IException() = default;
    IException(const IException&) = default;
    IException& operator=(const IException&) = default;

private:
    mutable std::string whatText_;
};

/** An exception meant for the user, with its message as text. */
class IUserException : public IException {
public:
    /** `text` as UTF-8. */
    virtual std::string convert_str(const std::u16string& text) const;
    /** `text`, UTF-8, as UTF-16. */
    virtual std::u16string convert_str(const std::string& text) const;
    /** The message as UTF-16. */
    virtual std::u16string ToUstringImpl() const;

protected:
    IUserException() = default;
    IUserException(const IUserException&) = default;
    IUserException& operator=(const IUserException&) = default;
};

/** An exception identified by a message of the host's message catalogue. */
class IMsgIDException : public IUserException {
public:
    /** The error identifier, "catalogue:key". */
    virtual std::string GetID() const = 0;
    /** The message text from the catalogue, as UTF-16. */
    virtual std::u16string GetUnicodeMessageTxt() const;
    /** The message identity the exception carries. */
    virtual const resource_core::BaseMsgID& GetBaseMsgIDObj() const = 0;

    /** The error identifier of `id`: its catalogue, ":", its key. */
    std::string get_error_id(const resource_core::BaseMsgID& id) const;

protected:
    IMsgIDException() = default;
    IMsgIDException(const IMsgIDException&) = default;
    IMsgIDException& operator=(const IMsgIDException&) = default;
};

/** The exception of one message key; each key's component specializes it. */
template <class Key, class StandardBase, class Extra>
class Exception;

} // namespace foundation::core::except
