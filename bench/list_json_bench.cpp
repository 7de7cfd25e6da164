// The memory that 'exampledoc list --json' holds at once, against the catalogue bytes it reads;
// and what 'exampledoc list' costs on the realistic trees, beside BM_GetDocExampleFiles.

#include <algorithm>
#include <cstdlib>
#include <ostream>

#include <benchmark/benchmark.h>

#include "allocation_counter.hpp"
#include "commands.hpp"
#include "corpus.hpp"
#include "json_output.hpp"
#include "options.hpp"
#include "zip_floor.hpp"
#include "zwhost/unicode.hpp"

namespace {

namespace fs = std::filesystem;

fs::path cacheFolder() {
    const char* cache = std::getenv("ZW_BENCH_CACHE");
    return cache != nullptr && *cache != '\0' ? fs::path(cache)
                                              : fs::temp_directory_path() / "docparser_bench";
}

// Counts what is written to it and keeps nothing.
class CountingBuffer : public std::streambuf {
public:
    std::uint64_t written = 0;

protected:
    int_type overflow(int_type c) override {
        ++written;
        return traits_type::not_eof(c);
    }
    std::streamsize xsputn(const char*, std::streamsize count) override {
        written += static_cast<std::uint64_t>(count);
        return count;
    }
};

// The bytes of every catalogue that a read of `tree` takes: loose files and package entries.
std::uint64_t bytesRead(const zwbench::Tree& tree) {
    std::uint64_t bytes = 0;
    for (const fs::path& file : tree.looseFiles) {
        bytes += fs::file_size(file);
    }
    for (const zwbench::PackageToRead& package : tree.packages) {
        const auto wanted = [&](std::string_view name) {
            return std::find(package.entries.begin(), package.entries.end(), name) != package.entries.end();
        };
        zwbench::readZipFloor(package.file, wanted,
                              [&](std::string_view, std::string&& text) { bytes += text.size(); });
    }
    return bytes;
}

void listJson(const std::u16string& root, std::ostream& out) {
    exampledoc::writeCataloguesJson(out, example::docparser::DocExampleParser::getDocExampleFiles(root));
}

void BM_ListJson(benchmark::State& state) {
    const zwbench::Tree tree = zwbench::generateTree(cacheFolder(), static_cast<unsigned>(state.range(0)));
    const std::u16string root = zwhost::unicode::utf8ToUtf16(tree.root.string());
    const std::uint64_t read = bytesRead(tree);
    CountingBuffer buffer;
    std::ostream out(&buffer);
    for (auto _ : state) {
        listJson(root, out);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(read));

    std::int64_t peakBytes = 0;
    {
        const zwbench::heap::Window window;
        listJson(root, out);
        peakBytes = window.peakBytes();
    }
    const double ratio = static_cast<double>(peakBytes) / static_cast<double>(read);
    state.counters["MB"] = static_cast<double>(read) / 1e6;
    state.counters["peak_MB"] = static_cast<double>(peakBytes) / 1e6;
    state.counters["peak_per_read"] = ratio;
    if (ratio > 1.5) {
        state.SkipWithError("list --json holds more than 1.5 times the bytes it reads");
    }
}

/** The whole of 'exampledoc list' on a realistic tree (argument 100 + zwbench::Shape, as for
    BM_GetDocExampleFiles), its listing written to a stream that keeps nothing: the read, with
    the count of what it skipped, and the listing. A documentation root beside the tree holds it
    where the tool looks for catalogues. */
void BM_ListCommand(benchmark::State& state) {
    const auto shape = static_cast<zwbench::Shape>(state.range(0) - 100);
    const zwbench::Tree tree = zwbench::generateTree(cacheFolder(), shape);
    const fs::path documentation = cacheFolder() / ("list-root-" + zwbench::shapeName(shape));
    const fs::path exampleRoot = documentation / "docCatalog" / "exampleapi";
    if (!fs::exists(fs::symlink_status(exampleRoot))) {
        fs::create_directories(exampleRoot.parent_path());
        fs::create_directory_symlink(tree.root, exampleRoot);
    }
    exampledoc::Options options;
    options.root = documentation.string();
    CountingBuffer buffer;
    std::ostream out(&buffer);
    std::ostream err(&buffer);
    for (auto _ : state) {
        exampledoc::listCommand(options, out, err);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytesRead(tree)));
    state.SetLabel(zwbench::shapeName(shape));
}

/** The full call alone on the same tree, its result freed with the clock running as list frees
    it: what list costs beyond this is its own. */
void BM_FullCallFreed(benchmark::State& state) {
    const auto shape = static_cast<zwbench::Shape>(state.range(0) - 100);
    const zwbench::Tree tree = zwbench::generateTree(cacheFolder(), shape);
    const std::u16string root = zwhost::unicode::utf8ToUtf16(tree.root.string());
    for (auto _ : state) {
        benchmark::DoNotOptimize(example::docparser::DocExampleParser::getDocExampleFiles(root).size());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytesRead(tree)));
    state.SetLabel(zwbench::shapeName(shape));
}

BENCHMARK(BM_ListJson)->Arg(1)->Arg(4)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_ListCommand)->DenseRange(100, 105)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_FullCallFreed)->DenseRange(100, 105)->Unit(benchmark::kMillisecond)->MinTime(2.0);

} // namespace
