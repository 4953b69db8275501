"""What infosync-stats and --stats tell of rows and of captures."""

import json
import math
import os
import random
import subprocess
import sys
import tempfile
import unittest

PROGRAM = []
REPLAY = os.environ.get("INFOSYNC_REPLAY")
LOGCAT = os.environ.get("INFOSYNC_LOGCAT")


def capture(number, run="run", **columns):
    return {"schema_version": 1, "run_id": run, "capture_seq": number, "name": f"IMG_{number}",
            "is_flushed": True, "has_failed": False, **columns}


def node(number, name, run="run", **columns):
    return {"schema_version": 1, "run_id": run, "capture_seq": number, "node": name,
            "timed_out": False, "has_failed": False, **columns}


def percentile(values, percent):
    return sorted(values)[math.ceil(len(values) * percent / 100) - 1]


class Stats(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def path(self, name):
        return os.path.join(self.folder.name, name)

    def write(self, name, captures, nodes, told=()):
        """A folder of rows, of as many as `told`, or as there are."""
        os.mkdir(self.path(name))
        run = {"schema_version": 1, "run_id": "run", "captures": len(captures),
               "nodes": len(nodes), **dict(told)}
        for file, rows in (("captures", captures), ("nodes", nodes), ("run", [run])):
            with open(f"{self.path(name)}/{file}.ndjson", "w", encoding="utf-8") as out:
                out.writelines(json.dumps(row) + "\n" for row in rows)
        return self.path(name)

    def run_tool(self, command, *arguments, **options):
        if command[0] in (REPLAY, LOGCAT):
            command = PROGRAM[:-1] + command  # behind the emulator, if there is one
        return subprocess.run([*command, *arguments], capture_output=True, timeout=50,
                              encoding="utf-8", **options)

    def stats(self, *arguments):
        result = self.run_tool(PROGRAM, *arguments)
        self.assertEqual((0, ""), (result.returncode, result.stderr), arguments)
        return result.stdout

    def check_times(self, values, told):
        self.assertEqual((len(values), min(values), max(values)),
                         (told["number"], told["min_us"], told["max_us"]))
        for percent, least in ((50, 1), (90, 1), (95, 20), (99, 100)):
            key = f"p{percent}_us"
            self.assertEqual(len(values) >= least, key in told, key)
            if key in told:
                exact = percentile(values, percent)
                self.assertLessEqual(abs(told[key] - exact), exact / 128, key)

    def test_figures_are_those_of_the_rows(self):
        draw = random.Random(1)
        captures, nodes = [], []
        for number in range(1, 301):
            own = {"build": f"b{draw.randrange(3)}", "cam_mode": draw.randrange(12)}
            failed = draw.random() < 0.1
            captures.append(capture(number, **own, to_flush_us=draw.randrange(1, 10**6),
                                    registered_at_us=number * 1000 + draw.randrange(900),
                                    stage_03_us=draw.randrange(10**5), has_failed=failed,
                                    node_errors=int(failed)))
            for name in ("merge", "tone"):
                nodes.append(node(number, name, **own, duration_us=draw.randrange(1, 10**4),
                                  timed_out=draw.random() < 0.1, has_failed=draw.random() < 0.2))
        rows = self.write("rows", captures, nodes)
        told = json.loads(self.stats(rows, "--json", "--by", "cam_mode"))

        groups = {group["value"]: group for group in told["groups"]}
        self.assertEqual([str(mode) for mode in range(12)], [*groups])
        for part, mode in ((told, None), *((group, int(key)) for key, group in groups.items())):
            own = [row for row in captures if mode in (None, row["cam_mode"])]
            self.assertEqual(len(own), part["captures"])
            self.assertEqual(sum(row["has_failed"] for row in own), part["failed"])
            self.assertEqual(part["failed"], part["failed_by_kind"]["node_error"])
            self.check_times([row["to_flush_us"] for row in own], part["to_flush"])
            [stage] = part["stages"]
            self.assertEqual((3, "4result_to_fwk"), (stage["stage"], stage["name"]))
            self.check_times([row["stage_03_us"] for row in own], stage)
            self.assertEqual("registrations", part["shot_to_shot"]["from"])
            registered = [row["registered_at_us"] for row in captures]
            self.check_times([registered[i] - registered[i - 1] for i in range(1, 300)
                              if captures[i] in own], part["shot_to_shot"])
            for each in part["nodes"]:
                of_name = [row for row in nodes if row["node"] == each["node"]
                           and mode in (None, row["cam_mode"])]
                self.assertEqual([len(of_name), sum(row["has_failed"] for row in of_name),
                                  sum(row["timed_out"] for row in of_name)],
                                 [each["nodes"], each["failed"], each["time_outs"]])
                self.check_times([row["duration_us"] for row in of_name], each)
        self.assertEqual([row["name"] for row in
                          sorted(captures, key=lambda row: -row["to_flush_us"])[:10]],
                         [slow["name"] for slow in told["slowest"]])

    def test_several_folders_are_as_one(self):
        captures = [capture(number, run, to_flush_us=number * 7 % 1000, cam_mode=number % 60,
                            registered_at_us=number * number)
                    for run in ("run a", "run b") for number in range(1, 400)]
        nodes = [node(number, f"n{number % 150}", run, duration_us=number)
                 for run in ("run a", "run b") for number in range(1, 400)]
        one = self.write("one", captures, nodes)
        several = [self.write(f"part{part}", captures[part:part + 100], nodes[part:part + 100])
                   for part in range(0, len(captures), 100)]
        for arguments in (["--json"], [], ["--json", "--by", "node"], ["--by", "cam_mode"]):
            self.assertEqual(self.stats(one, *arguments), self.stats(*several, *arguments))
        told = json.loads(self.stats(one, "--json", "--by", "cam_mode"))
        self.assertEqual(796, told["shot_to_shot"]["number"])
        self.assertEqual(50, len(told["groups"]))
        self.assertEqual(798, sum(group["captures"] for group in told["groups"]) +
                         told["other_groups"]["captures"])
        self.assertEqual(798, sum(each["nodes"] for each in told["nodes"]) +
                         told["other_nodes"]["nodes"])

    def test_the_tables_show_what_the_json_does(self):
        rows = self.write("rows", [capture(1, to_flush_us=1500, shot_to_shot_us=80_000,
                                           device="\x1b[31m")], [])
        table = self.stats(rows, "--by", "device")
        self.assertIn("shot to shot, from the stage", table)
        self.assertIn("80", table)
        self.assertIn("\\x1b[31m", table)
        self.assertNotIn("\x1b", table)
        told = json.loads(self.stats(rows, "--by", "device", "--json"))
        self.assertEqual({"from": "stage", "number": 1, "min_us": 80_000, "p50_us": 80_000,
                          "p90_us": 80_000, "max_us": 80_000}, told["shot_to_shot"])
        self.assertEqual("\\x1b[31m", told["groups"][0]["value"])
        slow = {"slowest_node": "merge", "slowest_node_us": 7, "has_failed": True}
        other = self.write("slow", [capture(1, to_flush_us=1500, **slow)], [])
        self.assertEqual([{"name": "IMG_1", "run_id": "run", "capture_seq": 1, "to_flush_us": 1500,
                           **slow}], json.loads(self.stats(other, "--json"))["slowest"])

    def test_bad_rows(self):
        good = self.write("good", [capture(1, to_flush_us=3)], [])
        for number, (captures, nodes, place) in enumerate((
                ([capture(1), capture(2, to_flush_us="3")], [], "captures.ndjson:2: to_flush_us"),
                ([capture(1, schema_version=9)], [], "captures.ndjson:1: "),
                ([capture(1)], [node(1, 7)], "nodes.ndjson:1: node"))):
            bad = self.write(f"bad{number}", captures, nodes)
            result = self.run_tool(PROGRAM, good, bad)
            self.assertEqual((2, ""), (result.returncode, result.stdout), place)
            self.assertTrue(result.stderr.startswith(f"infosync-stats: {bad}/{place}"),
                            result.stderr)
            self.assertEqual(1, result.stderr.count("\n"))

        for told, text in (({"captures": 2}, "captures.ndjson: has 1 rows"),
                           ({"captures": 0, "nodes": 0}, "captures.ndjson: has 1 rows"),
                           ({"nodes": 3}, "nodes.ndjson: has 0 rows"),
                           ({"schema_version": 2}, "run.ndjson:1: schema_version: is 2")):
            fewer = self.write(f"other{len(os.listdir(self.folder.name))}", [capture(1)], [], told)
            result = self.run_tool(PROGRAM, fewer)
            self.assertEqual((2, ""), (result.returncode, result.stdout))
            self.assertTrue(result.stderr.startswith(f"infosync-stats: {fewer}/{text}"),
                            result.stderr)
        self.stats(self.write("untold", [capture(1)], [], {"captures": None}))

        cut = self.write("cut", [capture(1)], [])
        with open(f"{cut}/captures.ndjson", "a", encoding="utf-8") as out:
            out.write('{"schema_version":1,"run_')
        result = self.run_tool(PROGRAM, cut)
        self.assertEqual((2, ""), (result.returncode, result.stdout))
        self.assertIn(f"{cut}/captures.ndjson:2: ", result.stderr)

        for arguments, text in (([], "rows is required"), ([self.path("none")], "none"),
                                ([good, "--by", "cam_mod"], "did you mean cam_mode?"),
                                ([good, "--bye"], "--bye")):
            result = self.run_tool(PROGRAM, *arguments)
            self.assertEqual((2, ""), (result.returncode, result.stdout), arguments)
            self.assertIn(text, result.stderr)

    def test_a_full_disk(self):
        rows = self.write("rows", [capture(1)], [])
        with open("/dev/full", "w", encoding="utf-8") as full:
            result = subprocess.run([*PROGRAM, rows], stdout=full, stderr=subprocess.PIPE,
                                    timeout=50, check=False)
        self.assertEqual(1, result.returncode)
        self.assertIn(b"cannot write the output: No space left on device", result.stderr)

    def log(self):
        """A recording of 30 captures, of which the last has a node error."""
        lines = [{"format": "camInfosync capture log", "version": "1.0"}]

        def call(at, operation, image, **fields):
            lines.append({"n": len(lines), "at": at, "thread": "t", "tid": 1, "call": operation,
                          "image": image, **fields})

        for number in range(1, 31):
            name, at = f"IMG\\{number}\x1b", number * 10**8
            call(at, "registerSnapshotRequestRecord", name)
            call(at + 500, "updateFrameInfo", name, frameNumber=1, timestamp="1", camIds=[0],
                 frameExtra=0)
            call(at + 1000, "updateSnapshotTimeInfo", name, stage=4)
            call(at + 2000, "updateNodeProcTime", name, node="merge", first=10, second=11,
                 third=10 + number)
            call(at + 3000, "updateNodeProcState", name, node="merge", state=number // 30 * 4)
            call(at + number * 10**6, "snapshotRequestInfoFlush", name)
            call(at + 4 * 10**7, "unregisterSnapshotRequestRecord", name)
        with open(self.path("log.jsonl"), "w", encoding="utf-8") as out:
            out.writelines(json.dumps(line) + "\n" for line in lines)
        return self.path("log.jsonl")

    def check_tool(self, command, log, notes=""):
        """--stats says what infosync-stats says of the rows, and says it in place of the captures."""
        rows, told = self.path("rows"), self.path("told.json")
        for by in ([], ["--by", "cam_mode"], ["--by", "node"]):
            result = self.run_tool([command, log], "--rows", rows, "--stats", "--stats-json", told,
                                   *by)
            self.assertEqual(0, result.returncode, result.stderr)
            table = self.stats(rows, *by)
            self.assertEqual(notes + table, result.stdout)
            with open(told, encoding="utf-8") as file:
                self.assertEqual(self.stats(rows, "--json", *by), file.read())
        os.unlink(told)
        quiet = self.run_tool([command, log], "--stats", "--by", "node", "--quiet", "--stats-json",
                              told)
        self.assertEqual((0, ""), (quiet.returncode, quiet.stdout), quiet.stderr)
        with open(told, encoding="utf-8") as file:
            counted = json.load(file)
        for arguments in (["--by", "node"], ["--stats-json", told], ["--stats", "--summary"],
                          ["--stats", "--failed"], ["--stats", "--by", "cam_mod"],
                          ["--stats", "--stats-json", log]):
            refused = self.run_tool([command, log], *arguments)
            self.assertEqual((2, ""), (refused.returncode, refused.stdout), arguments)
            self.assertRegex(refused.stderr, "--stats|cam_mode|log", arguments)
        return counted

    def test_replay_counts_what_it_plays(self):
        told = self.check_tool(REPLAY, self.log())
        self.assertEqual([30, 1, 1], [told["captures"], told["failed"],
                                      told["failed_by_kind"]["node_error"]])
        self.check_times([number * 1000 for number in range(1, 31)], told["to_flush"])
        self.assertEqual("registrations", told["shot_to_shot"]["from"])
        self.check_times([100_000] * 29, told["shot_to_shot"])
        [merge] = told["groups"]
        self.assertEqual(["merge", 30, 1], [merge["value"], merge["all_nodes"]["nodes"],
                                            merge["all_nodes"]["failed"]])
        self.check_times([number * 1000 for number in range(1, 31)], merge["all_nodes"])

    def test_logcat_counts_what_it_finds(self):
        with open(self.path("log.txt"), "w", encoding="utf-8") as out:
            for number in range(1, 31):
                for at, text in ((0, "register image"), (9, "unregister image")):
                    out.write(f"11-21 10:15:{number:02}.{at:03}  1047  1234  5678 W "
                              "kelo-InfoSynchronizer: INFOSYNC InfoSynchronizerManager.cpp:1 f()"
                              f"{text} IMG_{number}, queue size: {1 - at // 9}\n")
        log = self.path("log.txt")
        told = self.check_tool(LOGCAT, log, f"note: {log}: its lines have no year; the log's date "
                               f"gives it\nnote: {log}: its lines have no time zone; what is called "
                               "UTC is the phone's time\n")
        self.assertEqual(30, told["captures"])
        self.check_times([1_000_000] * 29, told["shot_to_shot"])
        with open(log, "a", encoding="utf-8") as out:
            out.write("11-21 10:16:00.000  1047  1234  5678 W kelo-InfoSynchronizer: INFOSYNC "
                      "InfoSynchronizerManager.cpp:1 f()can't find imageName: B\n")
        self.assertIn("findings\n", self.run_tool([LOGCAT, log], "--stats").stdout)
        result = self.run_tool([LOGCAT, log], "--stats", "--image", "A")
        self.assertEqual((2, ""), (result.returncode, result.stdout))


if __name__ == "__main__":
    PROGRAM = sys.argv[2:]
    unittest.main(argv=sys.argv[:2])
