// The host's file-system names, as the library and the tool see them.

#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "fl/filesystem/path.hpp"

namespace {

TEST(HostNames, StemsDropFoldersAndTheLastExtensionAndNativeFormsUseSlashes) {
    const std::pair<std::u16string, std::u16string> stems[] = {{u"examples_ja_JP.json", u"examples_ja_JP"},
                                                               {u"help.v2/sub/examples.zip", u"examples"},
                                                               {u"a.b.json", u"a.b"},
                                                               {u"dir/.hidden", u".hidden"},
                                                               {u"plain", u"plain"},
                                                               {u"dir/", u""}};
    for (const auto& [path, stem] : stems) {
        EXPECT_EQ(fl::filesystem::detail::extract_stem(path), stem);
    }
    EXPECT_EQ(fl::filesystem::detail::make_native_form(u"a\\b\\c.json", true), u"a/b/c.json");
}

} // namespace
