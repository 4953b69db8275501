#!/usr/bin/env python3
"""Prints the results of Google Benchmark as one table, with ratios to the baseline.

usage: report.py [--complete] FILE...
       report.py --median NAME FILE...

Times are medians over the repetitions; the spread is the distance of the quartiles. A ratio
compares the medians of one run. Fails if a benchmark reported an error or if a lifecycle
allocates more often than it may; with --complete also if one of the benchmarks named on
standard input is missing. --median prints one benchmark's median alone.
"""

import json
import statistics
import sys

LIBRARY = "infosync/"
BASELINES = ("by_hand/", "by_hand_by_field/")

# Heap allocations that may not be exceeded. They do not depend on the machine's load.
MOST_ALLOCATIONS = {
    "infosync/lifecycle/short_names/4": 175,
    "infosync/lifecycle/long_names/4": 358,
    "infosync/operation/snapshotRequestInfoFlush": 101,
}


def read_runs(paths):
    """The repetitions of each benchmark, by its name, and what the files say of the machine."""
    runs = {}
    context = {}
    for path in paths:
        with open(path, encoding="utf-8") as file:
            text = file.read()
        if not text:
            continue  # no benchmark of that program was asked for
        results = json.loads(text)
        context = results["context"]
        for run in results["benchmarks"]:
            if run["run_type"] == "iteration":
                runs.setdefault(run["name"], []).append(run)
    return runs, context


def faults(runs, expected):
    for name in expected:
        if name not in runs:
            yield f"{name}: did not run"
    for name, repetitions in runs.items():
        for run in repetitions:
            if run.get("error_occurred"):
                yield f"{name}: {run['error_message']}"
    for name, most in MOST_ALLOCATIONS.items():
        for run in runs.get(name, []):
            if run.get("allocs", 0) > most:
                yield f"{name}: {run['allocs']} allocations, more than {most}"


def times(repetitions):
    """Nanoseconds per unit. The processor's time, which another program's load does not add to;
    the elapsed time where several threads work."""
    clock = "real_time" if "real_time" in repetitions[0]["name"] else "cpu_time"
    return [run[clock] for run in repetitions]


def spread(values):
    if len(values) < 2:
        return 0.0
    low, _, high = statistics.quantiles(values, n=4)
    return high - low


def cells(repetitions):
    values = times(repetitions)
    first = repetitions[0]
    return (f"{statistics.median(values):12.1f}{spread(values):10.1f}"
            f"{first.get('allocs', 0):8.1f}{first.get('heap_bytes', 0):8.0f}")


def ratio(repetitions, baseline):
    return statistics.median(times(repetitions)) / statistics.median(times(baseline))


def print_table(runs, context):
    repetitions = max(len(repetitions) for repetitions in runs.values())
    print(f"{repetitions} repetitions, {context['num_cpus']} processors at "
          f"{context['mhz_per_cpu']} MHz, load {context['load_avg'][:1]}\n")
    head = f"{'ns':>12}{'+-':>10}{'allocs':>8}{'bytes':>8}"
    print(f"{'':44}{head} |{head}  {'baseline':17}ratio")
    for name in sorted(runs, key=lambda name: name.split("/", 1)[::-1]):
        if name.startswith(BASELINES):
            continue
        line = f"{name.removeprefix(LIBRARY):44}{cells(runs[name])}"
        if not name.startswith(LIBRARY):
            print(line)
            continue
        for baseline in BASELINES:
            theirs = runs.get(name.replace(LIBRARY, baseline))
            if theirs is None:
                continue
            print(f"{line} |{cells(theirs)}  {baseline[:-1]:16}{ratio(runs[name], theirs):6.2f}")


def main(arguments):
    if arguments[:1] == ["--median"]:
        print(statistics.median(times(read_runs(arguments[2:])[0][arguments[1]])))
        return 0
    complete = arguments[:1] == ["--complete"]
    expected = sys.stdin.read().split() if complete else []
    runs, context = read_runs(arguments[complete:])
    found = list(faults(runs, expected))
    if not runs:
        found.append("no results")
    if not found:
        print_table(runs, context)
    for fault in found:
        print(fault, file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
