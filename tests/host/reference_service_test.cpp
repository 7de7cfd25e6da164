#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "reference/docparser/doc_resource_parser.hpp"
#include "support/case_tree.hpp"
#include "support/host_leak_check.hpp"
#include "zwhost/fault.hpp"
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
class ReferenceService : public zwtest::HostLeakCheck {
protected:
    void TearDown() override {
        for (const auto& [name, value] : saved_) {
            setEnv(name, value.empty() ? nullptr : value.c_str() + 1);
        }
        zwhost::settings::resetToDefaults();
        HostLeakCheck::TearDown();
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

// What the walk finds under `root`, a line each ("L" loose files, then "P" packages: the path under
// the root, the stem, 1 if localised), then what it passes over and why.
std::string walked(const fs::path& root, const std::u16string& suffix = u"_ja_JP") {
    const std::vector<std::u16string> locales = {u"ja_JP", u"ko_KR", u"zh_CN"};
    std::u16string root16 = u16(root.native());
    const auto all = DocResourceParser::getAllProducts(root16, locales, suffix);
    if (root16.ends_with(u'/')) {
        root16.pop_back(); // a root given with a trailing '/' names the same folder
    }
    std::u16string out;
    for (const auto* list : {&all.looseProducts, &all.packageProducts}) {
        for (const ProductPathData& p : *list) {
            EXPECT_EQ(p.getFullPath().substr(0, root16.size() + 1), root16 + u'/');
            out += (list == &all.looseProducts ? u"L " : u"P ") + p.getFullPath().substr(root16.size() + 1) +
                   u'|' + p.getStem() + (p.isNonEnglishLocale() ? u"|1\n" : u"|0\n");
        }
    }
    const char* why[] = {"not UTF-8",          "dangling link", "link loop",
                         "not a regular file", "too deep",      "unlistable"};
    std::string text = zwhost::unicode::utf16ToUtf8(out);
    zwhost::reference::walkProducts(root16, locales, suffix, [&](const zwhost::reference::LeftOut& left) {
        text += "left out: " + left.path + " (" + why[static_cast<int>(left.why)] + ")\n";
    });
    return text;
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

// Each walk of tests/data/trees/WALKS: a tree of TREES, the locale suffix and the golden file of
// what the walk finds and passes over; a root with a trailing '/' gives the same, and so does a
// file system that gives no types in its listings.
TEST_F(ReferenceService, WalksEachTreeAsItsGoldenFileSays) {
    for (const auto& fields : zwtest::caseLines(ZW_TEST_DATA "/trees/WALKS")) {
        SCOPED_TRACE("walk " + fields.at(0) + fields.at(1));
        const zwtest::TempDir tree;
        zwtest::writeTree(tree.path(), fields.at(0));
        const std::string found = walked(tree.path(), u16(fields.at(1)));
        EXPECT_EQ(found, zwtest::fileText(ZW_TEST_DATA "/trees/" + fields.at(2)));
        EXPECT_EQ(walked(tree.path() / "", u16(fields.at(1))), found);
        const zwhost::fault::Scope faults;
        zwhost::fault::listWithoutTypes();
        EXPECT_EQ(walked(tree.path(), u16(fields.at(1))), found) << "listed without types";
    }
}

TEST_F(ReferenceService, MissingRootIsEmptyAndARootThatCannotBeListedThrows) {
    const zwtest::TempDir tree;
    EXPECT_EQ(walked(tree.path() / "missing"), "");
    EXPECT_THROW(walked(tree.write("file.json", "{}")), fs::filesystem_error);
    EXPECT_THROW(DocResourceParser::getAllProducts(u"\xD800", {}, u"_"), fs::filesystem_error);
    tree.write("root/shut/a.json", "{}");
    tree.write("root/open.json", "{}");
    // A folder below the root that cannot be listed is reported and passed over; the root fails the call.
    const std::u16string root = u16((tree.path() / "root").native());
    const zwhost::fault::Scope faults;
    zwhost::fault::failSystemCall("openat", 2, EACCES);
    std::string reports;
    zwhost::reference::walkProducts(root, {}, u"_ja_JP", [&](const zwhost::reference::LeftOut& left) {
        reports += left.path + ": " + left.detail;
    });
    EXPECT_EQ(reports, "shut: Permission denied");
    zwhost::fault::failSystemCall("openat", 1, EACCES);
    EXPECT_THROW(walked(tree.path() / "root"), fs::filesystem_error);
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
    const fs::path large = tree.path() / "\xe2\x82\xac\xf0\x9f\x98\x80.json";
    // Each refusal names its reason and the file.
    const std::tuple<fs::path, std::uint64_t, bool, const char*> failures[] = {
        {file, 3, false, "file exceeds the read limit"},                 // one byte past the limit
        {tree.path() / "missing", 4, false, "cannot open"},              // no such file
        {tree.path(), 4, false, "not a regular file"},                   // a folder
        {"/dev/zero", 1000, false, "not a regular file"},                // a device, which never ends
        {"/proc/self/maps", 4096, false, "file exceeds the read limit"}, // a kernel file of no declared size
        {fifo, 4, false, "not a regular file"},                          // a FIFO: it must not block
        {file, 4, true, "cannot read"},        // a read that fails, through the buffer
        {large, 1 << 20, true, "cannot read"}, // and in place
    };
    for (const auto& [path, limit, readFails, reason] : failures) {
        zwhost::settings::setReadLimit(limit);
        const zwhost::fault::Scope faults;
        if (readFails) {
            zwhost::fault::failSystemCall("read", 1, EIO);
        }
        try {
            read(path);
            ADD_FAILURE() << path;
        } catch (const std::runtime_error& error) {
            EXPECT_NE(std::string(error.what()).find(path.native()), std::string::npos) << error.what();
            EXPECT_NE(std::string(error.what()).find(reason), std::string::npos) << error.what();
        }
    }
    // A file that shrinks or grows between its measure and its read gives what it holds then, one
    // read in place as well as one read through the buffer.
    zwhost::settings::resetToDefaults();
    const fs::path path = tree.path() / "changing.json";
    for (const std::size_t size : {10, 200'000}) {
        for (const std::size_t now : {size / 2, size * 2}) {
            tree.write("changing.json", std::string(size, 'x'));
            const zwhost::fault::Scope faults;
            zwhost::fault::beforeSystemCall("read", 1, [&] { std::ofstream(path) << std::string(now, 'y'); });
            const std::string got = read(path);
            EXPECT_TRUE(got == std::string(now, 'y')) << size << " bytes, then " << now << ": " << got.size();
        }
    }
    // A NUL ends the name the system sees: here at a file that exists, which must not be read.
    EXPECT_THROW(read(file.native() + std::string("\0.x", 3)), std::runtime_error);
}

} // namespace
