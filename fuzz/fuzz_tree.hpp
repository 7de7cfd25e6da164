#pragma once
// A documentation tree in a temporary folder, made once per fuzzing process and removed at exit,
// into which a target writes each input as a catalogue file or a package.

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include <stdlib.h>

namespace zwfuzz {

class FuzzTree {
public:
    FuzzTree() {
        std::string pattern = (std::filesystem::temp_directory_path() / "zwfuzz-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) {
            throw std::filesystem::filesystem_error("cannot make a temporary folder",
                                                    std::error_code(errno, std::generic_category()));
        }
        root_ = pattern;
    }
    ~FuzzTree() {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    FuzzTree(const FuzzTree&) = delete;
    FuzzTree& operator=(const FuzzTree&) = delete;

    const std::filesystem::path& root() const { return root_; }

    /** Empties the tree and writes `size` bytes at `relative`; gives the file's full path. */
    std::filesystem::path reset(const std::filesystem::path& relative, const std::uint8_t* data,
                                std::size_t size) const {
        for (const auto& entry : std::filesystem::directory_iterator(root_)) {
            std::filesystem::remove_all(entry.path());
        }
        const std::filesystem::path file = root_ / relative;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        return file;
    }

    /** The root as UTF-16; the folder's name is ASCII. */
    std::u16string root16() const {
        const std::string text = root_.string();
        return std::u16string(text.begin(), text.end());
    }

private:
    std::filesystem::path root_;
};

} // namespace zwfuzz
