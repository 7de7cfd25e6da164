// The memory that 'exampledoc list --json' holds at once, against the catalogue bytes it reads.

#include <algorithm>
#include <cstdlib>
#include <ostream>

#include <benchmark/benchmark.h>

#include "allocation_counter.hpp"
#include "corpus.hpp"
#include "json_output.hpp"
#include "zip_floor.hpp"
#include "zwhost/unicode.hpp"

namespace {

namespace fs = std::filesystem;

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
    const char* cache = std::getenv("ZW_BENCH_CACHE");
    const zwbench::Tree tree = zwbench::generateTree(
        cache != nullptr && *cache != '\0' ? fs::path(cache) : fs::temp_directory_path() / "docparser_bench",
        static_cast<unsigned>(state.range(0)));
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

BENCHMARK(BM_ListJson)->Arg(1)->Arg(4)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace
