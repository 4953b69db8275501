"""End-to-end tests of infosync-replay: replay_test.py Class.test_name COMMAND...

COMMAND is the tool, behind an emulator if it needs one. expected/ holds what formats are like."""

import json
import os
import re
import resource
import subprocess
import sys
import time
import unittest

from replay_case import (COMMAND, HERE, ReplayTest, anchor, call, fail, flush, frame,
                         limit, register, slow_calls)

NO_CALLS = "standard input: has no calls"
LONGEST_LINE = 1_048_576
FORCED = "persist.vendor.camera.infoSyncCollect.forceEnabled"


class Reports(ReplayTest):
    def play(self, name, *options):
        self.run_tool(*options, "--json", "calls.jsonl", name + ".jsonl")
        self.expect(name + ".txt", self.out)
        self.expect_calls(name + ".calls.jsonl")

    def test_plain_shot(self):
        self.play("plain-shot")

    def test_burst_of_eight(self):
        self.play("burst-of-eight", "--summary")

    def test_night_shot(self):
        self.play("night-shot")

    def test_switched_off(self):
        self.play("switched-off")

    def test_hostile_names(self):
        self.play("hostile-names")

    def test_json_to_stdout(self):
        self.run_tool("plain-shot.jsonl", "--json", "-")
        self.expect("plain-shot.calls.jsonl", self.out)
        self.assertFalse(self.says_handle)
        self.run_tool("plain-shot.jsonl", "--json", "-", "--log-level", "debug")
        self.expect("plain-shot.calls.jsonl", self.out)
        self.assertTrue(self.says_handle)

    def test_quiet(self):
        self.run_tool("plain-shot.jsonl", "--quiet", "--json", "calls.jsonl")
        self.assertEqual(("", ""), (self.out, self.err))
        self.expect_calls("plain-shot.calls.jsonl")

    def test_stdin(self):
        log = (self.folder / "plain-shot.jsonl").read_bytes()
        for pipe, name in (("-", "standard input"), ("/dev/stdin", "/dev/stdin")):
            self.run_tool(pipe, stdin=log)
            self.expect("plain-shot.txt", self.out.replace(name, "plain-shot.jsonl"))
        (self.folder / "log.jsonl").write_bytes(b"read by another\n" + log)
        with open(self.folder / "log.jsonl", "rb", buffering=0) as file:
            file.readline()
            self.run_tool("-", stdin=file)  # from where the file is
        self.expect("plain-shot.txt", self.out.replace("standard input", "plain-shot.jsonl"))

    def test_repeat(self):
        self.run_tool("plain-shot.jsonl", "--repeat", "3", "--summary")
        self.expect("repeat.txt", self.out)
        image = "IMG_20260314_101502"
        self.run_tool("plain-shot.jsonl", "--repeat", "2", "--image", image)
        self.assertEqual([image, image + "#2"], re.findall(r"^capture \d: (.*)$", self.out, re.M))

    def test_which_captures_are_shown(self):
        names = [f"{number:02}" for number in range(1, 22)]
        lines = [line(name) for name in names for line in (register, frame, flush)]
        log = self.write(*lines, fail("07"))
        for options, reports, first in (([], [], "01"),
                                        (["--failed"], ["07"], "01"),
                                        (["--failed", "--sort", "findings"], ["07"], "07"),
                                        (["--image", "07", "--image", "09"], ["07", "09"], "07")):
            self.run_tool(log, *options)
            self.assertEqual(reports, re.findall(r"^capture \d+: (.*)$", self.out, re.M), options)
            self.assertEqual(first, re.findall(r"^  (\d\d) ", self.out, re.M)[0], options)
        self.run_tool(log, "--sort", "name", status=2)

    def test_answers_are_made_printable(self):
        for answer, printed in (
                (b"\x1b\x1f \x7e\x7f\n\t\\", "\\x1b\\x1f ~\\x7f\\n\\t\\\\"),
                (b"\xc2\x80\xc2\x9f\xc2\xa0", "\\xc2\\x80\\xc2\\x9f\u00a0"),
                (b"\x80\xbf\xc1\x80\xff", "\\x80\\xbf\\xc1\\x80\\xff"),
                (b"\xf5\x80\x80\x80\xc3\xc3", "\\xf5\\x80\\x80\\x80\\xc3\\xc3"),
                (b"\xe0\x9f\xbf\xe0\xa0\x80", "\\xe0\\x9f\\xbf\u0800"),
                (b"\xed\x9f\xbf\xed\xa0\x80\xee\x80\x80", "\ud7ff\\xed\\xa0\\x80\ue000"),
                (b"\xf0\x8f\xbf\xbf\xf0\x90\x80\x80", "\\xf0\\x8f\\xbf\\xbf\U00010000"),
                (b"\xf4\x8f\xbf\xbf\xf4\x90\x80\x80", "\U0010ffff\\xf4\\x90\\x80\\x80"),
                (b"\xe2\x82x\xf0\x90\x80", "\\xe2\\x82x\\xf0\\x90\\x80"),
                (b"x" * 60, "x" * 60),
                (b"x" * 61, "x" * 60 + "..."),
                (b"x" * 58 + b"\xc3\xa9y", "x" * 58 + "\u00e9..."),
                (b"x" * 59 + b"\xc3\xa9", "x" * 59 + "...")):
            self.run_tool("plain-shot.jsonl", "--answer", answer)
            self.assertEqual(f'off: the service answers "{printed}"', self.total("collection"))


