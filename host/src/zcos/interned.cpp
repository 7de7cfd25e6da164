#include "zcos/interned.hpp"

#include <map>
#include <mutex>

#include "zwhost/fault.hpp"

namespace zcos::internal {

constinit const InternedText nullValue{};

namespace {

struct InternTable {
    std::mutex mutex;
    // Map nodes never move, so each entry's view of its own key stays valid.
    std::map<std::string, InternedText, std::less<>> entries;
};

InternTable& internTable() {
    static InternTable table;
    return table;
}

} // namespace

const InternedText* makeInterned(const std::string& text) {
    zwhost::fault::point("makeInterned");
    if (text.empty()) {
        return &nullValue;
    }
    InternTable& table = internTable();
    std::lock_guard lock(table.mutex);
    auto entry = table.entries.find(text);
    if (entry == table.entries.end()) {
        entry = table.entries.emplace(text, InternedText{}).first;
        entry->second.text = entry->first;
    }
    return &entry->second;
}

} // namespace zcos::internal
