// The library against its floor and a peer: one large catalogue parsed three ways, and whole
// documentation trees read by the full call and by the least work that reading them takes.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <filesystem>
#include <fstream>
#include <limits>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <boost/json/monotonic_resource.hpp>
#include <boost/json/parse.hpp>
#include <malloc.h>
#include <unistd.h>

#include "allocation_counter.hpp"
#include "catalogue/catalogue_parser.hpp"
#include "corpus.hpp"
#include "example/docparser/doc_example_parser.hpp"
#include "plain_records.hpp"
#include "reference/docparser/parse_multiple_product_files.hpp"
#include "reference/docparser/read_json_files.hpp"
#include "zip_floor.hpp"
#include "zwhost/settings.hpp"
#include "zwhost/unicode.hpp"

namespace {

namespace fs = std::filesystem;

// The catalogue of the single-file benchmarks: about 15 MB of English, and its Japanese
// localisation, which carries 70 % of the entries.
constexpr std::size_t kLargeCatalogueBytes = 15'000'000;

const zwbench::CatalogueFamily& largeFamily() {
    static const zwbench::CatalogueFamily family =
        zwbench::makeCatalogueFamily("bench", 42, kLargeCatalogueBytes);
    return family;
}

const std::string& largeCatalogue(std::int64_t language) {
    return language == 0 ? largeFamily().english : largeFamily().japanese;
}

void labelLanguage(benchmark::State& state) {
    state.SetLabel(state.range(0) == 0 ? "en" : "ja");
}

std::size_t itemCount(const example::docparser::ExampleCatalogues& catalogues) {
    std::size_t count = 0;
    for (const auto& [helpFolder, catalogue] : catalogues) {
        for (const auto& [id, items] : catalogue.items) {
            count += items.size();
        }
    }
    return count;
}

/** glibc merges the many small blocks just freed on its next large request; one is made here,
    after freeing with the clock stopped, so that the merging is charged to the freeing and not
    to the next timed run. */
void mergeFreedBlocks() {
    // Through a volatile pointer: the compiler drops a malloc that is freed unused.
    void* volatile block = std::malloc(std::size_t{1} << 16);
    std::free(block);
}

/** Destroys `result` with the clock stopped, after handing it to `inspect`: the caller keeps the
    records, so counting or freeing them is no part of reading them. */
template <class Result, class Inspect = void (*)(const Result&)>
void discardUntimed(
    benchmark::State& state, Result result, Inspect inspect = [](const Result&) {}) {
    state.PauseTiming();
    inspect(result);
    { const Result gone = std::move(result); }
    mergeFreedBlocks();
    state.ResumeTiming();
}

void BM_RawBoostJsonParse(benchmark::State& state) {
    const std::string& text = largeCatalogue(state.range(0));
    for (auto _ : state) {
        // The same first block as the library's parser takes.
        boost::json::monotonic_resource memory(1024);
        const boost::json::value root = boost::json::parse(text, &memory);
        benchmark::DoNotOptimize(&root);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
    labelLanguage(state);
}

/** Runs `read`, the library's parser or a reader it is measured against, on the large
    catalogue; another reader must find as many items as the parser. */
void measureRecordReader(benchmark::State& state,
                         example::docparser::ExampleCatalogues (*read)(const std::string&)) {
    const std::string& text = largeCatalogue(state.range(0));
    std::size_t items = 0;
    for (auto _ : state) {
        example::docparser::ExampleCatalogues result = read(text);
        discardUntimed(state, std::move(result), [&](const auto& held) { items = itemCount(held); });
    }
    const auto parser = example::docparser::detail::parseExampleCatalogue;
    if (read != parser && items != itemCount(parser(text))) {
        state.SkipWithError("this reader and the library's parser read different records");
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
    state.counters["items"] = static_cast<double>(items);
    labelLanguage(state);
}

void BM_ParseExampleCatalogue(benchmark::State& state) {
    measureRecordReader(state, example::docparser::detail::parseExampleCatalogue);
}

/** Calls `use` with the text of every string value that `value` holds at any depth, in document
    order, leaving out the kind of each entry, which the records keep as a number. */
template <class Use>
void forEachRecordString(const boost::json::value& value, Use&& use) {
    if (value.is_string()) {
        use(std::string_view(value.get_string().data(), value.get_string().size()));
    } else if (value.is_array()) {
        for (const boost::json::value& element : value.get_array()) {
            forEachRecordString(element, use);
        }
    } else if (value.is_object()) {
        for (const boost::json::key_value_pair& member : value.get_object()) {
            if (member.key() != "exampleType") {
                forEachRecordString(member.value(), use);
            }
        }
    }
}

/** The least that any reader of the catalogue must do on top of the parse: one owned UTF-16
    string for each string that the records keep, made from its UTF-8 text, with no look-ups,
    no trimming, no map and no records. The id and the default commands are left out. */
void BM_OwnedStringsFloor(benchmark::State& state) {
    const std::string& text = largeCatalogue(state.range(0));
    const boost::json::value root = boost::json::parse(text);
    std::vector<std::string_view> strings;
    forEachRecordString(root.at("exampleItems"), [&](std::string_view string) { strings.push_back(string); });
    for (auto _ : state) {
        std::vector<std::u16string> owned;
        owned.reserve(strings.size());
        for (const std::string_view string : strings) {
            owned.push_back(zwhost::unicode::utf8ToUtf16(string));
        }
        discardUntimed(state, std::move(owned));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
    state.counters["strings"] = static_cast<double>(strings.size());
    labelLanguage(state);
}

void BM_NlohmannRecords(benchmark::State& state) {
    measureRecordReader(state, zwbench::parseWithNlohmann);
}

void BM_BoostJsonRecords(benchmark::State& state) {
    measureRecordReader(state, zwbench::parseWithBoostJson);
}

fs::path cacheFolder() {
    const char* folder = std::getenv("ZW_BENCH_CACHE");
    return folder != nullptr && *folder != '\0' ? fs::path(folder)
                                                : fs::temp_directory_path() / "docparser_bench";
}

// Arguments of the tree benchmarks from here on name a shape of zwbench::Shape; below, a scale
// of the base corpus.
constexpr std::int64_t kFirstShape = 100;

bool isShape(std::int64_t argument) {
    return argument >= kFirstShape;
}

zwbench::Shape shapeOf(std::int64_t argument) {
    return static_cast<zwbench::Shape>(argument - kFirstShape);
}

const zwbench::Tree& treeOf(std::int64_t argument) {
    static std::map<std::int64_t, zwbench::Tree> trees;
    auto found = trees.find(argument);
    if (found == trees.end()) {
        found = trees
                    .emplace(argument,
                             isShape(argument)
                                 ? zwbench::generateTree(cacheFolder(), shapeOf(argument))
                                 : zwbench::generateTree(cacheFolder(), static_cast<unsigned>(argument)))
                    .first;
    }
    return found->second;
}

void labelTree(benchmark::State& state) {
    if (isShape(state.range(0))) {
        state.SetLabel(zwbench::shapeName(shapeOf(state.range(0))));
    }
}

/** Calls `use` with the text of every catalogue that a parse of `tree` reads: the entries of
    each package as the floor reads them, then each loose file with one read. */
template <class Use>
void forEachText(const zwbench::Tree& tree, Use use) {
    for (const zwbench::PackageToRead& package : tree.packages) {
        const auto wanted = [&](std::string_view name) {
            return std::find(package.entries.begin(), package.entries.end(), name) != package.entries.end();
        };
        zwbench::readZipFloor(package.file, wanted, [&](std::string_view, std::string&& text) { use(text); });
    }
    for (const fs::path& file : tree.looseFiles) {
        use(zwbench::readWholeFile(file));
    }
}

struct TreeSize {
    std::uint64_t bytes = 0;
    std::uint64_t largest = 0;
};

TreeSize sizeOf(const zwbench::Tree& tree) {
    TreeSize size;
    forEachText(tree, [&](const std::string& text) {
        size.bytes += text.size();
        size.largest = std::max<std::uint64_t>(size.largest, text.size());
    });
    return size;
}

void BM_TreeFloor(benchmark::State& state) {
    const zwbench::Tree& tree = treeOf(state.range(0));
    const TreeSize size = sizeOf(tree);
    for (auto _ : state) {
        forEachText(tree, [](const std::string& text) {
            boost::json::monotonic_resource memory(1024);
            const boost::json::value root = boost::json::parse(text, &memory);
            benchmark::DoNotOptimize(&root);
        });
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size.bytes));
    state.counters["MB"] = static_cast<double>(size.bytes) / 1e6;
    labelTree(state);
}

/** The floor plus the owned strings of BM_OwnedStringsFloor for every catalogue of the tree: the
    least that a reader giving these records can cost. */
void BM_TreeFloorWithStrings(benchmark::State& state) {
    const zwbench::Tree& tree = treeOf(state.range(0));
    const TreeSize size = sizeOf(tree);
    for (auto _ : state) {
        std::deque<std::u16string> owned;
        forEachText(tree, [&](const std::string& text) {
            boost::json::monotonic_resource memory(1024);
            const boost::json::value root = boost::json::parse(text, &memory);
            forEachRecordString(root.at("exampleItems"), [&](std::string_view string) {
                owned.push_back(zwhost::unicode::utf8ToUtf16(string));
            });
        });
        discardUntimed(state, std::move(owned));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size.bytes));
    state.counters["MB"] = static_cast<double>(size.bytes) / 1e6;
    labelTree(state);
}

/** The part of a full call beyond making its records that reading a localised tree cannot
    avoid: as soon as a help folder has both catalogues, the Japanese one takes over the entry,
    the English items it lacks move across (both maps walked in key order) and the English items
    it replaces are destroyed, with glibc's merge of the freed blocks, all with the clock
    running. The catalogues are parsed with the clock stopped, in the order a parse reads them. */
void BM_DropReplacedRecords(benchmark::State& state) {
    const zwbench::Tree& tree = treeOf(state.range(0));
    const TreeSize size = sizeOf(tree);
    std::size_t dropped = 0;
    for (auto _ : state) {
        state.PauseTiming();
        dropped = 0;
        std::map<std::u16string, example::docparser::ExampleCatalogues> english;
        std::map<std::u16string, example::docparser::ExampleCatalogues> localised;
        forEachText(tree, [&](const std::string& text) {
            example::docparser::ExampleCatalogues parsed =
                example::docparser::detail::parseExampleCatalogue(text);
            const auto& [helpFolder, catalogue] = *parsed.begin();
            const bool isEnglish = catalogue.header.getLocale() == u"en_US";
            const std::u16string folder = helpFolder;
            (isEnglish ? english : localised)[folder] = std::move(parsed);
            const auto held = english.find(folder);
            const auto over = localised.find(folder);
            if (held == english.end() || over == localised.end()) {
                return;
            }
            auto& entry = held->second.begin()->second;
            auto& arriving = over->second.begin()->second;
            state.ResumeTiming();
            std::swap(entry, arriving);
            reference::docparser::detail::mergeMissing(entry.items, arriving.items);
            dropped += arriving.items.size();
            localised.erase(over);
            mergeFreedBlocks();
            state.PauseTiming();
        });
        // What was not replaced is the result's, and freeing that is no part of the call.
        english.clear();
        localised.clear();
        mergeFreedBlocks();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size.bytes));
    state.counters["MB"] = static_cast<double>(size.bytes) / 1e6;
    state.counters["dropped"] = static_cast<double>(dropped);
}

void BM_GetDocExampleFiles(benchmark::State& state) {
    const zwbench::Tree& tree = treeOf(state.range(0));
    const TreeSize size = sizeOf(tree);
    const std::u16string root = zwhost::unicode::utf8ToUtf16(tree.root.string());
    std::size_t catalogues = 0;
    for (auto _ : state) {
        example::docparser::ExampleCatalogues result =
            example::docparser::DocExampleParser::getDocExampleFiles(root);
        discardUntimed(state, std::move(result), [&](const auto& held) { catalogues = held.size(); });
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size.bytes));
    state.counters["MB"] = static_cast<double>(size.bytes) / 1e6;
    state.counters["catalogues"] = static_cast<double>(catalogues);
    labelTree(state);

