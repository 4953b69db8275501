"""What infosync-stats tells of the same rows."""

import json
import math
import subprocess

from clickhouse import Trouble

KINDS = {"vendor_error": "vendor_errors", "node_time_out": "node_time_outs",
         "node_error": "node_errors", "error_text": "error_texts",
         "result_missing": "results_missing"}
WIDEST = 1 / 128  # that a percentile is off by, of itself
SLOWEST = 10


def told(program, folders):
    result = subprocess.run([program, *folders, "--by", "build", "--json"], capture_output=True,
                            check=False)
    if result.returncode != 0:
        raise Trouble("%s: %s" % (program, result.stderr.decode()))
    return json.loads(result.stdout)


def nearest_rank_p95(values):
    return sorted(values)[math.ceil(0.95 * len(values)) - 1]


def require(name, found, expected, tolerance=0.0):
    if abs(found - expected) > tolerance * expected:
        raise Trouble("infosync-stats: %s is %s, and %s in the rows" % (name, found, expected))


def compare_build(group, figures):
    """Returns how many figures there were."""
    build = group["value"]
    captures, failed = figures.by_build[build]
    require(build + ": captures", group["captures"], captures)
    require(build + ": failed", group["failed"], failed)
    for kind, column in KINDS.items():
        require(build + ": " + kind, group["failed_by_kind"][kind], figures.kinds[build][column])
    for node in group["nodes"]:
        name = "%s: node %s: " % (build, node["node"])
        values = figures.durations[node["node"], build]
        require(name + "number", node["number"], len(values))
        require(name + "p95", node["p95_us"], nearest_rank_p95(values), WIDEST)
    flushes = [took for (of, _), rows in figures.flushes.items() if of == build
               for took, _ in rows]
    require(build + ": flushes", group["to_flush"]["number"], len(flushes))
    require(build + ": p95 of flushes", group["to_flush"]["p95_us"], nearest_rank_p95(flushes),
            WIDEST)
    return 4 + len(KINDS) + 2 * len(group["nodes"])


def compare(program, folders, figures):
    statistics = told(program, folders)
    require("builds", len(statistics["groups"]), len(figures.by_build))
    count = sum(compare_build(group, figures) for group in statistics["groups"])
    slowest = sorted((row for rows in figures.flushes.values() for row in rows),
                     key=lambda row: -row[0])[:SLOWEST]
    for capture, (took, name) in zip(statistics["slowest"], slowest, strict=True):
        require("the time of " + name, capture["to_flush_us"], took)
    print("%d figures, all the same, percentiles within 1/128" % (count + SLOWEST))
