"""How infosync-replay plays recordings: recorded_test.py Class.test_name COMMAND...

COMMAND is the tool, behind an emulator if it needs one."""

import gzip
import json
import lzma
import re
import resource
import sys
import unittest

from replay_case import (ReplayTest, anchor, answered, call, flush, frame, header, limit, recorded,
                         register, slow_calls)

FORCED = "persist.vendor.camera.infoSyncCollect.forceEnabled"
SUPPORTED = "persist.vendor.camera.camquill.supported"
END = '{"end":true,"calls":1}'


def unregister(image):
    return call("unregisterSnapshotRequestRecord", image)


def request(kind, **fields):
    return json.dumps({"call": "request", "type": kind, **fields})


class RecordedTest(ReplayTest):
    def play(self, *lines, options=(), head=None, end="\n"):
        """Plays a log with a header; returns the images in the order of their registration."""
        log = self.write(head or header(), *lines[:-1], *[lines[-1] + "\n"][:end == "\n"])
        if end != "\n":
            with open(self.folder / log, "a", encoding="utf-8") as file:
                file.write(lines[-1])
        self.run_tool(log, "--log-level", "info", *options)
        self.notes = [line for line in self.err.splitlines() if line.startswith("log.jsonl")]
        return " ".join(re.findall(r"\)register image (\w+)", self.err))

    def refuse_lines(self, *lines, says, head=None):
        self.refuse(self.write(head or header(), *lines), "--json", "calls.jsonl",
                    says=f"log.jsonl:{says}\n")


class Header(RecordedTest):
    def collection(self, *options, **fields):
        self.play(register("A"), options=options, head=header(**fields))
        return self.total("collection")

    def test_switches(self):
        off = {"properties": {SUPPORTED: False}}
        self.assertEqual(f"off: {SUPPORTED} is not true", self.collection(**off))
        self.assertEqual('on: the service answers "enabled"',
                         self.collection(f"--property={SUPPORTED}=1", **off))
        self.assertEqual("off: there is no service to ask", self.collection(service=False))
        self.assertEqual('on: the service answers "enabled"',
                         self.collection("--service", service=False))
        self.run_tool("log.jsonl", "--service", environment={"INFOSYNC_HOST_NO_SERVICE": "1"})
        self.assertEqual('on: the service answers "enabled"', self.total("collection"))
        answers = {"answers": {"snapshotInfoCollectEnable": "no"}}
        self.assertEqual('off: the service answers "no"', self.collection(**answers))
        self.assertEqual("0", self.total("records left"))
        self.assertEqual('on: the service answers "enabled"',
                         self.collection("--answer=enabled", **answers))
        self.assertEqual("1: A", self.total("records left"))
        self.play(register("A", future=1), head="# comment\n\n \t\n" + header(future=[1]))

    def test_bad_headers(self):
        read = "this tool reads (1.x)"
        for fields, says in (({"version": "0.9"}, "version: 0.9 is none that " + read),
                             ({"version": "1"}, 'version: must be MAJOR.MINOR, as "1.0"'),
                             ({"version": "1.0x"}, 'version: must be MAJOR.MINOR, as "1.0"'),
                             ({"format": "x"}, 'format: must be "camInfosync capture log"'),
                             ({"properties": {"a b": True}},
                              "properties.a b: is not the name of a property"),
                             ({"properties": {"#a": True}},
                              "properties.#a: is not the name of a property"),
                             ({"properties": {"a": 1}}, "properties.a: must be true or false"),
                             ({"service": 1}, "service: must be true or false"),
                             ({"answers": {"a": 1}}, "answers.a: must be a string"),
                             ({"cut": "A"}, "cut: must be an array")):
            self.refuse_lines(says="1: " + says, head=header(**fields))
        for head, says in ((header(version="2.0", service=1), "version: 2.0 is newer than " + read),
                           (header(version=1), "version: must be a string"),
                           (header(format=1), "format: must be a string"),
                           ('{"format":', "line: is not valid JSON")):
            self.refuse(self.write(head), says="log.jsonl:1: " + says)
            self.assertEqual(1, self.err.count("\n"), self.err)
        self.refuse_lines(says="1: version: is missing",
                          head='{"format":"camInfosync capture log"}')
        self.refuse_lines(header(), says="2: format: the header must be the log's first line")


