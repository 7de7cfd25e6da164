// Reference utilities: string properties and cached string-vector properties.

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "matrix/matrix.hpp"
#include "reference/utils/property_utils.hpp"
#include "support/host_leak_check.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/messages.hpp"

namespace {

using Strings = std::vector<std::u16string>;
using PropertyUtils = zwtest::HostLeakCheck;

matrix::zx_array_handle cellsOf(unsigned long rows, unsigned long cols, const Strings& texts) {
    const unsigned long dims[] = {rows, cols};
    matrix::zx_array_handle cells(matrix::createCellArray(dims));
    for (std::size_t i = 0; i < texts.size(); ++i) {
        cells->cells[i] = matrix::from_zentab(matrix::createCharRow(texts[i]));
    }
    return cells;
}

TEST_F(PropertyUtils, StringPropertyIgnoresNull) {
    std::u16string field = u"old";
    reference::utils::setStringProperty(field, nullptr);
    EXPECT_EQ(field, u"old");
    const std::u16string value = u"new";
    reference::utils::setStringProperty(field, &value);
    EXPECT_EQ(field, u"new");
}

TEST_F(PropertyUtils, CacheIsBuiltOnceAsARowOfTexts) {
    const Strings strings = {u"a", u"", u"ccc"};
    SharedZxArrayPtr cache;
    const zxArray_tag* first = reference::utils::accessStringVectorCache(cache, strings);
    EXPECT_EQ(first->dims, (std::vector<std::uint64_t>{1, 3}));
    EXPECT_EQ(matrix::getTextList(first), strings);
    EXPECT_EQ(reference::utils::accessStringVectorCache(cache, {u"ignored"}), first);
    EXPECT_EQ(first->refCount, 1u);

    SharedZxArrayPtr emptyCache;
    EXPECT_EQ(reference::utils::accessStringVectorCache(emptyCache, {})->dims,
              (std::vector<std::uint64_t>{1, 0}));
}

TEST_F(PropertyUtils, AcceptsEveryListOfTextsAndStoresARow) {
    struct Case {
        const char* what;
        std::function<matrix::zx_array_handle()> make;
        Strings expected;
    };
    const unsigned long emptyChar[] = {0, 0};
    const Case cases[] = {
        {"column",
         [] {
             return cellsOf(3, 1, {u"x", u"y", u"z"});
         },
         {u"x", u"y", u"z"}},
        {"matrix",
         [] {
             return cellsOf(2, 2, {u"a", u"b", u"c", u"d"});
         },
         {u"a", u"b", u"c", u"d"}},
        {"empty cell", [] { return cellsOf(0, 0, {}); }, {}},
        {"one row of text", [] { return matrix::from_zentab(matrix::createCharRow(u"solo")); }, {u"solo"}},
        {"empty text", [&] { return matrix::from_zentab(matrix::createCharArray(emptyChar, u"")); }, {u""}},
    };
    for (const Case& c : cases) {
        Strings strings = {u"old"};
        SharedZxArrayPtr cache = matrix::from_zentab(matrix::createCellRowOfText(strings));
        const matrix::zx_array_handle value = c.make();
        reference::utils::setStringVectorAndCache(value.get(), cache, strings);
        EXPECT_EQ(strings, c.expected) << c.what;
        EXPECT_EQ(cache->dims, (std::vector<std::uint64_t>{1, c.expected.size()})) << c.what;
        EXPECT_EQ(matrix::getTextList(cache.get()), c.expected) << c.what;
        EXPECT_NE(cache.get(), value.get()) << c.what;
    }
}

TEST_F(PropertyUtils, RefusesAnythingButTextAndChangesNothing) {
    struct Case {
        const char* what;
        std::function<matrix::zx_array_handle()> make;
    };
    const unsigned long square[] = {2, 2};
    const Case cases[] = {
        {"number", [] { return zwtest::makeScalar(1.0); }},
        {"two rows of text", [&] { return matrix::from_zentab(matrix::createCharArray(square, u"abcd")); }},
        {"cell holding a number",
         [] {
             matrix::zx_array_handle cells = cellsOf(1, 2, {u"a"});
             cells->cells[1] = zwtest::makeScalar(2.0);
             return cells;
         }},
        {"cell with an empty element", [] { return cellsOf(1, 2, {u"a"}); }},
    };
    for (const Case& c : cases) {
        Strings strings = {u"old"};
        SharedZxArrayPtr cache = matrix::from_zentab(matrix::createCellRowOfText(strings));
        const zxArray_tag* cached = cache.get();
        const matrix::zx_array_handle value = c.make();
        try {
            reference::utils::setStringVectorAndCache(value.get(), cache, strings);
            ADD_FAILURE() << c.what << " accepted";
        } catch (const zwhost::messages::MsgIDError& error) {
            EXPECT_EQ(error.GetID(), "ZENTAB:utils:RequireTextArray") << c.what;
        }
        EXPECT_EQ(strings, Strings{u"old"}) << c.what;
        EXPECT_EQ(cache.get(), cached) << c.what;
    }
}

TEST_F(PropertyUtils, NullAndTheCachedArrayItselfAreHandled) {
    Strings strings = {u"p", u"q"};
    SharedZxArrayPtr cache;
    const zxArray_tag* cached = reference::utils::accessStringVectorCache(cache, strings);
    reference::utils::setStringVectorAndCache(nullptr, cache, strings);
    EXPECT_EQ(cache.get(), cached);
    reference::utils::setStringVectorAndCache(cached, cache, strings);
    EXPECT_EQ(strings, (Strings{u"p", u"q"}));
    EXPECT_NE(cache.get(), cached);
}

TEST_F(PropertyUtils, CopySharesTheArray) {
    const matrix::zx_array_handle value(matrix::createCharRow(u"v"));
    {
        const SharedZxArrayPtr copy = reference::utils::copyZxArrayToSharedZxArrayPtr(value.get());
        EXPECT_EQ(copy.get(), value.get());
        EXPECT_EQ(value->refCount, 2u);
    }
    EXPECT_EQ(value->refCount, 1u);
}

TEST_F(PropertyUtils, FailedBuildsLeaveStringsAndCacheAsTheyWere) {
    zwhost::fault::Scope faults;
    const Strings strings = {u"a", u"b"};
    SharedZxArrayPtr cache;
    zwhost::fault::failOn("matrix::createArray", 3);
    EXPECT_THROW(reference::utils::accessStringVectorCache(cache, strings), zwhost::fault::InjectedFault);
    EXPECT_FALSE(cache);

    Strings stored = {u"old"};
    SharedZxArrayPtr storedCache = matrix::from_zentab(matrix::createCellRowOfText(stored));
    const zxArray_tag* cached = storedCache.get();
    const matrix::zx_array_handle value = cellsOf(1, 2, strings);
    zwhost::fault::failOn("matrix::createArray", 2);
    EXPECT_THROW(reference::utils::setStringVectorAndCache(value.get(), storedCache, stored),
                 zwhost::fault::InjectedFault);
    EXPECT_EQ(stored, Strings{u"old"});
    EXPECT_EQ(storedCache.get(), cached);
}

} // namespace
