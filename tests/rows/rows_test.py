"""What --rows writes, and what becomes of it when something fails."""

import json
import os
import resource
import signal
import subprocess
import sys
import tempfile
import unittest

PROGRAM = []
HEADER = {"format": "camInfosync capture log", "version": "1.0", "device": "phone-h",
          "build": "build-h", "pid": 77, "process": "camerahal", "startMonotonic": 1_000_000_000,
          "startReal": 1_790_000_000_000_000_000, "answers": {"snapshotInfoCollectEnable": "enabled"}}
REAL = 1_790_000_000_000_000_000 - 1_000_000_000
CALLS = (
    ("registerSnapshotRequestRecord", {}),
    ("updateFrameInfo", {"frameNumber": 9, "timestamp": "<7>", "camIds": [2, 0], "frameExtra": 4}),
    ("updateRequestInfo", {"reqValueA": -1, "reqValueB": 3, "reqFlag": True, "reqValue64": 2**64 - 1,
                           "reqIdsA": [5, 6], "expectedResultIds": [61, 62]}),
    ("updateUIInfo", {"requestType": 2, "camMode": 7, "faceDetect": 1, "zoomRatio": 1.1,
                      "uiExtra": "a\"b\u202e"}),
    ("updateAnchor3aInfo", {"fstop": 1.8, "iso": 50, "lux": "nan:0x7fc00001",
                            "exposureTime": 2**62}),
    ("updateAnchorFrame", {"anchorFrame": -2}),
    ("updateZuAlgoInfo", {"algoList": ["merge:2", "beauty"]}),
    ("updateSnapshotTimeInfo", {"timeInfo": {"1request_to_zuhal": -1, "3result_from_vendor": 4,
                                             "13shot_2_shot": 400}}),
    ("updateNodeProcTime", {"node": "merge", "first": 5000.25, "second": -1, "third": 5003.5}),
    ("updateNodeProcState", {"node": "merge", "state": 4}),
    ("updateNodeProcTime", {"node": "extra", "first": 5001, "second": 5002, "third": 5002.5}),
    ("updateVndResultInfo", {"resultId": 61, "errorCode": 3}),
    ("updateSnapshotErrorInfo", {"text": "hot"}),
    ("updateSnapshotTimeInfo", {"stage": 99}),
    ("snapshotRequestInfoFlush", {}),
    ("unregisterSnapshotRequestRecord", {}),
)
WHERE = {"schema_version": 1, "run_id": "1790000000000000000-77", "device": "phone-h",
         "build": "build-h"}
CAPTURE = {
    **WHERE, "capture_seq": 1, "line": 2, "process": "camerahal", "name": "A",
    "registered_ns": str(REAL + 2_001_000_000), "flushed_ns": str(REAL + 2_015_000_000),
    "removed_ns": str(REAL + 2_016_000_000), "registered_at_us": 2_001_000, "to_flush_us": 14_000,
    "is_flushed": True, "is_removed": True, "has_failed": True, "findings": 6, "calls": 16,
    "calls_without_effect": 1, "vendor_errors": 1, "node_time_outs": 1, "node_errors": 1,
    "error_texts": 1, "results_missing": 1, "no_completions": 0,
    "first_finding": "vendor result 62 never came",
    "errors": "vendor result 62 never came; node merge timed out; node merge: NodeProcessError; "
              "vendor result 61: error_result; hot",
    "reports": 1, "frame_number": 9, "timestamp": "<7>", "frame_extra": 4, "cameras": "2,0",
    "cam_id": 2, "request_type": 2, "cam_mode": 7, "face_detect": 1, "zoom_ratio": 1.1,
    "ui_extra": "a\"b\\u{202e}", "req_value_a": -1, "req_value_b": 3, "anchor_frame": -2,
    "req_flag": True, "req_value64": str(2**64 - 1), "req_ids_a": "5,6",
    "expected_result_ids": "61,62", "fstop": 1.8, "iso": 50, "exposure_time": str(2**62),
    "algorithms": "merge:2,beauty", "results": "61=error_result,62=not_return", "stages": "0,2,12",
    "stage_02_us": 4000, "stage_12_us": 400_000, "shot_to_shot_us": 400_000, "node_count": 3,
    "slowest_node": "merge", "slowest_node_us": 3250}
