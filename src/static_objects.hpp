#pragma once
// The library's objects with static storage that need construction at load. They are all
// defined in static_objects.cpp, in the order in which they must be built.

#include <string>
#include <string_view>

#include <boost/container/flat_map.hpp>

#include "example/docparser/example_type.hpp"
#include "foundation/log/diagnostic_logger.hpp"

namespace example::docparser::detail {

// Keys of the catalogue format.
extern const std::string kKeyExampleItems;
extern const std::string kKeyName;
extern const std::string kKeyComponent;
extern const std::string kKeyTitle;
extern const std::string kKeyDescription;
extern const std::string kKeyRelativePath;
extern const std::string kKeyThumbnail;
extern const std::string kKeyExampleType;
extern const std::string kKeyOpenCmd;
extern const std::string kKeySupportingFiles;
extern const std::string kKeyDocidLinks;
extern const std::string kKeyDocid;
extern const std::string kKeyTarget;

/** The library's logger, "exampleApi::docparser". Nothing is written to it. */
extern foundation::log::basic_diagnostic_logger<char> exampleLogger;

/** Copy of the platform's path separator. */
extern const std::u16string pathSeparator;

/** Appended to every example root: separator, "docCatalog", separator, "exampleapi". */
extern const std::u16string kExampleRootSuffix;

using ExampleTypeTable = boost::container::flat_map<std::string_view, ExampleType::Value, std::less<void>>;

/** Catalogue form of each kind to its value, sorted by key. Read-only after load. */
extern const ExampleTypeTable exampleTypeByName;

} // namespace example::docparser::detail
