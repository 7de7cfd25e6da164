// The bridge between items and host values: each property as its accessor and the host's class
// give it, what each setter takes and refuses, the class system's refusals, the class identities
// and the scalar error.

#include <exception>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include <boost/exception/get_error_info.hpp>
#include <boost/exception/info.hpp>
#include <gtest/gtest.h>

#include "bridge/bridge_fixture.hpp"
#include "bridge/doc_id_link_arrays.hpp"
#include "bridge/require_scalar_error.hpp"
#include "zwhost/messages.hpp"

namespace {

using zwtest::DocIDLink;
using zwtest::ExampleType;
using zwtest::Strings;
using I = zwtest::ExampleItem;
using Bridge = zwtest::BridgeTest;
using Dims = std::vector<std::uint64_t>;
using Handle = matrix::zx_array_handle;
namespace detail = example::docparser::detail;
namespace classes = zwhost::classes;
namespace host = zwhost::zcos;

/** The identifier of the message-id error `call` throws, the kind of its standard error, or "". */
std::string errorOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const foundation::core::except::IMsgIDException& error) {
        return error.GetID();
    } catch (const std::out_of_range&) {
        return "out_of_range";
    } catch (const std::invalid_argument&) {
        return "invalid_argument";
    }
    return "";
}

Handle charRow(std::u16string_view text) {
    return Handle(matrix::createCharRow(text));
}

Handle propertyOf(const Handle& object, const char* name) {
    return host::getProperty(object.get(), 0, name);
}

TEST_F(Bridge, ArrayPropertiesAreBuiltOnceAndSharedWithTheHost) {
    I item = makeItem(ExampleType::App);
    const Handle object = classes::wrapExampleItem(item);
    // The value of each property, built on the first get and given again after
    const Strings built[] = {{u"a.m", u"b.m"}, {u"data.mat"}, {u"App"}, {u"a", u"b"}};
    for (std::size_t i = 0; i < 4; ++i) {
        const auto& [name, get] = zwtest::kArrayProperties[i];
        const Strings& value = built[i];
        SCOPED_TRACE(name);
        const zxArray_tag* array = (item.*get)();
        EXPECT_EQ(propertyOf(object, name).get(), array);
        EXPECT_EQ((item.*get)(), array);
        EXPECT_EQ(array->dims, (Dims{1, value.size()}));
        EXPECT_EQ(textsOf(array), value);
    }
    const zxArray_tag* linksArray = item.getDocIDLinksProperty();
    EXPECT_EQ(linksArray->objectClass, host::findClass(classes::kDocIDLinkClass));
    EXPECT_EQ(linksArray->scope, zxSCOPE_CACHED);
    EXPECT_TRUE(linksArray->internalForm);
    EXPECT_NE(&detail::getDocIDLinkElement(linksArray, 1)->getDocID(), &item.getDocIDLinks()[1].getDocID());
    const I bare(u"n", u"c", u"t", u"d", {}, u"", ExampleType::Model, u"", {}, {});
    EXPECT_EQ(bare.getRelativePathsProperty()->dims, (Dims{1, 0}));
    EXPECT_EQ(bare.getDocIDLinksProperty()->dims, (Dims{1, 0}));
}

TEST_F(Bridge, KindObjectHoldsTheNumberAndNamesItsMember) {
    // clang-format off
    const std::pair<std::uint32_t, const char16_t*> cases[] = {{ExampleType::Live_Script, u"Live_Script"},
        {ExampleType::App, u"App"}, {ExampleType::Unknown, u"Unknown"}, {200, u"Unknown"}};
    // clang-format on
    for (const auto& [kind, name] : cases) {
        const I item = makeItem(static_cast<ExampleType::Value>(kind));
        const zxArray_tag* object = item.getExampleTypeProperty();
        EXPECT_EQ(object->objectClass, host::findClass(classes::kExampleTypeClass));
        EXPECT_EQ(kindUnder(object), kind);
        EXPECT_EQ(textsOf(object), Strings{name});
    }
    // A copy builds its own object, from the number.
    I item = makeItem();
    item.setExampleTypeProperty(zwtest::makeNumbers<std::uint32_t>(1, 1, 200).get());
    const I copy = item.copy();
    EXPECT_NE(copy.getExampleTypeProperty(), item.getExampleTypeProperty());
    EXPECT_EQ(kindUnder(copy.getExampleTypeProperty()), 200u);
    const Handle plain = zwtest::makeNumbers(1, 1, 2.0);
    EXPECT_EQ(omGetUnderlyingArray(plain.get()), plain.get());
}

