#include "corpus.hpp"

#include "zip_floor.hpp"

#include <algorithm>
#include <array>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace zwbench {
namespace {

namespace fs = std::filesystem;

/** splitmix64: small, fast, and the same sequence on every machine, unlike the distributions
    of <random>. */
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() {
        std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }

    /** A number in [low, high]. */
    std::size_t between(std::size_t low, std::size_t high) {
        return low + static_cast<std::size_t>(next() % (high - low + 1));
    }

    bool chance(unsigned percent) { return next() % 100 < percent; }

    template <class List>
    const auto& pick(const List& list) {
        return list[static_cast<std::size_t>(next() % std::size(list))];
    }

private:
    std::uint64_t state_;
};

constexpr std::array<std::string_view, 64> kWords = {
    "signal",  "filter",     "model",    "surface",  "plot",      "data",      "frequency", "response",
    "control", "system",     "matrix",   "vector",   "linear",    "nonlinear", "estimate",  "spectrum",
    "image",   "noise",      "sample",   "rate",     "design",    "compute",   "analyze",   "visualize",
    "table",   "timeseries", "gradient", "optimize", "solver",    "mesh",      "boundary",  "transform",
    "wavelet", "kalman",     "state",    "space",    "impulse",   "step",      "bode",      "nyquist",
    "cluster", "regression", "fit",      "curve",    "histogram", "scatter",   "contour",   "volume",
    "stream",  "particle",   "thermal",  "pressure", "velocity",  "motor",     "sensor",    "battery",
    "network", "layer",      "train",    "predict",  "classify",  "segment",   "track",     "align"};

// Text that English documentation really holds beside plain ASCII: typographic quotes and
// dashes, units, accented names, and now and then a character outside the basic plane.
constexpr std::array<std::string_view, 12> kEnglishExtras = {"\xE2\x80\x99s", // ’s
                                                             "\xE2\x80\x93",  // –
                                                             "25 \xC2\xB0"
                                                             "C",            // 25 °C
                                                             "10 \xC2\xB5s", // 10 µs
                                                             "Schr\xC3\xB6"
                                                             "dinger",       // Schrödinger
                                                             "na\xC3\xAFve", // naïve
                                                             "3\xC3\x97"
                                                             "3",                   // 3×3
                                                             "50 \xCE\xA9",         // 50 Ω
                                                             "\xF0\x9D\x91\xA5(t)", // 𝑥(t)
                                                             "\xE2\x86\x92",        // →
                                                             "\\\"what-if\\\"",     // an escaped quotation
                                                             "\xF0\x9F\x93\x88"};   // 📈

constexpr std::array<std::string_view, 24> kJapanese = {
    "信号",         "フィルター",     "モデル", "サーフェス",   "プロット",     "データ",
    "周波数応答",   "制御系",         "行列",   "ベクトル",     "線形",         "推定",
    "スペクトル",   "画像",           "ノイズ", "サンプリング", "を作成します", "を表示します",
    "を解析します", "を可視化します", "の設計", "の例",         "を使用して",   "と比較します"};

constexpr std::array<std::string_view, 24> kChinese = {
    "信号", "滤波器", "模型", "曲面", "绘图", "数据", "频率响应", "控制系统", "矩阵", "向量", "线性", "估计",
    "频谱", "图像",   "噪声", "采样", "创建", "显示", "分析",     "可视化",   "设计", "示例", "使用", "比较"};

struct Kind {
    std::string_view text;
    unsigned weight;
};

// "Demo" is no kind the catalogue knows: some entries of real catalogues carry such text.
constexpr std::array<Kind, 7> kKinds = {{{"Live Script", 40},
                                         {"Script", 20},
                                         {"Model", 15},
                                         {"Example", 10},
                                         {"Chart", 5},
                                         {"App", 5},
                                         {"Demo", 5}}};

std::string_view pickKind(Random& random) {
    unsigned roll = static_cast<unsigned>(random.next() % 100);
    for (const Kind& kind : kKinds) {
        if (roll < kind.weight) {
            return kind.text;
        }
        roll -= kind.weight;
    }
    return kKinds.back().text;
}

std::string capitalised(std::string_view word) {
    std::string text(word);
    text[0] = static_cast<char>(text[0] - 'a' + 'A');
    return text;
}

