#include "example/docparser/example_type.hpp"

#include "model/example_type_table.hpp"

namespace example::docparser {

ExampleType::Value ExampleType::stringToEnum(std::string_view text) {
    const auto& table = detail::exampleTypeByName;
    const auto row = table.lower_bound(text);
    if (row == table.end() || text < row->first) {
        return Unknown;
    }
    return row->second;
}

std::string ExampleType::enumToString(Value value) {
    switch (static_cast<std::uint32_t>(value)) {
    case Live_Script:
        return "Live_Script";
    case Script:
        return "Script";
    case Model:
        return "Model";
    case Example:
        return "Example";
    case Chart:
        return "Chart";
    case App:
        return "App";
    default:
        return "Unknown";
    }
}

ExampleType::Value ExampleType::getDefaultValue() {
    return Unknown;
}

const char* ExampleType::getZCOSNamespaceName() {
    return "zentab.internal.example.docparser";
}

const char* ExampleType::getZCOSClassName() {
    return "ExampleType";
}

} // namespace example::docparser
