"""What the end-to-end tests of infosync-replay have in common: lines of a log, and the run."""

import contextlib
import json
import os
import pathlib
import pty
import re
import resource
import shutil
import subprocess
import sys
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent
PROJECT = HERE.parent.parent
COMMAND = sys.argv[2:]
SECONDS = 50  # that a run may take


def call(operation, image="A", **fields):
    return json.dumps({"call": operation, "image": image, **fields}, ensure_ascii=False)


def register(image, **fields):
    return call("registerSnapshotRequestRecord", image, **fields)


def frame(image, **fields):
    return call("updateFrameInfo", image, frameNumber=1, timestamp="1", camIds=[0], frameExtra=0,
                **fields)


def fail(image):
    return call("updateVndResultInfo", image, resultId=1, errorCode=1)


def flush(image, **fields):
    return call("snapshotRequestInfoFlush", image, **fields)


def anchor(image, iso, **fields):
    return call("updateAnchor3aInfo", image, fstop=1, iso=iso, lux=1, exposureTime=1, **fields)


def header(**fields):
    return json.dumps({"format": "camInfosync capture log", "version": "1.0", **fields})


def recorded(number, line, tid=1, at=0, thread="t"):
    """A line, as another function here makes it, as it is recorded."""
    return json.dumps({"n": number, "at": at, "thread": thread, "tid": tid, **json.loads(line)})


def answered(number, answer, tid=1, at=0, **fields):
    fields = {"answer": answer, **fields} if answer is not None else fields
    return json.dumps({"answered": number, "at": at, "thread": "t", "tid": tid,
                       "key": "snapshotInfoCollectEnable", **fields})


def slow_calls(thread, between=lambda number: [], ids=20_000):
    """Each result takes the thread so long that calls queue up behind it."""
    lines = [register("slow", thread=thread),
             call("updateRequestInfo", "slow", reqValueA=0, reqValueB=0, reqFlag=False,
                  reqValue64=0, reqIdsA=[], expectedResultIds=[1] * ids, thread=thread)]
    for number in range(1, 41):
        lines.append(call("updateVndResultInfo", "slow", resultId=1, errorCode=0, thread=thread))
        lines += between(number)
    return lines


def limit(resource_kind, value):
    """For run_tool: a limit to what the tool may use."""
    return {"preexec_fn": lambda: resource.setrlimit(resource_kind, (value, value))}


class ReplayTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        for log in [*PROJECT.glob("scenarios/*.jsonl"), *HERE.glob("logs/*.jsonl")]:
            shutil.copy(log, self.folder)

    def write(self, *lines, name="log.jsonl", end="\n"):
        (self.folder / name).write_text("".join(line + end for line in lines), encoding="utf-8")
        return name

    def options(self, environment=None, **options):
        clean = {key: value for key, value in os.environ.items()
                 if not key.startswith("INFOSYNC_") and key != "COLUMNS"}
        clean["LC_ALL"] = "C"
        return {"cwd": self.folder, "env": {**clean, **(environment or {})}, **options}

    def run_tool(self, *arguments, status=0, stdin=b"", command=None, environment=None, **options):
        """Runs the tool to its end. The library's first line is taken out of what it says."""
        options = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options}
        source = {"stdin": stdin} if hasattr(stdin, "fileno") else {"input": stdin}
        run = subprocess.run([*(command or COMMAND), *arguments], timeout=SECONDS, **source,
                             **self.options(environment, **options))
        self.out = (run.stdout or b"").decode()
        raw = (run.stderr or b"").decode()
        self.err = re.sub("^features_mgr_handle = .*\n", "", raw, count=1)
        self.says_handle = raw != self.err
        self.assertEqual(status, run.returncode, raw)

    def run_on_terminal(self, *arguments, stdout=subprocess.DEVNULL):
        """Returns what standard error, and standard output if it is None, print on a terminal."""
        try:
            master, terminal = pty.openpty()
        except OSError as error:
            why = f"no terminal can be opened; is /dev/pts mounted? {error}"
            print(f"skipped: {why}", file=sys.stderr)
            self.skipTest(why)
        self.run_tool(*arguments, stderr=terminal, stdout=stdout or terminal)
        os.close(terminal)
        printed = b""
        with contextlib.suppress(OSError):  # as there is nothing more to read
            while chunk := os.read(master, 4096):
                printed += chunk
        os.close(master)
        return re.sub("^features_mgr_handle = .*\r\n", "", printed.decode())

    def refuse(self, *arguments, says, **options):
        """Nothing is played: neither a report nor the file of the calls comes into being."""
        self.run_tool(*arguments, status=2, **options)
        self.assertIn(says, self.err)
        self.assertEqual("", self.out)
        self.assertFalse((self.folder / "calls.jsonl").exists())

    def expect(self, name, text):
        self.assertEqual((HERE / "expected" / name).read_text(encoding="utf-8"), text)

    def expect_calls(self, name):
        self.expect(name, (self.folder / "calls.jsonl").read_text(encoding="utf-8"))

    def total(self, name):
        return re.search(f"^  {name} +(.*)$", self.out, re.MULTILINE).group(1)
