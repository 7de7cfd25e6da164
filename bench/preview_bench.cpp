// 'exampledoc preview' of one locale against 'exampledoc list --json' of the same locale and tree,
// timed in turn in one run: the preview reads what list reads, checks every catalogue for the
// findings it shows, and writes the page, and should take no more than twice as long. The check
// is timed beside them, since its cost is part of the preview's.

#include <unistd.h>

#include <chrono>
#include <fstream>
#include <limits>
#include <sstream>
#include <stdexcept>

#include <benchmark/benchmark.h>

#include "cli.hpp"
#include "corpus.hpp"

namespace {

namespace fs = std::filesystem;

// The milliseconds that one command line of exampledoc takes, its output thrown away; an exit
// status above `highest` is a failure (check's 1 says what it found, not that it failed).
double timeCommand(const std::vector<std::string>& args, int highest = 0) {
    std::ofstream out("/dev/null");
    std::ostringstream err;
    const auto start = std::chrono::steady_clock::now();
    const int status = exampledoc::run(args, out, err, false);
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
    if (status > highest) {
        throw std::runtime_error("exampledoc " + args.front() + " failed: " + err.str());
    }
    return took.count();
}

// A folder of this process under the temporary folder, removed with all it holds however the run ends.
struct WorkFolder {
    fs::path path = fs::temp_directory_path() / ("preview_bench-" + std::to_string(::getpid()));
    WorkFolder() = default;
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;
    ~WorkFolder() {
        std::error_code error;
        fs::remove_all(path, error);
    }
};

void BM_PreviewAgainstListJson(benchmark::State& state) {
    const char* cache = std::getenv("ZW_BENCH_CACHE");
    const zwbench::Tree tree = zwbench::generateTree(
        cache != nullptr && *cache != '\0' ? fs::path(cache) : fs::temp_directory_path() / "docparser_bench",
        zwbench::Shape::Large20);
    // The generated tree is a folder of catalogues; the tool takes the documentation root above it.
    const WorkFolder folder;
    const fs::path& work = folder.path;
    fs::create_directories(work / "root/docCatalog");
    fs::create_directory_symlink(fs::absolute(tree.root), work / "root/docCatalog/exampleapi");
    const std::string root = (work / "root").string();
    const std::string locale = zwbench::kCurrentLocale;
    const std::vector<std::string> list = {"list", "--json", "--root", root, "--locale", locale};
    const std::vector<std::string> check = {"check", "--root", root, "--locale", locale};
    const std::vector<std::string> preview = {
        "preview", "--root", root, "--locale", locale, "--out", (work / "out").string(), "--force"};
    // Each judged by its fastest turn: other work on the machine only ever adds time.
    double listBest = std::numeric_limits<double>::infinity();
    double previewBest = listBest;
    double checkBest = listBest;
    for (auto _ : state) {
        listBest = std::min(listBest, timeCommand(list));
        previewBest = std::min(previewBest, timeCommand(preview));
        checkBest = std::min(checkBest, timeCommand(check, 1));
    }
    const double ratio = previewBest / listBest;
    state.counters["list_ms"] = listBest;
    state.counters["preview_ms"] = previewBest;
    state.counters["preview_per_list"] = ratio;
    // The findings shown on the page are the check's: what it costs, the preview costs too.
    state.counters["check_ms"] = checkBest;
    if (ratio > 2.0) {
        const std::string message = "preview takes " + std::to_string(ratio) +
                                    " times as long as list --json (" + std::to_string(previewBest) +
                                    " ms against " + std::to_string(listBest) + " ms; check takes " +
                                    std::to_string(checkBest) + " ms); the target is 2";
        state.SkipWithError(message.c_str());
    }
}

BENCHMARK(BM_PreviewAgainstListJson)->Iterations(3)->Unit(benchmark::kMillisecond);

} // namespace
