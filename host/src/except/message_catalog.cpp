// The host's message catalogue: message texts by catalogue and key.

#include <string>
#include <string_view>

#include "zwhost/messages.hpp"

namespace zwhost::messages {
namespace {

struct Message {
    std::string_view catalog;
    std::string_view key;
    std::string_view text;
};

constexpr Message kMessages[] = {
    {"ZENTAB:class", "RequireScalar", "Value must be a scalar."},
    {"ZENTAB:class", "RequireText", "Value must be a character vector."},
    {"ZENTAB:class", "RequireUint32Scalar", "Value must be a uint32 scalar."},
    {"ZENTAB:utils", "RequireTextArray",
     "Value must be a character vector or a cell array of character vectors."},
};

} // namespace

std::string formatMessage(const resource_core::BaseMsgID& id) {
    for (const Message& message : kMessages) {
        if (message.catalog == id.catalog && message.key == id.key) {
            return std::string(message.text);
        }
    }
    return id.catalog + ":" + id.key;
}

} // namespace zwhost::messages
