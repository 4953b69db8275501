"""Reads traces back and checks what trace viewers ask of them."""

import collections
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unicodedata
import unittest
from decimal import Decimal

COMMAND = sys.argv[2:]  # that writes views of made captures
REPLAY = [*COMMAND[:-1], os.environ["REPLAY"]]
SCENARIOS = pathlib.Path(__file__).resolve().parents[2] / "scenarios"
RANKS = {"capture": 0, "stages": 1, "node": 2, "calls": 3, "errors": 4}
MISLEADING = {chr(code) for code in (0x61C, *range(0x200B, 0x2010), *range(0x2028, 0x202F),
                                     *range(0x2060, 0x2070), 0xFEFF)}


def refuse(constant):
    raise ValueError(f"{constant} is no JSON")


def texts(value):
    if isinstance(value, str):
        yield value
    for part in value.items() if isinstance(value, dict) else value if isinstance(
            value, (list, tuple)) else ():
        yield from texts(part)


class Trace(unittest.TestCase):
    def made(self, kind, number):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "trace.json")
            subprocess.run([*COMMAND, kind, str(number), str(path), ""], check=True)
            self.assertEqual(os.listdir(folder), ["trace.json"])
            return self.checked(path.read_text("utf-8"))

    def checked(self, text):
        """The trace, which keeps the rules of the format."""
        trace = json.loads(text, parse_float=Decimal, parse_constant=refuse)
        events = trace["traceEvents"]
        for event in events:
            self.check_event(event)
        self.check_processes(events)
        self.check_lanes(events)
        for each in texts(trace):
            for character in each:
                self.assertNotEqual(unicodedata.category(character), "Cc", each[:100])
                self.assertNotIn(character, MISLEADING, each[:100])
        return trace

    def check_event(self, event):
        self.assertIn(event["ph"], "MXi")
        self.assertIsInstance(event["name"], str)
        for number in (event["pid"], event["tid"]):
            self.assertTrue(0 < number < 2**31, event)
        if event["ph"] == "M":
            self.assertIn(event["name"], ("process_name", "process_sort_index", "thread_name",
                                          "thread_sort_index"))
            return
        self.assertGreaterEqual(event["ts"], 0)
        if event["ph"] == "X":
            self.assertGreaterEqual(event["dur"], 0)
        else:
            self.assertEqual(event["s"], "t")

    def check_processes(self, events):
        """Each has one name and one place in the order, and its threads are its own."""
        processes = collections.defaultdict(list)
        owners = {}
        for event in events:
            self.assertEqual(owners.setdefault(event["tid"], event["pid"]), event["pid"])
            if event["ph"] == "M" and event["name"].startswith("process"):
                processes[event["pid"]].append(event["name"])
        self.assertEqual(set(processes), set(owners.values()))
        for names in processes.values():
            self.assertEqual(sorted(names), ["process_name", "process_sort_index"])

    def check_lanes(self, events):
        """Each has a name and a place in the order, which is that of the kinds, and nothing in it
        overlaps."""
        lanes = collections.defaultdict(list)
        for event in events:
            lanes[event["pid"], event["tid"]].append(event)
        last = (0, -1, 0)
        for (process, _), lane in sorted(lanes.items()):
            names = [each["args"]["name"] for each in lane if each["name"] == "thread_name"]
            places = [each["args"]["sort_index"] for each in lane
                      if each["name"] == "thread_sort_index"]
            self.assertEqual((len(names), len(places)), (1, 1))
            rank = RANKS[names[0].split(" ")[0]]
            self.assertGreater((process, places[0]), last[:2])
            if process == last[0]:
                self.assertEqual(places[0], last[1] + 1)
                self.assertGreaterEqual(rank, last[2])
            last = (process, places[0], rank)
            end = 0
            for span in (each for each in lane if each["ph"] != "M"):
                self.assertGreaterEqual(span["ts"], end, (names, span))
                end = span["ts"] + span.get("dur", 0)

    def test_trace_of_captures_that_have_what_is_not_to_be_expected(self):
        trace = self.made("hostile", 2000)
        processes = {event["pid"] for event in trace["traceEvents"]}
        left_out = trace["metadata"]["captures_without_times"]
        self.assertEqual(len(processes) + left_out, 2000)
        self.assertTrue(20 < left_out < 500, left_out)
        names = [event["args"]["name"] for event in trace["traceEvents"]
                 if event["name"] == "process_name"]
        self.assertIn("N" * 2**20, names)
        self.assertIn("\\u{202e}gnp.eman\\u{202c} and \\u{2066}isolated\\u{2069}", names)

    def test_trace_of_ordinary_captures(self):
        trace = self.made("ordinary", 100)
        events = trace["traceEvents"]
        order = {event["args"]["sort_index"]: event["pid"] for event in events
                 if event["name"] == "process_sort_index"}
        starts = {event["pid"]: event["ts"] for event in events if event["name"] == "to the flush"}
        self.assertEqual([starts[order[number]] for number in range(1, 101)],
                         [35000 * number for number in range(100)])
        kinds = collections.Counter(event["cat"] for event in events if event["ph"] != "M")
        self.assertEqual(kinds, {"capture": 198, "capture,failed": 2, "stage": 800, "node": 800,
                                 "call": 3397, "call,failed": 3, "flush": 100, "error,failed": 2})

    def test_trace_of_scenarios(self):
        processes = {}
        for log in SCENARIOS.glob("*.jsonl"):
            with tempfile.TemporaryDirectory() as folder:
                path = pathlib.Path(folder, "trace.json")
                subprocess.run([*REPLAY, log, "--quiet", "--trace", path], check=True,
                               stderr=subprocess.DEVNULL)
                events = self.checked(path.read_text("utf-8"))["traceEvents"]
            processes[log.stem] = [event["args"]["name"] for event in events
                                   if event["name"] == "process_name"]
        self.assertEqual(sorted(processes["burst-of-eight"]),
                         [f"BURST_20260502_183007_{number}" for number in range(1, 9)])
        self.assertEqual(processes["night-shot"], ["NIGHT_20260108_224519", "NIGHT_20260108_224523"])
        self.assertEqual(processes["switched-off"], [])

    def test_files_that_cannot_be_written(self):
        with tempfile.TemporaryDirectory() as folder:
            log = pathlib.Path(folder, "log.jsonl")
            log.write_bytes((SCENARIOS / "plain-shot.jsonl").read_bytes())
            for option in ("--trace", "--html"):
                for path, complaint in ((log, "has been read, and would be overwritten"),
                                        (f"{folder}/none/x", "cannot be opened for writing"),
                                        ("-", "please name a file")):
                    run = subprocess.run([*REPLAY, log, "--quiet", option, path], text=True,
                                         stderr=subprocess.PIPE, check=False)
                    self.assertEqual(run.returncode, 2, run.stderr)
                    self.assertIn(complaint, run.stderr)
            run = subprocess.run([*REPLAY, log, "--quiet", "--trace", f"{folder}/same", "--html",
                                  f"{folder}/./same"], text=True, stderr=subprocess.PIPE, check=False)
            self.assertEqual(run.returncode, 2)
            self.assertIn("cannot be both the trace and the page", run.stderr)
            self.assertEqual(os.listdir(folder), ["log.jsonl"])
            self.assertEqual(log.read_bytes(), (SCENARIOS / "plain-shot.jsonl").read_bytes())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:2])