    // One more call, untimed, for the memory: the most it held at once against what it gives.
    std::int64_t resultBytes = 0;
    std::int64_t peakBytes = 0;
    {
        const zwbench::heap::Window window;
        const example::docparser::ExampleCatalogues result =
            example::docparser::DocExampleParser::getDocExampleFiles(root);
        resultBytes = window.liveBytes();
        peakBytes = window.peakBytes();
    }
    state.counters["peak_MB"] = static_cast<double>(peakBytes) / 1e6;
    state.counters["result_MB"] = static_cast<double>(resultBytes) / 1e6;
    state.counters["largest_MB"] = static_cast<double>(size.largest) / 1e6;
}

/** Where the full call's time goes beyond the floor: finding the products under the root
    (`getAllProducts`, which the floor, given its list of files, does not do), and the drive
    with a parse that keeps nothing (finding, opening and reading every catalogue, packages
    vetted), against the floor's reading alone (`BM_FloorReading`). */
void BM_FindProducts(benchmark::State& state) {
    const zwbench::Tree& tree = treeOf(state.range(0));
    const TreeSize size = sizeOf(tree);
    const std::u16string root = zwhost::unicode::utf8ToUtf16(tree.root.string());
    const std::u16string suffix = zwhost::unicode::utf8ToUtf16(std::string("_") + zwbench::kCurrentLocale);
    const std::vector<std::u16string> locales = {u"ja_JP", u"ko_KR", u"zh_CN"};
    for (auto _ : state) {
        reference::docparser::AllProducts products =
            reference::docparser::DocResourceParser::getAllProducts(root, locales, suffix);
        discardUntimed(state, std::move(products));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size.bytes));
    labelTree(state);
}

