#pragma once
// Finding a member of a JSON object by name, tuned for the small objects of catalogue entries.

#include <cstddef>
#include <string_view>

#include <boost/json/object.hpp>

namespace zwhost::json {

/** Objects with up to this many members are scanned in line; larger ones use the hashed search. */
inline constexpr std::size_t kScannedMembers = 32;

/** The value of the member `key` of `object`, or null when it has none. */
inline const boost::json::value* findMember(const boost::json::object& object, std::string_view key) {
    if (object.size() > kScannedMembers) {
        return object.if_contains(key);
    }
    // Names are short, and most differ from the key in length: comparing lengths first and
    // letters in line beats the library's search, which is out of line.
    for (const boost::json::key_value_pair& member : object) {
        const boost::json::string_view name = member.key();
        if (name.size() != key.size()) {
            continue;
        }
        std::size_t i = 0;
        while (i < key.size() && name[i] == key[i]) {
            ++i;
        }
        if (i == key.size()) {
            return &member.value();
        }
    }
    return nullptr;
}

} // namespace zwhost::json
