#include "support/temp_tree.hpp"

#include <atomic>
#include <fstream>
#include <stdexcept>

#include <unistd.h>
#include <zip.h>

#include "zwhost/unicode.hpp"

namespace zwtest {

void writeZip(const std::filesystem::path& file, const std::vector<ZipEntry>& entries) {
    std::filesystem::create_directories(file.parent_path());
    int error = 0;
    zip_t* archive = zip_open(file.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    if (archive == nullptr) {
        throw std::runtime_error("cannot create zip " + file.string());
    }
    for (const ZipEntry& entry : entries) {
        zip_source_t* source = zip_source_buffer(archive, entry.content.data(), entry.content.size(), 0);
        if (source == nullptr || zip_file_add(archive, entry.name.c_str(), source, ZIP_FL_ENC_UTF_8) < 0) {
            zip_source_free(source);
            zip_discard(archive);
            throw std::runtime_error("cannot add " + entry.name + " to " + file.string());
        }
    }
    if (zip_close(archive) != 0) {
        zip_discard(archive);
        throw std::runtime_error("cannot write zip " + file.string());
    }
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
    const std::filesystem::path file = path_ / relative;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary);
    out << content;
    if (!out) {
        throw std::runtime_error("cannot write " + file.string());
    }
    return file;
}

std::filesystem::path TempDir::writeZip(const std::filesystem::path& relative,
                                        const std::vector<ZipEntry>& entries) const {
    const std::filesystem::path file = path_ / relative;
    zwtest::writeZip(file, entries);
    return file;
}

std::u16string u16(const std::string& text) {
    return zwhost::unicode::utf8ToUtf16(text);
}

} // namespace zwtest
