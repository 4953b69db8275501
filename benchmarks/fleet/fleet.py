"""Made captures of several phones as rows in ClickHouse and SQLite: FLEET.PY REPLAY STATS CAPTURES
RESULTS. Runs the queries of docs/fleet.md and compares each figure with one from the rows alone."""

import gzip
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

import clickhouse
import generate
import stats
from figures import Figures

DOCUMENT = os.path.join(os.path.dirname(__file__), "../../docs/fleet.md")
PHONES = ("phone-1", "phone-2", "phone-3", "phone-4")
TABLES = ("captures", "nodes")
# The program remembers the names of the last 65,536 captures, and does not grow after that.
MEMORY_OF_NAMES = 5 << 10  # KiB
MANY = 20_000  # captures, whose rows would take several times that


def documented(language):
    """Statements by the name that their first line gives them."""
    with open(DOCUMENT, encoding="utf-8") as file:
        text = file.read()
    blocks = re.findall(r"^```%s\n-- ([^\n]*)\n(.*?)^```$" % language, text, re.M | re.S)
    return dict(blocks)


def say(text):
    print("== " + text, flush=True)


def memory_now(process):
    """KiB that it has had in memory at most so far; 0 once it has ended."""
    try:
        with open("/proc/%d/status" % process.pid, encoding="utf-8") as status:
            return int((re.findall(r"VmHWM:\s+(\d+)", status.read()) or [0])[0])
    except FileNotFoundError:
        return 0


def memory_of(command):
    """Runs a command; returns the KiB that it had in memory at most. What the kernel says of an
    ended process counts this one's own memory too, since it was forked off it."""
    most = 0
    with subprocess.Popen(command) as process:
        while process.poll() is None:
            most = max(most, memory_now(process))
            time.sleep(0.01)
    if process.returncode != 0:
        raise clickhouse.Trouble("%s fails" % " ".join(command))
    return most


def replay(program, log, folder, *options):
    return memory_of([program, log, "--quiet", "--log-level", "silent", "--rows", folder, *options])


def make_rows(program, captures, results):
    """Returns folders of rows, one for each phone and build."""
    folders = []
    seconds = 0
    each = captures // (len(PHONES) * len(generate.BUILDS))
    os.makedirs(os.path.join(results, "rows"))
    for phone in PHONES:
        for build in generate.BUILDS:
            log = os.path.join(results, "log.jsonl")
            folder = os.path.join(results, "rows", phone + "-" + build)
            with open(log, "w", encoding="utf-8") as file:
                generate.write_log(file, phone, build, each)
            seconds -= clickhouse.seconds_of_children()
            replay(program, log, folder)
            seconds += clickhouse.seconds_of_children()
            folders.append(folder)
    lines = len(folders) * count_lines(log)
    print("%d captures in %d lines to rows: %.0f lines per second of one core"
          % (each * len(folders), lines, lines / seconds))
    return folders


def count_lines(path):
    with open(path, "rb") as file:
        return sum(1 for _ in file)


def show_compressed(folder, captures):
    size = packed = 0
    for table in TABLES:
        with open(os.path.join(folder, table + ".ndjson"), "rb") as file:
            content = file.read()
        size += len(content)
        packed += len(gzip.compress(content, 6))
    print("rows of a capture %.0f bytes, and by gzip %.0f" % (size / captures, packed / captures))