class Options(ReplayTest):
    def collection(self, *options, **environment):
        self.run_tool("plain-shot.jsonl", *options, environment=environment)
        return self.total("collection")

    def test_no_service(self):
        self.run_tool("plain-shot.jsonl", "--no-service")
        self.expect("no-service.txt", self.out)

    def test_answer(self):
        self.run_tool("plain-shot.jsonl", "--answer", "disabled")
        self.expect("answer.txt", self.out)
        self.assertEqual('off: the service answers "no"',
                         self.collection(INFOSYNC_HOST_ANSWER="no"))
        self.assertEqual('off: the service answers ""',
                         self.collection("--answer", "", INFOSYNC_HOST_ANSWER="no"))

    def test_properties(self):
        self.run_tool("plain-shot.jsonl", "--answer", "disabled", "--property", FORCED + "=1")
        self.expect("forced.txt", self.out)
        forced = "on: forced by " + FORCED
        self.assertEqual(forced, self.collection("--property", FORCED + "=1",
                                                 "--property", "empty=", "--property", "a=b c"))
        inherited = {"INFOSYNC_HOST_PROPERTIES": FORCED + "=1"}
        self.assertEqual(forced, self.collection(**inherited))
        self.assertEqual(forced, self.collection("--property", "a=b", **inherited))
        self.assertEqual('on: the service answers "enabled"',
                         self.collection("--property", FORCED + "=0", **inherited))
        self.collection(INFOSYNC_HOST_PROPERTIES="a=b\n# c\nfile.prop")
        self.assertEqual("INFOSYNC_HOST_PROPERTIES: passing over a line that is not key=value: "
                         "file.prop\n", self.err)

    def test_options_before_the_log(self):
        self.run_tool("--quiet", "--repeat", "1", "--answer", "enabled", "--log-level", "warn",
                      "--json", "calls.jsonl", "--property", "a=b", "plain-shot.jsonl")
        self.expect_calls("plain-shot.calls.jsonl")

    def test_log_level(self):
        log = self.write(register("A"), register("A"))
        for options, letters in (([], "W"), (["debug"], "IW"), (["info"], "IW"), (["warn"], "W"),
                                 (["error"], ""), (["silent"], "")):
            self.run_tool(log, *["--log-level"] * len(options), *options)
            logged = set(re.findall("^[^ ]+ ([A-Z]) ", self.err, re.MULTILINE))
            self.assertEqual(letters, "".join(sorted(logged)), options)

    def test_log_level_numbers(self):
        root = {"INFOSYNC_HOST_ROOT": os.environ.get("LEVEL_ROOT", ""), "INFOSYNC_LOG_LEVEL": "9"}
        for options, number in (([], 9), (["debug"], 3), (["info"], 4), (["warn"], 5),
                                (["error"], 6), (["silent"], 8)):
            self.run_tool("plain-shot.jsonl", *["--log-level"] * len(options), *options,
                          environment=root)
            self.assertIn(f"the log level is {number}\n", self.err)

    def test_version_and_help(self):
        self.run_tool("--version")
        self.assertEqual(os.environ["VERSION"] + "\n", self.out)
        self.run_tool("--help")
        for option in ("--json FILE", "--repeat N", "--property KEY=VALUE", "--answer TEXT",
                       "--service", "--no-service", "--log-level LEVEL", "--quiet", "--version", "LOG"):
            self.assertIn(option, self.out)

    def test_bad_options(self):
        for *arguments, says in (["log is required"],
                                 ["--bogus", "--bogus"], ["--property", "a=b", "c=d", "c=d"],
                                 ["--service", "--no-service", "--no-service excludes --service"],
                                 ["--repeat", "0", "--repeat"],
                                 ["--repeat", "4294967295", "--repeat"],
                                 ["--repeat", "4294967294", "bad.jsonl:1: "],
                                 ["--log-level", "loud", "--log-level"]):
            self.refuse(*(arguments and ["bad.jsonl", *arguments]), says=says)

    def test_bad_properties(self):
        for text in ("key", "=value", "#a=b", "a b=c", " a=b", "a=b\nc=d"):
            self.refuse("plain-shot.jsonl", "--property", text,
                        says="--property: must be KEY=VALUE on one line: " + text)