std::string englishText(Random& random, std::size_t words, bool sentence) {
    std::string text;
    for (std::size_t i = 0; i < words; ++i) {
        if (i > 0) {
            text += ' ';
        }
        text += (i == 0 && sentence) ? capitalised(random.pick(kWords)) : std::string(random.pick(kWords));
        if (random.chance(4)) {
            text += ' ';
            text += random.pick(kEnglishExtras);
        }
    }
    if (sentence) {
        text += '.';
    }
    return text;
}

template <class Phrases>
std::string localText(Random& random, const Phrases& phrases, std::size_t pieces) {
    std::string text;
    for (std::size_t i = 0; i < pieces; ++i) {
        // Product and function names stay in English inside localised text.
        if (random.chance(15)) {
            text += ' ';
            text += random.pick(kWords);
            text += ' ';
        } else {
            text += random.pick(phrases);
        }
    }
    text += "\xE3\x80\x82"; // 。
    return text;
}

/** One catalogue entry, in English; localisation replaces title and description. */
struct Entry {
    std::string id;
    std::string name;
    std::string component;
    std::string title;
    std::string description;
    std::string thumbnail;
    std::string_view kind;
    std::string openCmd;
    std::vector<std::string> relativePaths;
    std::vector<std::string> supportingFiles;
    std::vector<std::pair<std::string, std::string>> links;
    bool japanese = false;
    bool chinese = false;
};

Entry makeEntry(const std::string& helpFolder, std::uint64_t seed, std::size_t index) {
    Random random(seed * 0x100000001B3ULL + index);
    Entry entry;
    const std::size_t nameWords = random.between(2, 5);
    for (std::size_t i = 0; i < nameWords; ++i) {
        entry.name += capitalised(random.pick(kWords));
    }
    entry.name += std::to_string(index % 97);
    entry.component = random.chance(70) ? helpFolder : helpFolder + "_" + std::string(random.pick(kWords));
    entry.title = englishText(random, random.between(3, 9), false);
    entry.title[0] = static_cast<char>(entry.title[0] - 'a' + 'A');
    entry.description = englishText(random, random.between(8, 60), true);
    // Hand-written catalogues carry stray white space now and then; it is trimmed on reading.
    if (random.chance(3)) {
        entry.description += random.chance(50) ? " " : "\\n";
    }
    entry.thumbnail = random.chance(90) ? "images/" + entry.name + ".png" : "";
    entry.kind = pickKind(random);
    if (random.chance(15)) {
        entry.openCmd = "openExample('" + entry.component + "/" + entry.name + "', 'Frames', " +
                        std::to_string(random.between(1, 500)) + ");";
    }
    if (random.chance(80)) {
        const std::size_t count = random.between(1, 3);
        for (std::size_t i = 0; i < count; ++i) {
            entry.relativePaths.push_back(entry.component + "/" + std::string(random.pick(kWords)) + "/" +
                                          entry.name + (i == 0 ? ".zlx" : ".z"));
        }
    }
    if (random.chance(50)) {
        const std::size_t count = random.between(1, 6);
        for (std::size_t i = 0; i < count; ++i) {
            entry.supportingFiles.push_back(std::string(random.pick(kWords)) + "Data" + std::to_string(i) +
                                            ".zat");
        }
    }
    if (random.chance(75)) {
        const std::size_t count = random.between(1, 8);
        for (std::size_t i = 0; i < count; ++i) {
            const std::string_view word = random.pick(kWords);
            std::string docid = random.chance(60) ? helpFolder + "/ref/" + std::string(word)
                                                  : helpFolder + "/ug/" + std::string(word) + "-" +
                                                        std::string(random.pick(kWords));
            entry.links.emplace_back(std::move(docid), std::string(word));
        }
    }
    entry.japanese = random.chance(70);
    entry.chinese = random.chance(40);
    entry.id = entry.component + "/" + entry.name;
    return entry;
}

// The texts are generated free of characters that JSON must escape, but for the escapes that
// are written on purpose; so they are copied as they stand.
void appendString(std::string& out, std::string_view key, std::string_view value, bool last = false) {
    out += "      \"";
    out += key;
    out += "\": \"";
    out += value;
    out += last ? "\"\n" : "\",\n";
}

