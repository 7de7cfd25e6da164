#pragma once
// One catalogue: its header and its items by example id.

#include <map>
#include <string>
#include <vector>

#include "reference/property/header_info.hpp"

namespace reference::docparser {

template <class Item>
struct DocResource {
    reference::property::HeaderInfo header;
    std::map<std::u16string, std::vector<Item>> items;
};

} // namespace reference::docparser
