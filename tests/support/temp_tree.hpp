#pragma once
// Temporary folders with files and zip packages, built from code by tests and fuzz targets.

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zwtest {

/** One entry of a zip package made by writeZip. */
struct ZipEntry {
    std::string name;
    std::string content;
};

/** One entry as zipOf writes it: `data` as it stands, packed by `method`. The declared size and
    CRC are those of `data` unless given, so that an entry may lie about them. */
struct ZipRecord {
    std::string name = {};
    std::string data = {};
    std::uint16_t method = 0;
    std::optional<std::uint64_t> size = {};
    std::optional<std::uint32_t> crc = {};
    std::uint16_t flags = 0x800; // the name is UTF-8
    std::string extra = {};      // extra fields, the same in both headers
};

/** `values` little-endian, each in as many bytes as the digit of `widths` in its place says. */
std::string pack(std::string_view widths, std::initializer_list<std::uint64_t> values);

/** The bytes of a zip package of `records` in order, with zip64 end records past 65535 of them;
    a record without a name is named after its place, from 0. */
std::string zipOf(const std::vector<ZipRecord>& records);

/** Writes a zip package of `entries`, in order and deflated, at `file` (folders made as needed). */
void writeZip(const std::filesystem::path& file, const std::vector<ZipEntry>& entries);

/** The CRC-32 of `bytes`, as zip headers hold it. */
std::uint32_t crc32(std::string_view bytes);

/** A fresh folder under the system's temporary folder, removed with everything in it. */
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return path_; }

    /** Writes `content` to the file `relative` under the folder; gives its full path. */
    std::filesystem::path write(const std::filesystem::path& relative, const std::string& content) const;

    /** Writes a zip package of `entries` at `relative` under the folder; gives its full path. */
    std::filesystem::path writeZip(const std::filesystem::path& relative,
                                   const std::vector<ZipEntry>& entries) const;

    /** Removes everything in the folder, which stays. */
    void clear() const;

private:
    std::filesystem::path path_;
};

/** `text` as UTF-16 (ASCII and UTF-8 input). */
std::u16string u16(const std::string& text);

/** The whole content of `file`; empty if it cannot be read. */
std::string fileText(const std::filesystem::path& file);

} // namespace zwtest
