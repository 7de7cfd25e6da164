#include <sys/stat.h>

#include <bzlib.h>
#include <zlib.h>

#include <cstdint>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "alloc/counting_new.hpp"

#include "opc/file_system_ops_selector.hpp"
#include "opc/model/package.hpp"
#include "opc/package_error.hpp"
#include "opc/zippackage/zip_physical_package.hpp"
#include "opc/zwservices/file_system.hpp"
#include "storage/microservicestoragesystem/storage_system.hpp"
#include "support/temp_tree.hpp"
#include "zwhost/fault.hpp"
#include "zwhost/settings.hpp"

namespace {

using opc::PackageError;
using opc::interfaces::OpenMode;
using storage::microservicestoragesystem::GetStorageSystemReference;
using zwtest::u16;

constexpr std::uint64_t kLimit = 1 << 20;

using Leaves = std::vector<std::pair<std::u16string, std::string>>;

/** Lists and reads every leaf of the package at `file`, building the objects in the order the
    catalogue reader builds them. */
Leaves readPackage(const std::filesystem::path& file, std::uint64_t limit = kLimit) {
    const opc::FileSystemOpsSelector selector(GetStorageSystemReference());
    opc::zippackage::ZipPhysicalPackage physical(u16(file.string()), selector, true);
    opc::model::Package package(physical);
    opc::zwservices::FileSystemManager manager(package, selector);
    package.open(OpenMode::ReadOnly);
    Leaves leaves;
    for (const opc::zwservices::FileSystemEntry& leaf : manager.getAllLeafs()) {
        leaves.emplace_back(leaf.getPath(), manager.readEntry(leaf, limit));
    }
    return leaves;
}

/** A package opened as the catalogue reader opens one. */
struct OpenPackage {
    explicit OpenPackage(const std::filesystem::path& file)
        : physical(u16(file.string()), selector, true), package(physical), manager(package, selector) {
        package.open(OpenMode::ReadOnly);
    }

    /** Each leaf's text, or the error that stopped its read after "error: ". */
    Leaves readEach(std::uint64_t limit, std::uint64_t budget) const {
        Leaves leaves;
        for (const opc::zwservices::FileSystemEntry& leaf : manager.getAllLeafs()) {
            try {
                leaves.emplace_back(leaf.getPath(), manager.readEntry(leaf, limit, budget));
            } catch (const PackageError& error) {
                leaves.emplace_back(leaf.getPath(), std::string("error: ") + error.what());
            }
        }
        return leaves;
    }