OF_CAPTURE = {**WHERE, "capture_seq": 1, "name": "A", "cam_mode": 7,
              "registered_ns": str(REAL + 2_001_000_000)}
NODES = [
    {**OF_CAPTURE, "node": "beauty", "is_listed": True, "timed_out": False, "has_failed": False,
     "state": "none"},
    {**OF_CAPTURE, "node": "merge", "is_listed": True, "start_us": 5_000_250,
     "completion_us": 5_003_500, "duration_us": 3250, "timed_out": True, "has_failed": True,
     "state": "NodeProcessError"},
    {**OF_CAPTURE, "node": "extra", "is_listed": False, "start_us": 5_001_000,
     "second_us": 5_002_000, "completion_us": 5_002_500, "duration_us": 1500, "timed_out": False,
     "has_failed": False}]
RUN = {**WHERE, "clock": "monotonic", "captures": 1, "nodes": 3, "calls": 16, "findings": 0,
       "switch_persist_vendor_camera_camquill_supported": "true", "switch_service": "present"}
FILES = ["captures.ndjson", "nodes.ndjson", "run.ndjson"]


class Rows(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.rows = self.path("rows")

    def path(self, name):
        return os.path.join(self.folder.name, name)

    def log(self, header=None, name="log.jsonl", captures=1):
        lines = [json.dumps(header)] if header else []
        for number in range(captures):
            image = {"image": "A" if number == 0 else f"A{number}"}
            for call, fields in CALLS:
                at = {"at": 2_000_000_000 + 1_000_000 * (len(lines) + (not header))}
                lines.append(json.dumps({"call": call, **image, **fields, **(at if header else {})}))
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write("\n".join(lines) + "\n")
        return self.path(name)

    def play(self, *arguments, status=0, says="", **options):
        result = subprocess.run(PROGRAM + list(arguments) + ["--quiet", "--log-level", "silent"],
                                capture_output=True, timeout=50, check=False, **options)
        self.assertEqual(status, result.returncode, result.stderr)
        self.assertIn(says, result.stderr.decode())

    def read(self, name):
        with open(os.path.join(self.rows, name), encoding="utf-8") as file:
            content = file.read()
        self.assertTrue(content.endswith("\n"), content)
        return [json.loads(line) for line in content.splitlines()]

    def names(self):
        return sorted(os.listdir(self.rows))

    def test_all_columns(self):
        log = self.log(HEADER)
        self.play(log, "--rows", self.rows)
        self.assertEqual(FILES, self.names())
        self.assertEqual([{**CAPTURE, "source": log}], self.read("captures.ndjson"))
        self.assertEqual(NODES, self.read("nodes.ndjson"))
        [run] = self.read("run.ndjson")
        self.assertIn("enabled", run.pop("switch_collection"))
        self.assertEqual("not true", run.pop(
            "switch_persist_vendor_camera_infosynccollect_forceenabled"))
        self.assertEqual({**RUN, "source": log}, run)

    def test_options_win_over_the_header(self):
        self.play(self.log(HEADER), "--rows", self.rows, "--device", "D", "--build", "B",
                  "--run-id", "R")
        for name in FILES:
            for row in self.read(name):
                self.assertEqual(("D", "B", "R"), (row["device"], row["build"], row["run_id"]))
        self.play(self.log(), "--rows", self.rows)
        [row] = self.read("captures.ndjson")
        self.assertEqual(self.path("log.jsonl"), row["run_id"])
        self.assertFalse({"device", "build", "process", "registered_ns", "to_flush_us"} & set(row))
        for option in ("--device", "--build", "--run-id"):
            self.play(self.log(), option, "x", status=2, says=option + " requires --rows")

    def test_logcat(self):
        log = self.path("log.txt")
        start = "2026-11-21 10:15:00.%03d +0000  1047  1234  5678 W kelo-InfoSynchronizer: INFOSYNC "
        with open(log, "w", encoding="utf-8") as file:
            for number, text in ((1, "register image A, queue size: 1"),
                                 (9, "unregister image A, queue size: 0")):
                file.write(start % number + "InfoSynchronizerManager.cpp:1 f()" + text + "\n")
        command = PROGRAM[:-1] + [os.environ["LOGCAT"], log, "--quiet", "--device", "D", "--rows",
                                  self.rows]
        full = subprocess.run(command, capture_output=True, timeout=50, check=False, **self.full(0))
        self.assertEqual((1, False), (full.returncode, os.path.exists(self.rows)))
        self.assertIn(b"captures.ndjson: cannot be written: File too large", full.stderr)
        subprocess.run(command, check=True, timeout=50)
        [row] = self.read("captures.ndjson")
        self.assertEqual((log, 1, log, "D", "1234", "A", "1795256100001000000", True),
                         tuple(row[column] for column in (
                             "source", "line", "run_id", "device", "process", "name",
                             "registered_ns", "has_failed")))
        self.assertEqual("real", self.read("run.ndjson")[0]["clock"])

    def test_earlier_rows_stay_until_there_are_new_ones(self):
        log = self.log()
        self.play(log, "--rows", self.rows, "--run-id", "first")
        with open(self.path("bad.jsonl"), "w", encoding="utf-8") as file:
            file.write("{}\n")
        self.play(self.path("bad.jsonl"), "--rows", self.rows, status=2)
        self.assertEqual("first", self.read("run.ndjson")[0]["run_id"])
        self.play(log, "--rows", self.rows, "--run-id", "second")
        self.assertEqual(FILES, self.names())
        for name in FILES:
            self.assertEqual("second", self.read(name)[0]["run_id"])

    def test_unusable_folder(self):
        log = self.log()
        self.play(log, "--rows", log, status=2, says=log + ": cannot be made a folder: File exists")
        self.play(log, "--rows", self.path("a/b"), status=2, says="cannot be made a folder: No such")
        os.mkdir(self.rows)
        os.mkdir(os.path.join(self.rows, "run.ndjson"))
        self.play(log, "--rows", self.rows, status=2, says="run.ndjson: cannot be opened")
        self.assertEqual(["run.ndjson"], self.names())

    def test_log_is_not_overwritten(self):
        os.mkdir(self.rows)
        log = self.log(name="rows/nodes.ndjson")
        self.play(log, "--rows", self.rows, status=2, says="has been read, and would be overwritten")
        self.assertEqual(["nodes.ndjson"], self.names())
        self.assertEqual(len(CALLS), len(self.read("nodes.ndjson")))

    def full(self, size):
        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (size, resource.RLIM_INFINITY))
        return {"preexec_fn": limit, "restore_signals": False}

    def test_full_disk(self):
        log = self.log(captures=100)
        self.play(log, "--rows", self.rows, "--run-id", "x" * 500)
        sizes = [os.path.getsize(os.path.join(self.rows, name)) for name in FILES]
        self.play(log, "--rows", self.path("all"), "--run-id", "x" * 500, **self.full(max(sizes)))
        # The rows come to the end of the room, then the last bytes that are written at the end;
        # then even the run's.
        for size in (1 << 16, max(sizes) - 1, sizes[2] - 1):
            self.play(log, "--rows", self.path("none"), "--run-id", "x" * 500, status=1,
                      says=".ndjson: cannot be written: File too large", **self.full(size))
            self.assertFalse(os.path.exists(self.path("none")))
            self.play(log, "--rows", self.rows, "--run-id", "y" * 500, status=1,
                      says="cannot be written", **self.full(size))
        self.assertEqual(FILES, self.names())
        self.assertEqual("x" * 500, self.read("run.ndjson")[0]["run_id"])

    def test_full_disk_ends_the_playing(self):
        log, calls, again = self.log(captures=100), self.path("calls"), self.path("again")
        rows = ("--rows", self.rows, "--run-id", "x" * 4000)
        self.play(log, *rows, "--json", calls)
        self.play(log, *rows, "--json", again, status=1, says=".ndjson: cannot be written",
                  **self.full(1 << 14))
        self.assertLess(2 << 14, os.path.getsize(calls))
        self.assertGreater(1 << 14, os.path.getsize(again))


if __name__ == "__main__":
    PROGRAM = sys.argv[2:]
    unittest.main(argv=sys.argv[:2])