class Order(RecordedTest):
    def test_lines_come_in_order(self):
        """With --free, a thread does not wait for another, and sooner or later that shows."""
        slow = [recorded(number, line, tid=1)
                for number, line in enumerate(slow_calls("t", ids=100_000))]
        lines = [*slow, recorded(90, register("a"), tid=1), recorded(91, register("b"), tid=2),
                 recorded(92, register("c"), tid=2), END]
        self.assertEqual("slow a b c", self.play(*lines))
        self.assertTrue(any(self.play(*lines, options=["--free"]) != "slow a b c"
                            for _ in range(5)))
        self.assertEqual("slow a", self.play(*slow_calls("t"), register("a", thread="u")))

    def test_free_threads_get_their_answers(self):
        lines = []
        for number in range(1, 2001, 2):
            answer = "enabled" if number % 4 == 1 else "disabled"
            lines += [recorded(number, register(f"i{number}"), tid=number % 7),
                      recorded(number + 1, call("updateAnchorFrame", "?" * 900, anchorFrame=1)),
                      answered(number, answer, tid=number % 7)]
        for options in (), ("--free",):
            images = self.play(*lines, END, options=options).split()
            self.assertEqual({f"i{number}" for number in range(1, 2001, 4)}, set(images))

    def test_calls_within_a_question(self):
        lines = [recorded(1, register("A"), tid=1), recorded(2, register("B"), tid=1),
                 recorded(3, register("C"), tid=2), answered(2, "enabled", tid=1),
                 recorded(4, register("D"), tid=1), answered(1, "enabled", tid=1),
                 recorded(5, register("E"), tid=1), END]
        self.assertEqual("C B D A E C B D A E", self.play(*lines, options=["--repeat=2"]))
        self.assertEqual("C B D A E", self.play(*lines, options=["--answer=enabled"]))
        self.assertEqual("A B C D E", self.play(
            *lines, options=["--no-service", "--property", FORCED + "=true"]))

    def test_many_calls_within_questions(self):
        lines = [recorded(number, register(f"i{number}")) for number in range(1, 20_001)]
        self.play(*lines, *[answered(number, "enabled") for number in range(20_000, 0, -1)], END)
        self.assertEqual("20000", self.total("calls made"))

    def test_answers_change(self):
        lines = [answered(99, "disabled", tid=9), recorded(1, register("A")),
                 recorded(2, register("B")), answered(2, "enabled"), recorded(3, register("C")),
                 answered(3, None, threw=True), recorded(4, register("D")),
                 recorded(5, register("E")), answered(5, "no"), END]
        self.assertEqual("B D", self.play(*lines))
        self.assertEqual('off at first: the service answers "disabled", and changes its answer '
                         "2 times", self.total("collection"))
        self.play(*lines[1:5], head=header(answers={"snapshotInfoCollectEnable": "no"}))
        self.assertEqual('off at first: the service answers "no", and changes its answer 1 time',
                         self.total("collection"))
        self.play(recorded(1, register("A")), answered(1, "no"), END,
                  head=header(answers={"snapshotInfoCollectEnable": "no"}))
        self.assertEqual('off: the service answers "no"', self.total("collection"))
        self.assertEqual("A B C D E", self.play(*lines, options=["--answer=enabled"]))
        self.assertEqual('on: the service answers "enabled"', self.total("collection"))
        self.assertEqual("A B D E", self.play(*lines, options=["--property", FORCED + "=true"]))
        lines = [recorded(1, register("A")), answered(9, "no"), recorded(2, register("B")), END]
        self.play(*lines, options=["--repeat=2"])
        self.assertEqual("2: A, A#2", self.total("records left"))

    def test_limited_threads(self):
        """Threads that no longer have anything to do are ended, but not one that asks."""
        lines = [recorded(1, register("A"), tid=1), recorded(2, register("B"), tid=1),
                 answered(2, "enabled", tid=1),
                 *[recorded(n, request(9), tid=n) for n in range(3, 1001)],
                 answered(1, "enabled", tid=1)]
        for options in [], ["--free"]:
            self.run_tool(self.write(header(), *lines, END), *options,
                          **limit(resource.RLIMIT_AS, 3_000_000_000))
            self.assertEqual("1000", self.total("calls made"))

    def test_limited_calls_within_a_question(self):
        """Nor do calls queue up without limit while a thread waits for its answer."""
        slow = slow_calls("t", ids=300_000)
        lines = [*slow, *slow[2:] * 9,
                 *[call("updateSnapshotErrorInfo", "B", text="x" * 1_000_000)] * 80]
        self.run_tool(self.write(header(), recorded(1, register("A"), tid=1),
                                 *[recorded(n, line, tid=2) for n, line in enumerate(lines, 2)],
                                 answered(1, "enabled", tid=1), END),
                      "--log-level", "error", **limit(resource.RLIMIT_AS, 75_000_000))
        self.assertEqual(str(1 + len(lines)), self.total("calls made"))

    def test_requests(self):
        record = {"frameInfo": {"imageName": "A", "timestamp": "5"}, "snapshotInfo": {"iso": 7}}
        self.play(recorded(1, request(1, key="snapshotInfoCollectEnable")), answered(1, "x"),
                  recorded(2, request(1, key=None)), recorded(3, request(1, key="a", out=None)),
                  recorded(4, request(0, record=record)), recorded(5, request(2, record=None)),
                  recorded(6, request(9)), recorded(7, register("B")), END,
                  options=["--json", "calls.jsonl"])
        self.assertIn('"id":"A","key":"iso","value":"7"',
                      (self.folder / "calls.jsonl").read_text(encoding="utf-8"))
        self.assertEqual(("7", "0", "1", "0"), tuple(self.total(name) for name in (
            "calls made", "flush calls", "reports", "records left")))
        for text in ("no command key given", "no place for the result", "no record given"):
            self.assertEqual(1, self.err.count(text), text)

    def test_other_manager(self):
        lines = [register("A"), frame("A"), anchor("A", 5), anchor("A", 6, manager="GetInstance"),
                 flush("A", manager="GetInstance")]
        self.run_tool(self.write(*lines))
        self.assertIn("\n    iso            5\n", self.out)
        self.assertIn("can't find imageName: A", self.err)