class Threads(ReplayTest):
    def test_each_name_is_a_thread(self):
        log = self.write(register("1"), register("a1", thread="a"), register("b1", thread="b"),
                         register("a2", thread="a"), register("b2", thread="b"), register("2"))
        self.run_tool(log, "--log-level", "info")
        ids = {image: thread for thread, image in
               re.findall(r"^\S+ I \S+ \S+ +\d+ +(\d+) .*register image (\w+)", self.err, re.M)}
        self.assertEqual((ids["1"], ids["a1"], ids["b1"]), (ids["2"], ids["a2"], ids["b2"]))
        self.assertEqual(3, len(set(ids.values())), ids)

    def test_order_and_barrier(self):
        lines = slow_calls("t", lambda number: [anchor("fast", number, thread="t")])
        self.run_tool(self.write(register("fast"), frame("fast"), *lines, '{"barrier":true}',
                                 flush("fast")))
        self.assertIn("\n    iso            40\n", self.out)

    def test_end_is_a_barrier(self):
        lines = [register("first"), *slow_calls("t"), register("last", thread="t"),
                 frame("last", thread="t"), flush("last", thread="t")]
        self.run_tool(self.write(*lines), "--repeat", "2", "--log-level", "info")
        images = re.findall("register image (first|last)(#2|),", self.err)
        self.assertEqual([("first", ""), ("last", ""), ("first", "#2"), ("last", "#2")], images)
        self.assertEqual("2", self.total("reports"))

    def test_sleep(self):
        log = self.write('{"sleepMs":400}', '{"sleepMs":400}')
        begin = time.monotonic()
        self.run_tool(log)
        self.assertGreaterEqual(time.monotonic() - begin, 0.8)

    def test_flushes_at_once(self):
        names = [f"{thread}.{number}" for number in range(100) for thread in "abcd"]
        lines = [line(name, thread=name[0]) for name in names for line in (register, frame, flush)]
        self.run_tool(self.write(*lines), "--json", "calls.jsonl")
        calls = [json.loads(line) for line in open(self.folder / "calls.jsonl", encoding="utf-8")]
        reports = [one["id"] for one in calls[::10]]
        self.assertEqual([name for name in reports for _ in range(10)],
                         [one["id"] for one in calls])
        self.assertEqual(sorted(names), sorted(reports))
        self.assertEqual(sorted(names), sorted(re.findall(r"^  ([a-d]\.\d+) ", self.out, re.M)))
        self.assertEqual(("1200", "400", "4000"), (self.total("calls made"),
                         self.total("flush calls"), self.total("service calls")))

    def test_limited_waiting_calls(self):
        """What waits for a slow thread takes no more memory than is allowed for it."""
        lines = [call("updateSnapshotErrorInfo", "B", text="x" * 1_000_000, thread="t")] * 80
        slow = slow_calls("t", ids=300_000)
        self.run_tool(self.write(*slow, *slow[2:] * 9, *lines), "--log-level", "error",
                      **limit(resource.RLIMIT_AS, 75_000_000))
        self.assertEqual("482", self.total("calls made"))

    def test_many_threads(self):
        names = [str(number) for number in range(1, 65)]
        log = self.write(*[register("A", thread=name) for name in [*names, *names]])
        self.run_tool(log, "--log-level", "error")
        self.assertEqual("128", self.total("calls made"))
        log = self.write(*[register("A", thread=name) for name in [*names, "65", "1", "66"]])
        self.refuse(log, says="log.jsonl:65: thread: is one name too many; a log may name 64 "
                    "threads\nlog.jsonl:67: thread: is one name too many")