void appendStrings(std::string& out, std::string_view key, const std::vector<std::string>& values) {
    out += "      \"";
    out += key;
    out += "\": [\n";
    for (std::size_t i = 0; i < values.size(); ++i) {
        out += "        \"";
        out += values[i];
        out += i + 1 < values.size() ? "\",\n" : "\"\n";
    }
    out += "      ],\n";
}

void appendEntry(std::string& out, const Entry& entry, const std::string& title,
                 const std::string& description) {
    out += "    {\n";
    appendString(out, "name", entry.name);
    appendString(out, "component", entry.component);
    appendString(out, "title", title);
    appendString(out, "description", description);
    appendString(out, "thumbnail", entry.thumbnail);
    if (!entry.openCmd.empty()) {
        appendString(out, "openCmd", entry.openCmd);
    }
    if (!entry.relativePaths.empty()) {
        appendStrings(out, "relative_path", entry.relativePaths);
    }
    if (!entry.supportingFiles.empty()) {
        appendStrings(out, "supporting_files", entry.supportingFiles);
    }
    if (!entry.links.empty()) {
        out += "      \"docid_links\": [\n";
        for (std::size_t i = 0; i < entry.links.size(); ++i) {
            out += "        {\n          \"docid\": \"";
            out += entry.links[i].first;
            out += "\",\n          \"target\": \"";
            out += entry.links[i].second;
            out += i + 1 < entry.links.size() ? "\"\n        },\n" : "\"\n        }\n";
        }
        out += "      ],\n";
    }
    appendString(out, "exampleType", entry.kind, true);
    out += "    }";
}

std::string beginCatalogue(const std::string& helpFolder, std::string_view locale) {
    std::string out = "{\n  \"header\": {\n    \"product\": \"Zentab\",\n    \"version\": \"24.2\",\n";
    out += "    \"helpFolder\": \"" + helpFolder + "\",\n    \"locale\": \"";
    out += locale;
    out += "\"\n  },\n  \"exampleItems\": [\n";
    return out;
}

/** FNV-1a: a hash of text that, unlike std::hash, is the same in every standard library. */
std::uint64_t fnv1a(std::string_view text) {
    std::uint64_t hash = 0xCBF29CE484222325ULL;
    for (const char c : text) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3ULL;
    }
    return hash;
}

// A localised entry is rendered only when its language was drawn for it.
enum class Language { English, Japanese, Chinese };

void appendCatalogueEntry(std::string& out, bool& first, const Entry& entry, Language language) {
    if (language == Language::Japanese && !entry.japanese) {
        return;
    }
    if (language == Language::Chinese && !entry.chinese) {
        return;
    }
    out += first ? "" : ",\n";
    first = false;
    if (language == Language::English) {
        appendEntry(out, entry, entry.title, entry.description);
        return;
    }
    Random random(fnv1a(entry.id) ^ static_cast<std::uint64_t>(language));
    const std::array<std::string_view, 24>& phrases = language == Language::Japanese ? kJapanese : kChinese;
    appendEntry(out, entry, localText(random, phrases, random.between(2, 6)),
                localText(random, phrases, random.between(6, 30)));
}

std::string endCatalogue(std::string out) {
    out += "\n  ]\n}\n";
    return out;
}

} // namespace

CatalogueFamily makeCatalogueFamily(const std::string& helpFolder, std::uint64_t seed,
                                    std::size_t englishBytes) {
    // Entries are drawn until the English text is long enough, then put in id order, as
    // catalogues usually are.
    std::vector<Entry> entries;
    std::size_t bytes = 0;
    for (std::size_t index = 0; bytes < englishBytes; ++index) {
        entries.push_back(makeEntry(helpFolder, seed, index));
        std::string text;
        appendEntry(text, entries.back(), entries.back().title, entries.back().description);
        bytes += text.size() + 2;
    }
    std::stable_sort(entries.begin(), entries.end(),
                     [](const Entry& a, const Entry& b) { return a.id < b.id; });

    CatalogueFamily family;
    std::string english = beginCatalogue(helpFolder, "en_US");
    std::string japanese = beginCatalogue(helpFolder, "ja_JP");
    std::string chinese = beginCatalogue(helpFolder, "zh_CN");
    english.reserve(englishBytes + 4096);
    bool firstEnglish = true;
    bool firstJapanese = true;
    bool firstChinese = true;
    for (const Entry& entry : entries) {
        appendCatalogueEntry(english, firstEnglish, entry, Language::English);
        appendCatalogueEntry(japanese, firstJapanese, entry, Language::Japanese);
        appendCatalogueEntry(chinese, firstChinese, entry, Language::Chinese);
    }
    family.english = endCatalogue(std::move(english));
    family.japanese = endCatalogue(std::move(japanese));
    family.chinese = endCatalogue(std::move(chinese));
    return family;
}

