#include "example/docparser/example_item.hpp"

#include <utility>

namespace example::docparser {

ExampleItem::ExampleItem(std::u16string name, std::u16string component, std::u16string title,
                         std::u16string description, std::vector<std::u16string> relativePaths,
                         std::u16string thumbnail, const ExampleType::Value& exampleType,
                         std::u16string openCommand, std::vector<std::u16string> supportingFiles,
                         std::vector<DocIDLink> docIDLinks)
    : name(std::move(name)), component(std::move(component)), title(std::move(title)),
      description(std::move(description)), relativePaths(std::move(relativePaths)),
      thumbnail(std::move(thumbnail)), exampleType(exampleType), openCommand(std::move(openCommand)),
      supportingFiles(std::move(supportingFiles)), docIDLinks(std::move(docIDLinks)) {}

const std::u16string& ExampleItem::getName() const {
    return name;
}

const std::u16string& ExampleItem::getComponent() const {
    return component;
}

const std::u16string& ExampleItem::getTitle() const {
    return title;
}

const std::u16string& ExampleItem::getDescription() const {
    return description;
}

const std::vector<std::u16string>& ExampleItem::getRelativePaths() const {
    return relativePaths;
}

const std::u16string& ExampleItem::getThumbnail() const {
    return thumbnail;
}

ExampleType::Value ExampleItem::getExampleType() const {
    return exampleType;
}

const std::u16string& ExampleItem::getOpenCommand() const {
    return openCommand;
}

const std::vector<std::u16string>& ExampleItem::getSupportingFiles() const {
    return supportingFiles;
}

const std::vector<DocIDLink>& ExampleItem::getDocIDLinks() const {
    return docIDLinks;
}

std::u16string ExampleItem::getID() const {
    if (component.empty() || name.empty()) {
        return {};
    }
    std::u16string id;
    id.reserve(component.size() + 1 + name.size());
    id += component;
    id += u'/';
    id += name;
    return id;
}

ExampleItem ExampleItem::copy() const {
    std::vector<DocIDLink> linksCopy;
    linksCopy.reserve(docIDLinks.size());
    for (const DocIDLink& link : docIDLinks) {
        linksCopy.push_back(link.copy());
    }
    return ExampleItem(name, component, title, description, relativePaths, thumbnail, exampleType,
                       openCommand, supportingFiles, std::move(linksCopy));
}

} // namespace example::docparser
