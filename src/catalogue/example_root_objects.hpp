#pragma once
// The objects of the example root operations: the library's logger, and the suffix every root
// gets. Defined in load_order.cpp.

#include <string>

#include "foundation/log/diagnostic_logger.hpp"

namespace example::docparser::detail {

/** The library's logger, "exampleApi::docparser": it exists from load to unload so that a host
    can find the library's logger by name; the library writes nothing to it. */
extern foundation::log::basic_diagnostic_logger<char> exampleLogger;

/** Copy of the platform's path separator. */
extern const std::u16string pathSeparator;

/** Appended to every example root: separator, "docCatalog", separator, "exampleapi". */
extern const std::u16string kExampleRootSuffix;

} // namespace example::docparser::detail