def check_memory(program, captures, results):
    """Of the last phone's log, which has so many, played once and until there are many more."""
    times = max(5, MANY // captures)
    log = os.path.join(results, "log.jsonl")
    folder = os.path.join(results, "repeated")
    once, often = (replay(program, log, folder, "--repeat", str(n)) for n in (1, times))
    print("memory for that log %d KiB, and for %d times as many captures %d KiB"
          % (once, times, often))
    if often > once + MEMORY_OF_NAMES:
        raise clickhouse.Trouble("the memory grows with the captures")


def is_same(value, expected):
    if isinstance(expected, float):
        return abs(float(value) - expected) <= 1e-9 * abs(expected)
    return str(value) == str(expected)


def compare(where, name, found, expected):
    same = len(found) == len(expected) and all(
        len(row) == len(other) and all(map(is_same, row, other))
        for row, other in zip(found, expected))
    if not same:
        raise clickhouse.Trouble("%s: %s differs\n  found    %s\n  expected %s"
                                 % (where, name, found, expected))
    if not expected:
        raise clickhouse.Trouble("%s: %s has no rows to compare" % (where, name))
    print("%-10s %-22s %4d rows, all the same" % (where, name, len(expected)))


def expected_figures(figures):
    return {"failure rate by build": figures.failure_rate_by_build(),
            "p95 by node and build": figures.p95_by_node_and_build(),
            "outliers": figures.outliers(),
            "slower nodes": figures.slower_nodes(),
            "kinds of failure": figures.kinds_of_failure()}


def load(server, folders, figures):
    for table in TABLES:
        seconds = sum(server.load(table, os.path.join(folder, table + ".ndjson"))
                      for folder in folders)
        server.run("OPTIMIZE TABLE %s FINAL" % table)
        [[rows]] = server.rows("SELECT count() FROM " + table)
        if int(rows) != getattr(figures, table):
            raise clickhouse.Trouble("%s rows of %s arrived of %d"
                                     % (rows, table, getattr(figures, table)))
        [[stored]] = server.rows("SELECT sum(bytes_on_disk) FROM system.parts "
                                 "WHERE active AND table = '%s'" % table)
        size = sum(os.path.getsize(os.path.join(folder, table + ".ndjson")) for folder in folders)
        print("%-10s %s rows; bytes per capture %.0f as rows, %.1f in the engine; "
              "%.0f rows per second of one core"
              % (table, rows, size / figures.captures, int(stored) / figures.captures,
                 int(rows) / seconds))


def measure_query(server, query, rows):
    repetitions = 20
    before = server.seconds()
    for _ in range(repetitions):
        server.run(query, ("--max_threads=1",))
    seconds = (server.seconds() - before) / repetitions
    print("the p95 of nodes reads %.0f rows per second of one core" % (rows / seconds))


def in_clickhouse(folders, figures, results):
    statements = documented("sql")
    with tempfile.TemporaryDirectory(dir=results) as folder:
        with clickhouse.Server(folder) as server:
            for table in TABLES:
                server.run(statements.pop("table of " + table))
            load(server, folders, figures)
            expected = expected_figures(figures)
            if set(statements) != set(expected):
                raise clickhouse.Trouble("documented are the queries " + ", ".join(statements))
            for name, query in statements.items():
                compare("ClickHouse", name, server.rows(query), expected[name])
            measure_query(server, statements["p95 by node and build"], figures.nodes)


def in_sqlite(folders, figures, results):
    database = os.path.join(results, "fleet.db")
    commands = ["CREATE TABLE captures (line)", "CREATE TABLE nodes (line)", ".mode ascii",
                '.separator "\\t" "\\n"']
    for folder in folders:
        commands += [".import %s/%s.ndjson %s" % (folder, table, table) for table in TABLES]
    subprocess.run(["sqlite3", "-bail", database, *commands], check=True)
    for name, query in documented("sqlite").items():
        result = subprocess.run(["sqlite3", "-bail", "-separator", "\t", database, query],
                                check=True, capture_output=True)
        found = [line.split("\t") for line in result.stdout.decode().splitlines()]
        compare("SQLite", name, found, expected_figures(figures)[name])


def main(program, stats_program, captures, results):
    shutil.rmtree(results, ignore_errors=True)
    os.makedirs(results)
    say("rows of %d phones with %d builds each" % (len(PHONES), len(generate.BUILDS)))
    folders = make_rows(program, captures, results)
    show_compressed(folders[0], captures // len(folders))
    check_memory(program, captures // len(folders), results)
    figures = Figures(folders)
    if not figures.captures == figures.run_captures == captures:
        raise clickhouse.Trouble("%d captures came of %d" % (figures.captures, captures))
    say("infosync-stats")
    stats.compare(stats_program, folders, figures)
    say("ClickHouse")
    in_clickhouse(folders, figures, results)
    say("SQLite")
    in_sqlite(folders, figures, results)


if __name__ == "__main__":
    # So that the server is stopped then too.
    signal.signal(signal.SIGTERM, lambda *ignored: sys.exit("fleet: stopped"))
    try:
        main(os.path.abspath(sys.argv[1]), os.path.abspath(sys.argv[2]), int(sys.argv[3]),
             os.path.abspath(sys.argv[4]))
    except clickhouse.Trouble as trouble:
        sys.exit("fleet: %s" % trouble)
