#include "support/temp_tree.hpp"

#include <algorithm>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <stdexcept>
#include <string_view>

#include <stdlib.h>
#include <zlib.h>

#include "zwhost/unicode.hpp"

namespace zwtest {
namespace {

std::filesystem::path writeFile(const std::filesystem::path& file, const std::string& content) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary);
    out << content;
    if (!out) {
        throw std::runtime_error("cannot write " + file.string());
    }
    return file;
}

} // namespace

std::string pack(std::string_view widths, std::initializer_list<std::uint64_t> values) {
    std::string out;
    const auto* value = values.begin();
    for (const char width : widths) {
        for (int i = 0; i < width - '0'; ++i) {
            out += static_cast<char>((*value >> (8 * i)) & 0xFFU);
        }
        ++value;
    }
    return out;
}

std::string zipOf(const std::vector<ZipRecord>& records) {
    std::string body, directory;
    for (std::size_t i = 0; i < records.size(); ++i) {
        const ZipRecord& r = records[i];
        const std::string name = r.name.empty() ? std::to_string(i) : r.name;
        // The fields that the local and the central header share, from the version needed on.
        const std::string common =
            pack("222444422", {20, r.flags, r.method, 0, r.crc.value_or(crc32(r.data)), r.data.size(),
                               r.size.value_or(r.data.size()), name.size(), r.extra.size()});
        // After the shared fields: comment size, first disk, internal and external attributes, offset.
        directory +=
            pack("42", {0x02014b50, 20}) + common + pack("22244", {0, 0, 0, 0, body.size()}) + name + r.extra;
        body += pack("4", {0x04034b50}) + common + name + r.extra + r.data;
    }
    const std::uint64_t count = records.size(), offset = body.size(), size = directory.size();
    const bool zip64 = count > 0xFFFF;
    body += directory;
    if (zip64) {
        body += pack("48224488884484", {0x06064b50, 44, 45, 45, 0, 0, count, count, size, offset, 0x07064b50,
                                        0, offset + size, 1});
    }
    // Past 65535 entries the end record's count, size and offset are escaped to the zip64 records.
    const std::uint64_t escaped = zip64 ? 0xFFFFFFFF : 0, shown = std::min<std::uint64_t>(count, 0xFFFF);
    return body + pack("4422442", {0x06054b50, 0, shown, shown, escaped | size, escaped | offset, 0});
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
    std::string name = (std::filesystem::temp_directory_path() / "zwtest-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("cannot make a folder like " + name);
    }
    path_ = name;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TempDir::write(const std::filesystem::path& relative,
                                     const std::string& content) const {
    return writeFile(path_ / relative, content);
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

std::string fileText(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

} // namespace zwtest
