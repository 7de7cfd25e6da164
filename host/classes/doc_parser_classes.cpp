#include <cstdint>
#include <cstring>
#include <mutex>
#include <string>

#include "zcos/om.hpp"
#include "zwhost/classes.hpp"
#include "zwhost/messages.hpp"
#include "zwhost/zcos.hpp"

namespace zwhost::classes {
namespace {

using example::docparser::DocIDLink;
using example::docparser::ExampleItem;
using example::docparser::ExampleType;

std::u16string textOf(const zxArray_tag* value) {
    if (value == nullptr || !matrix::isCharRow(value)) {
        throw messages::MsgIDError({{}, "ZENTAB:class", "RequireText"});
    }
    return matrix::getCharText(value);
}

/** A new reference to an array the caller only borrowed. */
matrix::zx_array_handle share(const zxArray_tag* array) {
    intrusive_ptr_add_ref(array);
    return matrix::from_zentab(const_cast<zxArray_tag*>(array));
}

template <class Record>
Record& recordOf(const ::zcos::COSObject& object) {
    return *static_cast<Record*>(object.data());
}

template <class Record, const std::u16string& (Record::*get)() const,
          void (Record::*set)(const std::u16string*)>
::zcos::COSProperty stringProperty(std::string name) {
    return {std::move(name),
            [](const ::zcos::COSObject& object) {
                return matrix::from_zentab(matrix::createCharRow((recordOf<Record>(object).*get)()));
            },
            [](::zcos::COSObject& object, const zxArray_tag* value) {
                const std::u16string text = textOf(value);
                (recordOf<Record>(object).*set)(&text);
            }};
}

template <const zxArray_tag* (ExampleItem::*get)() const, void (ExampleItem::*set)(const zxArray_tag*)>
::zcos::COSProperty arrayProperty(std::string name) {
    return {std::move(name),
            [](const ::zcos::COSObject& object) { return share((recordOf<ExampleItem>(object).*get)()); },
            [](::zcos::COSObject& object, const zxArray_tag* value) {
                (recordOf<ExampleItem>(object).*set)(value);
            }};
}

void deleteDocIDLink(void* data) noexcept {
    delete static_cast<DocIDLink*>(data);
}

std::uint32_t numberOf(const ::zcos::COSObject& object) {
    std::uint32_t number{};
    std::memcpy(&number, object.underlyingArray()->realData, sizeof number);
    return number;
}

::zcos::COSClass::Definition docIDLinkClass() {
    return {
        std::string(kDocIDLinkClass),
        {},
        &deleteDocIDLink,
        {stringProperty<DocIDLink, &DocIDLink::getDocIDProperty, &DocIDLink::setDocIDProperty>("DocID"),
         stringProperty<DocIDLink, &DocIDLink::getTargetProperty, &DocIDLink::setTargetProperty>("Target")}};
}

::zcos::COSClass::Definition exampleTypeClass() {
    // The object shares the scalar it is built from: that array is the one under the object.
    auto construct = [](const ::zcos::COSClass& self, int argc, const zxArray_tag* const* argv) {
        if (argc != 1 || argv[0]->classID != zxUINT32_CLASS || zxGetNumberOfElements(argv[0]) != 1) {
            throw messages::MsgIDError({{}, "ZENTAB:class", "RequireUint32Scalar"});
        }
        return zwhost::zcos::makeValueObject(self, SharedZxArrayPtr(argv[0]));
    };
    ::zcos::COSProperty name{
        "Name",
        [](const ::zcos::COSObject& object) {
            const std::string member =
                ExampleType::enumToString(static_cast<ExampleType::Value>(numberOf(object)));
            return matrix::from_zentab(matrix::createCharRow(std::u16string(member.begin(), member.end())));
        },
        {}};
    ::zcos::COSProperty value{
        "Value", [](const ::zcos::COSObject& object) { return share(object.underlyingArray()); }, {}};
    return {std::string(kExampleTypeClass), construct, nullptr, {std::move(name), std::move(value)}};
}

::zcos::COSClass::Definition exampleItemClass() {
    using I = ExampleItem;
    return {std::string(kExampleItemClass),
            {},
            nullptr,
            {stringProperty<I, &I::getNameProperty, &I::setNameProperty>("Name"),
             stringProperty<I, &I::getComponentProperty, &I::setComponentProperty>("Component"),
             stringProperty<I, &I::getTitleProperty, &I::setTitleProperty>("Title"),
             stringProperty<I, &I::getDescriptionProperty, &I::setDescriptionProperty>("Description"),
             arrayProperty<&I::getRelativePathsProperty, &I::setRelativePathsProperty>("RelativePaths"),
             stringProperty<I, &I::getThumbnailProperty, &I::setThumbnailProperty>("Thumbnail"),
             arrayProperty<&I::getExampleTypeProperty, &I::setExampleTypeProperty>("ExampleType"),
             stringProperty<I, &I::getOpenCommandProperty, &I::setOpenCommandProperty>("OpenCommand"),
             arrayProperty<&I::getSupportingFilesProperty, &I::setSupportingFilesProperty>("SupportingFiles"),
             arrayProperty<&I::getDocIDLinksProperty, &I::setDocIDLinksProperty>("DocIDLinks")}};
}

} // namespace

void registerDocParserClasses() {
    static std::once_flag registered;
    std::call_once(registered, [] {
        zwhost::zcos::registerClass(docIDLinkClass());
        zwhost::zcos::registerClass(exampleTypeClass());
        zwhost::zcos::registerClass(exampleItemClass());
    });
}

matrix::zx_array_handle wrapExampleItem(ExampleItem& item) {
    registerDocParserClasses();
    return zwhost::zcos::makeObjectArray(omWrapData(&item, zwhost::zcos::findClass(kExampleItemClass)));
}

} // namespace zwhost::classes