void BM_ReadWithoutRecords(benchmark::State& state) {
    using Catalogues = example::docparser::ExampleCatalogues;
    const zwbench::Tree& tree = treeOf(state.range(0));
    const TreeSize size = sizeOf(tree);
    const std::u16string root = zwhost::unicode::utf8ToUtf16(tree.root.string());
    const reference::docparser::ParsingInfo<Catalogues>::JsonParsingFcn keepNothing =
        [](const std::string& text) {
            benchmark::DoNotOptimize(text.data());
            return Catalogues();
        };
    const reference::docparser::ParsingInfo<Catalogues>::IsInstalledFcn installed =
        [](const std::u16string&) { return true; };
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            reference::docparser::DocResourceParser::ParsingTools::parseMultipleProductFiles<Catalogues>(
                root, keepNothing, installed));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size.bytes));
    labelTree(state);
}

void BM_FloorReading(benchmark::State& state) {
    const zwbench::Tree& tree = treeOf(state.range(0));
    const TreeSize size = sizeOf(tree);
    for (auto _ : state) {
        forEachText(tree, [](const std::string& text) { benchmark::DoNotOptimize(text.data()); });
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size.bytes));
    labelTree(state);
}

/** The whole read done by plain code, the way a caller would write it without the library or
    the host: a std::filesystem walk, the floor's zip reader, the records of BM_BoostJsonRecords and a
   std::map merged by the same rules (packages first, a localised catalogue over an English one). */
