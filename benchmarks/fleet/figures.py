"""The documented figures, computed from rows by nothing but this."""

import collections
import json
import os

FEWEST = 20  # values that a p95 is made of


def read(folder, name):
    with open(os.path.join(folder, name), encoding="utf-8") as file:
        for line in file:
            yield json.loads(line)


def p95(values):
    """As ClickHouse's quantileExact: the place, counted from 0, is 0.95 of their number, rounded
    down."""
    ordered = sorted(values)
    return ordered[min(int(0.95 * len(ordered)), len(ordered) - 1)]


class Figures:
    KINDS = ("vendor_errors", "node_time_outs", "node_errors", "error_texts", "results_missing")

    def __init__(self, folders):
        self.captures = 0
        self.nodes = 0
        self.by_build = collections.defaultdict(lambda: [0, 0])
        self.kinds = collections.defaultdict(collections.Counter)
        self.durations = collections.defaultdict(list)
        self.flushes = collections.defaultdict(list)
        self.run_captures = 0
        for folder in folders:
            self.add(folder)

    def add(self, folder):
        for row in read(folder, "captures.ndjson"):
            self.captures += 1
            counts = self.by_build[row["build"]]
            counts[0] += 1
            counts[1] += row["has_failed"]
            self.kinds[row["build"]].update(kind for kind in self.KINDS if row[kind] > 0)
            if "to_flush_us" in row:
                self.flushes[row["build"], row["cam_mode"]].append((row["to_flush_us"], row["name"]))
        for row in read(folder, "nodes.ndjson"):
            self.nodes += 1
            if "duration_us" in row:
                self.durations[row["node"], row["build"]].append(row["duration_us"])
        for row in read(folder, "run.ndjson"):
            self.run_captures += row["captures"]

    def failure_rate_by_build(self):
        return [[build, captures, failed, failed / captures]
                for build, (captures, failed) in sorted(self.by_build.items())]

    def p95_by_node_and_build(self):
        return [[node, build, len(values), p95(values)]
                for (node, build), values in sorted(self.durations.items())
                if len(values) >= FEWEST]

    def outliers(self):
        found = []
        for (build, mode), values in self.flushes.items():
            limit = p95(value for value, _ in values)
            found += [[name, build, mode, value, limit]
                      for value, name in values if value > 3 * limit]
        return sorted(found, key=lambda row: (-row[3], row[0]))[:20]

    def slower_nodes(self):
        before, after = sorted(self.by_build)
        slower = []
        for node in {node for node, _ in self.durations}:
            was, now = (p95(self.durations[node, build]) for build in (before, after))
            if now / was > 1.1:
                slower.append([node, was, now, now / was])
        return sorted(slower, key=lambda row: -row[3])

    def kinds_of_failure(self):
        return [[build] + [kinds[kind] for kind in self.KINDS]
                for build, kinds in sorted(self.kinds.items())]
