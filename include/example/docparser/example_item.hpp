#pragma once
// One entry of the examples catalogue, with the host values cached for its array properties.

#include <string>
#include <vector>

#include "example/docparser/doc_id_link.hpp"
#include "example/docparser/example_type.hpp"
#include "example/docparser/export.hpp"
#include "zx/zx_array.hpp"

namespace example::docparser {

class ExampleItem {
public:
    /** An item of the ten fields, moved in; all caches start empty. */
    ExampleItem(std::u16string name, std::u16string component, std::u16string title,
                std::u16string description, std::vector<std::u16string> relativePaths,
                std::u16string thumbnail, const ExampleType::Value& exampleType, std::u16string openCommand,
                std::vector<std::u16string> supportingFiles, std::vector<DocIDLink> docIDLinks);

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

    // Properties, for the host's class system. String getters give the item's own field; string
    // setters take the text of `*value`, and the caller keeps `value`. Array getters return a
    // borrowed pointer, valid until the property is set or the item is destroyed; array setters
    // leave the value the caller's, and a null value changes nothing.

    ZW_DOCPARSER_API const std::u16string& getNameProperty() const;
    ZW_DOCPARSER_API void setNameProperty(const std::u16string* value);
    ZW_DOCPARSER_API const std::u16string& getComponentProperty() const;
    ZW_DOCPARSER_API void setComponentProperty(const std::u16string* value);
    ZW_DOCPARSER_API const std::u16string& getTitleProperty() const;
    ZW_DOCPARSER_API void setTitleProperty(const std::u16string* value);
    ZW_DOCPARSER_API const std::u16string& getDescriptionProperty() const;
    ZW_DOCPARSER_API void setDescriptionProperty(const std::u16string* value);
    ZW_DOCPARSER_API const std::u16string& getThumbnailProperty() const;
    ZW_DOCPARSER_API void setThumbnailProperty(const std::u16string* value);
    ZW_DOCPARSER_API const std::u16string& getOpenCommandProperty() const;
    ZW_DOCPARSER_API void setOpenCommandProperty(const std::u16string* value);

    /** The relative paths as a 1-by-n cell array of character rows, built on first use. */
    ZW_DOCPARSER_API const zxArray_tag* getRelativePathsProperty() const;
    /** Sets the relative paths to the texts of `value`, and the cached array with them. */
    ZW_DOCPARSER_API void setRelativePathsProperty(const zxArray_tag* value);
    /** The supporting files as a 1-by-n cell array of character rows, built on first use. */
    ZW_DOCPARSER_API const zxArray_tag* getSupportingFilesProperty() const;
    /** Sets the supporting files to the texts of `value`, and the cached array with them. */
    ZW_DOCPARSER_API void setSupportingFilesProperty(const zxArray_tag* value);

    /** The kind as an object of the host's enumeration class, built from the number on first
        use; after a set, the value that was set. */
    ZW_DOCPARSER_API const zxArray_tag* getExampleTypeProperty() const;
    /** Sets the kind to the first 32-bit word under `value`, which becomes the cached value.
        @throw foundation::core::except::IMsgIDException "ZENTAB:class:RequireScalar" if
        `value` hasn't exactly one element; nothing changes then. */
    ZW_DOCPARSER_API void setExampleTypeProperty(const zxArray_tag* value);

    /** The links as a 1-by-n object array of the host's link class, built on first use. */
    ZW_DOCPARSER_API const zxArray_tag* getDocIDLinksProperty() const;
    /** Sets the links to copies of the elements of `value`, of any shape, and the cached array
        to a new one built from them. */
    ZW_DOCPARSER_API void setDocIDLinksProperty(const zxArray_tag* value);

private:
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
