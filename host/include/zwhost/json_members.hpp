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

template <class Word>
inline Word load(const char* at) {
    Word word;
    std::memcpy(&word, at, sizeof word);
    return word;
}

/** Whether the `size` bytes at `a` and `b` are equal. Up to 16 bytes are compared as two words
    that overlap where the size is not a whole word, which names of members almost always are. */
inline bool sameBytes(const char* a, const char* b, std::size_t size) {
    if (size >= 8 && size <= 16) {
        return load<std::uint64_t>(a) == load<std::uint64_t>(b) &&
               load<std::uint64_t>(a + size - 8) == load<std::uint64_t>(b + size - 8);
    }
    if (size >= 4 && size < 8) {
        return load<std::uint32_t>(a) == load<std::uint32_t>(b) &&
               load<std::uint32_t>(a + size - 4) == load<std::uint32_t>(b + size - 4);
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
