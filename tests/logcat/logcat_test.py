"""What the program does with its arguments, and with files of all kinds."""

import gzip
import json
import os
import re
import resource
import subprocess
import sys
import tempfile
import unittest
import zipfile

PROGRAM = []

LINE = ("11-21 10:15:00.%03d  1047  1234  5678 W %s: INFOSYNC %s\n")
MANAGER = "kelo-InfoSynchronizer"


def line(number, message, tag=MANAGER):
    return LINE % (number, tag, "InfoSynchronizerManager.cpp:1 f()" + message)


GOOD = line(1, "register image A, queue size: 1") + line(2, "unregister image A, queue size: 0")
BAD = line(1, "can't find imageName: A")


def capture(name, registered, reported):
    event = '{"pipeline_name":"%s","timestamp":"%d","cam_id":"0","node_stage":"%d"}'
    return "".join((
        line(registered, f"register image {name}, queue size: 1"),
        line(reported - 1, "camQuillSupported:1,  infoSyncCollectEnabled:1, cmdVal: enabled"),
        line(reported, 'submitReq { "submit-request":{"pipeline_name":"%s","timestamp":"9"}}' % name,
             "ZuAlgoEngine"),
        line(reported + 1, 'stime {"hdr":%s}' % (event % (name, 40, 0)), "ZuAlgoEngine"),
        line(reported + 1, 'ctime {"hdr":%s}' % (event % (name, 47, 2)), "ZuAlgoEngine"),
        line(reported + 2, f"flush image {name}  snapshotRequestInfo to infosync module"),
        line(reported + 3, f"unregister image {name}, queue size: 0")))


THREE = capture("A", 1, 5) + capture("B", 10, 30) + GOOD.replace("A", "C").replace("00.00", "00.04")


