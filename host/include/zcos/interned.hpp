#pragma once
// Interned identifiers of the class system: equal texts intern to the same address, so an
// identifier is one pointer wide and compares by address.

#include <string>
#include <string_view>

namespace zcos {

namespace internal {

/** Policy of identifiers whose empty state is the interned empty text. */
struct IdEmptyPolicy {};

/** An entry of the table of interned texts; its address is the interned form of its text. */
struct InternedText {
    std::string_view text;
};

/** The interned form of the empty text. */
extern const InternedText nullValue;

/** The interned form of `text`: the same address for equal texts, for the life of the process.
    The empty text gives `&nullValue`. */
const InternedText* makeInterned(const std::string& text);

} // namespace internal

/** An interned identifier; the empty identifier is `&internal::nullValue`. */
template <class Policy>
class COSInternedBase {
public:
    constexpr COSInternedBase() noexcept : text_(&internal::nullValue) {}
    constexpr COSInternedBase(const internal::InternedText* text) noexcept : text_(text) {}

    /** The interned form itself. */
    constexpr const internal::InternedText* get() const noexcept { return text_; }

    /** The text, valid for the life of the process. */
    constexpr std::string_view str() const noexcept { return text_->text; }

    constexpr bool empty() const noexcept { return text_ == &internal::nullValue; }

    friend constexpr bool operator==(const COSInternedBase&, const COSInternedBase&) = default;

private:
    const internal::InternedText* text_;
};

static_assert(sizeof(COSInternedBase<internal::IdEmptyPolicy>) == sizeof(void*));

/** Identifier of a class of the class system. */
using COSClassName = COSInternedBase<internal::IdEmptyPolicy>;

} // namespace zcos
