#!/usr/bin/env python3
"""Prints what run.sh has measured as one table.

usage: report.py --names "REFERENCE LIBRARY..." FOLDER

FOLDER holds, for each library, results of Google Benchmark (NAME.ROUND.json) or instructions
(NAME.instructions), or both; the names of the benchmarks that must be among them may stand in a
file `expected`. Times are medians over the rounds; the spread is the distance of the quartiles.
A ratio compares a library's median with that of the reference. Fails if a benchmark reported an
error or is missing, or if an operation allocates more often than it may.
"""

import argparse
import json
import pathlib
import statistics
import sys

# Heap allocations of the library that may not be exceeded. They do not depend on the machine.
MOST_ALLOCATIONS = {
    "lifecycle/short_names/4": 74,
    "lifecycle/long_names/4": 179,
    "operation/snapshotRequestInfoFlush": 3,
}
# A lifecycle's report: eight parameters, the submit event, two events of each of eight nodes,
# and the closing call.
REPORT_CALLS = 8 + 1 + 16 + 1
# What the baseline does not do by itself.
NOT_BY_HAND = ("empty_loop", "log_line/", "bare_write")


class Library:
    """What was measured with one library."""

    def __init__(self, folder, name):
        self.name = name
        self.rounds = {}  # by benchmark: one result per round
        self.instructions = {}
        self.report_calls = {}  # as counted together with the instructions
        self.context = {}
        for path in sorted(folder.glob(f"{name}.*.json")):
            text = path.read_text(encoding="utf-8")
            results = json.loads(text) if text else {"context": {}, "benchmarks": []}
            self.context = results["context"]
            for run in results["benchmarks"]:
                if run["run_type"] == "iteration" and not self.is_foreign(run["name"]):
                    self.rounds.setdefault(run["name"], []).append(run)
        counts = folder / f"{name}.instructions"
        if counts.exists():
            for line in counts.read_text(encoding="utf-8").splitlines():
                benchmark, instructions, calls = line.split()
                self.instructions[benchmark] = int(instructions)
                self.report_calls[benchmark] = int(calls)

    def is_foreign(self, benchmark):
        return self.name == "by_hand" and benchmark.startswith(NOT_BY_HAND)

    def benchmarks(self):
        return self.rounds.keys() | self.instructions.keys()

    def times(self, benchmark):
        """Nanoseconds per round. The processor's time, which another program's load does not
        add to; the elapsed time where several threads work."""
        clock = "real_time" if "real_time" in benchmark else "cpu_time"
        return [run[clock] for run in self.rounds.get(benchmark, [])]

    def time(self, benchmark):
        times = self.times(benchmark)
        return statistics.median(times) if times else None

    def counted(self, benchmark, counter):
        return [run[counter] for run in self.rounds.get(benchmark, []) if counter in run]

    def faults(self, expected):
        for benchmark in expected:
            if benchmark not in self.rounds and not self.is_foreign(benchmark):
                yield f"{benchmark}: did not run"
        for benchmark, runs in self.rounds.items():
            for run in runs:
                if run.get("error_occurred"):
                    yield f"{benchmark}: {run['error_message']}"
        if self.name in ("infosync", "recorded"):
            for benchmark, most in MOST_ALLOCATIONS.items():
                for count in self.counted(benchmark, "allocs"):
                    if round(count) > most:
                        yield f"{benchmark}: {count} allocations, more than {most}"
        if self.name != "everything":  # which leaves the reports out
            for benchmark in self.benchmarks():
                if "lifecycle/" not in benchmark or benchmark.startswith("threads/"):
                    continue  # the threads share one count
                calls = self.counted(benchmark, "service_calls")
                calls += [self.report_calls[benchmark]] if benchmark in self.report_calls else []
                for count in set(calls) - {REPORT_CALLS}:
                    yield f"{benchmark}: the service received {count} calls, not {REPORT_CALLS}"


def spread(values):
    if len(values) < 2:
        return None
    low, _, high = statistics.quantiles(values, n=4)
    return high - low


def cell(width, digits, value):
    return f"{'' if value is None else format(value, f'.{digits}f'):>{width}}"


def ratio(value, reference):
    return value / reference if value is not None and reference else None


def row(library, reference, benchmark):
    time = library.time(benchmark)
    instructions = library.instructions.get(benchmark)
    allocations = library.counted(benchmark, "allocs") or [None]
    return (f"{library.name:15}{cell(12, 1, time)}{cell(10, 1, spread(library.times(benchmark)))}"
            f"{cell(8, 3, ratio(time, reference.time(benchmark)))}{cell(13, 0, instructions)}"
            f"{cell(8, 3, ratio(instructions, reference.instructions.get(benchmark)))}"
            f"{cell(8, 1, allocations[0])}")


def print_table(libraries):
    context = libraries[0].context
    if context:
        rounds = max(len(runs) for runs in libraries[0].rounds.values())
        print(f"{rounds} rounds, {context['num_cpus']} processors at {context['mhz_per_cpu']} MHz, "
              f"load {context['load_avg'][:1]}; ratios to {libraries[0].name}\n")
    print(f"{'':40}{'':15}{'ns':>12}{'+-':>10}{'ratio':>8}{'instructions':>13}{'ratio':>8}"
          f"{'allocs':>8}")
    for benchmark in sorted(set().union(*(library.benchmarks() for library in libraries))):
        label = benchmark
        for library in libraries:
            if benchmark in library.benchmarks():
                print(f"{label:40}{row(library, libraries[0], benchmark)}")
                label = ""


def write_times(library):
    """The time of a bare write as a function of its length: a straight line. None without two."""
    sizes = {name: int(name.split("/")[1]) for name in library.rounds if "bare_write" in name}
    if len(sizes) < 2:
        return None
    slope, least = statistics.linear_regression(list(sizes.values()),
                                                [library.time(name) for name in sizes])
    return lambda size: least + slope * size


def print_recording(plain, recorded):
    """What recording adds to a call, over the bare write of a line as long as its own."""
    write = write_times(recorded)
    if write is None:
        return
    print(f"\n{'recorded calls: what each takes longer':40}{'ns':>12}{'bytes':>8}{'writes':>8}")
    for benchmark in sorted(recorded.rounds):
        calls = recorded.counted(benchmark, "calls")
        if calls and not benchmark.startswith("threads/"):
            longer = (recorded.time(benchmark) - plain.time(benchmark)) / calls[0]
            size = statistics.median(recorded.counted(benchmark, "written")) / calls[0]
            print(f"{benchmark:40}{longer:12.1f}{size:8.0f}{longer / write(size):8.2f}")


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("--names", type=str.split, required=True)
    parser.add_argument("folder", type=pathlib.Path)
    arguments = parser.parse_args()
    libraries = [Library(arguments.folder, name) for name in arguments.names]
    list_of_expected = arguments.folder / "expected"
    expected = (list_of_expected.read_text(encoding="utf-8").split()
                if list_of_expected.exists() else [])
    found = [f"{library.name}: {fault}" for library in libraries
             for fault in library.faults(expected)]
    found += [f"{library.name}: no results" for library in libraries if not library.benchmarks()]
    if any(library.benchmarks() for library in libraries):
        print_table(libraries)
    if libraries[-1].name == "recorded" and not found:
        print_recording(libraries[-2], libraries[-1])
    for fault in found:
        print(f"bench: {fault}", file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