class Logcat(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def path(self, name):
        return os.path.join(self.folder.name, name)

    def write(self, name, content):
        with open(self.path(name), "wb") as file:
            file.write(content if isinstance(content, bytes) else content.encode())
        return self.path(name)

    def zip(self, name, entries):
        with zipfile.ZipFile(self.path(name), "w", zipfile.ZIP_DEFLATED) as archive:
            for entry, content in entries.items():
                archive.writestr(entry, content)
        return self.path(name)

    def run_program(self, *arguments, given="", **options):
        return subprocess.run(PROGRAM + list(arguments), input=given.encode(),
                              capture_output=True, timeout=50, **options)

    def check_refused(self, expected, *arguments, given=""):
        result = self.run_program(*arguments, given=given)
        self.assertEqual((2, b""), (result.returncode, result.stdout), arguments)
        self.assertEqual(f"infosync-logcat: {expected}\n", result.stderr.decode())

    def test_bad_input(self):
        log = self.write("good", GOOD)
        captures = "is a capture log, which infosync-replay plays"
        for name, content, expected in (
                ("empty", "", "is empty"),
                ("text", "no logcat\n" * 5000, "is no logcat"),
                ("calls", '# a comment\n{"image":"A","call":"flush"}\n', captures),
                ("recorded", '{"format":"camInfosync capture log","version":"1.0"}\n', captures),
                ("json", '{"level":"info"}\n', "is no logcat"),
                ("binary", os.urandom(1 << 20).replace(b"PK", b"  "), "is no logcat"),
                ("packed", gzip.compress(GOOD.encode()),
                 'is compressed by gzip; "gunzip" makes a logcat of it'),
                ("wide", GOOD.encode("utf-16"),
                 'is UTF-16; "iconv -f UTF-16 -t UTF-8" makes a logcat of it'),
        ):
            self.check_refused(f"{self.write(name, content)}: {expected}", log, self.path(name))
        self.check_refused("standard input: is empty", "-")
        self.check_refused(f"{self.folder.name}: is a directory", self.folder.name)
        missing = self.path("not\nthere")
        self.check_refused(missing.replace("\n", "\\n") + ": cannot open: No such file or directory",
                           missing)

    def test_zip(self):
        report = "== dumpstate: 2026-11-21 10:15:00\n" + BAD
        good = self.zip("good.zip", {"main_entry.txt": "report.txt\n", "report.txt": report})
        if os.environ["ZIP"] == "no":
            result = self.run_program(good)
            self.assertEqual(2, result.returncode)
            self.assertIn(b"libzip-dev", result.stderr)
            return
        self.assertEqual(3, self.run_program("--fail-on", "findings", good).returncode)
        path = self.zip("none.zip", {"report.txt": report})
        self.check_refused(f"{path}: is a zip archive without a bug report: it has no "
                           "main_entry.txt", path)
        path = self.zip("other.zip", {"main_entry.txt": "gone\x1b.txt", "report.txt": report})
        self.check_refused(f"{path}: is a zip archive without the bug report that its "
                           "main_entry.txt names, gone\\x1b.txt", path)
        path = self.write("cut.zip", open(good, "rb").read()[:100])
        self.check_refused(f"{path}: is a zip archive that cannot be read", path)
        path = self.zip("large.zip", {"main_entry.txt": "a", "a": report + LINE * 100000})
        content = bytearray(open(path, "rb").read())
        content[len(content) // 2] ^= 0xff
        self.write("large.zip", bytes(content))
        result = self.run_program(path)
        self.assertEqual(2, result.returncode)
        self.assertIn(b"the report in the archive cannot be read", result.stderr)
        self.check_refused("standard input: is a zip archive, which is read from a file only", "-",
                           given="PK\x03\x04")

    def test_limited_memory(self):
        """What is not the library's needs the same memory, however long it and its lines are."""
        most = 48 << 20
        other = LINE % (1, "other", "text") * 1000
        for log in (other * (most // len(other)), "x" * most + "\n" + other + "z" * most):
            result = self.run_program("-", given=log, preexec_fn=lambda: resource.setrlimit(
                resource.RLIMIT_AS, (most, most)))
            self.assertEqual((0, b""), (result.returncode, result.stderr))
            self.assertIn(b"there are no lines of the library", result.stdout)

    def test_shown_captures(self):
        """The options on what is shown reach the views."""
        log = self.write("log", GOOD.replace("A", "A\x1b[2J") + line(3, "register image B, queue size: 1"))
        os.utime(log, (1582000000, 1582000000))  # in February of 2020
        summary, whole, only, quiet = (
            self.run_program(log, *options).stdout.decode()
            for options in (("--summary",), (), ("--image", "B"), ("--quiet",)))
        self.assertNotIn("capture 2", summary)
        self.assertIn("capture 1: A\\x1b[2J, process 1234", whole)
        self.assertIn("registered at 2019-11-21 10:15:00.001 UTC", whole)
        self.assertIn("capture 2: B, process 1234", only)
        self.assertNotIn("capture 1:", only)
        self.assertEqual("", quiet)
        self.assertNotIn("\x1b", whole)
        result = self.run_program(log, "--image", "B", "--image", "b\n")
        self.assertEqual((2, b"infosync-logcat: b\\n: no capture has this name\n"),
                         (result.returncode, result.stderr))

    def test_chosen_captures(self):
        log = self.write("log", THREE)
        failed = self.run_program(log, "--failed").stdout.decode()
        self.assertEqual(["capture 3: C, process 1234"], re.findall("^capture .:.*", failed, re.M))
        for key, names in (("time", "BAC"), ("findings", "CAB")):
            summary = self.run_program(log, "--summary", "--sort", key).stdout.decode()
            self.assertEqual(list(names), re.findall("^  ([ABC])  ", summary, re.M), summary)

    def test_trace_and_page(self):
        """One flush is one mark, which divides the capture; times and lines are the log's."""
        log = self.write("log", THREE)
        trace, page = self.path("trace.json"), self.path("page.html")
        result = self.run_program(log, "--quiet", "--trace", trace, "--html", page)
        self.assertEqual((0, b""), (result.returncode, result.stderr))
        with open(trace, encoding="utf-8") as file:
            events = json.load(file)["traceEvents"]
        drawn = [(event["cat"], event["name"], event["ts"], event.get("dur"))
                 for event in events if event["ph"] != "M" and event["pid"] == events[0]["pid"]]
        for expected in (("capture", "to the flush", 0, 4000),
                         ("capture", "after the flush", 4000, 3000), ("node", "hdr", 0, 7000),
                         ("flush", "flush", 4000, None)):
            self.assertEqual(1, drawn.count(expected), drawn)
        self.assertEqual(1, sum(event[0] == "flush" for event in drawn))
        with open(page, encoding="utf-8") as file:
            data = re.search('<script type="application/json" id="data">(.*?)</script>', file.read(),
                             re.S).group(1)
        captures = json.loads(data)["captures"]
        self.assertEqual([("A", 4), ("B", 20), ("C", None)],
                         [(each["name"], each["ms"]) for each in captures])
        self.assertEqual([4000], [mark[0] for mark in captures[0]["marks"]])

    def test_printable(self):
        log = self.write("log", line(1, "register image a\\x41\\\\, queue size: 1"))
        for options, name in (((), "a\\\\x41\\\\\\\\"), (("--printable",), "aA\\\\")):
            self.assertIn(f"capture 1: {name}, process",
                          self.run_program(log, *options).stdout.decode())

    def test_status_tells_of_findings(self):
        good = line(1, "no register image A") + "I/x( 1): y\n"
        for content, expected in ((good, 0), (BAD, 3)):
            path = self.write("log", content)
            self.assertEqual(0, self.run_program(path).returncode)
            self.assertEqual(expected, self.run_program("--fail-on=findings", path).returncode)
            self.assertEqual(expected, self.run_program("--fail-on=findings", "-",
                                                        given=content).returncode)
        self.assertEqual(3, self.run_program("--fail-on=findings", self.write("a", good),
                                             self.write("b", BAD)).returncode)

    def test_logs_of_others(self):
        """Parts of a log may be without our lines; a script gets to know if all are."""
        others = self.write("others", "11-21 10:15:00.123 1 2 I x: y\n")
        nothing = b"infosync-logcat: there are no lines of the library\n"
        for arguments, status, said in ((["--quiet", others, others], 0, nothing),
                                        ([others], 0, b""),
                                        (["--quiet", others, self.write("ours", BAD)], 3, b"")):
            result = self.run_program("--fail-on=findings", *arguments)
            self.assertEqual((status, said), (result.returncode, result.stderr))
        self.assertIn(b"others: there are no lines of the library\n", self.run_program(others).stdout)


if __name__ == "__main__":
    PROGRAM = sys.argv[2:]
    unittest.main(argv=sys.argv[:2])
