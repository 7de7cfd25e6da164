#pragma once
// The kind of a catalogue entry, its two text forms and its identity in the host's class system.

#include <cstdint>
#include <string>
#include <string_view>

#include "example/docparser/export.hpp"

namespace example::docparser {

class ExampleType {
public:
    enum Value : std::uint32_t {
        Live_Script = 0,
        Script = 1,
        Model = 2,
        Example = 3,
        Chart = 4,
        App = 5,
        Unknown = 6,
    };

    ExampleType() = delete;

    /** The kind named by `text` in its catalogue form ("Live Script", "App", ...); Unknown if none. */
    ZW_DOCPARSER_API static Value stringToEnum(std::string_view text);

    /** The enumerator name of `value` ("Live_Script", "App", ...); "Unknown" for any other number. */
    ZW_DOCPARSER_API static std::string enumToString(Value value);

    /** The kind of an entry that names none: Unknown. */
    ZW_DOCPARSER_API static Value getDefaultValue();

    /** "zentab.internal.example.docparser": static text, not to be freed. */
    ZW_DOCPARSER_API static const char* getZCOSNamespaceName();

    /** "ExampleType": static text, not to be freed. */
    ZW_DOCPARSER_API static const char* getZCOSClassName();
};

} // namespace example::docparser
