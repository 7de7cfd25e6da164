#pragma once
// Trees of files described in data files, a line per file ("tree, path, content"), written under
// a fresh root by the tests that replay them.

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "reference/docparser/product_data.hpp"
#include "support/manifest.hpp"
#include "support/temp_tree.hpp"

namespace zwtest {

// Files of a tree, each a path and its content. "p.zip!e.json" is the entry e.json of the package
// p.zip, entries in order; the content "<fifo>" makes a named pipe, "<link>t" a symbolic link to
// t, "<copy>f" a copy of the file f of the source tree.
using Files = std::vector<std::pair<std::string, std::string>>;

/** Writes `files` under `root`, making folders as needed. */
inline void writeFiles(const std::filesystem::path& root, const Files& files) {
    namespace fs = std::filesystem;
    std::map<fs::path, std::vector<ZipEntry>> packages;
    for (const auto& [path, content] : files) {
        const auto bang = path.find('!');
        const fs::path at = root / path.substr(0, bang);
        if (bang != std::string::npos) {
            packages[at].push_back({path.substr(bang + 1), content});
            continue;
        }
        fs::create_directories(at.parent_path());
        if (content == "<fifo>") {
            ::mkfifo(at.c_str(), 0600);
        } else if (content.starts_with("<link>")) {
            fs::create_symlink(content.substr(6), at);
        } else if (content.starts_with("<copy>")) {
            fs::copy_file(ZW_SOURCE_DIR "/" + content.substr(6), at);
        } else {
            std::ofstream(at, std::ios::binary) << content;
        }
    }
    for (const auto& [package, entries] : packages) {
        writeZip(package, entries);
    }
}

/** `text` with the escapes of the case files undone: \\, \n, \t and \xHH. */
inline std::string unescaped(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            out += text[i];
        } else if (text[++i] == 'x') {
            out += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        } else {
            out += text[i] == 'n' ? '\n' : text[i] == 't' ? '\t' : text[i];
        }
    }
    return out;
}

/** The lines of the case file `file`, each field unescaped. */
inline ManifestLines caseLines(const std::filesystem::path& file) {
    ManifestLines lines = manifestLines(file);
    for (auto& fields : lines) {
        for (std::string& field : fields) {
            field = unescaped(field);
        }
    }
    return lines;
}

/** The tree `name` of the trees file `trees`: its lines "tree, path, content". */
inline Files caseTree(const std::string& name,
                      const std::filesystem::path& trees = ZW_SOURCE_DIR "/tests/data/exampledoc/TREES") {
    Files files;
    for (const auto& fields : caseLines(trees)) {
        if (fields.at(0) == name) {
            files.emplace_back(fields.at(1), fields.at(2));
        }
    }
    EXPECT_FALSE(files.empty()) << "no tree " << name << " in " << trees;
    return files;
}

/** Writes the tree `name` of tests/data/trees/TREES under `root`. */
inline void writeTree(const std::filesystem::path& root, const std::string& name) {
    writeFiles(root, caseTree(name, ZW_TEST_DATA "/trees/TREES"));
}

/** Writes the tree `name` ("-": none) of tests/data/trees/TREES under `root` and gives the
    products `names` in order: each the file of that name and `extension` under `root`, localised
    where "*" follows the name. */
inline std::vector<reference::docparser::ProductPathData> treeProducts(const std::filesystem::path& root,
                                                                       const std::string& name,
                                                                       const std::string& names,
                                                                       const std::string& extension) {
    if (name != "-") {
        writeTree(root, name);
    }
    std::vector<reference::docparser::ProductPathData> products;
    std::istringstream words(names);
    for (std::string word; words >> word;) {
        const bool localised = word.ends_with('*');
        word.resize(word.size() - (localised ? 1 : 0));
        products.emplace_back(u16(word), localised, u16((root / (word + extension)).string()));
    }
    return products;
}

} // namespace zwtest
