#pragma once
// The identity of a message of the host's message catalogue: a catalogue, a key and the
// arguments that fill the message's placeholders.

#include <string>
#include <variant>
#include <vector>

namespace resource_core {

/** One argument of a message. */
using MsgArgument = std::variant<long, std::string, std::u16string>;

/** A message identity; message key classes derive from it and fill it. */
struct BaseMsgID {
    std::vector<MsgArgument> arguments;
    std::string catalog;
    std::string key;
};

} // namespace resource_core
