#pragma once
// A deterministic corpus for the benchmarks: catalogue texts with realistic fields, and
// documentation trees of loose catalogues and zip packages in English and two locales.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace zwbench {

/** The three texts of one help folder: English, and two partial localisations. */
struct CatalogueFamily {
    std::string english;
    std::string japanese;
    std::string chinese;
};

/** The catalogues of `helpFolder`, the English one about `englishBytes` long. The Japanese one
    carries about 70 % of the entries, the Chinese one about 40 %. Equal arguments give equal
    texts on every machine. */
CatalogueFamily makeCatalogueFamily(const std::string& helpFolder, std::uint64_t seed,
                                    std::size_t englishBytes);

/** A package of a tree, with the entries that a parse in the current locale reads. */
struct PackageToRead {
    std::filesystem::path file;
    std::vector<std::string> entries;
};

/** Where a generated tree lies and what a parse of it in locale "ja_JP" reads. */
struct Tree {
    std::filesystem::path root;
    std::vector<std::filesystem::path> looseFiles;
    std::vector<PackageToRead> packages;
};

/** The locale a tree's read lists are made for, and the locales its catalogues are written in. */
inline constexpr const char* kCurrentLocale = "ja_JP";
inline constexpr const char* kOtherLocale = "zh_CN";

/** The tree of `scale` times the base corpus (about 25 MB of catalogue text) under `cache`,
    written on first use and reused after; a scale of 4 holds about 100 MB. */
Tree generateTree(const std::filesystem::path& cache, unsigned scale);

/** The trees of installations as they are found: many help folders of small catalogues (5 to
    40 KB, half loose, a quarter one package of all languages, a quarter one package per
    language), a few of large ones (1 to 2 MB, the same mix), and English catalogues alone, each
    in its own package or loose; and 20 small English catalogues, two of them in packages beside a
    600 MiB media file (MediaPackages) or all loose (MediaLoose). */
enum class Shape {
    Small400,
    Small800,
    Small1600,
    Large20,
    Packages2000,
    Loose2000,
    MediaPackages,
    MediaLoose
};

/** The tree of `shape` under `cache`, written on first use and reused after. */
Tree generateTree(const std::filesystem::path& cache, Shape shape);

/** A short name of `shape`, such as "small400". */
std::string shapeName(Shape shape);

} // namespace zwbench