example::docparser::ExampleCatalogues readPlainly(const fs::path& root) {
    const std::string current = std::string("_") + zwbench::kCurrentLocale + ".json";
    const auto wanted = [&](const std::string& name) {
        if (!name.ends_with(".json")) {
            return false;
        }
        for (const char* locale : {"_ja_JP.json", "_ko_KR.json", "_zh_CN.json"}) {
            if (name.ends_with(locale)) {
                return name.ends_with(current);
            }
        }
        return true;
    };
    std::vector<fs::path> packages;
    std::vector<fs::path> loose;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
        if (!entry.is_regular_file()) {
            continue;
        }
        const std::string name = entry.path().filename().string();
        if (name.ends_with(".zip") && wanted(name.substr(0, name.size() - 4) + ".json")) {
            packages.push_back(entry.path());
        } else if (wanted(name)) {
            loose.push_back(entry.path());
        }
    }
    std::sort(packages.begin(), packages.end());
    std::sort(loose.begin(), loose.end());
    example::docparser::ExampleCatalogues result;
    const auto merge = [&](const std::string& text, bool localised) {
        example::docparser::ExampleCatalogues parsed = zwbench::parseWithBoostJson(text);
        for (auto& [key, resource] : parsed) {
            const auto [held, added] = result.try_emplace(key, std::move(resource));
            if (!added) {
                if (localised) {
                    std::swap(held->second, resource);
                }
                held->second.items.merge(resource.items);
            }
        }
    };
    const auto localised = [&](const std::string& name) { return name.ends_with(current); };
    for (const fs::path& file : packages) {
        zwbench::readZipFloor(
            file, [&](std::string_view name) { return wanted(fs::path(name).filename().string()); },
            [&](std::string_view name, std::string&& text) { merge(text, localised(std::string(name))); });
    }
    for (const fs::path& file : loose) {
        merge(zwbench::readWholeFile(file), localised(file.filename().string()));
    }
    return result;
}

