#include "support/temp_tree.hpp"

#include <atomic>
#include <fstream>
#include <initializer_list>
#include <stdexcept>

#include <unistd.h>
#include <zlib.h>

#include "zwhost/unicode.hpp"

namespace zwtest {
namespace {

/** Appends each of `values` little-endian, in `width` bytes (at most 8). */
void put(std::string& out, int width, std::initializer_list<std::uint64_t> values) {
    for (const std::uint64_t value : values) {
        for (int i = 0; i < width; ++i) {
            out += static_cast<char>((value >> (8 * i)) & 0xFFU);
        }
    }
}

void writeFile(const std::filesystem::path& file, const std::string& content) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary);
    out << content;
    if (!out) {
        throw std::runtime_error("cannot write " + file.string());
    }
}

} // namespace

std::string zipOf(const std::vector<ZipRecord>& records) {
    std::string body;
    std::string directory;
    for (const ZipRecord& record : records) {
        // The fields that the local and the central header share, from the version needed on;
        // names are UTF-8.
        std::string common;
        put(common, 2, {20, 0x800, record.method});
        put(common, 4,
            {0, record.crc ? *record.crc : crc32(record.data), record.data.size(),
             record.size.value_or(record.data.size())});
        put(common, 2, {record.name.size(), 0});
        put(directory, 4, {0x02014b50});
        put(directory, 2, {20});
        // Comment size, first disk, internal and external attributes: all zero.
        directory += common + std::string(10, '\0');
        put(directory, 4, {body.size()});
        directory += record.name;
        put(body, 4, {0x04034b50});
        body += common + record.name + record.data;
    }
    const std::uint64_t count = records.size();
    const std::uint64_t offset = body.size();
    const std::uint64_t size = directory.size();
    const bool zip64 = count > 0xFFFF;
    body += directory;
    if (zip64) {
        put(body, 4, {0x06064b50});
        put(body, 8, {44});
        put(body, 2, {45, 45});
        put(body, 8, {0, count, count, size, offset});
        put(body, 4, {0x07064b50, 0});
        put(body, 8, {offset + size});
        put(body, 4, {1});
    }
    put(body, 4, {0x06054b50, 0});
    put(body, 2, {zip64 ? 0xFFFF : count, zip64 ? 0xFFFF : count});
    put(body, 4, {zip64 ? 0xFFFFFFFF : size, zip64 ? 0xFFFFFFFF : offset});
    put(body, 2, {0});
    return body;
}

void writeZip(const std::filesystem::path& file, const std::vector<ZipEntry>& entries) {
    std::vector<ZipRecord> records;
    for (const ZipEntry& entry : entries) {
        // compress2 wraps the deflate data in two bytes of header and four of checksum.
        uLongf size = compressBound(entry.content.size());
        std::string packed(size, '\0');
        if (compress2(reinterpret_cast<Bytef*>(packed.data()), &size,
                      reinterpret_cast<const Bytef*>(entry.content.data()), entry.content.size(),
                      Z_DEFAULT_COMPRESSION) != Z_OK) {
            throw std::runtime_error("cannot deflate " + entry.name);
        }
        records.push_back(
            {entry.name, packed.substr(2, size - 6), 8, entry.content.size(), crc32(entry.content)});
    }
    writeFile(file, zipOf(records));
}

std::uint32_t crc32(std::string_view bytes) {
    return static_cast<std::uint32_t>(
        ::crc32_z(0, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

TempDir::TempDir() {
    static std::atomic<unsigned> counter{0};
    path_ = std::filesystem::temp_directory_path() /
            ("zwtest-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TempDir::write(const std::filesystem::path& relative,
                                     const std::string& content) const {
    writeFile(path_ / relative, content);
    return path_ / relative;
}

std::filesystem::path TempDir::writeZip(const std::filesystem::path& relative,
                                        const std::vector<ZipEntry>& entries) const {
    zwtest::writeZip(path_ / relative, entries);
    return path_ / relative;
}

void TempDir::clear() const {
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
        std::filesystem::remove_all(entry.path());
    }
}

std::u16string u16(const std::string& text) {
    return zwhost::unicode::utf8ToUtf16(text);
}

} // namespace zwtest
