#include "example/docparser/doc_example_parser.hpp"

#include <cerrno>
#include <map>

#include <boost/algorithm/string/replace.hpp>
#include <gtest/gtest.h>

#include "support/case_tree.hpp"
#include "support/host_leak_check.hpp"
#include "support/result_text.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/settings.hpp"
#include "zwhost/skip_watch.hpp"

namespace {

using example::docparser::DocExampleParser;
using example::docparser::ExampleCatalogues;

constexpr char16_t kSuffix[] = u"/docCatalog/exampleapi";

class DocExampleParserTest : public zwtest::HostLeakCheck {
protected:
    DocExampleParserTest() { zwhost::settings::setCurrentLocale(u"ja_JP"); }
    ~DocExampleParserTest() override { zwhost::settings::resetToDefaults(); }

    std::u16string root() const { return zwtest::u16(dir.path().string()); }

    zwtest::TempDir dir;
    zwhost::fault::Scope faults;
};

// Each read of tests/data/trees/READS: a tree of TREES and the titles it gives, which show what
// was read and which file won each id.
TEST_F(DocExampleParserTest, EachTreeReadsAsItsLineSays) {
    for (const auto& fields : zwtest::caseLines(ZW_TEST_DATA "/trees/READS")) {
        const zwtest::TempDir tree;
        zwtest::writeTree(tree.path(), fields.at(0));
        const auto result = DocExampleParser::getDocExampleFiles(zwtest::u16(tree.path().string()));
        EXPECT_EQ(zwtest::titles(result), fields.at(1)) << "tree " << fields.at(0);
    }
}

TEST_F(DocExampleParserTest, AnEmptyRootAsksNothingAndAnyOtherSetsUpStorage) {
    const auto read = [](const std::u16string& at) {
        try {
            return zwtest::titles(DocExampleParser::getDocExampleFiles(at));
        } catch (const zwhost::fault::InjectedFault& fault) {
            return std::string(fault.what());
        }
    };
    zwhost::fault::failOn("DocResourceParser::getAllProducts", 1);
    zwhost::fault::failOn("GetStorageSystemReference", 1);
    EXPECT_EQ(read(u""), "");
    EXPECT_EQ(read(root()), "injected fault in DocResourceParser::getAllProducts");
    EXPECT_EQ(read(root()), "injected fault in GetStorageSystemReference") << "a root with no products";
}

TEST_F(DocExampleParserTest, TheRootIsComputedOnceAndTheSuffixAddedOnEverySet) {
    zwhost::fault::failOn("DocResourceParser::getReferenceRoots", 1);
    EXPECT_THROW(DocExampleParser::getExampleRoot(), zwhost::fault::InjectedFault) << "leaves it unset";
    zwhost::settings::setDocumentationRoot(u"/docs");
    const auto first = DocExampleParser::getExampleRoot();
    EXPECT_EQ(*first, std::u16string(u"/docs") + kSuffix);
    zwhost::settings::setDocumentationRoot(u"/later");
    EXPECT_EQ(first.get(), DocExampleParser::getExampleRoot().get());
    const std::u16string r = u"/r";
    // clang-format off
    const std::pair<std::u16string, std::u16string> sets[] = {
        {r, r + kSuffix}, {r + kSuffix, r + kSuffix + kSuffix}, {u"", kSuffix}, {r + u'/', r + u'/' + kSuffix}};
    // clang-format on
    for (const auto& [given, held] : sets) {
        DocExampleParser::setExampleRoot(given);
        EXPECT_EQ(*DocExampleParser::getExampleRoot(), held);
    }
    EXPECT_EQ(*first, std::u16string(u"/docs") + kSuffix) << "a held root never changes";
    zwtest::writeTree(dir.path(), "root-given");
    EXPECT_EQ(zwtest::titles(DocExampleParser::getDocExampleFiles(root())), "h(en): c/a=given\n")
        << "read from the root given";
    zwhost::settings::setDocumentationRoot(u"/moved");
    DocExampleParser::restoreDefaultSettings();
    zwhost::settings::setDocumentationRoot(u"/later");
    EXPECT_EQ(*DocExampleParser::getExampleRoot(), std::u16string(u"/moved") + kSuffix)
        << "asked at the restore";
}

TEST_F(DocExampleParserTest, AFailedCallCostsItsFileItsPackageOrTheWholeCall) {
    zwtest::writeTree(dir.path(), "small");
    const std::map<std::string, int> errors = {{"EACCES", EACCES}, {"EINTR", EINTR}, {"EIO", EIO}};
    // Each line of tests/data/trees/FAULTS: a host call, or a system call and the error it gives,
    // failing at its n-th call, how many files and packages the host counts as given up, and what
    // is left of the tree or the failure that ends the whole call.
    for (const auto& fields : zwtest::caseLines(ZW_TEST_DATA "/trees/FAULTS")) {
        const std::string& operation = fields.at(0);
        const std::uint64_t call = std::stoull(fields.at(1));
        zwhost::fault::reset();
        if (const std::size_t slash = operation.find('/'); slash != std::string::npos) {
            zwhost::fault::failSystemCall(operation.substr(0, slash), call,
                                          errors.at(operation.substr(slash + 1)));
        } else {
            zwhost::fault::failOn(operation, call);
        }
        const zwhost::reference::SkipWatch watch;
        std::string got;
        try {
            got = zwtest::titles(DocExampleParser::getDocExampleFiles(root()));
        } catch (const std::exception& failure) {
            got = failure.what();
            boost::replace_all(got, dir.path().string(), "TREE");
        }
        EXPECT_EQ(got, fields.at(3)) << operation << " fails at call " << call;
        EXPECT_EQ(watch.count(), std::stoull(fields.at(2))) << operation << " fails at call " << call;
    }
}

} // namespace
