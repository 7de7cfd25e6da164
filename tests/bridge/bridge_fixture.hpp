#pragma once
// Items, links and host values for the bridge tests, with the host's classes registered.

#include <cstdint>
#include <cstring>
#include <initializer_list>
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

class BridgeTest : public HostLeakCheck {
protected:
    BridgeTest() { zwhost::classes::registerDocParserClasses(); }

    static std::vector<DocIDLink>
    links(std::initializer_list<std::pair<const char16_t*, const char16_t*>> pairs) {
        std::vector<DocIDLink> result;
        for (const auto& [docID, target] : pairs) {
            result.emplace_back(docID, target);
        }
        return result;
    }

    static ExampleItem makeItem(ExampleType::Value kind = ExampleType::Model,
                                std::vector<DocIDLink> docIDLinks = {}) {
        return ExampleItem(u"name", u"component", u"title", u"description", {u"a.m", u"b.m"}, u"thumb.png",
                           kind, u"open", {u"data.mat"}, std::move(docIDLinks));
    }

    /** A new rows-by-cols object array of the host's link class holding heap copies of `source`. */
    static matrix::zx_array_handle linkArray(unsigned long rows, unsigned long cols,
                                             const std::vector<DocIDLink>& source) {
        const auto name = zcos::internal::makeInterned(std::string(zwhost::classes::kDocIDLinkClass));
        matrix::zx_array_handle array(omCreateZCOSMatrix(rows, cols, name));
        for (std::size_t i = 0; i < source.size(); ++i) {
            omSetArrayElement(array.get(), i,
                              omWrapData(new DocIDLink(source[i].copy()), zcos::COSClass::getClass(name)));
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

    static Strings docIDsOf(const std::vector<DocIDLink>& source) {
        Strings ids;
        for (const DocIDLink& link : source) {
            ids.push_back(link.getDocID());
        }
        return ids;
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
