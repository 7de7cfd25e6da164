#pragma once
// Items, links and host values for the bridge tests, with the host's classes registered.

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "example/docparser/example_item.hpp"
#include "support/host_leak_check.hpp"
#include "zcos/om.hpp"
#include "zwhost/classes.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/zcos.hpp"

namespace zwtest {

using example::docparser::DocIDLink;
using example::docparser::ExampleItem;
using example::docparser::ExampleType;
using Strings = std::vector<std::u16string>;

/** The properties an item holds as host arrays, in the order of their cache fields. */
// clang-format off
inline constexpr struct { const char* name; const zxArray_tag* (ExampleItem::*get)() const; } kArrayProperties[] = {
    {"RelativePaths", &ExampleItem::getRelativePathsProperty}, {"SupportingFiles", &ExampleItem::getSupportingFilesProperty},
    {"ExampleType", &ExampleItem::getExampleTypeProperty}, {"DocIDLinks", &ExampleItem::getDocIDLinksProperty}};
// clang-format on

class BridgeTest : public HostLeakCheck {
protected:
    BridgeTest() { zwhost::classes::registerDocParserClasses(); }

    /** An item of the given kind, component and name with two of everything but the texts: links
        "a" to "1", "b" to "2". */
    static ExampleItem makeItem(ExampleType::Value kind = ExampleType::Model,
                                std::u16string component = u"component", std::u16string name = u"name") {
        std::vector<DocIDLink> links;
        links.emplace_back(u"a", u"1");
        links.emplace_back(u"b", u"2");
        return ExampleItem(std::move(name), std::move(component), u"title", u"description", {u"a.m", u"b.m"},
                           u"thumb.png", kind, u"open", {u"data.mat"}, std::move(links));
    }

    /** A new rows-by-cols object array of the host's link class holding links from `ids` to "t". */
    static matrix::zx_array_handle linkArray(unsigned long rows, unsigned long cols, const Strings& ids) {
        const auto name = zcos::internal::makeInterned(std::string(zwhost::classes::kDocIDLinkClass));
        matrix::zx_array_handle array(omCreateZCOSMatrix(rows, cols, name));
        for (std::size_t i = 0; i < ids.size(); ++i) {
            omSetArrayElement(array.get(), i,
                              omWrapData(new DocIDLink(ids[i], u"t"), zcos::COSClass::getClass(name)));
        }
        return array;
    }

    /** What a host value shows, read as the host reads it: the text of a character array, the
        texts of a cell array, the member name of a kind, the doc ids of links. */
    static Strings textsOf(const zxArray_tag* value) {
        if (value->classID == zxCHAR_CLASS) {
            return {matrix::getCharText(value)};
        }
        if (value->classID == zxCELL_CLASS) {
            return matrix::getTextList(value);
        }
        const bool kind = value->objectClass == zwhost::zcos::findClass(zwhost::classes::kExampleTypeClass);
        Strings texts;
        for (std::size_t i = 0; i < zxGetNumberOfElements(value); ++i) {
            texts.push_back(
                matrix::getCharText(zwhost::zcos::getProperty(value, i, kind ? "Name" : "DocID").get()));
        }
        return texts;
    }

    /** The four arrays the host reads, in the order of kArrayProperties: built on the first call,
        then given from the item's caches. */
    static std::array<const zxArray_tag*, 4> cachesOf(const ExampleItem& item) {
        return {(item.*kArrayProperties[0].get)(), (item.*kArrayProperties[1].get)(),
                (item.*kArrayProperties[2].get)(), (item.*kArrayProperties[3].get)()};
    }

    /** The first 32-bit word under an enumeration object. */
    static std::uint32_t kindUnder(const zxArray_tag* object) {
        std::uint32_t word = 0;
        std::memcpy(&word, omGetUnderlyingArray(object)->realData, sizeof word);
        return word;
    }

    zwhost::fault::Scope faults;
};

} // namespace zwtest
