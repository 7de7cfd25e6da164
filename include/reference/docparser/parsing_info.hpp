#pragma once
// Everything one parse hands down to its readers.

#include <functional>
#include <string>
#include <vector>

namespace reference::docparser {

template <class T>
struct ParsingInfo {
    /** Parses the 8-bit text of one catalogue file. */
    using JsonParsingFcn = std::function<T(const std::string&)>;
    /** Decides for one key of T whether its entry counts as installed. */
    using IsInstalledFcn = std::function<bool(const std::u16string&)>;

    const JsonParsingFcn& jsonParsingFcn;
    const IsInstalledFcn& isInstalledFcn;
    std::vector<std::u16string> docLocales;
    std::u16string localeSuffix;
};

} // namespace reference::docparser