void BM_PlainReader(benchmark::State& state) {
    const zwbench::Tree& tree = treeOf(state.range(0));
    const TreeSize size = sizeOf(tree);
    std::size_t catalogues = 0;
    for (auto _ : state) {
        example::docparser::ExampleCatalogues result = readPlainly(tree.root);
        discardUntimed(state, std::move(result), [&](const auto& held) { catalogues = held.size(); });
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size.bytes));
    state.counters["MB"] = static_cast<double>(size.bytes) / 1e6;
    state.counters["catalogues"] = static_cast<double>(catalogues);
    labelTree(state);
}

/** The arguments of the realistic trees. */
void shapes(benchmark::internal::Benchmark* benchmark) {
    for (std::int64_t shape = 0; shape <= static_cast<std::int64_t>(zwbench::Shape::MediaLoose); ++shape) {
        benchmark->Arg(kFirstShape + shape);
    }
}

/** The arguments of the scaled base corpus, then of the realistic trees. */
void scalesAndShapes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1)->Arg(2)->Arg(4);
    shapes(benchmark);
}

/** The arguments of the scaled base corpus, then of the trees with localised catalogues. */
void scalesAndLocalisedShapes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1)->Arg(2)->Arg(4);
    for (const zwbench::Shape shape : {zwbench::Shape::Small400, zwbench::Shape::Small800,
                                       zwbench::Shape::Small1600, zwbench::Shape::Large20}) {
        benchmark->Arg(kFirstShape + static_cast<std::int64_t>(shape));
    }
}

// Two seconds of runs for each, as scripts/bench gives each benchmark a few short processes.
BENCHMARK(BM_RawBoostJsonParse)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_ParseExampleCatalogue)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_OwnedStringsFloor)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_NlohmannRecords)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_BoostJsonRecords)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_TreeFloor)->Apply(scalesAndShapes)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_TreeFloorWithStrings)->Apply(scalesAndShapes)->Unit(benchmark::kMillisecond)->MinTime(2.0);
// Each run parses the whole tree with the clock stopped, so a fixed number of runs keeps this short.
BENCHMARK(BM_DropReplacedRecords)
    ->Apply(scalesAndLocalisedShapes)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(10);
BENCHMARK(BM_GetDocExampleFiles)->Apply(scalesAndShapes)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_PlainReader)->Apply(shapes)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_FindProducts)->Apply(shapes)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_ReadWithoutRecords)->Apply(shapes)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_FloorReading)->Apply(shapes)->Unit(benchmark::kMillisecond)->MinTime(2.0);

} // namespace

int main(int argc, char** argv) {
    // Memory freed between runs stays with the process, so that no run pays the kernel for pages
    // that an earlier run gave back and another did not; which one that is depends on glibc's
    // sliding thresholds and the order of the runs, and it moved timings by up to 40 %.
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    // The trees hold English, Japanese and Chinese catalogues; Japanese is read, Chinese left out.
    zwhost::settings::setSupportedDocLocales({u"ja_JP", u"ko_KR", u"zh_CN"});
    zwhost::settings::setCurrentLocale(zwhost::unicode::utf8ToUtf16(zwbench::kCurrentLocale));
    // `docparser_bench --one-call=ARG` makes one full call on the tree of ARG between two marks
    // that scripts/bench finds in strace's output, and prints how many catalogues it read.
    if (argc == 2 && std::string_view(argv[1]).starts_with("--one-call=")) {
        const zwbench::Tree& tree = treeOf(std::stoll(argv[1] + std::strlen("--one-call=")));
        const std::u16string root = zwhost::unicode::utf8ToUtf16(tree.root.string());
        ::access("/zw-bench-call-begins", F_OK);
        const auto result = example::docparser::DocExampleParser::getDocExampleFiles(root);
        ::access("/zw-bench-call-ends", F_OK);
        std::size_t read = tree.looseFiles.size();
        for (const zwbench::PackageToRead& package : tree.packages) {
            read += package.entries.size();
        }
        std::printf("%zu\n", read);
        return result.empty() ? 1 : 0;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
