#pragma once
// Finding a member of a JSON object by name, tuned for the small objects of catalogue entries.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include <boost/json/object.hpp>

namespace zwhost::json {

/** Objects with up to this many members are scanned in line; larger ones use the hashed search. */
inline constexpr std::size_t kScannedMembers = 32;

namespace detail {

inline std::uint64_t loadBytes(const char* at, std::size_t count) {
    std::uint64_t word = 0;
    std::memcpy(&word, at, count);
    return word;
}

/** Whether the `size` bytes at `a` and `b` are equal. Up to 16 bytes are compared as two words
    that overlap where the size is not a whole word, which names of members almost always are. */
inline bool sameBytes(const char* a, const char* b, std::size_t size) {
    if (size >= 8 && size <= 16) {
        return loadBytes(a, 8) == loadBytes(b, 8) && loadBytes(a + size - 8, 8) == loadBytes(b + size - 8, 8);
    }
    if (size >= 4 && size < 8) {
        return loadBytes(a, 4) == loadBytes(b, 4) && loadBytes(a + size - 4, 4) == loadBytes(b + size - 4, 4);
    }
    for (std::size_t i = 0; i < size; ++i) {
        if (a[i] != b[i]) {
            return false;
        }
    }
    return true;
}

} // namespace detail

/** The value of the member `key` of `object`, or null when it has none. */
inline const boost::json::value* findMember(const boost::json::object& object, std::string_view key) {
    if (object.size() > kScannedMembers) {
        return object.if_contains(key);
    }
    // Names are short, and most differ from the key in length: comparing lengths first and
    // letters in line beats the library's search, which is out of line.
    for (const boost::json::key_value_pair& member : object) {
        const boost::json::string_view name = member.key();
        if (name.size() == key.size() && detail::sameBytes(name.data(), key.data(), key.size())) {
            return &member.value();
        }
    }
    return nullptr;
}

} // namespace zwhost::json
