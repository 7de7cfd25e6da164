#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include <boost/json/kind.hpp>

namespace reference::docparser {

/** A catalogue that is valid JSON but not of the catalogue format. Besides its message it says
    where the refused value lies, what it should be and what it is, for tools that place it. */
class CatalogueFormatError : public std::runtime_error {
public:
    /** What the refused value should have been. */
    enum class Expected { Unknown, Object, Array, String };

    using std::runtime_error::runtime_error;

    /** A refusal of the value at `pointer` (relative to the value the refusing operation was
        given), which should be `expected` and is of kind `found`, or absent when that is empty. */
    CatalogueFormatError(const std::string& message, std::string pointer, Expected expected,
                         std::optional<boost::json::kind> found)
        : std::runtime_error(message),
          place_(std::make_shared<Place>(Place{std::move(pointer), expected, found})) {}

    /** Where the refused value lies or is missing, as a JSON pointer; empty for the whole value. */
    std::string_view pointer() const noexcept { return place_ ? std::string_view(place_->pointer) : ""; }
    Expected expected() const noexcept { return place_ ? place_->expected : Expected::Unknown; }
    /** The kind of the refused value; empty when it is absent or the refusal has no place. */
    std::optional<boost::json::kind> found() const noexcept { return place_ ? place_->found : std::nullopt; }
    /** Whether the refusal says where it lies: false for text that is refused as a whole. */
    bool placed() const noexcept { return place_ != nullptr; }

    /** Puts `prefix`, a JSON pointer, in front of the place: the refused value lies under it. */
    void placeUnder(const std::string& prefix) {
        if (place_) {
            place_->pointer.insert(0, prefix);
        }
    }

private:
    struct Place {
        std::string pointer;
        Expected expected;
        std::optional<boost::json::kind> found;
    };
    std::shared_ptr<Place> place_;
};

/** `key` as one step of a JSON pointer, with "~" and "/" escaped. */
inline std::string jsonPointerStep(std::string_view key) {
    std::string step;
    for (const char c : key) {
        if (c == '~') {
            step += "~0";
        } else if (c == '/') {
            step += "~1";
        } else {
            step += c;
        }
    }
    return step;
}

} // namespace reference::docparser
