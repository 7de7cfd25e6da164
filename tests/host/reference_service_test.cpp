#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "reference/docparser/doc_resource_parser.hpp"
#include "support/temp_tree.hpp"
#include "zwhost/product_walk.hpp"
#include "zwhost/settings.hpp"
#include "zwhost/unicode.hpp"

namespace {

namespace fs = std::filesystem;
using reference::docparser::DocResourceParser;
using reference::docparser::ProductPathData;
using ParsingTools = DocResourceParser::ParsingTools;
using zwtest::u16;

/** Sets an environment variable, or unsets it for nullptr. */
void setEnv(const char* name, const char* value) {
    value != nullptr ? ::setenv(name, value, 1) : ::unsetenv(name);
}

// Restores the environment variables the settings read, and the settings themselves.
class ReferenceService : public ::testing::Test {
protected:
    void TearDown() override {
        for (const auto& [name, value] : saved_) {
            setEnv(name, value.empty() ? nullptr : value.c_str() + 1);
        }
        zwhost::settings::resetToDefaults();
    }

private:
    // Each value after a '=' so that an empty value differs from an unset one.
    static std::string get(const char* name) {
        return std::getenv(name) ? std::string("=") + std::getenv(name) : "";
    }
    std::vector<std::pair<const char*, std::string>> saved_{{"LC_ALL", get("LC_ALL")},
                                                            {"LC_MESSAGES", get("LC_MESSAGES")},
                                                            {"LANG", get("LANG")},
                                                            {"ZW_DOC_ROOT", get("ZW_DOC_ROOT")}};
};

std::vector<std::u16string> products(const fs::path& root, const std::u16string& suffix = u"_ja_JP") {
    std::u16string root16 = u16(root.native());
    const auto all = DocResourceParser::getAllProducts(root16, {u"ja_JP", u"ko_KR", u"zh_CN"}, suffix);
    if (root16.ends_with(u'/')) {
        root16.pop_back(); // a root given with a trailing '/' names the same folder
    }
    // Each record as "L|P relative path|stem|0 or 1", loose ones first.
    std::vector<std::u16string> out;
    for (const auto* list : {&all.looseProducts, &all.packageProducts}) {
        for (const ProductPathData& p : *list) {
            EXPECT_EQ(p.getFullPath().substr(0, root16.size() + 1), root16 + u'/');
            out.push_back((list == &all.looseProducts ? u"L " : u"P ") +
                          p.getFullPath().substr(root16.size() + 1) + u'|' + p.getStem() +
                          (p.isNonEnglishLocale() ? u"|1" : u"|0"));
        }
    }
    return out;
}

std::size_t openDescriptors() {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), {}));
}

TEST_F(ReferenceService, CurrentLocaleComesFromTheFirstLocaleVariableThatIsSet) {
    // LC_ALL, LC_MESSAGES, LANG (nullptr: unset) and the locale they give.
    const std::tuple<const char*, const char*, const char*, std::u16string> cases[] = {
        {"ja_JP.UTF-8", "ko_KR", "zh_CN", u"ja_JP"}, {"", "ko_KR.UTF-8", "zh_CN", u"ko_KR"},
        {nullptr, nullptr, "de_DE@euro", u"de_DE"},  {nullptr, nullptr, "sr_RS.UTF-8@latin", u"sr_RS"},
        {"POSIX", "ja_JP", "ja_JP", u"en_US"},       {nullptr, "C.UTF-8", "ja_JP", u"en_US"},
        {nullptr, nullptr, "@euro", u"en_US"},       {nullptr, nullptr, nullptr, u"en_US"},
        {"\xff\xfe", nullptr, "zh_CN", u"zh_CN"},
    };
    for (const auto& [lcAll, lcMessages, lang, expected] : cases) {
        setEnv("LC_ALL", lcAll);
        setEnv("LC_MESSAGES", lcMessages);
        setEnv("LANG", lang);
        zwhost::settings::resetToDefaults();
        EXPECT_EQ(ParsingTools::getCurrentLocale(), expected) << (lang ? lang : "(unset LANG)");
    }
}

