"""Opens pages of real and of hostile logs in Chromium.

page_test.py MAKE_VIEWS REPLAY RECORDING RESULTS [TEST]; pages and pictures of them stay in RESULTS.
"""

import json
import pathlib
import re
import sys
import unittest

from page_case import PROJECT, RECORDING, RESULTS, PageCase, make, play

COLOURS = {"failed": (204, 47, 58), "after": (169, 195, 230), "stage": (77, 156, 134),
           "no-effect": (168, 95, 0)}
MISLEADING = "[\x00-\x09\x0b-\x1f\x7f-\x9f\u061c\u200b-\u200f\u2028-\u202e\u2060-\u206f\ufeff]"


class Pages(PageCase):
    # Pages of real logs.
    def test_scenarios(self):
        for log in sorted((PROJECT / "scenarios").glob("*.jsonl")):
            with self.subTest(log=log.name):
                images = {json.loads(line).get("image") for line in log.read_text().splitlines()
                          if "registerSnapshot" in line}
                self.open(play(log))
                shown = self.names()
                self.assertEqual(self.text("shown"), f"{len(shown)} of {len(shown)} shown")
                if "switched-off" not in log.name:
                    self.assertEqual(set(shown), images)
                    self.choose(1)
                self.screenshot(log.stem)
                self.check_quiet()

    def test_a_node_that_timed_out(self):
        self.open(play(PROJECT / "scenarios" / "night-shot.jsonl"))
        self.choose(1)
        self.assertEqual(self.find("#list td.failed").text, "failed")
        fusion = next(row for row in self.rows("Nodes") if row[0] == "fusion")
        self.assertEqual(fusion[:5],
                         ["fusion", "77125903", "-1 (timed out)", "77135903", "10000"])
        findings = self.find("#capture .findings").text
        self.assertRegex(findings, r"fusion.*night-shot\.jsonl:17")

    def test_a_recorded_burst(self):
        self.open(play(RECORDING, "recorded"))
        failed = next(row for row in self.rows("Captures") if row[2] == "failed")
        self.choose(int(failed[0]))
        threads = {row[2] for row in self.rows("Calls")}
        self.assertGreaterEqual(len(threads), 3)
        self.assertNotIn("not known", [row[0] for row in self.rows("Calls")])
        self.find("#capture .chart canvas").screenshot(str(RESULTS / "recorded-capture.png"))
        self.screenshot("recorded")

    def test_all_of_a_capture(self):
        self.open(make("complete", 2))
        self.assertRegex(self.text("totals"), r"^2 captures · 1 failed · 10 calls without effect · "
                         r"1 failure of no known capture · from 2026-05-28T20:26:45\.000Z$")
        session = self.find("#session div").text
        for text in ("made.jsonl, folder/second.jsonl, third.jsonl", "12 calls", "collection: on",
                     'no capture "X"', "second.jsonl:4", "the log's end is missing"):
            self.assertIn(text, session)
        self.assertEqual(self.rows("Captures"), [
            ["3", "IMG</script>", "failed", "0, 3", "7", "100.007", "2", "mfnr", "30.5", "1", "3"],
            ["4", "nodes only", "", "not known", "not known", "not known", "2", "mfnr", "30.5",
             "0", "0"]])
        self.assertEqual(self.spans("#overview"), ["IMG</script>: at 0 ms, 110 ms, failed",
                                                   "nodes only: at 0 ms, 40 ms"])
        self.choose(1)
        facts = self.run("return Array.from(document.querySelectorAll('#capture dl div'), "
                         "fact => Array.from(fact.children, part => part.textContent))")
        self.assertEqual(facts, [
            ["Process", "hal"], ["Number", "3"], ["Cameras", "0, 3"],
            ["Algorithms", "mfnr, fusion"], ["Registered", "at 0 ms"],
            ["Flushed", "at 100.007 ms"], ["Removed", "not in the log"], ["To the flush", "100.007 ms"]])
        self.assertEqual(self.find("#list tr.chosen button").text, "IMG</script>")
        self.assertEqual(self.find("#capture .findings").text.split("\n"), [
            "node error mfnr · made.jsonl:9", "too late updateUIInfo · second.jsonl:8", "cut"])
        self.assertEqual(self.rows("Nodes"), [
            ["mfnr", "5010", "5012.25", "5040.5", "30.5", "NodeProcessError", "yes", "made.jsonl:7"],
            ["fusion", "5050", "-1 (timed out)", "inf", "not known", "not known", "no",
             "made.jsonl:7"]])
        self.assertEqual(self.find("#capture td.failed").text, "-1 (timed out)")
        self.assertEqual(self.rows("Stages"), [["0", "1request_to_zuhal", ""],
                                               ["1", "2request_to_vendor", "5"],
                                               ["2", "3result_from_vendor", "-1"]])
        self.assertEqual(self.rows("Values"), [
            ["frame", "frameNumber", "900"], ["request", "reqFlag", "true"],
            ["user interface", "camMode", "7"], ["3A", "iso", "125"]])
        self.assertEqual(self.rows("Vendor results"), [["40", "error_none", "made.jsonl:5"],
                                                       ["41", "not known", ""]])
        self.assertEqual(self.rows("Reports"), [
            ["100.007 ms", "iso=125, lux=3.5", "0", "not known", "made.jsonl:10"],
            ["105 ms", "", "1", "1022, 10000", ""]])
        self.assertEqual(self.rows("Calls"), [
            ["20 ms", "updateUIInfo", "algo (9)", "none", "second.jsonl:8"],
            ["not known", "updateFrameInfo", "", "", ""],
            ["60 ms", "late", "(10)", "", ""], ["10 ms", "early", "cam (10)", "", ""],
            ["15 ms", "byHand", "hand", "", ""], ["16 ms", "byOther", "other", "", ""],
            ["200,000,000 ms", "farAway", "far", "", ""]])
        self.assertEqual(
            self.find("#capture canvas").get_attribute("aria-label"),
            "Time line of IMG</script>: capture, stages, mfnr, fusion, calls of cam (10), "
            "calls of hand, calls of other, calls of algo (9)")
        self.assertEqual(self.spans("#capture"), [
            "to the flush: at 0 ms, 100.007 ms, failed", "2request_to_vendor: at 0 ms, 5 ms",
            "mfnr: at 10 ms, 30.5 ms, failed", "early: at 10 ms", "byHand: at 15 ms",
            "byOther: at 16 ms", "updateUIInfo: at 20 ms, failed", "fusion: at 50 ms, failed",
            "late: at 60 ms", "after the flush: at 100.007 ms, 9.993 ms"])
        colours = self.colours("#capture")
        for name, colour in COLOURS.items():
            self.assertIn(colour, colours, name)

    def test_times_of_the_real_clock(self):
        self.open(make("real", 2))
        self.assertRegex(self.text("totals"), " · from 1970-01-02T09:27:35.035Z$")

    # Pages of logs that mean harm.
    def check_harmless(self):
        self.assertIsNone(self.run("return window.broken || null"))
        self.assertEqual(self.run("return document.scripts.length"), 2)
        self.assertEqual(self.run("return document.images.length"), 0)
        text = self.run("return document.body.textContent")
        self.assertIsNone(re.search(MISLEADING, text))

    def test_hostile_captures(self):
        self.open(make("hostile", 300))
        self.screenshot("hostile")
        self.check_harmless()
        self.assertIn("</script><script>window.broken=1</script>", self.names())
        self.assertIn("\\u{202e}gnp.eman\\u{202c} and \\u{2066}isolated\\u{2069}", self.names())
        self.assertTrue(any(name.endswith("… (1048576 characters)") for name in self.names()))
        for number in range(1, 15):
            self.choose(number)
            self.check_harmless()
        for weight in ("failed", "no-effect"):
            self.find(f"#{weight}").click()
            self.check_harmless()

    def test_a_hostile_log(self):
        names = ["</script><script>window.broken=1</script>", "\u2028\u202e\u0000\u001b[31m",
                 "'\"><img src=x onerror=window.broken=1>", "x" * (2**20 - 200)]
        log = RESULTS / "hostile-log.jsonl"
        with log.open("w") as file:
            for name in names:
                for call in ({"call": "registerSnapshotRequestRecord"},
                             {"call": "updateFrameInfo", "frameNumber": 1, "timestamp": name[:50],
                              "camIds": [0], "frameExtra": 0},
                             {"call": "updateSnapshotErrorInfo", "text": name[:50].replace("\0", "")},
                             {"call": "updateNodeProcTime", "node": name[:50], "first": 1,
                              "second": -1, "third": 9}, {"call": "snapshotRequestInfoFlush"}):
                    file.write(json.dumps({"image": name, **call}) + "\n")
        self.open(play(log))
        for number in range(1, len(names) + 1):
            self.choose(number)
            self.check_harmless()
        self.open(play(PROJECT / "tests" / "replay" / "logs" / "hostile-names.jsonl"))
        self.choose(1)
        self.check_harmless()

    def test_the_policy_lets_nothing_else_run_or_load(self):
        self.expects_errors = True
        self.open(make("ordinary", 8))
        self.run("""
            const script = document.createElement("script");
            script.textContent = "window.broken = 1";
            const image = document.createElement("img");
            image.src = "data:image/gif;base64,R0lGODlhAQABAAAAACw=";
            const style = document.createElement("style");
            style.textContent = "body { display: none }";
            const link = document.createElement("a");
            link.setAttribute("onclick", "window.broken = 1");
            document.body.append(script, image, style, link);
            link.click();
            fetch("http://127.0.0.1:9/").catch(() => {});""")
        self.assertIsNone(self.run("return window.broken || null"))
        self.assertNotEqual(self.run("return getComputedStyle(document.body).display"), "none")
        log = " ".join(entry["message"] for entry in self.browser.get_log("browser"))
        for directive in ("script-src", "style-src", "default-src"):
            self.assertRegex(log, f"Content Security Policy directive:? ['\"]{directive}")


if __name__ == "__main__":
    RESULTS.mkdir(parents=True, exist_ok=True)
    unittest.main(argv=[sys.argv[0], *sys.argv[5:]])
