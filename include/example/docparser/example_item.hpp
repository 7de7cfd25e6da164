#pragma once
// One entry of the examples catalogue, with the host values cached for its array properties.

#include <string>
#include <vector>

#include "example/docparser/doc_id_link.hpp"
#include "example/docparser/example_type.hpp"
#include "example/docparser/export.hpp"
#include "zx/zx_array.hpp"

namespace example::docparser {

namespace detail {
struct ExampleItemCaches;
}

class ExampleItem {
public:
    /** An item of the ten fields, moved in; all caches start empty. */
    ExampleItem(std::u16string name, std::u16string component, std::u16string title,
                std::u16string description, std::vector<std::u16string> relativePaths,
                std::u16string thumbnail, const ExampleType::Value& exampleType,
                std::u16string openCommand, std::vector<std::u16string> supportingFiles,
                std::vector<DocIDLink> docIDLinks);

    // Moving carries the caches along and leaves the source's caches empty.
    ExampleItem(ExampleItem&&) noexcept = default;
    ExampleItem& operator=(ExampleItem&&) noexcept = default;
    ExampleItem(const ExampleItem&) = delete;
    ExampleItem& operator=(const ExampleItem&) = delete;
    // The caches are released before the data fields, last cache first.
    ~ExampleItem() = default;

    // Plain accessors: each gives the item's own field, valid while the item stands unchanged.

    /** Name of the example: second half of its id. */
    ZW_DOCPARSER_API const std::u16string& getName() const;
    /** Component the example belongs to: first half of its id. */
    ZW_DOCPARSER_API const std::u16string& getComponent() const;
    ZW_DOCPARSER_API const std::u16string& getTitle() const;
    ZW_DOCPARSER_API const std::u16string& getDescription() const;
    /** Relative paths, in catalogue order. */
    ZW_DOCPARSER_API const std::vector<std::u16string>& getRelativePaths() const;
    ZW_DOCPARSER_API const std::u16string& getThumbnail() const;
    /** The kind, by value; any 32-bit number after a host set. */
    ZW_DOCPARSER_API ExampleType::Value getExampleType() const;
    /** The command that opens the example. */
    ZW_DOCPARSER_API const std::u16string& getOpenCommand() const;
    /** Supporting files, in catalogue order. */
    ZW_DOCPARSER_API const std::vector<std::u16string>& getSupportingFiles() const;
    /** Links into the documentation, in catalogue order. */
    ZW_DOCPARSER_API const std::vector<DocIDLink>& getDocIDLinks() const;

    /** "component/name", or the empty string if either half is empty. */
    ZW_DOCPARSER_API std::u16string getID() const;

    /** An independent duplicate of the ten fields, with empty caches. */
    ZW_DOCPARSER_API ExampleItem copy() const;

private:
    friend struct detail::ExampleItemCaches;

    std::u16string name;
    std::u16string component;
    std::u16string title;
    std::u16string description;
    std::vector<std::u16string> relativePaths;
    std::u16string thumbnail;
    ExampleType::Value exampleType;
    std::u16string openCommand;
    std::vector<std::u16string> supportingFiles;
    std::vector<DocIDLink> docIDLinks;
    mutable SharedZxArrayPtr relativePathsCache;
    mutable SharedZxArrayPtr exampleTypeCache;
    mutable SharedZxArrayPtr supportingFilesCache;
    mutable SharedZxArrayPtr docIDLinksCache;
};

} // namespace example::docparser
