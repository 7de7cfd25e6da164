#pragma once
// The manifests of test corpora: a line per file or case, its fields separated by tabs.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zwtest {

using ManifestLines = std::vector<std::vector<std::string>>;

/** The tab-separated fields of each line of `manifest`; lines beginning with '#' are comments. */
inline ManifestLines manifestLines(const std::filesystem::path& manifest) {
    std::ifstream file(manifest);
    ManifestLines lines;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with('#')) {
            continue;
        }
        std::vector<std::string>& fields = lines.emplace_back();
        for (std::size_t start = 0, tab = 0; tab != std::string::npos; start = tab + 1) {
            tab = line.find('\t', start);
            fields.push_back(line.substr(start, tab - start));
        }
    }
    EXPECT_FALSE(lines.empty()) << "no lines in " << manifest;
    return lines;
}

/** The lines of the MANIFEST of the folder `corpus`, which must name each of its other files. */
inline ManifestLines corpusManifest(const std::filesystem::path& corpus) {
    ManifestLines lines = manifestLines(corpus / "MANIFEST");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(corpus), {}), std::ssize(lines) + 1)
        << "the manifest and the corpus " << corpus << " name different files";
    return lines;
}

} // namespace zwtest
