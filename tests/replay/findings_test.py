"""What infosync-replay finds, and what it warns of: findings_test.py Class.test_name COMMAND...

COMMAND is the tool, behind an emulator if it needs one. FindingsTest.cpp has the kinds of findings."""

import json
import re
import sys
import unittest

from replay_case import (ReplayTest, anchor, answered, call, fail, flush, frame, header, recorded,
                         register)

FORCED = "persist.vendor.camera.infoSyncCollect.forceEnabled"
SUPPORTED = "persist.vendor.camera.camquill.supported"
END = '{"end":true,"calls":1}'


def unregister(image):
    return call("unregisterSnapshotRequestRecord", image)


def stage(number, image="A"):
    return call("updateSnapshotTimeInfo", image, stage=number)


class FindingsTest(ReplayTest):
    def find(self, *lines, options=(), **more):
        """The lines under "findings"."""
        self.run_tool(self.write(*lines), "--summary", "--log-level", "silent", *options, **more)
        section = re.match("findings\n((?:  .*\n)*)", self.out)
        return [re.sub("  +", " ", line).strip()
                for line in section.group(1).splitlines()] if section else []


class ExitStatus(FindingsTest):
    def test_fail_on_findings(self):
        good = [register("A"), frame("A"), flush("A"), unregister("A")]
        for lines, status in ((good, 0), (good[:3], 0), ([*good, anchor("A", 1)], 3),
                              ([*good[:2], fail("A"), *good[2:]], 3)):
            log = self.write(*lines)
            for options in (["--quiet"], ["--json", "-"], []):
                self.run_tool(log, *options, "--fail-on", "findings", status=status)
                self.run_tool(log, *options)
        self.run_tool(log, "--answer=no", "--fail-on=findings", status=3)
        with open("/dev/full", "wb") as full:
            self.run_tool(log, "--fail-on=findings", stdout=full, status=2)
        self.refuse(log, "--fail-on", "errors", says="--fail-on")

    def test_views_that_cannot_be_written(self):
        log = self.write(register("A"))
        for option in ("--trace", "--html"):
            self.run_tool(log, option, "absent/file", status=2)
            self.assertIn("absent/file", self.err)