class LeftOut(RecordedTest):
    def test_image(self):
        lines = [recorded(1, register("A")), recorded(2, register("B")), answered(2, "no"),
                 recorded(3, register("C")), recorded(4, request(1, key="k")), END]
        self.assertEqual("A", self.play(*lines, options=["--image=A", "--image=C"]))
        self.assertEqual("3", self.total("calls made"))
        self.refuse("log.jsonl", "--image", "IMG", "--image", "A",
                    says="--image: IMG is in no line of the log\n")
        self.refuse(self.write(register("IMG_1")), "--image", "IMG_2",
                    says="--image: IMG_2 is in no line of the log; did you mean IMG_1?\n")
        self.refuse(self.write("{}"), "--image=A", says="log.jsonl:1: call: is missing\n")
        self.assertEqual(1, self.err.count("\n"))

    def test_images_without_beginning(self):
        lines = [recorded(1, anchor("A", 1)), recorded(2, register("B")),
                 recorded(3, register("A")), recorded(4, unregister("A")),
                 recorded(5, register("A")), recorded(6, register("C")), END]
        self.assertEqual("B A", self.play(*lines, head=header(cut=["A", "C"])))
        note = ("log.jsonl: 4 calls of 2 images left out: the first calls of these images are in "
                "an earlier file")
        self.assertEqual([note], self.notes)
        self.play(*lines, head=header(cut=["A", "C"], cutMore=1))
        self.assertEqual([note + "; 1 more such image played without them"], self.notes)
        self.play(*lines, head=header(cut=["A", "C"]), options=["--repeat=2"])
        self.assertEqual(("4: B, A, B#2, A#2", "4"),
                         (self.total("records left"), self.total("calls made")))
        lines = [recorded(1, request(0, record={"frameInfo": {"imageName": "A"}})), END]
        self.play(*lines, head=header(cut=["A"]))
        self.assertEqual(("1", []), (self.total("calls made"), self.notes))

    def test_omitted_call(self):
        long = recorded(1, call("updateFrameInfo", omitted=9))
        self.assertEqual("B", self.play(long, recorded(2, register("B")), END))
        self.assertEqual(["log.jsonl: 1 call left out: the arguments were too long to be recorded"],
                         self.notes)
        self.assertEqual("1", self.total("calls made"))

    def test_cut_line(self):
        cut = "log.jsonl:3: the last line is cut off and left out; the recording ended there"
        line = recorded(2, register("ä"))
        for length in (1, 20, len(line) - 1):
            self.assertEqual("A", self.play(recorded(1, register("A")), line[:length], end=""))
            self.assertEqual(cut, self.notes[0])
        self.assertEqual("A B", self.play(recorded(1, register("A")),
                                          recorded(2, register("B")), end=""))
        self.refuse(self.write(header(), line[:20], line), says="log.jsonl:2: line: is not valid")
        self.refuse(self.write(register("A") + "\n", line[:20], end=""),
                    says="log.jsonl:2: line: is not valid JSON")
        for length in (1, 12, 40):
            self.run_tool(self.write(header()[:length].replace(" ", "", 1), end=""))
            self.assertEqual("0", self.total("calls made"))
            self.assertIn("log.jsonl:1: the last line is cut off", self.err)

    def test_calls_that_may_not_have_returned(self):
        def note(line, operation, tid):
            return (f"log.jsonl:{line}: {operation} on thread t ({tid}) may not have returned when "
                    "the file ends")
        lines = [recorded(1, register("A"), tid=1), answered(1, "enabled", tid=1),
                 recorded(2, anchor("A", 1), tid=2),
                 recorded(3, anchor("A", 1, manager="GetInstance"), tid=4),
                 recorded(4, register("B", manager="GetInstance"), tid=3),
                 recorded(5, request(9), tid=5), recorded(6, anchor("A", 1), tid=6)]
        last = [note(5, "updateAnchor3aInfo", 4), note(7, "request", 5),
                note(8, "updateAnchor3aInfo", 6)]
        self.play(*lines)
        self.assertEqual([last[0], note(6, "registerSnapshotRequestRecord", 3), *last[1:]],
                         self.notes)
        self.play(*lines, head=header(service=False))
        self.assertEqual(last, self.notes)
        self.play(*lines, END)
        self.assertEqual([], self.notes)
        waits = [recorded(2, anchor("A", 1), tid=2), recorded(3, anchor("A", 1, unordered=True))]
        self.play(*waits)
        self.assertEqual([note(2, "updateAnchor3aInfo", 2), note(3, "updateAnchor3aInfo", 1)],
                         self.notes)
        self.play(recorded(1, register("C"), tid=4), waits[0],
                  answered(1, "no", tid=4, unordered=True))
        self.assertEqual([note(2, "registerSnapshotRequestRecord", 4),
                          note(3, "updateAnchor3aInfo", 2)], self.notes)
        nested = [recorded(1, register("A")), recorded(2, register("B")),
                  recorded(3, anchor("A", 1)), answered(2, "enabled")]
        self.play(recorded(1, request(1, key="k")), recorded(2, anchor("A", 1)),
                  answered(1, "x", key="k"), recorded(3, anchor("A", 1), tid=2))
        self.assertEqual([note(2, "request", 1), note(5, "updateAnchor3aInfo", 2)], self.notes)
        self.play(*nested)
        self.assertEqual([note(3, "registerSnapshotRequestRecord", 1)], self.notes)
        self.play(*nested, answered(1, "no"))
        self.assertEqual([note(2, "registerSnapshotRequestRecord", 1)], self.notes)
        self.play(*[recorded(n, anchor("A", 1), tid=n) for n in (1, 2)], answered(9, "no", tid=1))
        self.assertEqual([note(3, "updateAnchor3aInfo", 2)], self.notes)
        self.play(*[recorded(n, request(9), tid=n) for n in range(12)])
        self.assertEqual("log.jsonl: 2 earlier calls may not have returned either", self.notes[0])
        self.assertEqual(note(13, "request", 11), self.notes[-1])
        self.assertEqual(11, len(self.notes))