TEST_F(Bridge, StringSettersChangeTheFieldTheHostReads) {
    const std::tuple<const char*, void (I::*)(const std::u16string*), const std::u16string& (I::*)() const>
        cases[] = {
            {"Name", &I::setNameProperty, &I::getName},
            {"Component", &I::setComponentProperty, &I::getComponent},
            {"Title", &I::setTitleProperty, &I::getTitle},
            {"Description", &I::setDescriptionProperty, &I::getDescription},
            {"Thumbnail", &I::setThumbnailProperty, &I::getThumbnail},
            {"OpenCommand", &I::setOpenCommandProperty, &I::getOpenCommand},
        };
    for (const auto& [name, set, get] : cases) {
        SCOPED_TRACE(name);
        I item = makeItem();
        const Handle object = classes::wrapExampleItem(item);
        const std::u16string before = (item.*get)();
        (item.*set)(nullptr);
        EXPECT_EQ(textsOf(propertyOf(object, name).get()), Strings{before});
        const std::u16string value = u"new \u00e9";
        (item.*set)(&value);
        EXPECT_EQ(textsOf(propertyOf(object, name).get()), Strings{value});
        host::setProperty(object.get(), 0, name, charRow(u"by name").get());
        EXPECT_EQ((item.*get)(), u"by name");
    }
    DocIDLink link(u"id", u"target");
    const std::u16string docID = u"other";
    link.setDocIDProperty(&docID);
    link.setTargetProperty(nullptr);
    EXPECT_EQ(link.getDocIDProperty(), u"other");
    EXPECT_EQ(link.getTargetProperty(), u"target");
}