namespace {

// English sizes of the help folders of the base corpus, repeated three times: from a couple of
// entries to some thousands, about 12 MB of English and 25 MB in all.
constexpr std::array<std::size_t, 8> kEnglishSizes = {2'000,   10'000,    40'000,    150'000,
                                                      500'000, 1'200'000, 2'000'000, 100'000};
constexpr std::size_t kBaseFolders = 3 * kEnglishSizes.size();
constexpr std::string_view kGeneratorVersion = "v3";

void writeFile(const fs::path& file, std::string_view content) {
    fs::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    if (!out) {
        throw std::runtime_error("cannot write " + file.string());
    }
}

/** A deflated zip package of `entries`, in the given order. */
void writeZip(const fs::path& file, const std::vector<std::pair<std::string, std::string>>& entries) {
    std::vector<ZipMember> members;
    for (const auto& [name, text] : entries) {
        members.push_back({name, text});
    }
    zwbench::writeZip(file, members);
}

std::string helpFolderName(std::size_t index) {
    return std::string(kWords[(index * 7) % kWords.size()]) + std::to_string(index);
}

/** How a help folder's catalogues are installed: loose files, one package holding all three,
    or one package per language; or an English catalogue alone, in a package or loose. */
enum class Form { Loose, OnePackage, PackagePerLanguage, EnglishPackage, EnglishLoose, EnglishBesideMedia };

// The media file that a package of Form::EnglishBesideMedia stores beside its catalogue.
constexpr std::uint64_t kMediaBytes = std::uint64_t{600} << 20;

Form formOf(std::size_t index) {
    return static_cast<Form>(index % 3);
}

/** What a tree holds: how many help folders, the English size and the form of each. */
struct Layout {
    std::string name;
    std::size_t folders;
    std::function<std::size_t(std::size_t)> englishBytes;
    std::function<Form(std::size_t)> form;
    // Whether folders and packages also hold a file that is no catalogue, and packages keep
    // their catalogues in a folder.
    bool extras = false;
};

Layout layoutOf(Shape shape) {
    const auto between = [](std::size_t low, std::size_t high) {
        return [low, high](std::size_t index) { return Random(index * 31 + 7).between(low, high); };
    };
    // Half loose, a quarter one package, a quarter one package per language.
    const auto mixed = [](std::size_t index) {
        const std::size_t quarter = index % 4;
        return quarter < 2 ? Form::Loose : quarter == 2 ? Form::OnePackage : Form::PackagePerLanguage;
    };
    const auto always = [](Form form) { return [form](std::size_t) { return form; }; };
    switch (shape) {
    case Shape::Small400:
        return {"small400", 400, between(5'000, 40'000), mixed};
    case Shape::Small800:
        return {"small800", 800, between(5'000, 40'000), mixed};
    case Shape::Small1600:
        return {"small1600", 1600, between(5'000, 40'000), mixed};
    case Shape::Large20:
        return {"large20", 20, between(1'000'000, 2'000'000), mixed};
    case Shape::Packages2000:
        return {"packages2000", 2000, between(5'000, 40'000), always(Form::EnglishPackage)};
    case Shape::Loose2000:
        return {"loose2000", 2000, between(5'000, 40'000), always(Form::EnglishLoose)};
    // Two packages of a 10 KB catalogue beside a 600 MiB media file, one each way round, among
    // small loose catalogues; and the same tree with those two catalogues loose.
    case Shape::MediaPackages:
        return {"media", 20, between(10'000, 10'000),
                [](std::size_t index) { return index < 2 ? Form::EnglishBesideMedia : Form::EnglishLoose; }};
    case Shape::MediaLoose:
        return {"medialoose", 20, between(10'000, 10'000), always(Form::EnglishLoose)};
    }
    throw std::logic_error("no such shape");
}

Tree generateLayout(const fs::path& cache, const Layout& layout) {
    const std::string current = std::string("_") + kCurrentLocale;
    const std::string other = std::string("_") + kOtherLocale;
    Tree tree;
    tree.root = cache / (std::string(kGeneratorVersion) + "-" + layout.name);
    const fs::path complete = tree.root / ".complete";
    const bool present = fs::exists(complete);
    if (!present) {
        fs::remove_all(tree.root);
    }
    for (std::size_t index = 0; index < layout.folders; ++index) {
        const std::string helpFolder = helpFolderName(index);
        const fs::path folder = tree.root / helpFolder;
        const std::string stem = helpFolder + "_examples";
        const std::string inner = layout.extras ? "catalog/" + stem : stem;
        const Form form = layout.form(index);
        CatalogueFamily family;
        if (!present) {
            family = makeCatalogueFamily(helpFolder, index + 1, layout.englishBytes(index));
        }
        switch (form) {
        case Form::Loose:
            if (!present) {
                writeFile(folder / "examples.json", family.english);
                writeFile(folder / ("examples" + current + ".json"), family.japanese);
                writeFile(folder / ("examples" + other + ".json"), family.chinese);
                if (layout.extras) {
                    writeFile(folder / "images" / "README.txt", "Thumbnails of the examples.\n");
                }
            }
            tree.looseFiles.push_back(folder / "examples.json");
            tree.looseFiles.push_back(folder / ("examples" + current + ".json"));
            break;
        case Form::OnePackage:
            if (!present) {
                std::vector<std::pair<std::string, std::string>> entries = {
                    {inner + ".json", family.english},
                    {inner + current + ".json", family.japanese},
                    {inner + other + ".json", family.chinese}};
                if (layout.extras) {
                    entries.emplace_back("README.txt", "Examples of " + helpFolder + ".\n");
                }
                writeZip(folder / (stem + ".zip"), entries);
            }
            tree.packages.push_back({folder / (stem + ".zip"), {inner + ".json", inner + current + ".json"}});
            break;
        case Form::PackagePerLanguage:
            if (!present) {
                writeZip(folder / (stem + ".zip"), {{stem + ".json", family.english}});
                writeZip(folder / (stem + current + ".zip"), {{stem + current + ".json", family.japanese}});
                writeZip(folder / (stem + other + ".zip"), {{stem + other + ".json", family.chinese}});
            }
            tree.packages.push_back({folder / (stem + ".zip"), {stem + ".json"}});
            tree.packages.push_back({folder / (stem + current + ".zip"), {stem + current + ".json"}});
            break;
        case Form::EnglishPackage:
            if (!present) {
                writeZip(folder / (stem + ".zip"), {{stem + ".json", family.english}});
            }
            tree.packages.push_back({folder / (stem + ".zip"), {stem + ".json"}});
            break;
        case Form::EnglishBesideMedia:
            if (!present) {
                const ZipMember catalogue{stem + ".json", family.english};
                const ZipMember media{"media/demo.mp4", "", kMediaBytes};
                writeZip(folder / (stem + ".zip"),
                         index % 2 == 0 ? std::vector{media, catalogue} : std::vector{catalogue, media});
            }
            tree.packages.push_back({folder / (stem + ".zip"), {stem + ".json"}});
            break;
        case Form::EnglishLoose:
            if (!present) {
                writeFile(folder / "examples.json", family.english);
            }
            tree.looseFiles.push_back(folder / "examples.json");
            break;
        }
    }
    if (!present) {
        writeFile(complete, "");
    }
    // A parse reads packages and loose files in the walk's order: by path in byte order.
    std::sort(tree.packages.begin(), tree.packages.end(),
              [](const auto& a, const auto& b) { return a.file.native() < b.file.native(); });
    std::sort(tree.looseFiles.begin(), tree.looseFiles.end(),
              [](const auto& a, const auto& b) { return a.native() < b.native(); });
    return tree;
}

} // namespace

Tree generateTree(const fs::path& cache, unsigned scale) {
    // Built in two steps: "x" + std::to_string trips GCC 12's false -Wrestrict.
    std::string name = "x";
    name += std::to_string(scale);
    return generateLayout(
        cache, {std::move(name), kBaseFolders * scale,
                [](std::size_t index) { return kEnglishSizes[index % kEnglishSizes.size()]; }, formOf, true});
}

Tree generateTree(const fs::path& cache, Shape shape) {
    return generateLayout(cache, layoutOf(shape));
}

std::string shapeName(Shape shape) {
    return layoutOf(shape).name;
}

} // namespace zwbench
