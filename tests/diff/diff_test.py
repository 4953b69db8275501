"""What infosync-diff says of two sides, and how it ends."""

import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

PROGRAM = []
REPLAY = os.environ["REPLAY"]
BURST = pathlib.Path(os.environ["SCENARIOS"]) / "burst-of-eight.jsonl"
NAMES = [f"BURST_20260502_183007_{number}" for number in range(1, 9)]


def capture(number, name, **columns):
    return {"schema_version": 1, "run_id": "r", "capture_seq": number, "name": name, **columns}


def node(number, name, **columns):
    return {"schema_version": 1, "run_id": "r", "capture_seq": number, "node": name, **columns}


class Diff(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.temporary = self.folder / "temporary"
        self.temporary.mkdir()

    def write(self, name, content):
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return str(path)

    def rows(self, name, captures, nodes=(), run=None):
        folder = self.folder / name
        folder.mkdir()
        run = {"schema_version": 1, "run_id": "r", **(run or {})}
        for file, rows in (("captures", captures), ("nodes", nodes), ("run", [run])):
            text = "".join(json.dumps(row) + "\n" for row in rows)
            (folder / f"{file}.ndjson").write_text(text)
        return str(folder)

    def run_diff(self, status, *arguments, **options):
        """What it prints; leaves what it says on standard error in self.err."""
        environment = {**os.environ, "TMPDIR": str(self.temporary), "LC_ALL": "C", "COLUMNS": "100"}
        run = subprocess.run([*PROGRAM, *arguments], cwd=self.folder, env=environment, timeout=50,
                             capture_output=True, check=False, **options)
        self.err = run.stderr.decode()
        self.assertEqual(status, run.returncode, run.stdout.decode() + self.err)
        self.assertEqual([], list(self.temporary.iterdir()))
        return run.stdout.decode()

    def differences(self, *arguments, status=1):
        lines = [json.loads(line) for line in
                 self.run_diff(status, *arguments, "--json").splitlines()]
        self.assertEqual("summary", lines[-1]["kind"])
        return [(each["kind"], each["item"], each.get("capture")) for each in lines[:-1]]

    def check_refused(self, *arguments, says):
        self.assertEqual("", self.run_diff(2, *arguments))
        self.assertEqual(1, self.err.count("\n"), self.err)
        self.assertIn(says, self.err)

    def changed_burst(self, name, change):
        calls = [json.loads(line) for line in BURST.read_text().splitlines()
                 if line.startswith("{")]
        lines = [call for call in calls if change(call) is not False]
        return self.write(name, "".join(json.dumps(line) + "\n" for line in lines))

    def test_options_with_rows(self):
        a = self.rows("a", [capture(1, "X", iso=100, to_flush_us=100_000),
                            capture(2, "Y", iso=100)])
        b = self.rows("b", [capture(1, "X", iso=200, to_flush_us=112_000),
                            capture(2, "Z", iso=300)])
        self.assertEqual([("capture", "capture", "Y"), ("capture", "capture", "Z"),
                          ("parameter", "iso", "X"), ("duration", "to_flush", "X")],
                         self.differences(a, b))
        by_order = self.differences(a, b, "--by", "order")
        self.assertEqual([("parameter", "iso", "X"), ("parameter", "iso", "Y"),
                          ("duration", "to_flush", "X")], by_order)
        for tolerance, is_different in (("12%", False), ("11%", True), ("12ms", False),
                                        ("11ms", True), ("1%,12ms", False), ("12%,1ms", False)):
            kinds = [kind for kind, _, _ in self.differences(a, b, "--tolerance", tolerance)]
            self.assertEqual(is_different, "duration" in kinds, tolerance)
        kinds = self.differences(a, b, "--tolerance", "12%", "--tolerance", "1ms")
        self.assertNotIn("duration", [kind for kind, _, _ in kinds])
        other_name = [json.loads(line).get("capture_b") for line in
                      self.run_diff(1, a, b, "--by=order", "--json").splitlines()]
        self.assertEqual([None, "Z", None, None], other_name)
        near = [self.rows(name, [capture(1, "X", to_flush_us=long), capture(2, "Y", to_flush_us=short)])
                for name, long, short in (("near", 100_000, 10_000), ("far", 109_000, 14_000))]
        self.run_diff(0, *near)  # each within one part of the default tolerance
        last = self.run_diff(1, a, b).splitlines()[-1]
        self.assertEqual("1 capture compared, 1 of them differs, 1 only in A, 1 only in B", last)
        self.assertEqual("2 captures compared, none differs\n", self.run_diff(0, a, a))
        self.assertIn("--tolerance", self.run_diff(0, "--help"))

    def test_one_side_without_captures(self):
        empty = self.rows("empty", [], run={"switch_service": "none"})
        numbers = (3, 1, 4, 2)
        full = self.rows("full", [capture(number, f"X{number}") for number in numbers],
                         run={"switch_service": "present"})
        self.assertEqual([("switch", "service", None),
                          *(("capture", "capture", f"X{number}") for number in sorted(numbers))],
                         self.differences(empty, full))
        single = json.loads(self.run_diff(1, empty, full, "--json").splitlines()[1])
        self.assertEqual({"kind": "capture", "item": "capture", "capture": "X1",
                          "capture_seq_b": 1, "b": "is there"}, single)
        other = self.rows("other", [], run={"switch_service": "present"})
        self.assertTrue(self.run_diff(1, empty, other).endswith(
            "0 captures compared, 1 difference of the sessions\n"))
        self.assertEqual("0 captures compared, none differs\n", self.run_diff(0, empty, empty))

    def test_bad_input(self):
        good = self.rows("good", [capture(1, "X")])
        other = self.rows("other", [capture(1, "Y")])
        self.check_refused(good, other, says=f"{good} and {other} have no captures in common")
        self.check_refused(good, good, "--tolerance", "much", says='--tolerance: "much"')
        self.check_refused(good, "-", says="standard input cannot be compared")
        self.check_refused(good, "gone", says="gone: cannot open")
        self.check_refused(good, "/dev/null", says="/dev/null: is neither a file nor a folder")
        self.check_refused(good, good + "/captures.ndjson", says="please name their folder")
        self.check_refused(self.rows("newer", [{**capture(1, "X"), "schema_version": 2}]), good,
                           says="captures.ndjson:1: schema_version")
        self.check_refused(good, self.rows("typed", [capture(1, "X"), capture(2, "Y", iso="1")]),
                           says="captures.ndjson:2: iso")
        self.check_refused(good, self.rows("nodes", [capture(1, "X")], [node(2, "merge")]),
                           says="nodes.ndjson:1: there is no capture 2")
        self.check_refused(good, self.rows("fewer", [capture(1, "X")], run={"captures": 2}),
                           says="run.ndjson tells of 2")
        cut = self.rows("cut", [capture(1, "X"), capture(2, "Y")])
        path = pathlib.Path(cut) / "captures.ndjson"
        path.write_bytes(path.read_bytes()[:-9])
        self.check_refused(cut, good, says="captures.ndjson:2")
        (pathlib.Path(cut) / "run.ndjson").write_text("")
        self.check_refused(cut, good, says="run.ndjson: tells of no run")
        (pathlib.Path(cut) / "run.ndjson").unlink()
        self.check_refused(cut, good, says="run.ndjson: is missing")
        for arguments in ([good], [good, good, "--by", "size"], [good, good, good]):
            self.assertEqual("", self.run_diff(2, *arguments))

    def test_full_disk(self):
        good = self.rows("good", [capture(1, "X")])
        with open("/dev/full", "wb") as full:
            run = subprocess.run([*PROGRAM, good, good], stdout=full, stderr=subprocess.PIPE,
                                 timeout=50, check=False)
        self.assertEqual((2, b"infosync-diff: standard output cannot be written\n"),
                         (run.returncode, run.stderr))

    def test_made_same(self):
        """A log is the same as itself, as its rows, and as itself from a folder of another name."""
        rows = str(self.folder / "rows")
        subprocess.run([REPLAY, str(BURST), "--quiet", "--rows", rows], check=True, timeout=50,
                       capture_output=True)
        shutil.copy(BURST, self.folder / "-copy")
        content = BURST.read_bytes()
        for other in (str(BURST), rows, "-copy", self.write("mark", b"\xef\xbb\xbf" + content),
                      self.write("blank", b"\n" + content)):
            self.assertEqual("8 captures compared, none differs\n",
                             self.run_diff(0, "--", str(BURST), other))
            self.assertEqual("", self.err)
        for scenario in BURST.parent.glob("*.jsonl"):
            self.run_diff(0, str(scenario), str(scenario))

    def test_made_differences(self):
        def change(call):
            image, operation = call.get("image"), call.get("call")
            if image == NAMES[7] and operation != "updateUIInfo":
                return False
            if image == NAMES[1] and operation == "updateUIInfo":
                call["zoomRatio"] = 3.5
            if image == NAMES[2] and operation == "updateUIInfo":
                return False
            if image == NAMES[3] and operation == "updateVndResultInfo":
                call["errorCode"] = 1
            if image == NAMES[4] and operation == "updateNodeProcTime":
                call["node"] = "fusion"
            return True

        found = self.differences(str(BURST), self.changed_burst("other.jsonl", change))
        for expected in (("capture", "capture", NAMES[7]),
                         ("parameter", "zoom_ratio", NAMES[1]),
                         ("parameter", "cam_mode", NAMES[2]),
                         ("vendor_result", "40", NAMES[3]),
                         ("node", "node", NAMES[4]),
                         ("error", "findings of no capture", None)):
            self.assertIn(expected, found)
        self.assertIn("error", [kind for kind, _, name in found if name == NAMES[3]])
        self.assertNotIn(NAMES[0], [name for _, _, name in found])

    def test_made_logcat(self):
        """What begins as no capture log is read as a logcat."""
        line = "11-21 10:15:00.00%d  1047  1234  5678 W kelo-InfoSynchronizer: INFOSYNC " \
               "InfoSynchronizerManager.cpp:1 f()%s\n"
        a = self.write("a.txt", line % (1, "register image A, queue size: 1") +
                       line % (2, "unregister image A, queue size: 0"))
        b = self.write("b.txt", line % (1, "register image A, queue size: 1"))
        self.run_diff(0, a, a)
        self.assertIn(("course", "removed", "A"), self.differences(a, b))

    def test_made_stop(self):
        """A signal ends the program while rows are being made, and nothing is left."""
        log = self.write("long.jsonl", '{"sleepMs":60000}\n' + BURST.read_text())
        for number in (signal.SIGINT, signal.SIGTERM):
            with subprocess.Popen([*PROGRAM, log, log], stdout=subprocess.DEVNULL,
                                  env={**os.environ, "TMPDIR": str(self.temporary)}) as run:
                while len(list(self.temporary.iterdir())) < 2:
                    self.assertIsNone(run.poll())
                run.send_signal(number)
                self.assertEqual(-number, run.wait(50))
            self.assertEqual([], list(self.temporary.iterdir()))

    def test_made_refusals(self):
        good = str(BURST)
        for name, content, says in (("bad.jsonl", '{"call":"nothing"}\n', "bad.jsonl:1"),
                                    ("text", "no log\n" * 9, "text: is no logcat"),
                                    ("packed.gz", b"\x1f\x8b\x08\x00", "compressed by gzip")):
            self.check_refused(good, self.write(name, content), says=says)


if __name__ == "__main__":
    PROGRAM = sys.argv[2:]
    unittest.main(argv=sys.argv[:2])
