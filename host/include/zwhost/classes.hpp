#pragma once
// The host's classes for the example catalogue's records: the link class, the enumeration of
// kinds and the item class, bound to the library's property accessors by property name.

#include <string_view>

#include "example/docparser/example_item.hpp"
#include "matrix/matrix.hpp"

namespace zwhost::classes {

inline constexpr std::string_view kDocIDLinkClass = "zentab.internal.example.docparser.DocIDLink";
inline constexpr std::string_view kExampleTypeClass = "zentab.internal.example.docparser.ExampleType";
inline constexpr std::string_view kExampleItemClass = "zentab.internal.example.docparser.ExampleItem";

/** Registers the three classes with the class system; later calls do nothing.
    DocIDLink: properties DocID, Target (character rows); owns its link.
    ExampleType: built from one uint32 scalar; read-only properties Name (the member name) and
    Value (the number). ExampleItem: properties Name, Component, Title, Description,
    RelativePaths, Thumbnail, ExampleType, OpenCommand, SupportingFiles, DocIDLinks. */
void registerDocParserClasses();

/** A new 1-by-1 object array of the item class, with one reference for the caller. It borrows
    `item`, which must outlive the array and every reference taken to it. */
matrix::zx_array_handle wrapExampleItem(example::docparser::ExampleItem& item);

} // namespace zwhost::classes