TEST_F(ReferenceService, ResetRestoresEveryDefaultAndRereadsTheDocumentationRoot) {
    setEnv("ZW_DOC_ROOT", "/srv/docs");
    zwhost::settings::setSupportedDocLocales({u"fr_FR"});
    zwhost::settings::setReadLimit(3);
    zwhost::settings::setDocumentationRoot(u"/elsewhere");
    EXPECT_EQ(*DocResourceParser::getReferenceRoots(), u"/elsewhere");
    zwhost::settings::resetToDefaults();
    EXPECT_EQ(*DocResourceParser::getReferenceRoots(), u"/srv/docs");
    EXPECT_EQ(ParsingTools::getSupportedDocLocales(),
              (std::vector<std::u16string>{u"ja_JP", u"ko_KR", u"zh_CN"}));
    EXPECT_EQ(zwhost::settings::readLimit(), std::uint64_t{16} << 20);
    setEnv("ZW_DOC_ROOT", "");
    zwhost::settings::resetToDefaults();
    const std::u16string sample = *DocResourceParser::getReferenceRoots();
    EXPECT_EQ(sample.substr(sample.size() - 17), u"/examples/docroot");
}

TEST_F(ReferenceService, WalksDepthFirstInByteOrderAndKeepsEnglishAndCurrentLocale) {
    const zwtest::TempDir tree;
    for (const char* name : {"b/examples.json", "a.json", "B.json", "a/z/deep.json", "a/examples_ja_JP.json",
                             "a/examples_ko_KR.json", "a/examplesja_JP.json", "a/notes.txt", "a/x.JSON",
                             "a/.json", "\xc3\xa9.json", "bad\xff.json", "pkg/docs_ko_KR.zip"}) {
        tree.write(name, "{}");
    }
    tree.writeZip("pkg/docs.zip", {{"a.json", "{}"}});
    tree.writeZip("pkg/docs_ja_JP.zip", {{"a_ja_JP.json", "{}"}});
    // clang-format off
    EXPECT_EQ(products(tree.path()), (std::vector<std::u16string>{
        u"L B.json|B|0", u"L a/examples_ja_JP.json|examples_ja_JP|1", u"L a/z/deep.json|deep|0", u"L a.json|a|0",
        u"L b/examples.json|examples|0", u"L é.json|é|0", u"P pkg/docs.zip|docs|0", u"P pkg/docs_ja_JP.zip|docs_ja_JP|1"}));
    // clang-format on
    EXPECT_EQ(products(tree.path(), u"_ko_KR").size(), 8U);
    EXPECT_EQ(products(tree.path() / ""), products(tree.path()));
}

TEST_F(ReferenceService, FollowsNoLinkToAFolderStopsAtDepthSixteenAndSaysWhatItPassesOver) {
    using Why = zwhost::reference::LeftOut::Why;
    const zwtest::TempDir tree;
    tree.write("a.json", "{}");
    tree.write("bad\xff.json", "{}");
    fs::create_directory_symlink(tree.path(), tree.path() / "loop");
    fs::create_directory_symlink(tree.path(), tree.path() / "folder.zip");
    fs::create_symlink(tree.path() / "a.json", tree.path() / "linked.json");
    fs::create_symlink(tree.path() / "gone.json", tree.path() / "dangling.json");
    fs::create_symlink(tree.path() / "looped.json", tree.path() / "looped.json");
    ASSERT_EQ(::mkfifo((tree.path() / "fifo.json").c_str(), 0600), 0);
    fs::path deep;
    for (int depth = 1; depth <= 17; ++depth) {
        deep /= "d";
        tree.write(deep / ("at" + std::to_string(depth) + ".json"), "{}");
    }
    const auto found = products(tree.path());
    ASSERT_EQ(found.size(), 18U);
    EXPECT_EQ(found[16], u"L d/d/d/d/d/d/d/d/d/d/d/d/d/d/d/d/at16.json|at16|0");
    EXPECT_EQ(found[17], u"L linked.json|linked|0");
    std::vector<std::pair<std::string, Why>> reports;
    zwhost::reference::walkProducts(
        u16(tree.path().native()), {u"ja_JP"}, u"_ja_JP",
        [&](const zwhost::reference::LeftOut& left) { reports.emplace_back(left.path, left.why); });
    EXPECT_EQ(reports, (std::vector<std::pair<std::string, Why>>{
                           {"bad\xff.json", Why::NotUtf8},
                           {"d/d/d/d/d/d/d/d/d/d/d/d/d/d/d/d/d", Why::TooDeep},
                           {"dangling.json", Why::DanglingLink},
                           {"fifo.json", Why::NotRegularFile},
                           {"folder.zip", Why::NotRegularFile},
                           {"looped.json", Why::LinkLoop},
                       }));
}

