// What `exampledoc check` costs against what `list` costs on the same tree, on the shapes of
// catalogue that once made check slower than reading by far: each byte must be looked at a
// bounded number of times, so check stays within four times list and twice its memory.

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include <unistd.h>

#include <benchmark/benchmark.h>

#include "allocation_counter.hpp"
#include "example/docparser/doc_example_parser.hpp"
#include "tree_check.hpp"
#include "zwhost/settings.hpp"
#include "zwhost/unicode.hpp"

namespace {

namespace fs = std::filesystem;

// Appends an entry of index `index`, with `extra` members, to `items`.
void addEntry(std::string& items, std::size_t index, std::string_view extra) {
    if (!items.empty()) {
        items += ',';
    }
    items += R"({"name":"n)";
    items += std::to_string(index);
    items += R"(","component":"c","title":"t","thumbnail":"x.png")";
    items += extra;
    items += '}';
}

std::string catalogue(std::string_view headerExtra, const std::string& items) {
    std::string text = R"({"header":{"helpFolder":"h")";
    text += headerExtra;
    text += R"(},"exampleItems":[)";
    text += items;
    text += "]}";
    return text;
}

// A valid catalogue whose one entry has an ignored member with a name of `scale` MB and an
// unknown kind, among entries that fill it to twice that.
std::string longMemberName(std::size_t scale) {
    std::string extra = R"(,"exampleType":"Demo",")";
    extra.append(scale << 20, 'k');
    extra += R"(":1)";
    std::string items;
    addEntry(items, 0, extra);
    for (std::size_t i = 1; items.size() < (scale << 21); ++i) {
        addEntry(items, i, R"(,"description":"filler text of an example")");
    }
    return catalogue("", items);
}

// A valid catalogue with a header member of `scale` MB and 2,000 entries per MB of no kind.
std::string largeHeader(std::size_t scale) {
    std::string items;
    for (std::size_t i = 0; i < 2000 * scale; ++i) {
        addEntry(items, i, "");
    }
    std::string notes = R"(,"notes":")";
    notes.append(scale << 20, 'h');
    notes += '"';
    return catalogue(notes, items);
}

// A catalogue refused for an entry of 150,000 members per scale and no title.
std::string wideBadEntry(std::size_t scale) {
    std::string entry = R"({"name":"n","component":"c","thumbnail":"x")";
    for (std::size_t i = 0; i < 150000 * scale; ++i) {
        entry += R"(,"m)";
        entry += std::to_string(i);
        entry += R"(":0)";
    }
    entry += '}';
    return catalogue("", entry);
}

void compare(benchmark::State& state, std::string (*shape)(std::size_t)) {
    std::string name = "check_cost_bench_";
    name += std::to_string(::getpid());
    const fs::path root = fs::temp_directory_path() / name;
    fs::create_directories(root / "h");
    std::ofstream(root / "h" / "examples.json", std::ios::binary)
        << shape(static_cast<std::size_t>(state.range(0)));
    zwhost::settings::setCurrentLocale(u"ja_JP");
    exampledoc::TreeScope scope;
    scope.root = zwhost::unicode::utf8ToUtf16(root.string());
    scope.docLocales = zwhost::settings::supportedDocLocales();
    scope.checked = {u"ja_JP"};

    using Clock = std::chrono::steady_clock;
    Clock::duration list{};
    Clock::duration check{};
    for (auto _ : state) {
        const auto start = Clock::now();
        benchmark::DoNotOptimize(example::docparser::DocExampleParser::getDocExampleFiles(scope.root));
        const auto middle = Clock::now();
        benchmark::DoNotOptimize(exampledoc::checkTree(scope));
        list += middle - start;
        check += Clock::now() - middle;
    }
    std::int64_t listPeak = 0;
    std::int64_t checkPeak = 0;
    {
        const zwbench::heap::Window window;
        benchmark::DoNotOptimize(example::docparser::DocExampleParser::getDocExampleFiles(scope.root));
        listPeak = window.peakBytes();
    }
    {
        const zwbench::heap::Window window;
        benchmark::DoNotOptimize(exampledoc::checkTree(scope));
        checkPeak = window.peakBytes();
    }
    fs::remove_all(root);
    const double seconds =
        std::chrono::duration<double>(check).count() / static_cast<double>(state.iterations());
    const double ratio =
        std::chrono::duration<double>(check).count() / std::chrono::duration<double>(list).count();
    const double memory = static_cast<double>(checkPeak) / static_cast<double>(listPeak);
    state.counters["check_over_list"] = ratio;
    state.counters["memory_over_list"] = memory;
    if ((seconds > 1.0 && ratio > 4.0) || memory > 2.0) {
        state.SkipWithError("check costs more than max(1 s, 4 times list) or twice list's memory");
    }
}

void BM_CheckLongMemberName(benchmark::State& state) {
    compare(state, longMemberName);
}
void BM_CheckLargeHeader(benchmark::State& state) {
    compare(state, largeHeader);
}
void BM_CheckWideBadEntry(benchmark::State& state) {
    compare(state, wideBadEntry);
}

BENCHMARK(BM_CheckLongMemberName)->Arg(1)->Arg(4)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_CheckLargeHeader)->Arg(1)->Arg(4)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_CheckWideBadEntry)->Arg(1)->Arg(4)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace
