#!/usr/bin/env python3
"""Prints the table of docparser_bench runs (Google Benchmark JSON) with the ratios they are judged by.

Usage: report.py RESULTS.json... [syscalls.json]
Each benchmark is judged by its run of least CPU time over all the files; the median is shown beside it.
syscalls.json, written by scripts/bench, maps each realistic tree's argument to the system calls of
one full call, the catalogues it read and how many of the calls were the allocator's.
"""
import json
import re
import sys

# The order of the tables: the single catalogue, then the trees.
FAMILIES = ["BM_RawBoostJsonParse", "BM_ParseExampleCatalogue", "BM_OwnedStringsFloor", "BM_NlohmannRecords",
            "BM_BoostJsonRecords", "BM_TreeFloor", "BM_TreeFloorWithStrings", "BM_DropReplacedRecords",
            "BM_GetDocExampleFiles", "BM_PlainReader", "BM_FindProducts", "BM_ReadWithoutRecords",
            "BM_FloorReading", "BM_FullCallFreed", "BM_ListCommand"]

# The realistic trees, by their benchmark argument (zwbench::Shape from 100 on), and whether the
# full call is held to 1.25 times the floor with strings on them.
SHAPES = {"100": ("small400", True), "101": ("small800", True), "102": ("small1600", True),
          "103": ("large20", True), "104": ("packages2000", True), "105": ("loose2000", False),
          "106": ("media", False), "107": ("medialoose", False)}


def order(name):
    family, _, rest = name.partition("/")
    argument = rest.split("/")[0]
    return (FAMILIES.index(family) if family in FAMILIES else len(FAMILIES), family,
            int(argument) if argument.isdigit() else 0)


def main() -> int:
    runs = {}
    syscalls = {}
    for path in sys.argv[1:]:
        with open(path, encoding="utf-8") as handle:
            if path.endswith("syscalls.json"):
                syscalls = json.load(handle)
                continue
            for run in json.load(handle)["benchmarks"]:
                if run.get("error_occurred"):
                    print(f"{run['run_name']} failed: {run.get('error_message', '')}", file=sys.stderr)
                elif run.get("run_type") == "iteration":
                    runs.setdefault(run["run_name"], []).append(run)
    if not runs:
        print("report.py: no benchmark results", file=sys.stderr)
        return 2
    # The machines these run on are shared: other work only ever adds to a run's time, so the
    # least of the runs comes closest to what the code itself costs.
    # Options fixed at registration are part of a run's name; the tables leave them out.
    ordered = {re.sub(r"/(min_time|iterations):[^/]*", "", name):
               sorted(group, key=lambda run: run["cpu_time"])
               for name, group in sorted(runs.items(), key=lambda item: order(item[0]))}
    rows = {name: group[0] for name, group in ordered.items()}
    medians = {name: group[len(group) // 2] for name, group in ordered.items()}

    def throughput(name):
        return rows[name]["bytes_per_second"] / 1e6

    # CPU time: the machines these run on are shared, and waiting for a core is no cost of ours.
    def millis(name):
        return rows[name]["cpu_time"]

    def peakRatio(scale):
        row = rows[f"BM_GetDocExampleFiles/{scale}"]
        return row["peak_MB"] / (row["result_MB"] + 4 * row["largest_MB"])

    print("| Benchmark | CPU time (ms) | Median (ms) | MB/s | Notes |")
    print("|---|---:|---:|---:|---|")
    for name, row in rows.items():
        notes = []
        if row.get("label"):
            notes.append(row["label"])
        for counter in ("MB", "peak_MB", "result_MB", "largest_MB"):
            if counter in row:
                notes.append(f"{counter}={row[counter]:.1f}")
        print(f"| {name} | {millis(name):.1f} | {medians[name]['cpu_time']:.1f} | {throughput(name):.0f} "
              f"| {' '.join(notes)} |")

    def measured(ratio):
        """`ratio()`, or None where a filtered run lacks one of its rows: those ratios are left out."""
        try:
            return ratio()
        except KeyError:
            return None

    checks = []

    def check(what, ratio, relation, target):
        if (value := measured(ratio)) is not None:
            checks.append((what, value, relation, target))

    for arg, language in (("0", "en"), ("1", "ja")):
        check(f"parse / raw JSON throughput ({language})",
              lambda: throughput(f"BM_ParseExampleCatalogue/{arg}") / throughput(f"BM_RawBoostJsonParse/{arg}"),
              ">=", 0.5)
        check(f"parse / nlohmann throughput ({language})",
              lambda: throughput(f"BM_ParseExampleCatalogue/{arg}") / throughput(f"BM_NlohmannRecords/{arg}"),
              ">=", 5.0)
    for arg, (shape, held) in SHAPES.items():
        if held:
            check(f"full call / floor with strings ({shape})",
                  lambda: millis(f"BM_GetDocExampleFiles/{arg}") / millis(f"BM_TreeFloorWithStrings/{arg}"),
                  "<=", 1.25)
        check(f"full call / plain reader ({shape})",
              lambda: millis(f"BM_GetDocExampleFiles/{arg}") / millis(f"BM_PlainReader/{arg}"), "<=", 1.0)
        if arg in syscalls:
            calls, catalogues, allocator = syscalls[arg]
            check(f"system calls per catalogue, the allocator's apart ({shape})",
                  lambda: (calls - allocator) / catalogues, "<=", 8.0)
    # Two packages that hold a 600 MiB media file beside their catalogue cost what those catalogues
    # cost loose.
    check("full call with media packages / with their catalogues loose",
          lambda: millis("BM_GetDocExampleFiles/106") / millis("BM_GetDocExampleFiles/107"), "<=", 1.25)
    for low, high in (("1", "2"), ("2", "4")):
        check(f"full call time {high}x / {low}x",
              lambda: millis(f"BM_GetDocExampleFiles/{high}") / millis(f"BM_GetDocExampleFiles/{low}"), "<=", 2.2)
    for scale in ("1", "2", "4"):
        check(f"peak / (result + 4 x largest file) ({scale}x)", lambda: peakRatio(scale), "<=", 1.0)

    # What the targets could come to at best: the floors plus making the owned strings alone, and
    # for the full call also destroying the English records that a localisation replaces.
    bounds = []

    def bound(what, ratio, target):
        if (value := measured(ratio)) is not None:
            bounds.append((what, value, target))

    for arg, language in (("0", "en"), ("1", "ja")):
        least = lambda: millis(f"BM_RawBoostJsonParse/{arg}") + millis(f"BM_OwnedStringsFloor/{arg}")
        bound(f"parse / raw JSON throughput ({language})",
              lambda: millis(f"BM_RawBoostJsonParse/{arg}") / least(), ">= 0.5")
        bound(f"parse / nlohmann throughput ({language})",
              lambda: millis(f"BM_NlohmannRecords/{arg}") / least(), ">= 5.0")
    for arg, (shape, held) in SHAPES.items():
        if held:
            bound(f"full call / floor with strings ({shape})",
                  lambda: (millis(f"BM_TreeFloorWithStrings/{arg}") + millis(f"BM_DropReplacedRecords/{arg}"))
                  / millis(f"BM_TreeFloorWithStrings/{arg}"), "<= 1.25")
    for scale in ("1", "2", "4"):
        bound(f"full call / floor time ({scale}x)",
              lambda: (millis(f"BM_TreeFloorWithStrings/{scale}") + millis(f"BM_DropReplacedRecords/{scale}"))
              / millis(f"BM_TreeFloor/{scale}"), "<= 1.3")

    if bounds:
        print()
        print("| Best possible: floor, owned strings, replaced records dropped | Ratio | Target |")
        print("|---|---:|---:|")
        for what, value, target in bounds:
            print(f"| {what} | {value:.2f} | {target} |")

    # The same records made by plain code over the same parse, beside the library's parser.
    plain = []
    for arg, language in (("0", "en"), ("1", "ja")):
        for what, baseline, target in (("raw JSON", "BM_RawBoostJsonParse", ">= 0.5"),
                                       ("nlohmann", "BM_NlohmannRecords", ">= 5.0")):
            ratios = measured(lambda: (millis(f"{baseline}/{arg}") / millis(f"BM_BoostJsonRecords/{arg}"),
                                       millis(f"{baseline}/{arg}") / millis(f"BM_ParseExampleCatalogue/{arg}")))
            if ratios is not None:
                plain.append((f"parse / {what} throughput ({language})", *ratios, target))
    if plain:
        print()
        print("| Plain code over the same parse, in place of the parser | Plain code | Library | Target |")
        print("|---|---:|---:|---:|")
        for what, value, library, target in plain:
            print(f"| {what} | {value:.2f} | {library:.2f} | {target} |")

    trees = []
    for arg, (shape, _) in SHAPES.items():
        row = measured(lambda: (millis(f"BM_GetDocExampleFiles/{arg}"), millis(f"BM_TreeFloor/{arg}"),
                                millis(f"BM_TreeFloorWithStrings/{arg}"), millis(f"BM_PlainReader/{arg}"),
                                rows[f"BM_GetDocExampleFiles/{arg}"]["MB"]))
        if row is not None:
            calls = syscalls.get(arg)
            trees.append((shape, *row, f"{(calls[0] - calls[2]) / calls[1]:.2f} + {calls[2] / calls[1]:.2f}"
                          if calls else "-"))
    if trees:
        print()
        print("| Tree | MB | Full call (ms) | / floor | / floor with strings | / plain reader "
              "| Calls per catalogue (reading + allocator) |")
        print("|---|---:|---:|---:|---:|---:|---:|")
        for shape, full, floor, strings, plainReader, megabytes, calls in trees:
            print(f"| {shape} | {megabytes:.1f} | {full:.1f} | {full / floor:.2f} | {full / strings:.2f} "
                  f"| {full / plainReader:.2f} | {calls} |")

    # Where the full call's time goes beyond the floor with strings: finding the products, which
    # the floor is given; reading them beyond the floor's reading; the rest is records and merge.
    # And what list costs beside the full call, both freeing their result.
    parts = []
    for arg, (shape, _) in SHAPES.items():
        row = measured(lambda: (millis(f"BM_GetDocExampleFiles/{arg}") - millis(f"BM_TreeFloorWithStrings/{arg}"),
                                millis(f"BM_FindProducts/{arg}"),
                                millis(f"BM_ReadWithoutRecords/{arg}") - millis(f"BM_FloorReading/{arg}")))
        listing = measured(lambda: millis(f"BM_ListCommand/{arg}") / millis(f"BM_FullCallFreed/{arg}"))
        if row is not None or listing is not None:
            parts.append((shape, row, listing))
    if parts:
        print()
        print("| Tree | Beyond floor with strings (ms) | Finding products (ms) | Reading beyond the floor's, "
              "finding included (ms) | list / full call, both freeing |")
        print("|---|---:|---:|---:|---:|")
        for shape, row, listing in parts:
            cells = [f"{value:.1f}" for value in row] if row else ["-"] * 3
            print(f"| {shape} | {' | '.join(cells)} | {f'{listing:.2f}' if listing else '-'} |")

    if not checks:
        return 0
    print()
    print("| Ratio | Measured | Target | Met |")
    print("|---|---:|---:|---|")
    failed = 0
    for what, value, relation, target in checks:
        met = value >= target if relation == ">=" else value <= target
        failed += not met
        print(f"| {what} | {value:.3g} | {relation} {target} | {'yes' if met else 'NO'} |")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