class SwitchedOff(FindingsTest):
    LINES = [register("A"), frame("A"), flush("A"), register("A"), anchor("A", 1), unregister("A"),
             flush("B"), anchor("B", 1)]
    B = "log.jsonl:8 B: updateAnchor3aInfo: is not registered"

    def test_said_once_with_what_helps(self):
        for options, says in (
                (["--property", SUPPORTED + "=false"],
                 f"{SUPPORTED} is not true; 7 calls had no effect; "
                 f"--property {SUPPORTED}=true turns it on"),
                (["--no-service"],
                 f"there is no service to ask, and {FORCED} is not true; 7 calls had no effect; "
                 f"--service, or --property {FORCED}=true, turns it on"),
                (["--answer", "no\\"], 'the service answers "no\\\\"; 7 calls had no effect; '
                 "--answer enabled turns it on")):
            self.assertEqual(["log.jsonl:1 collection is off: " + says, self.B],
                             self.find(*self.LINES, options=options))
            self.assertIn("\n0 captures, 0 failed, 8 calls without effect\n", self.out)

    def test_remedies_help(self):
        for variable, value, remedies in (
                ("INFOSYNC_HOST_ANSWER", "no",
                 (["--answer", "enabled"], ["--property", FORCED + "=true"])),
                ("INFOSYNC_HOST_NO_SERVICE", "1", (["--service"], ["--property", FORCED + "=true"])),
                ("INFOSYNC_HOST_PROPERTIES", SUPPORTED + "=0",
                 (["--property", SUPPORTED + "=true"],))):
            environment = {variable: value}
            self.assertRegex(self.find(register("A"), environment=environment)[0],
                             "is off: .*; 1 call had no effect; ")
            for remedy in remedies:
                said = self.find(register("A"), options=remedy, environment=environment)
                self.assertNotIn("is off", "".join(said))

    def test_no_properties(self):
        root = {"INFOSYNC_HOST_ROOT": str(self.folder)}
        says = self.find(*self.LINES, environment=root)[0]
        self.assertIn(f"{SUPPORTED}=true and --property {FORCED}=true turn it on; no build.prop "
                      f"found: {self.folder}/build.prop", says)
        (self.folder / "build.prop").write_text("", encoding="utf-8")
        self.assertNotIn("build.prop", self.find(*self.LINES, environment=root)[0])
        (self.folder / "build.prop").write_text(SUPPORTED + "=true\n", encoding="utf-8")
        self.assertIn(f"no effect; --property {FORCED}=true turns it on",
                      self.find(*self.LINES, environment=root)[0])

    def test_said_with_all_that_is_off(self):
        off = ["--property", SUPPORTED + "=false"]
        for options, more in ((["--no-service"], "and --service turn it on"),
                              (["--answer", "no"], "and --answer enabled turn it on"),
                              (["--no-service", "--property", FORCED + "=1"], "turns it on")):
            self.assertTrue(self.find(register("A"), options=[*off, *options])[0].endswith(
                f"had no effect; --property {SUPPORTED}=true {more}"), options)

    def test_a_name_that_is_refused_after_its_removal(self):
        said = self.find(header(), recorded(1, register("A")), answered(1, "enabled\0x"),
                         recorded(2, flush("A")), recorded(3, unregister("A")),
                         recorded(4, register("A")), answered(4, "no"), recorded(5, frame("A")),
                         recorded(6, register("A")), answered(6, "enabled"), recorded(7, flush("A")),
                         recorded(8, unregister("A")), recorded(9, frame("A")), END)
        self.assertEqual('on at first: the service answers "enabled\\x00x", and changes its answer '
                         "2 times", self.total("collection"))
        self.assertEqual(
            ['log.jsonl:6 collection is off: the service answers "no"; 2 calls had no effect; '
             "--answer enabled turns it on",
             "log.jsonl:13 A: updateFrameInfo: was unregistered in line 12"], said)

    def test_no_effect_without_a_service(self):
        request = json.dumps({"call": "request", "type": 0, "at": 3,
                              "record": {"frameInfo": {"imageName": "A"}}})
        self.assertEqual(["log.jsonl:2 A request: there is no service to report to",
                          "log.jsonl:3 A snapshotRequestInfoFlush: there is no service to report to"],
                         self.find(register("A", at=1), request, flush("A", at=5), unregister("A"),
                                   options=["--no-service", "--property", FORCED + "=true",
                                            "--trace", "trace.json"]))
        events = json.loads((self.folder / "trace.json").read_text())["traceEvents"]
        self.assertEqual(["request", "snapshotRequestInfoFlush"],
                         [event["name"] for event in events if event.get("cat") == "call,failed"])

    def test_no_service_for_a_flush(self):
        options = ["--no-service", "--property", FORCED + "=true"]
        self.assertEqual(["log.jsonl:3 A snapshotRequestInfoFlush: there is no service to report to",
                          "log.jsonl:4 B: snapshotRequestInfoFlush: is not registered"],
                         sorted(self.find(register("A"), frame("A"), flush("A"), flush("B"),
                                          unregister("A"), options=options)))

    def test_answers_of_a_recording(self):
        lines = [recorded(1, register("A")), answered(1, "no"), recorded(2, frame("A")),
                 recorded(3, register("B")), answered(3, "enabled"), recorded(4, register("C")),
                 answered(4, None, threw=True), recorded(5, frame("C")), recorded(6, unregister("B")),
                 answered(6, "no"), recorded(7, frame("B")), recorded(8, register("A")),
                 answered(8, "enabled\0"), recorded(9, frame("A")), recorded(10, frame("C")),
                 recorded(11, unregister("A")), answered(11, "enabled"), recorded(12, flush("A")),
                 answered(12, "enabled"), END]
        said = self.find(header(), *lines)
        self.assertEqual(
            ['log.jsonl:2 collection is off: the service answers "no"; 3 calls had no effect; '
             "--answer enabled turns it on",
             "log.jsonl:7 the service throws when it is asked whether to collect; 3 calls had no "
             "effect; --answer enabled answers in its place"], said[:2])
        self.assertEqual({"log.jsonl:5 B", "log.jsonl:13 A", "log.jsonl:19 A:"},
                         {" ".join(line.split()[:2]) for line in said[2:]})

    def test_earlier_files(self):
        lines = [recorded(1, anchor("A", 1)), END]
        self.assertEqual(["log.jsonl:2 A: updateAnchor3aInfo: is not registered; it may have been "
                          "in an earlier log"], self.find(header(cutMore=1), *lines))

    def test_later_files(self):
        lines = [header(), recorded(1, register("A")), recorded(2, frame("A"))]
        end = '{"end":true,"calls":2%s}'
        self.assertEqual([], self.find(*lines, end % ',"next":2', options=["--fail-on=findings"]))
        self.assertEqual(["log.jsonl:2 A registered and never flushed",
                          "log.jsonl:2 A registered and never unregistered"],
                         self.find(*lines, end % ""))
        self.refuse(self.write(*lines, end % ',"next":-1'), says="log.jsonl:4: next: must be a")