TEST_F(Bridge, ArraySettersTakeWhatFitsAndKeepTheRest) {
    const std::string text = "ZENTAB:utils:RequireTextArray", scalar = "ZENTAB:class:RequireScalar";
    const char *lists = "RelativePaths SupportingFiles", *kind = "ExampleType", *linked = "DocIDLinks";
    const Strings three = {u"a", u"b", u"c"};
    const unsigned long noSize[] = {0, 0}, square[] = {2, 2};
    const I source = makeItem(ExampleType::Script);
    const zxArray_tag* kindObject = source.getExampleTypeProperty();
    intrusive_ptr_add_ref(kindObject);
    Handle numberInCell = zwtest::makeCells(1, 2, {u"a"});
    numberInCell->cells[1] = zwtest::makeNumbers(1, 1, 2.0);
    // A value that is taken is stored as a row, and only a kind keeps the very array given; a
    // refused or null one leaves the property and its cache as they were.
    const struct {
        const char* names;
        const char* what;
        Handle value;
        std::string error;
        Strings texts;
    } cases[] = {
        {lists, "column", zwtest::makeCells(3, 1, {u"x", u"y", u"z"}), "", {u"x", u"y", u"z"}},
        {lists, "matrix", zwtest::makeCells(2, 2, {u"a", u"b", u"c", u"d"}), "", {u"a", u"b", u"c", u"d"}},
        {lists, "empty cell", zwtest::makeCells(0, 0, {}), "", {}},
        {lists, "one row of text", charRow(u"solo"), "", {u"solo"}},
        {lists, "empty text", Handle(matrix::createCharArray(noSize, u"")), "", {u""}},
        {lists, "number", zwtest::makeNumbers(1, 1, 1.0), text, {}},
        {lists, "two rows of text", Handle(matrix::createCharArray(square, u"abcd")), text, {}},
        {lists, "cell holding a number", std::move(numberInCell), text, {}},
        {lists, "cell with an empty element", zwtest::makeCells(1, 2, {u"a"}), text, {}},
        {kind, "uint32", zwtest::makeNumbers<std::uint32_t>(1, 1, ExampleType::Chart), "", {u"Chart"}},
        {kind, "beyond the enumerators", zwtest::makeNumbers<std::uint32_t>(1, 1, 200), "", {u"Unknown"}},
        {kind, "double 1.0, low word", zwtest::makeNumbers(1, 1, 1.0), "", {u"Live_Script"}},
        {kind, "object", matrix::from_zentab(const_cast<zxArray_tag*>(kindObject)), "", {u"Script"}},
        {kind, "0x0", zwtest::makeNumbers<std::uint32_t>(0, 0, ExampleType::App), scalar, {}},
        {kind, "1x0", zwtest::makeNumbers<std::uint32_t>(1, 0, ExampleType::App), scalar, {}},
        {kind, "1x2", zwtest::makeNumbers<std::uint32_t>(1, 2, ExampleType::App), scalar, {}},
        {kind, "2x2", zwtest::makeNumbers<std::uint32_t>(2, 2, ExampleType::App), scalar, {}},
        {linked, "column", linkArray(3, 1, three), "", {u"a", u"b", u"c"}},
        {linked, "row", linkArray(1, 3, three), "", {u"a", u"b", u"c"}},
        {linked, "empty", linkArray(0, 0, {}), "", {}},
        {linked, "empty cell array", Handle(matrix::createCellArray(noSize)), "", {}},
        {"RelativePaths SupportingFiles ExampleType DocIDLinks", "null", Handle(), "", {}},
    };
    for (const std::string name : {"RelativePaths", "SupportingFiles", "ExampleType", "DocIDLinks"}) {
        for (const auto& c : cases) {
            if (std::string_view(c.names).find(name) == std::string_view::npos) {
                continue;
            }
            SCOPED_TRACE(name + ", " + c.what);
            I item = makeItem();
            const Handle object = classes::wrapExampleItem(item);
            const Handle before = propertyOf(object, name.c_str());
            EXPECT_EQ(errorOf([&] { host::setProperty(object.get(), 0, name, c.value.get()); }), c.error);
            const Handle after = propertyOf(object, name.c_str());
            const bool changed = c.error.empty() && c.value;
            const bool shared = changed && name == kind;
            const Strings expected = changed ? c.texts : textsOf(before.get());
            EXPECT_EQ(after.get() == before.get(), !changed);
            EXPECT_EQ(after.get() == c.value.get(), shared);
            if (!shared) {
                EXPECT_EQ(std::pair(after->classID, after->objectClass),
                          std::pair(before->classID, before->objectClass));
                EXPECT_EQ(after->dims, (Dims{1, expected.size()}));
                EXPECT_EQ(textsOf(after.get()), expected);
            }
            I copy = item.copy();
            for (const auto* links : {&item.getDocIDLinks(), &copy.getDocIDLinks()}) {
                EXPECT_EQ(links->capacity(), links->size()) << "links built at their size";
            }
            EXPECT_EQ(textsOf(propertyOf(classes::wrapExampleItem(copy), name.c_str()).get()), expected);
        }
    }
    // The very array the getter gave is taken like any other; a host change to a link it then
    // holds stays in the host's object.
    for (const char* name : {"RelativePaths", "SupportingFiles", "DocIDLinks"}) {
        I item = makeItem();
        const Handle object = classes::wrapExampleItem(item);
        const Handle own = propertyOf(object, name);
        host::setProperty(object.get(), 0, name, own.get());
        const Handle after = propertyOf(object, name);
        EXPECT_NE(after.get(), own.get()) << name;
        EXPECT_EQ(textsOf(after.get()), textsOf(own.get())) << name;
    }
    I item = makeItem();
    item.setDocIDLinksProperty(item.getDocIDLinksProperty());
    const zxArray_tag* array = item.getDocIDLinksProperty();
    host::setProperty(array, 0, "DocID", charRow(u"changed").get());
    EXPECT_EQ(item.getDocIDLinksProperty(), array);
    EXPECT_EQ(textsOf(array), (Strings{u"changed", u"b"}));
    EXPECT_EQ(textsOf(item.copy().getDocIDLinksProperty()), (Strings{u"a", u"b"}));
}