TEST_F(ReferenceService, MissingRootIsEmptyAndARootThatCannotBeListedThrows) {
    const zwtest::TempDir tree;
    EXPECT_TRUE(products(tree.path() / "missing").empty());
    EXPECT_THROW(products(tree.write("file.json", "{}")), fs::filesystem_error);
    EXPECT_THROW(DocResourceParser::getAllProducts(u"\xD800", {}, u"_"), fs::filesystem_error);
    if (::geteuid() == 0) {
        GTEST_SKIP() << "permissions do not bind the superuser";
    }
    tree.write("root/shut/a.json", "{}");
    tree.write("root/open.json", "{}");
    fs::permissions(tree.path() / "root/shut", fs::perms::none);
    EXPECT_EQ(products(tree.path() / "root"), (std::vector<std::u16string>{u"L open.json|open|0"}));
    fs::permissions(tree.path() / "root", fs::perms::none);
    EXPECT_THROW(products(tree.path() / "root"), fs::filesystem_error);
    fs::permissions(tree.path() / "root", fs::perms::owner_all);
    fs::permissions(tree.path() / "root/shut", fs::perms::owner_all);
}

TEST_F(ReferenceService, ValidCatalogueNamesEndInLowerCaseJsonAfterAStem) {
    for (const std::u16string name : {u"a.json", u"dir/a.json", u"..json"}) {
        EXPECT_TRUE(DocResourceParser::isValidFilename(fl::filesystem::upath(name)))
            << zwhost::unicode::utf16ToUtf8(name);
    }
    for (const std::u16string name :
         {u".json", u"dir/.json", u"a.JSON", u"a.json/", u"a.json.txt", u"a.json/b", u""}) {
        EXPECT_FALSE(DocResourceParser::isValidFilename(fl::filesystem::upath(name)))
            << zwhost::unicode::utf16ToUtf8(name);
    }
}

TEST_F(ReferenceService, ReadsWholeFilesUpToTheLimitAndThrowsNamingThePathOtherwise) {
    const zwtest::TempDir tree;
    const auto read = [](const fs::path& path) {
        return DocResourceParser::openAndReadFile(ProductPathData(u"a", false, u16(path.native())));
    };
    // Sizes around the buffer that a read fills, each read into one allocation of its size.
    for (const std::size_t size : {0, 1, 65535, 65536, 65537, 200'000}) {
        std::string content(size, 'x');
        content.append(std::string("\0\xff", 2));
        const std::string bytes = read(tree.write("\xe2\x82\xac\xf0\x9f\x98\x80.json", content)); // "€😀.json"
        EXPECT_EQ(bytes, content) << size;
        EXPECT_EQ(bytes.capacity(), std::max<std::size_t>(size + 2, 15)) << size;
    }
    // A file of the kernel declares a size of zero and still has content.
    const std::string expected = zwtest::fileText("/proc/self/maps");
    const std::string maps = read("/proc/self/maps");
    EXPECT_EQ(maps.substr(0, 64), expected.substr(0, 64));
    EXPECT_GT(maps.size(), 4096U);

    const fs::path file = tree.write("four.json", "abcd");
    zwhost::settings::setReadLimit(4);
    EXPECT_EQ(read(file), "abcd");
    const fs::path fifo = tree.path() / "fifo.json";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const std::size_t descriptors = openDescriptors();
    const std::pair<fs::path, std::uint64_t> failures[] = {
        {file, 3},                    // one byte past the limit
        {tree.path() / "missing", 4}, // cannot be opened
        {tree.path(), 4},             // a folder cannot be read
        {"/dev/zero", 1000},          // a device, which never ends
        {"/proc/self/maps", 4096},    // a file of the kernel, which declares no size, past the limit
        {fifo, 4},                    // a FIFO, which no one writes: it must not block
    };
    for (const auto& [path, limit] : failures) {
        zwhost::settings::setReadLimit(limit);
        try {
            read(path);
            ADD_FAILURE() << path;
        } catch (const std::runtime_error& error) {
            EXPECT_NE(std::string(error.what()).find(path.native()), std::string::npos) << error.what();
        }
    }
    EXPECT_THROW(read(std::string("a\0b.json", 8)), std::runtime_error);
    EXPECT_EQ(openDescriptors(), descriptors);
}

} // namespace
