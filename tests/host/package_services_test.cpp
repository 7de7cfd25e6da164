#include <sys/stat.h>

#include <bzlib.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "alloc/counting_new.hpp"

#include "opc/file_system_ops_selector.hpp"
#include "opc/model/package.hpp"
#include "opc/package_error.hpp"
#include "opc/zippackage/zip_physical_package.hpp"
#include "opc/zwservices/file_system.hpp"
#include "storage/microservicestoragesystem/storage_system.hpp"
#include "support/host_leak_check.hpp"
#include "support/manifest.hpp"
#include "support/open_package.hpp"
#include "support/temp_tree.hpp"
#include "zwhost/settings.hpp"

namespace {

using namespace zwtest;
using opc::PackageError;
using opc::interfaces::OpenMode;
using opc::zwservices::FileSystemManager;
using storage::microservicestoragesystem::GetStorageSystemReference;
using Skipped = FileSystemManager::SkippedEntry;
using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Property;
using Leaf = opc::zwservices::FileSystemEntry;

constexpr std::uint64_t kMiB = std::uint64_t{1} << 20;

TEST(PackageServices, ListsFileLeavesInDirectoryOrderAndReadsThemToTheLimit) {
    const TempDir dir;
    std::string binary(300000, '\0');
    for (std::uint32_t i = 0; i < binary.size(); ++i) {
        binary[i] = static_cast<char>(i * 7919U % 251U);
    }
    // clang-format off
    const OpenPackage open(dir.writeZip("p.zip", {{"z.json", "{\"z\":1}"}, {"docs/", ""}, {"docs/sub/b_ja_JP.json", binary}, {"empty.txt", ""}, {"docs/例.json", "{}"}}));
    EXPECT_EQ(open.read(binary.size()), (Leaves{{u"z.json", "{\"z\":1}"}, {u"docs/sub/b_ja_JP.json", binary}, {u"empty.txt", ""}, {u"docs/例.json", "{}"}}));
    EXPECT_THAT(open.manager.getAllLeafs(), ElementsAre(Property(&Leaf::getBaseName, u"z.json"), Property(&Leaf::getBaseName, u"b_ja_JP.json"), Property(&Leaf::getBaseName, u"empty.txt"), Property(&Leaf::getBaseName, u"例.json")));
    // clang-format on
    EXPECT_EQ(open.read(binary.size() - 1).at(1).second,
              "error: entry 2 is larger than the read limit of 299999 bytes");
    EXPECT_EQ(open.read(0).at(2), (std::pair<std::u16string, std::string>{u"empty.txt", ""}));
    EXPECT_EQ(readPackage(dir.write("most.zip", zipOf(std::vector<ZipRecord>(65536)))).back().first,
              u"65535");
    // Names not flagged UTF-8 are UTF-8 where they are valid, else code page 437; a Unicode path
    // field (version 1) replaces the name it holds the CRC of, and only that name.
    const auto unicodePath = [](std::uint32_t crc, const std::string& name) {
        return pack("22", {0x7075, 5 + name.size()}) + pack("14", {1, crc}) + name;
    };
    // A field made for another name is ignored, whatever it holds; names are one name when they
    // read the same, a code page 437 name and its UTF-8 twin too.
    // clang-format off
    const std::vector<ZipRecord> names = {{.name = "\x80" "caf\x82.json", .flags = 0}, {.name = "caf\xC3\xA9.json", .flags = 0}, {.name = "a.json", .flags = 0, .extra = unicodePath(crc32("a.json"), "b/\xC3\xBC.json")}, {.name = "c.json", .flags = 0, .extra = unicodePath(crc32("a.json"), "../d.json")}, {.name = "caf\x82.json", .flags = 0}};
    const OpenPackage named(dir.write("names.zip", zipOf(names)));
    EXPECT_THAT(named.manager.getAllLeafs(), ElementsAre(Property(&Leaf::getPath, u"Çcafé.json"), Property(&Leaf::getPath, u"café.json"), Property(&Leaf::getPath, u"b/ü.json"), Property(&Leaf::getPath, u"c.json")));
    EXPECT_THAT(named.manager.getSkippedEntries(), ElementsAre(AllOf(Field(&Skipped::path, u"café.json"), Field(&Skipped::why, Skipped::Why::DuplicateName))));
    // clang-format on
}

using PackageCorpus = HostLeakCheck;

// Each package of the fuzz corpus reads whole under a read limit of 2 MiB, or is refused with the
// text its MANIFEST line gives, and a refusal leaves nothing behind that stops a good package from
// reading.
TEST_F(PackageCorpus, EachPackageReadsOrIsRefusedAsTheManifestSays) {
    const std::filesystem::path corpus = ZW_FUZZ_DIR "/corpus/package_reader";
    for (const auto& fields : corpusManifest(corpus)) {
        const std::string& refusal = fields.at(1);
        SCOPED_TRACE(fields.at(0));
        try {
            readPackage(corpus / fields.at(0), 2 * kMiB);
            EXPECT_EQ(refusal, "-") << "read without complaint";
        } catch (const PackageError& error) {
            EXPECT_NE(refusal, "-") << error.what();
            EXPECT_THAT(error.what(), HasSubstr(refusal));
        }
        EXPECT_EQ(readPackage(corpus / "stored-catalogue.zip").size(), 1U);
    }
}

TEST(PackageServices, MisuseBadPathsAndAFifoThrowWithoutWaiting) {
    const auto reference = GetStorageSystemReference();
    EXPECT_EQ(reference.system()->nativePath(u"/tmp/a b/é€😀.zip"), "/tmp/a b/é€😀.zip");
    for (const std::u16string bad : {u"x\xD800", u"\xDC00x", u"\xD800\xD800"}) {
        EXPECT_THROW(reference.system()->nativePath(bad), std::invalid_argument);
    }
    EXPECT_THROW(opc::FileSystemOpsSelector{foundation::storage::vfs::StorageSystemReference()},
                 std::invalid_argument);

    const TempDir dir;
    const auto file = u16(dir.writeZip("p.zip", {{"a.json", "{}"}}).string());
    const opc::FileSystemOpsSelector selector(reference);

    opc::zippackage::ZipPhysicalPackage physical(file, selector, true);
    opc::model::Package package(physical);
    const FileSystemManager manager(package, selector);
    EXPECT_THROW(manager.getAllLeafs(), PackageError) << "listed before open";
    EXPECT_THROW(package.open(OpenMode::ReadWrite), PackageError);
    package.open(OpenMode::ReadOnly);
    EXPECT_THROW(package.open(OpenMode::ReadOnly), PackageError) << "opened twice";
    opc::zippackage::ZipPhysicalPackage writable(file, selector, false);
    EXPECT_THROW(writable.open(OpenMode::ReadOnly), PackageError);
    EXPECT_THROW(OpenPackage(dir.path() / "missing.zip"), PackageError);

    // clang-format off
    struct NotZip final : opc::interfaces::IPhysicalPackage { void open(OpenMode) override {} bool isOpen() const override { return true; } } notZip;
    // clang-format on
    opc::model::Package other(notZip);
    EXPECT_THROW(FileSystemManager(other, selector).getAllLeafs(), PackageError);

    const auto fifo = dir.path() / "fifo.zip";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_THAT([&] { OpenPackage{fifo}; },
                testing::ThrowsMessage<PackageError>(HasSubstr("not a regular file")));
}

TEST(PackageServices, ReadsTheZipsThatRealToolsWrite) {
    const std::filesystem::path data = ZW_TEST_DATA "/zips";
    const ManifestLines zips = manifestLines(data / "MANIFEST");
    EXPECT_EQ(zips.size(), 24U);
    for (const auto& fields : zips) {
        const std::string& name = fields.at(0);
        SCOPED_TRACE(name);
        const OpenPackage open(data / name);
        // clang-format off
        const std::string method = name == "7z-Deflate64.zip" ? "9 (Deflate64)" : name == "7z-PPMd.zip" ? "98 (PPMd)" : "";
        Leaves expected;
        for (const char* path : {"cat.json", "docs/cat_ja_JP.json"}) {
            expected.emplace_back(u16(path), method.empty() ? zwtest::fileText(data / "src" / path) : "error: compression method " + method + " is not supported");
        }
        EXPECT_EQ(open.read(kMiB), expected);
        EXPECT_THAT(open.manager.getSkippedEntries(), testing::Conditional(name == "python-duplicate.zip", ElementsAre(AllOf(Field(&Skipped::path, u"cat.json"), Field(&Skipped::why, Skipped::Why::DuplicateName))), IsEmpty()));
        // clang-format on
    }
}

// A package costs the entries read, never its size: a member larger than the read limit, before
// or after the catalogue, is listed and refused without a byte of it being read; a package that
// shrinks once open costs the entries that are gone, not a fault.
TEST(PackageServices, AMemberCostsNothingUntilItIsRead) {
    const TempDir dir;
    const ZipRecord media{.name = "media.bin", .data = std::string(32 * kMiB, 'm')};
    const ZipRecord catalogue{.name = "cat.json", .data = "{\"a\":1}"};
    const std::string refusal = "is larger than the read limit of 1048576 bytes";
    // clang-format off
    const struct { std::vector<ZipRecord> records; std::uint64_t shrinkTo; Leaves read; } cases[] = {
        {{media, catalogue}, 0, {{u"media.bin", "error: entry 0 " + refusal}, {u"cat.json", catalogue.data}}},
        {{catalogue, media}, 0, {{u"cat.json", catalogue.data}, {u"media.bin", "error: entry 1 " + refusal}}},
        {{catalogue, media}, 40, {{u"cat.json", "error: cannot read entry 0: the package file ends inside it"}, {u"media.bin", "error: entry 1 " + refusal}}},
    };
    // clang-format on
    for (const auto& test : cases) {
        const auto file = dir.write("big.zip", zipOf(test.records));
        const std::size_t before = allocation::liveBytes();
        allocation::resetPeak();
        const OpenPackage open(file);
        if (test.shrinkTo > 0) {
            std::filesystem::resize_file(file, test.shrinkTo);
        }
        EXPECT_EQ(open.read(kMiB), test.read);
        EXPECT_LE(allocation::peakBytes() - before, kMiB);
    }
}

TEST(PackageServices, BombsCostAtMostTheirBudgetAndTheRatioFloor) {
    const TempDir dir;
    // bzip2 packs zeros far tighter than deflate: 64 MiB to a few hundred bytes.
    const auto bzip2 = [](const std::string& text) {
        std::string packed(text.size() / 100 + 600, '\0');
        auto size = static_cast<unsigned>(packed.size());
        // clang-format off
        EXPECT_EQ(BZ2_bzBuffToBuffCompress(packed.data(), &size, const_cast<char*>(text.data()), static_cast<unsigned>(text.size()), 9, 0, 0), BZ_OK);
        // clang-format on
        packed.resize(size);
        return ZipRecord{"", packed, 12, text.size(), crc32(text)};
    };
    const ZipRecord zeros = bzip2(std::string(64 * kMiB, '\0'));
    const std::uint64_t budget = zwhost::settings::kDefaultPackageBudget;
    // clang-format off
    const struct { std::string zip; std::uint64_t limit, mostInflated; const char* refusal; } cases[] = {
        {zipOf(std::vector<ZipRecord>(65536, zeros)), 64 * kMiB, budget, "budget"},
        {zipOf(std::vector<ZipRecord>(20, {.data = "ab", .size = 64 * kMiB})), 64 * kMiB, 40, "entry 19 is smaller than it declares"},
        {zipOf({zeros}), 128 * kMiB, std::max(FileSystemManager::kRatioFloor, zeros.data.size() * FileSystemManager::kMaxRatio) + (64 << 10), "inflates more than 1024 times"},
    };
    // clang-format on
    for (const auto& test : cases) {
        SCOPED_TRACE(test.refusal);
        const auto file = dir.write("bomb.zip", test.zip);
        const std::size_t before = allocation::liveBytes();
        allocation::resetPeak();
        const OpenPackage open(file);
        const Leaves leaves = open.read(test.limit, budget);
        EXPECT_LE(open.manager.inflatedBytes(), test.mostInflated);
        EXPECT_LE(allocation::peakBytes() - before, 100 * kMiB);
        // The first entries of honest zeros fail on their ratio; once the budget is spent, the rest do.
        for (const auto& [path, text] : leaves) {
            ASSERT_EQ(text.rfind("error: ", 0), 0U) << text;
        }
        EXPECT_THAT(leaves.back().second, HasSubstr(test.refusal));
    }
    // A package reads to the last byte of its budget, and no byte further.
    for (const std::string last : {"efgh", "efghi"}) {
        const OpenPackage open(dir.write("edge.zip", zipOf({{.data = "abcd"}, {.data = last}})));
        EXPECT_EQ(open.read(8, 8).back().second,
                  last.size() == 4
                      ? last
                      : "error: entry 1 is not read: the package has inflated its budget of 8 bytes");
    }
    // A directory of one record more than a package may hold is refused whole, also when its zip64
    // end record counts no more than the most.
    std::string many = zipOf(std::vector<ZipRecord>(65537, {.data = "a", .size = 1}));
    many.replace(many.rfind("PK\6\6") + 24, 16, pack("88", {65536, 65536}));
    EXPECT_THAT([&] { readPackage(dir.write("many.zip", many)); },
                testing::ThrowsMessage<PackageError>(HasSubstr("more than 65536 entries")));
    // An entry that declares as many bytes as the limit and holds more is damaged, not too large.
    const OpenPackage more(dir.write("more.zip", zipOf({{.data = "ab", .size = 1}})));
    EXPECT_THAT(
        [&] { more.read(1, FileSystemManager::kNoBudget, false); },
        testing::Throws<PackageError>(testing::AllOf(
            testing::Property(&PackageError::kind, opc::PackageErrorKind::DamagedEntry),
            testing::Property(&PackageError::what, HasSubstr("entry 0 is larger than it declares")))));
}

} // namespace