TEST_F(Bridge, MisuseOfTheClassSystemIsRefusedWithTheRightError) {
    I item = makeItem();
    const Handle object = classes::wrapExampleItem(item);
    const zxArray_tag* links = item.getDocIDLinksProperty();
    const zxArray_tag* kind = item.getExampleTypeProperty();
    const zcos::COSClassName& linkName = host::findClass(classes::kDocIDLinkClass)->getName();
    const zcos::COSClassName& kindName = host::findClass(classes::kExampleTypeClass)->getName();
    const Handle number = zwtest::makeNumbers(1, 1, 2.0);
    const Handle cells = zwtest::makeCells(1, 1, {u"c"});
    const Handle slot(omCreateZCOSMatrix(1, 1, linkName));
    const zxArray_tag* argv[] = {number.get()};
    const zcos::COSKey kindKey = host::findClass(classes::kExampleTypeClass)->getKey();
    const unsigned long square[] = {2, 2};
    auto* const client = COSGetPublicClient();
    const std::string range = "out_of_range", arg = "invalid_argument", text = "ZENTAB:class:RequireText",
                      u32 = "ZENTAB:class:RequireUint32Scalar";
    const zcos::COSClass::Definition again{std::string(classes::kDocIDLinkClass), {}, {}, {}};
    const std::tuple<std::string, const char*, std::function<void()>> cases[] = {
        {range, "unknown class", [] { zcos::COSClass::getClass(zcos::internal::makeInterned("test.None")); }},
        {range, "no class", [] { zcos::COSClass::getClass(&zcos::internal::nullValue); }},
        {arg, "a class again", [&] { host::registerClass(again); }},
        {arg, "data by another key", [&] { omGetArrayElement(links, 0)->getDataByKey(&kindKey); }},
        {range, "element past the end", [&] { omGetArrayElement(links, 2); }},
        {range, "set past end", [&] { omSetArrayElement(slot.get(), 1, omGetArrayElement(links, 0)); }},
        {arg, "other class", [&] { omSetArrayElement(slot.get(), 0, omGetArrayElement(kind, 0)); }},
        {arg, "element never set", [&] { omGetArrayElement(slot.get(), 0); }},
        {arg, "unset array made internal", [&] { zcosConvertArrayToInternalInPlace(slot.get(), true); }},
        {arg, "element of a number", [&] { omGetArrayElement(number.get(), 0); }},
        {u32, "kind from nothing", [&] { omConstructObjectWithClient(kindName, 0, argv, client); }},
        {u32, "kind from a double", [&] { omConstructObjectWithClient(kindName, 1, argv, client); }},
        {arg, "class without a constructor", [&] { omConstructObjectWithClient(linkName, 1, argv, client); }},
        {arg, "value under handles", [&] { omGetUnderlyingArray(links); }},
        {arg, "value under cells", [&] { omGetUnderlyingArray(cells.get()); }},
        {range, "unknown property", [&] { propertyOf(object, "ID"); }},
        {range, "property past the end", [&] { host::getProperty(object.get(), 1, "Name"); }},
        {range, "read-only property", [&] { host::setProperty(kind, 0, "Name", charRow(u"App").get()); }},
        {text, "number for text", [&] { host::setProperty(object.get(), 0, "Title", number.get()); }},
        {arg, "cell numbers", [&] { matrix::detail::do_create_uninitnumeric(square, zxCELL_CLASS, zxREAL); }},
        {arg, "text of the wrong size", [&] { matrix::createCharArray(square, u"abc"); }},
        {arg, "text of a number", [&] { matrix::getCharText(number.get()); }},
    };
    for (const auto& [error, what, call] : cases) {
        EXPECT_EQ(errorOf(call), error) << what;
    }
}

struct ErrorDetail;
using ErrorDetailInfo = boost::error_info<ErrorDetail, std::string>;

TEST(RequireScalarError, CarriesItsKeyAndTextThroughEitherBaseAndEveryCopy) {
    std::unique_ptr<const boost::exception_detail::clone_base> clone;
    {
        detail::RequireScalarError error{component_ZENTAB::catalog_class::key_RequireScalar()};
        error << ErrorDetailInfo("shared");
        const resource_core::BaseMsgID& id = error.GetBaseMsgIDObj();
        EXPECT_EQ(std::tie(id.catalog, id.key), std::tuple("ZENTAB:class", "RequireScalar"));
        EXPECT_TRUE(id.arguments.empty());
        EXPECT_EQ(error.GetUnicodeMessageTxt(), u"Value must be a scalar.");
        EXPECT_EQ(error.ToUstringImpl(), u"Value must be a scalar.");
        EXPECT_STREQ(static_cast<const std::exception&>(error).what(), "Value must be a scalar.");
        EXPECT_STREQ(static_cast<const foundation::core::except::IException&>(error).what(),
                     "Value must be a scalar.");
        clone.reset(error.clone());
    }
    // A clone and its rethrow keep the identifier of the first error, and the error information
    // outlives the original.
    EXPECT_EQ(errorOf([&] { clone->rethrow(); }), "ZENTAB:class:RequireScalar");
    const auto& cloned = dynamic_cast<const foundation::core::except::IMsgIDException&>(*clone);
    EXPECT_EQ(cloned.GetBaseMsgIDObj().key, "RequireScalar");
    const auto* info = boost::get_error_info<ErrorDetailInfo>(dynamic_cast<const boost::exception&>(*clone));
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(*info, "shared");
}

} // namespace