class Records(FindingsTest):
    def lines(self, *log, options=()):
        self.run_tool(self.write(*log), "--json", "calls.jsonl", "--records", "--quiet",
                      "--log-level", "silent", *options)
        with open(self.folder / "calls.jsonl", encoding="utf-8") as file:
            return [json.loads(line) for line in file]

    def test_after_each_flush(self):
        lines = self.lines(register("A"), frame("A"), flush("A"), anchor("A", 5), flush("A"),
                           flush("B"), unregister("A"),
                           json.dumps({"call": "request", "type": 0, "record": {}}))
        self.assertEqual(["finishReport", "record"] * 2 + ["finishReport"],
                         [line["call"] for line in lines
                          if line["call"] in ("finishReport", "record")])
        records = [line for line in lines if line["call"] == "record"]
        self.assertEqual([0, 5], [line["record"]["snapshotInfo"]["iso"] for line in records])
        self.assertEqual(["A", "A"], [line["image"] for line in records])
        without = [line for line in lines if line["call"] != "record"]
        self.run_tool("log.jsonl", "--json", "-", "--log-level", "silent", "--trace", "trace")
        self.assertEqual(without, [json.loads(line) for line in self.out.splitlines()])
        self.run_tool("log.jsonl", "--records", status=2)
        self.assertIn("--records requires --json", self.err)

    def test_is_a_record_that_can_be_requested(self):
        """A record that is played as a request gives the report that the flush gave."""
        lines = self.lines(*(self.folder / "night-shot.jsonl").read_text().splitlines())
        request = [json.dumps({"call": "request", "type": 0, "record": line["record"]})
                   for line in lines if line["call"] == "record"]
        self.assertEqual(3, len(request))
        self.run_tool(self.write(*request), "--json", "-")
        self.assertEqual([line for line in lines if line["call"] != "record"],
                         [json.loads(line) for line in self.out.splitlines()])

    def test_names_that_are_no_text(self):
        name = {"hex": "ff"}
        self.assertEqual(name, self.lines(register(name), flush(name))[-1]["image"])

    def test_times(self):
        times = {"createTime": {"sec": 0, "nsec": 5}, "requestTime": {"sec": 0, "nsec": 6}}
        log = [register("A"), stage(0), stage(1), stage(7), flush("A")]
        at = [recorded(number, line, at=5 + number) for number, line in enumerate(log)]
        record = self.lines(header(), *at, END)[-1]["record"]
        self.assertEqual(times, {key: record[key] for key in times})
        self.assertEqual({"1request_to_zuhal": -1, "2request_to_vendor": 0,
                          "8getbuffer_from_fwk": 0}, record["snapshotInfo"]["timeInfo"])
        record = self.lines(*log)[-1]["record"]
        nothing = {"sec": 0, "nsec": 0}
        self.assertEqual((nothing, nothing), (record["createTime"], record["requestTime"]))
        self.assertEqual({"1request_to_zuhal": -1, "8getbuffer_from_fwk": 0},
                         record["snapshotInfo"]["timeInfo"])

    def test_threads_that_run_freely(self):
        names = [f"{thread}.{number}" for number in range(50) for thread in "abcd"]
        log = [line(name, thread=name[0]) for name in names for line in (register, frame, flush)]
        lines = self.lines(*log)
        self.assertEqual(11 * len(names), len(lines))
        for report in zip(*[iter(lines)] * 11):
            self.assertEqual("record", report[10]["call"])
            self.assertEqual({report[10]["image"]}, {line["id"] for line in report[:10]})


class Warnings(FindingsTest):
    def test_misspelt_property(self):
        log = self.write(register("A"))
        wrong = "persist.vendor.camera.camquill.suported"
        warning = (f"infosync-replay: --property: the library does not read {wrong}; did you mean "
                   f"{SUPPORTED}?\n")
        self.run_tool(log, "--property", wrong + "=1", "--property", SUPPORTED + "=1",
                      "--property", FORCED.upper() + "=1", "--property", "my.own=1", "--quiet")
        self.assertEqual(warning + warning.replace(wrong, FORCED.upper()).replace(SUPPORTED, FORCED),
                         self.err)

    def test_no_calls(self):
        for lines in ([], ["# a comment", '{"sleepMs":0}'], [header(), '{"end":true,"calls":0}']):
            self.run_tool(self.write(*lines), "--fail-on", "findings")
            self.assertEqual("log.jsonl: has no calls\n", self.err)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:2])