class Refused(ReplayTest):
    def test_bad_log(self):
        self.refuse("bad.jsonl", "--json", "calls.jsonl", says="")
        self.expect("bad.txt", self.err)
        self.refuse(self.write('{"sleepMs":0}', *["{}"] * 10),
                    says="log.jsonl:11: call: is missing\n")
        self.assertNotIn("more", self.err)
        self.refuse("-", stdin=(self.folder / "bad.jsonl").read_bytes(),
                    says="standard input:1: frameNumber: must be")

    def test_lines(self):
        """lines.txt holds lines, and under each one, indented, what is wrong with it."""
        for case in re.split(b"\n(?!    |$)", (HERE / "lines.txt").read_bytes()):
            line, *errors = case.decode(errors="surrogateescape").rstrip("\n").split("\n    ")
            self.run_tool("-", "--quiet", "--log-level", "error", status=2 if errors else 0,
                          stdin=line.encode(errors="surrogateescape"))
            said = [text for text in self.err.splitlines() if text != NO_CALLS]
            self.assertEqual([f"standard input:1: {error}" for error in errors], said, line)

    def test_unprintable_texts_in_errors(self):
        text = "\u007f\u009b" + "x" * 58
        log = self.write(call(text), register("A", **{text: 1}), f'{{"{text}":1,"{text}":1}}',
                         call("updatePostProcInfo", postProcInfo={text: ""}), "\u009b",
                         name="\u009b.jsonl")
        self.refuse(log, says="")
        printed = "\\x7f\\xc2\\x9b" + "x" * 57 + "..."
        self.assertEqual([
            f"\\xc2\\x9b.jsonl:1: call: is not an operation: {printed}",
            f"\\xc2\\x9b.jsonl:2: {printed}: is not a field of this call",
            f"\\xc2\\x9b.jsonl:3: {printed}: is given twice",
            "\\xc2\\x9b.jsonl:4: image: is not a field of this call",
            f"\\xc2\\x9b.jsonl:4: postProcInfo.{printed}: must be a whole number from 0 to "
            "4294967295",
            "\\xc2\\x9b.jsonl:5: line: is not valid JSON at column 1: syntax error while parsing "
            "value - invalid literal; last read: '\\xc2'"], self.err.splitlines())
        self.refuse("absent\u009b.jsonl", says="absent\\xc2\\x9b.jsonl: cannot open")

    def test_longest_line(self):
        line = '{"sleepMs":0}'
        self.run_tool(self.write(line.ljust(LONGEST_LINE)))
        self.run_tool(self.write(line.ljust(LONGEST_LINE), end=""))
        self.refuse(self.write("", line.ljust(LONGEST_LINE + 1), "{}"),
                    says="log.jsonl:2: line: is longer than 1048576 bytes\n"
                    "log.jsonl:3: call: is missing\n")

    def test_long_line(self, **memory):
        self.refuse(self.write("[" * 67108864, "", "{}"), **memory,
                    says="log.jsonl:1: line: is longer than 1048576 bytes\n"
                    "log.jsonl:3: call: is missing\n")

    def test_limited_long_line(self):
        self.test_long_line(**limit(resource.RLIMIT_AS, 60_000_000))

    def test_unreadable_log(self):
        self.refuse("absent.jsonl", says="absent.jsonl: cannot open: No such file")
        self.refuse(".", says=".: cannot read: Is a directory")
        self.refuse("/proc/self/mem", says="/proc/self/mem: cannot read: Input/output error")
        with open("/proc/self/mem", "rb") as memory:
            self.refuse("-", stdin=memory, says="standard input: cannot read: Input/output error")

    def test_no_room_for_standard_input(self):
        for size in (10, 1000000):
            self.refuse("-", stdin=b"\n" * size, restore_signals=False,  # SIGXFSZ stays ignored
                        **limit(resource.RLIMIT_FSIZE, 0),
                        says="standard input: cannot write the temporary file: File too large")


class Installed(ReplayTest):
    def test_installed(self):
        """The installed program finds the installed player, library and host root."""
        prefix = self.folder / "prefix"
        subprocess.run([os.environ["CMAKE"], "--install", os.environ["BUILD"], "--prefix", prefix],
                       stdout=subprocess.DEVNULL, check=True)
        tool = prefix / os.environ["BINDIR"] / "infosync-replay"
        self.run_tool("plain-shot.jsonl", command=[*COMMAND[:-1], tool])
        self.expect("plain-shot.txt", self.out)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:2])
