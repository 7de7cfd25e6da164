#pragma once
// Temporary folders with files and zip packages, built by tests from code.

#include <filesystem>
#include <string>
#include <vector>

namespace zwtest {

/** One entry of a zip package made by writeZip. */
struct ZipEntry {
    std::string name;
    std::string content;
};

/** Writes a zip package of `entries`, in order, at `file` (folders made as needed). */
void writeZip(const std::filesystem::path& file, const std::vector<ZipEntry>& entries);

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

private:
    std::filesystem::path path_;
};

/** `text` as UTF-16 (ASCII and UTF-8 input). */
std::u16string u16(const std::string& text);

} // namespace zwtest