class BadInput(RecordedTest):
    def test_mixtures(self):
        good = recorded(1, register("A"))
        for lines, says in (([good, register("B")], "3: tid: is missing: the lines before are "
                             "recorded"),
                            ([register("B"), good], "3: tid: cannot be given: the lines before are "
                             "not recorded"),
                            ([good, '{"barrier":true}'], "3: barrier: cannot be given: the lines "
                             "before are recorded"),
                            ([good, '{"sleepMs":1}'], "3: sleepMs: cannot be given: the lines "
                             "before are recorded"),
                            ([good, END, good], "4: line: comes after the end of the recording"),
                            (['{"end":true}'], "2: calls: is missing"),
                            (['{"end":1,"calls":1}'], "2: end: must be true"),
                            ([good.replace('"at": 0', '"at": 1.5')],
                             "2: at: must be a whole number from 0 to 18446744073709551615"),
                            ([good.replace('"at"', '"At"')], "2: at: is missing"),
                            ([good.replace('"n"', '"N"')], "2: n: is missing"),
                            ([good.replace('"tid": 1', '"tid": "1"')], "2: tid: must be a whole "
                             "number from -2147483648 to 2147483647"),
                            ([good[:-1] + "".join(f',"p{i}":0' for i in range(17)) + ',"p3":1}'],
                             "2: p3: is given twice"),
                            ([good.replace("register", "rgister")], "2: call: is not an operation: "
                             "rgisterSnapshotRequestRecord; did you mean "
                             "registerSnapshotRequestRecord?"),
                            ([good.replace('{"n', '{"manager":"main","n')], '2: manager: must be '
                             '"GetInstance", or left out for the manager of getInstance()'),
                            ([answered(1, None)], "2: answer: is missing"),
                            (['{"answered":1,"key":"a","answer":"b"}'], "2: tid: is missing"),
                            ([answered(1, "a", threw=True)],
                             "2: answer: and threw exclude each other: give one, not both")):
            self.refuse_lines(*lines, says=says)
        self.play(recorded(1, register("A"), at=9), recorded(2, register("B"), at=3))
        self.refuse(self.write(register("A", at=1), register("B"), register("C", x=1)), "--timing",
                    says="log.jsonl:2: at: is missing, and --timing needs it\n"
                    "log.jsonl:3: x: is not a field of this call\n")
        self.assertEqual(2, self.err.count("\n"))

    def test_longest_recorded_line(self):
        long = recorded(1, call("updateSnapshotErrorInfo", text="A" * 2_000_000))
        self.play(long, END)
        self.play(recorded(2, register("A" * 2_000_000)), recorded(3, register("B"), tid=2),
                  answered(2, "enabled"), recorded(4, register("C"), tid=2), END,
                  options=["--free"])
        self.assertRegex(self.total("records left"), "^3: (.*, )?A{19}[.]{2}A{39}(,|$)")
        self.refuse(self.write('# "format"', long), says="is longer than 1048576 bytes")
        self.refuse(self.write(" " * (1 << 20) + "{}", header()),
                    says="log.jsonl:1: line: is longer than 1048576 bytes\n"
                    "log.jsonl:2: format: the header must be the log's first line\n")
        self.refuse_lines(" " * (1 << 26) + "{}", says="2: line: is longer than 67108864 bytes")

    def test_other_files(self):
        log = (register("A") + "\n") * 3
        pretty = json.dumps(json.loads(register("A")), indent=2)
        array = json.dumps([json.loads(register("A"))] * 9).replace("{", "\n{")
        several_lines = "has JSON that goes over several lines"
        no_log = "is no capture log: none of its first "
        logcat = "is a logcat or a bug report, which infosync-logcat reads\n"
        for content, says in ((log.encode("utf-16"), "is UTF-16"),
                              (log.encode("utf-16-le"), "is UTF-16"),
                              (log.encode("utf-16-be"), "is UTF-16"),
                              (gzip.compress(log.encode()), "is compressed by gzip"),
                              (lzma.compress(log.encode()), "is compressed by xz"),
                              (b"\x28\xb5\x2f\xfd\0", "is compressed by zstd"),
                              (b"PK\3\4\0", '"unzip" makes a capture log of it; infosync-logcat '
                               "reads bug reports\n"),
                              ("--------- beginning of main\nI/x( 1): y\n", logcat),
                              ("#\n\n11-21 10:15:00.123  1  2 I x: y\n", logcat),
                              ("[ 2026-11-21 10:15:00.123  1: 2 I/x ]\ny\n", logcat),
                              ("====\n== dumpstate: 2026-11-21 10:15:00\n", logcat),
                              ('{"x":1}\n11-21 10:15:00.123 I x: y\n', no_log + "2 lines"),
                              (pretty, several_lines),
                              (array, several_lines), ((pretty + "\n") * 2000, several_lines),
                              ("A title\n\nText.\nAnd more.\n" * 9, no_log + "10 lines is a call"),
                              ('{"level":"info"}\n' * 3, no_log + "3 lines is a call")):
            content = content if isinstance(content, bytes) else content.encode()
            (self.folder / "log.jsonl").write_bytes(content)
            for name in ("log.jsonl", "-"):
                self.refuse(name, stdin=content, says=says)
                self.assertEqual(1, self.err.count("\n"), self.err)
        self.run_tool(self.write(register("A"), "", "", register("B")))
        self.assertEqual("2", self.total("calls made"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:2])