    const opc::FileSystemOpsSelector selector{GetStorageSystemReference()};
    opc::zippackage::ZipPhysicalPackage physical;
    opc::model::Package package;
    const opc::zwservices::FileSystemManager manager;
};

std::string slurp(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::uint32_t crc32(std::string_view bytes) {
    return static_cast<std::uint32_t>(
        ::crc32_z(0, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

void put(std::string& out, std::uint64_t value, int width) {
    for (int i = 0; i < width; ++i) {
        out += static_cast<char>((value >> (8 * i)) & 0xFFU);
    }
}

/** One stored entry of a zip written byte by byte, with any field open to a lie. */
struct RawRecord {
    std::string name;
    std::string data = {};
    std::uint64_t offset = 0;
    std::string extra = {};
    std::uint16_t flags = 0;
    std::optional<std::uint64_t> size = {};
    std::optional<std::uint64_t> compressedSize = {};
    std::optional<std::uint32_t> crc = {};
    std::uint16_t method = 0;
};

/** The fields that a local and a central header share, from the version needed on. */
std::string commonFields(const RawRecord& record) {
    std::string out;
    put(out, 20, 2);
    put(out, record.flags, 2);
    put(out, record.method, 2);
    put(out, 0, 4);
    put(out, record.crc.value_or(crc32(record.data)), 4);
    put(out, record.compressedSize.value_or(record.data.size()), 4);
    put(out, record.size.value_or(record.data.size()), 4);
    put(out, record.name.size(), 2);
    return out;
}

std::string localHeader(const RawRecord& record) {
    std::string out;
    put(out, 0x04034b50, 4);
    out += commonFields(record);
    put(out, record.extra.size(), 2);
    return out + record.name + record.extra;
}

std::string centralHeader(const RawRecord& record) {
    std::string out;
    put(out, 0x02014b50, 4);
    put(out, 20, 2);
    out += commonFields(record);
    put(out, record.extra.size(), 2);
    // Comment size, first disk, internal and external attributes: all zero.
    out.append(10, '\0');
    put(out, record.offset, 4);
    return out + record.name + record.extra;
}

/** `body` followed by the central records of `records` and an end record claiming `entries`,
    with zip64 end records when asked or when there are too many entries for the plain one. */
std::string zipOf(std::string body, const std::vector<RawRecord>& records,
                  std::optional<std::uint64_t> entries = {}, bool withZip64 = false) {
    const std::uint64_t count = entries.value_or(records.size());
    const std::uint64_t directoryOffset = body.size();
    for (const RawRecord& record : records) {
        body += centralHeader(record);
    }
    const std::uint64_t directorySize = body.size() - directoryOffset;
    const bool zip64 = withZip64 || count > 0xFFFF;
    if (zip64) {
        const std::uint64_t zip64End = body.size();
        put(body, 0x06064b50, 4);
        put(body, 44, 8);
        put(body, 45, 2);
        put(body, 45, 2);
        put(body, 0, 8);
        put(body, count, 8);
        put(body, count, 8);
        put(body, directorySize, 8);
        put(body, directoryOffset, 8);
        put(body, 0x07064b50, 4);
        put(body, 0, 4);
        put(body, zip64End, 8);
        put(body, 1, 4);
    }
    put(body, 0x06054b50, 4);
    put(body, 0, 4);
    put(body, zip64 ? 0xFFFF : count, 2);
    put(body, zip64 ? 0xFFFF : count, 2);
    put(body, zip64 ? 0xFFFFFFFF : directorySize, 4);
    put(body, zip64 ? 0xFFFFFFFF : directoryOffset, 4);
    put(body, 0, 2);
    return body;
}

/** The local headers and data of `records`, one after another; their offsets are set here. */
std::string layOut(std::vector<RawRecord>& records) {
    std::string body;
    for (RawRecord& record : records) {
        record.offset = body.size();
        body += localHeader(record) + record.data;
    }
    return body;
}

std::string storedZip(std::vector<RawRecord> records, bool withZip64 = false) {
    std::string body = layOut(records);
    return zipOf(std::move(body), records, {}, withZip64);
}

/** `bytes` with the `width`-byte field that starts `fromEnd` bytes before their end set to `value`. */
std::string patched(std::string bytes, std::size_t fromEnd, std::uint64_t value, int width) {
    std::string field;
    put(field, value, width);
    return bytes.replace(bytes.size() - fromEnd, field.size(), field);
}

/** A zip64 extra field holding `values`. */
std::string zip64Field(const std::vector<std::uint64_t>& values) {
    std::string field;
    put(field, 0x0001, 2);
    put(field, 8 * values.size(), 2);
    for (const std::uint64_t value : values) {
        put(field, value, 8);
    }
    return field;
}

/** A zip with two end records: the first's comment holds a second directory, of the records
    that `second` makes of the first's, and the second end record. Readers that choose different
    end records see different packages. */
std::string twoDirectories(const std::function<std::vector<RawRecord>(std::vector<RawRecord>)>& second) {
    std::vector<RawRecord> records = {{.name = "a.json", .data = std::string(100, 'a')},
                                      {.name = "b.json", .data = "{}"}};
    std::string first = zipOf(layOut(records), records);
    const std::string tail = zipOf(std::string(first.size(), '\0'), second(records)).substr(first.size());
    std::string commentSize;
    put(commentSize, tail.size(), 2);
    first.replace(first.size() - 2, 2, commentSize);
    return first + tail;
}

std::string manyEntries(std::uint64_t count) {
    std::vector<RawRecord> records;
    for (std::uint64_t i = 0; i < count; ++i) {
        records.push_back({.name = std::to_string(i), .data = ""});
    }
    return storedZip(std::move(records));
}

/** A package whose first entry's data holds the local header and data of a second entry. */
std::string nestedEntries() {
    RawRecord inner{.name = "b.json", .data = "{}"};
    RawRecord outer{.name = "a.json", .data = localHeader(inner) + inner.data};
    inner.offset = 30 + outer.name.size();
    return zipOf(localHeader(outer) + outer.data, {outer, inner});
}

/** The Unicode path field of an entry, which may stand in for its plain name. */
std::string unicodePathField(const std::string& name) {
    std::string field;
    put(field, 0x7075, 2);
    put(field, 5 + name.size(), 2);
    put(field, 1, 1);
    put(field, 0, 4);
    return field + name;
}

// Where a field shared by the local and the central header lies in the local one; it lies two
// bytes further on in the central one.
constexpr std::size_t kCrcField = 14;
constexpr std::size_t kSizeField = 22;

/** A package of one deflated entry written by libzip, with the 32-bit `field` set to `value` in
    both headers, so that the headers agree and only the data betrays the lie. */
std::string deflatedWith(const zwtest::TempDir& dir, std::size_t field, std::uint32_t value) {
    const auto source = dir.writeZip("honest.zip", {{"big.json", std::string(100000, 'x')}});
    std::string bytes = slurp(source);
    std::string lie;
    put(lie, value, 4);
    bytes.replace(field, 4, lie);
    bytes.replace(bytes.find("PK\x01\x02") + field + 2, 4, lie);
    return bytes;
}

TEST(StorageSystem, ReferencesShareOneLocalFileSystem) {
    const auto first = GetStorageSystemReference();
    const auto second = GetStorageSystemReference();
    ASSERT_NE(first.system(), nullptr);
    EXPECT_EQ(first.system(), second.system());
}

TEST(StorageSystem, NativePathIsUtf8) {
    const auto& storage = *GetStorageSystemReference().system();
    EXPECT_EQ(storage.nativePath(u"/tmp/a b/é€😀.zip"), "/tmp/a b/é€😀.zip");
    EXPECT_EQ(storage.nativePath(u""), "");
    for (const std::u16string bad : {u"x\xD800", u"\xDC00x", u"\xD800\xD800"}) {
        EXPECT_THROW(storage.nativePath(bad), std::invalid_argument);
    }
}

TEST(FileSystemOpsSelector, KeepsTheStorageSystemAndRefusesAnEmptyReference) {
    const opc::FileSystemOpsSelector selector(GetStorageSystemReference());
    EXPECT_EQ(selector.storage().nativePath(u"/a"), "/a");
    EXPECT_THROW(opc::FileSystemOpsSelector{foundation::storage::vfs::StorageSystemReference()},
                 std::invalid_argument);
}

TEST(PackageServices, ListsFileLeavesInDirectoryOrderAndReadsThemExactly) {
    const zwtest::TempDir dir;
    std::string binary;
    for (std::uint32_t i = 0; i < 300000; ++i) {
        binary += static_cast<char>(i * 7919U % 251U);
    }
    const auto file = dir.writeZip("p.zip", {{"z.json", "{\"z\":1}"},
                                             {"docs/", ""},
                                             {"docs/sub/b_ja_JP.json", binary},
                                             {"empty.txt", ""},
                                             {"docs/例.json", "{}"}});
    const Leaves expected = {{u"z.json", "{\"z\":1}"},
                             {u"docs/sub/b_ja_JP.json", binary},
                             {u"empty.txt", ""},
                             {u"docs/例.json", "{}"}};
    EXPECT_EQ(readPackage(file), expected);
    // A zip of no entries has its directory where its end record begins.
    EXPECT_EQ(readPackage(dir.write("empty.zip", storedZip({}))), Leaves{});

    const opc::FileSystemOpsSelector selector(GetStorageSystemReference());
    opc::zippackage::ZipPhysicalPackage physical(u16(file.string()), selector, true);
    opc::model::Package package(physical);
    const opc::zwservices::FileSystemManager manager(package, selector);
    package.open(OpenMode::ReadOnly);
    std::vector<std::u16string> baseNames;
    for (const auto& leaf : manager.getAllLeafs()) {
        baseNames.push_back(leaf.getBaseName());
    }
    EXPECT_EQ(baseNames, (std::vector<std::u16string>{u"z.json", u"b_ja_JP.json", u"empty.txt", u"例.json"}));
}

TEST(PackageServices, ReadLimitAdmitsExactlyTheLimit) {
    const zwtest::TempDir dir;
    const auto file = dir.writeZip("p.zip", {{"a.json", std::string(1000, 'a')}, {"e.json", ""}});
    EXPECT_EQ(readPackage(file, 1000).at(0).second.size(), 1000U);
    EXPECT_THROW(readPackage(file, 999), PackageError);
    const auto empty = dir.writeZip("e.zip", {{"e.json", ""}});
    EXPECT_EQ(readPackage(empty, 0), (Leaves{{u"e.json", ""}}));
}

TEST(PackageServices, DeflateBombStopsAtTheReadLimit) {
    const zwtest::TempDir dir;
    const auto file = dir.writeZip("bomb.zip", {{"bomb.json", std::string(16 << 20, '\0')}});
    try {
        readPackage(file, 256 << 10);
        FAIL() << "a bomb was read whole";
    } catch (const PackageError& error) {
        EXPECT_NE(std::string(error.what()).find("read limit"), std::string::npos) << error.what();
    }
}

TEST(PackageServices, HostilePackagesAreRefusedAndAGoodOneStillReads) {
    const zwtest::TempDir dir;
    const auto good = dir.writeZip("good.zip", {{"a.json", "{}"}});
    struct Case {
        const char* what;
        std::string bytes;
        const char* refusal;
    };
    const Case cases[] = {
        {"entry nested in another's data", nestedEntries(), "overlap"},
        {"two records at one offset",
         zipOf(localHeader({.name = "a", .data = "x"}) + "x",
               {{.name = "a", .data = "x"}, {.name = "b", .data = "x"}}),
         "overlap"},
        {"local header of another name",
         zipOf(localHeader({.name = "b", .data = "x"}) + "x", {{.name = "a", .data = "x"}}),
         "another name in its local header"},
        {"parent segment", storedZip({{.name = "../evil.json", .data = "{}"}}), "\"..\""},
        {"inner parent segment", storedZip({{.name = "docs/../../evil.json", .data = "{}"}}), "\"..\""},
        {"absolute name", storedZip({{.name = "/etc/evil.json", .data = "{}"}}), "absolute"},
        {"backslash", storedZip({{.name = "docs\\evil.json", .data = "{}"}}), "backslash"},
        {"NUL in name", storedZip({{.name = std::string("a\0.json", 7), .data = "{}"}}), "NUL"},
        {"parent segment in the Unicode name",
         storedZip({{.name = "a.json", .data = "{}", .extra = unicodePathField("../a.json")}}), "\"..\""},
        {"70,000 entries", manyEntries(70000), "more than 65536"},
        {"directory shorter than its count", zipOf(localHeader({.name = "a"}), {{.name = "a"}}, 2),
         "truncated"},
        {"data runs into the directory", storedZip({{.name = "a", .data = "x", .compressedSize = 500}}),
         "central directory"},
        {"directories of different lengths by reader",
         twoDirectories([](std::vector<RawRecord> records) { return std::vector{records[1]}; }),
         "another directory"},
        {"directories of different sizes by reader", twoDirectories([](std::vector<RawRecord> records) {
             records[0].compressedSize = 50;
             return records;
         }),
         "differently"},
        {"encrypted entry", storedZip({{.name = "a", .data = "xyz", .flags = 1}}), "cannot open entry"},
        {"several disks", patched(storedZip({{.name = "a"}}), 18, 1, 2), "several disks"},
        {"zip64 end record misplaced", patched(storedZip({{.name = "a"}}, true), 34, 1ULL << 40, 8),
         "misplaced"},
        {"zip64 end record missing", patched(storedZip({{.name = "a"}}, true), 98, 0, 4), "missing"},
        {"short zip64 field",
         storedZip({{.name = "a", .data = "x", .extra = zip64Field({}), .compressedSize = 0xFFFFFFFF}}),
         "short zip64 field"},
        {"overlong UTF-8 slash",
         storedZip({{.name = "..\xC0\xAF"
                             "a.json",
                     .data = "{}",
                     .flags = 0x800}}),
         "not UTF-8"},
        {"not a zip", "just some text that is long enough to look for an end record", "no end"},
        {"empty file", "", "too short"},
        {"stored entry longer than declared", storedZip({{.name = "a", .data = "xyz", .size = 2}}), ""},
        {"stored entry shorter than declared", storedZip({{.name = "a", .data = "xyz", .size = 4}}), ""},
        {"deflated entry longer than declared", deflatedWith(dir, kSizeField, 1000),
         "larger than it declares"},
        {"deflated entry shorter than declared", deflatedWith(dir, kSizeField, 100001),
         "smaller than it declares"},
        {"stored entry with a bad CRC", storedZip({{.name = "a", .data = "xyz", .crc = 1234}}), ""},
        {"deflated entry with a bad CRC", deflatedWith(dir, kCrcField, 1234), "CRC"},
        {"name not UTF-8", storedZip({{.name = "\xC3(.json", .data = "{}", .flags = 0x800}}), ""},
    };
    for (const Case& hostile : cases) {
        SCOPED_TRACE(hostile.what);
        const auto file = dir.write("hostile.zip", hostile.bytes);
        try {
            readPackage(file);
            ADD_FAILURE() << "read without complaint";
        } catch (const PackageError& error) {
            EXPECT_NE(std::string(error.what()).find(hostile.refusal), std::string::npos) << error.what();
        }
        EXPECT_EQ(readPackage(good), (Leaves{{u"a.json", "{}"}}));
    }
}

TEST(PackageServices, ReadsZip64Records) {
    const zwtest::TempDir dir;
    const std::string forms[] = {
        storedZip({{.name = "a.json", .data = "{}"}}, true),
        storedZip({{.name = "a.json",
                    .data = "{}",
                    .extra = zip64Field({2, 2}),
                    .size = 0xFFFFFFFF,
                    .compressedSize = 0xFFFFFFFF}}),
    };
    for (const std::string& bytes : forms) {
        EXPECT_EQ(readPackage(dir.write("zip64.zip", bytes)), (Leaves{{u"a.json", "{}"}}));
    }
}

TEST(PackageServices, AcceptsTheMostEntriesAllowed) {
    const zwtest::TempDir dir;
    const auto file = dir.write("many.zip", manyEntries(65536));
    const Leaves leaves = readPackage(file);
    ASSERT_EQ(leaves.size(), 65536U);
    EXPECT_EQ(leaves.back().first, u"65535");
}

TEST(PackageServices, MisuseThrows) {
    const zwtest::TempDir dir;
    const auto file = dir.writeZip("p.zip", {{"a.json", "{}"}});
    const opc::FileSystemOpsSelector selector(GetStorageSystemReference());

    opc::zippackage::ZipPhysicalPackage physical(u16(file.string()), selector, true);
    opc::model::Package package(physical);
    const opc::zwservices::FileSystemManager manager(package, selector);
    EXPECT_THROW(manager.getAllLeafs(), PackageError) << "listed before open";
    EXPECT_THROW(package.open(OpenMode::ReadWrite), PackageError);
    package.open(OpenMode::ReadOnly);
    EXPECT_THROW(package.open(OpenMode::ReadOnly), PackageError) << "opened twice";

    opc::zippackage::ZipPhysicalPackage writable(u16(file.string()), selector, false);
    EXPECT_THROW(writable.open(OpenMode::ReadOnly), PackageError);

    opc::zippackage::ZipPhysicalPackage missing(u16((dir.path() / "missing.zip").string()), selector, true);
    EXPECT_THROW(missing.open(OpenMode::ReadOnly), PackageError);

    struct NotZip final : opc::interfaces::IPhysicalPackage {
        void open(OpenMode) override {}
        bool isOpen() const override { return true; }
    } notZip;
    opc::model::Package other(notZip);
    EXPECT_THROW(opc::zwservices::FileSystemManager(other, selector).getAllLeafs(), PackageError);
}

TEST(PackageServices, EveryFaultPointThrowsAndTheNextCallSucceeds) {
    const zwtest::TempDir dir;
    const auto file = dir.writeZip("p.zip", {{"a.json", "{}"}});
    for (const char* operation : {"GetStorageSystemReference", "FileSystemOpsSelector", "ZipPhysicalPackage",
                                  "Package", "Package::open", "FileSystemManager",
                                  "FileSystemManager::getAllLeafs", "FileSystemManager::readEntry"}) {
        SCOPED_TRACE(operation);
        const zwhost::fault::Scope scope;
        zwhost::fault::failOn(operation, 1);
        EXPECT_THROW(readPackage(file), zwhost::fault::InjectedFault);
        EXPECT_EQ(zwhost::fault::callsOf(operation), 1U);
        EXPECT_EQ(readPackage(file), (Leaves{{u"a.json", "{}"}}));
    }
}

TEST(PackageServices, ReadsTheZipsThatRealToolsWrite) {
    const std::filesystem::path data = ZW_TEST_DATA "/zips";
    const Leaves whole = {{u"cat.json", slurp(data / "src/cat.json")},
                          {u"docs/cat_ja_JP.json", slurp(data / "src/docs/cat_ja_JP.json")}};
    const auto unsupported = [](const std::string& method) {
        const std::string error = "error: compression method " + method + " is not supported";
        return Leaves{{u"cat.json", error}, {u"docs/cat_ja_JP.json", error}};
    };
    const std::map<std::string, Leaves> exceptions = {{"7z-Deflate64.zip", unsupported("9 (Deflate64)")},
                                                      {"7z-PPMd.zip", unsupported("98 (PPMd)")}};
    std::ifstream manifest(data / "MANIFEST");
    int zips = 0;
    for (std::string line; std::getline(manifest, line); ++zips) {
        const std::string name = line.substr(0, line.find('\t'));
        SCOPED_TRACE(name);
        const OpenPackage open(data / name);
        const auto exception = exceptions.find(name);
        EXPECT_EQ(open.readEach(kLimit, opc::zwservices::FileSystemManager::kNoBudget),
                  exception == exceptions.end() ? whole : exception->second);
        std::vector<std::u16string> skipped;
        for (const auto& entry : open.manager.getSkippedEntries()) {
            EXPECT_EQ(entry.why, opc::zwservices::FileSystemManager::SkippedEntry::Why::DuplicateName);
            skipped.push_back(entry.path);
        }
        EXPECT_EQ(skipped, name == "python-duplicate.zip" ? std::vector<std::u16string>{u"cat.json"}
                                                          : std::vector<std::u16string>{});
    }
    EXPECT_EQ(zips, 23);
}

std::string bzip2(const std::string& text) {
    std::string packed(text.size() / 100 + 600, '\0');
    auto size = static_cast<unsigned>(packed.size());
    EXPECT_EQ(BZ2_bzBuffToBuffCompress(packed.data(), &size, const_cast<char*>(text.data()),
                                       static_cast<unsigned>(text.size()), 9, 0, 0),
              BZ_OK);
    packed.resize(size);
    return packed;
}

TEST(PackageServices, BombsCostAtMostTheirBudgetAndTheRatioFloor) {
    const zwtest::TempDir dir;
    constexpr std::uint64_t kMiB = std::uint64_t{1} << 20;
    const std::string zeros(64 * kMiB, '\0');
    const std::string packedZeros = bzip2(zeros);
    const std::uint32_t zerosCrc = crc32(zeros);
    std::vector<RawRecord> honest;
    for (int i = 0; i < 65536; ++i) {
        honest.push_back({.name = std::to_string(i),
                          .data = packedZeros,
                          .size = zeros.size(),
                          .crc = zerosCrc,
                          .method = 12});
    }
    std::vector<RawRecord> liars;
    for (int i = 0; i < 20; ++i) {
        liars.push_back({.name = std::to_string(i), .data = "ab", .size = 64 * kMiB});
    }
    std::string numbers = "{\"header\": {\"helpFolder\": \"h\"}, \"ignored\": [";
    for (std::uint64_t i = 0; i < 4 * kMiB; ++i) {
        numbers += "0,";
    }
    numbers += "0]}";
    const std::string packedNumbers = bzip2(numbers);
    using Manager = opc::zwservices::FileSystemManager;
    struct Case {
        const char* what;
        std::filesystem::path file;
        std::uint64_t limit;
        std::uint64_t mostInflated;
        const char* refusal;
    };
    const std::uint64_t budget = zwhost::settings::kDefaultPackageBudget;
    const Case cases[] = {
        {"65,536 bzip2 entries of 64 MiB of zeros", dir.write("zeros.zip", storedZip(honest)), 64 * kMiB,
         budget, "budget"},
        {"20 entries that declare 64 MiB and hold 2 bytes", dir.write("liars.zip", storedZip(liars)),
         64 * kMiB, 40, "cannot read entry 19"},
        {"a catalogue of 8 MiB of numbers",
         dir.write("numbers.zip", storedZip({{.name = "a.json",
                                              .data = packedNumbers,
                                              .size = numbers.size(),
                                              .crc = crc32(numbers),
                                              .method = 12}})),
         128 * kMiB, std::max(Manager::kRatioFloor, packedNumbers.size() * Manager::kMaxRatio) + (64 << 10),
         "inflates more than 1024 times"},
    };
    for (const Case& bomb : cases) {
        SCOPED_TRACE(bomb.what);
        const std::size_t before = zwtest::allocation::liveBytes();
        zwtest::allocation::resetPeak();
        const OpenPackage open(bomb.file);
        const Leaves leaves = open.readEach(bomb.limit, budget);
        EXPECT_LE(open.manager.inflatedBytes(), bomb.mostInflated);
        EXPECT_LE(zwtest::allocation::peakBytes() - before, 100 * kMiB);
        // The first entries of honest zeros fail on their ratio; once the budget is spent, the rest do.
        for (const auto& [path, text] : leaves) {
            ASSERT_EQ(text.rfind("error: ", 0), 0U) << text;
        }
        EXPECT_NE(leaves.back().second.find(bomb.refusal), std::string::npos) << leaves.back().second;
    }
    // Below the ratio floor any ratio is taken: half a MiB of zeros packs to a few dozen bytes.
    const std::string someZeros(kMiB / 2, '\0');
    const OpenPackage small(dir.write("small.zip", storedZip({{.name = "z",
                                                               .data = bzip2(someZeros),
                                                               .size = someZeros.size(),
                                                               .crc = crc32(someZeros),
                                                               .method = 12}})));
    EXPECT_EQ(small.readEach(kMiB, budget), (Leaves{{u"z", someZeros}}));
}

TEST(PackageServices, AFifoIsRefusedWithoutWaiting) {
    const zwtest::TempDir dir;
    const auto fifo = dir.path() / "p.zip";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    try {
        OpenPackage open(fifo);
        ADD_FAILURE() << "a FIFO was opened as a package";
    } catch (const PackageError& error) {
        EXPECT_NE(std::string(error.what()).find("not a regular file"), std::string::npos) << error.what();
    }
}

} // namespace
