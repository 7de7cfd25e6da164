// String and string-vector properties of items and links: strings cross as they stand, string
// vectors through an array cached beside them.

#include "example/docparser/doc_id_link.hpp"
#include "example/docparser/example_item.hpp"
#include "reference/utils/property_utils.hpp"

namespace example::docparser {

const std::u16string& DocIDLink::getDocIDProperty() const {
    return docID;
}

void DocIDLink::setDocIDProperty(const std::u16string* value) {
    reference::utils::setStringProperty(docID, value);
}

const std::u16string& DocIDLink::getTargetProperty() const {
    return target;
}

void DocIDLink::setTargetProperty(const std::u16string* value) {
    reference::utils::setStringProperty(target, value);
}

const std::u16string& ExampleItem::getNameProperty() const {
    return name;
}

void ExampleItem::setNameProperty(const std::u16string* value) {
    reference::utils::setStringProperty(name, value);
}

const std::u16string& ExampleItem::getComponentProperty() const {
    return component;
}

void ExampleItem::setComponentProperty(const std::u16string* value) {
    reference::utils::setStringProperty(component, value);
}

const std::u16string& ExampleItem::getTitleProperty() const {
    return title;
}

void ExampleItem::setTitleProperty(const std::u16string* value) {
    reference::utils::setStringProperty(title, value);
}

const std::u16string& ExampleItem::getDescriptionProperty() const {
    return description;
}

void ExampleItem::setDescriptionProperty(const std::u16string* value) {
    reference::utils::setStringProperty(description, value);
}

const std::u16string& ExampleItem::getThumbnailProperty() const {
    return thumbnail;
}

void ExampleItem::setThumbnailProperty(const std::u16string* value) {
    reference::utils::setStringProperty(thumbnail, value);
}

const std::u16string& ExampleItem::getOpenCommandProperty() const {
    return openCommand;
}

void ExampleItem::setOpenCommandProperty(const std::u16string* value) {
    reference::utils::setStringProperty(openCommand, value);
}

const zxArray_tag* ExampleItem::getRelativePathsProperty() const {
    return reference::utils::accessStringVectorCache(relativePathsCache, relativePaths);
}

void ExampleItem::setRelativePathsProperty(const zxArray_tag* value) {
    reference::utils::setStringVectorAndCache(value, relativePathsCache, relativePaths);
}

const zxArray_tag* ExampleItem::getSupportingFilesProperty() const {
    return reference::utils::accessStringVectorCache(supportingFilesCache, supportingFiles);
}

void ExampleItem::setSupportingFilesProperty(const zxArray_tag* value) {
    reference::utils::setStringVectorAndCache(value, supportingFilesCache, supportingFiles);
}

} // namespace example::docparser
