"""Opens pages in Chromium and uses them as a person would.

page_test.py MAKE_VIEWS REPLAY RECORDING RESULTS [TEST]; pages and screenshots stay in RESULTS.
"""

import base64
import hashlib
import json
import pathlib
import re
import subprocess
import sys
import unittest

from selenium.webdriver import ActionChains, Keys
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import Select, WebDriverWait

from browser import start_browser

PROJECT = pathlib.Path(__file__).resolve().parents[2]
MAKE_VIEWS, REPLAY, RECORDING, RESULTS = (pathlib.Path(each).resolve() for each in sys.argv[1:5])
COLOURS = {"failed": (204, 47, 58), "after": (169, 195, 230), "stage": (77, 156, 134),
           "no-effect": (168, 95, 0)}
CTRL = 2  # as the browser's protocol numbers it
MISLEADING = "[\x00-\x09\x0b-\x1f\x7f-\x9f\u061c\u200b-\u200f\u2028-\u202e\u2060-\u206f\ufeff]"


def make(kind, number):
    page = RESULTS / f"{kind}-{number}.html"
    subprocess.run([MAKE_VIEWS, kind, str(number), "", page], check=True)
    return page


def play(log, name=None):
    page = RESULTS / f"{name or pathlib.Path(log).stem}.html"
    subprocess.run([REPLAY, log, "--quiet", "--log-level", "silent", "--html", page], check=True)
    return page


class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = start_browser()

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()

    def setUp(self):
        self.browser.set_window_size(1200, 900)
        self.expects_errors = False

    def tearDown(self):
        if not self.expects_errors:
            self.check_quiet()

    # What is asked of every page.
    def check_quiet(self):
        """Nothing was asked of the network and nothing was logged."""
        self.assertEqual([entry["message"] for entry in self.browser.get_log("browser")], [])
        for entry in self.browser.get_log("performance"):
            message = json.loads(entry["message"])["message"]
            if message["method"] == "Network.requestWillBeSent":
                url = message["params"]["request"]["url"]
                self.assertRegex(url, r"^(file:///.*\.html|data:,)$")
        self.assertEqual(self.run("return performance.getEntriesByType('resource').length"), 0)

    def open(self, page):
        self.page = page
        self.browser.get("about:blank")
        self.browser.get_log("performance")
        self.browser.get(page.as_uri())
        self.assertRegex(self.text("totals"), "^[0-9]+ captures? · ")

    def run(self, result=None):  # pylint: disable=arguments-differ
        if isinstance(result, str):
            return self.browser.execute_script(result)
        return super().run(result)

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def text(self, identifier):
        return self.browser.find_element(By.ID, identifier).text

    def screenshot(self, name):
        self.browser.save_screenshot(str(RESULTS / f"{name}.png"))

    def rows(self, caption):
        """The table's cells, of the rows that are in the page."""
        return self.browser.execute_script("""
            const table = Array.from(document.querySelectorAll("table"))
                .find(each => each.caption.textContent === arguments[0]);
            return Array.from(table.tBodies[0].rows).filter(row => row.className !== "space")
                .map(row => Array.from(row.cells).map(cell => cell.textContent));""", caption)

    def names(self):
        return [row[1] for row in self.rows("Captures")]

    def picture(self, selector):
        url = self.browser.execute_script(
            "return document.querySelector(arguments[0]).toDataURL()", f"{selector} canvas")
        return hashlib.sha256(url.encode()).hexdigest()

    def press(self, *keys):
        ActionChains(self.browser).send_keys(*keys).perform()

    def choose(self, number):
        self.find(f"#list tbody tr[aria-rowindex='{number + 1}'] button").click()

    def wait_for(self, condition):
        WebDriverWait(self.browser, 20).until(lambda _: condition())

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
        self.assertRegex(self.text("totals"), r"^2 captures · 1 failed · 2 calls without effect · "
                         r"from 2026-05-28T20:26:45\.000Z$")
        session = self.find("#session div").text
        for text in ("made.jsonl, folder/second.jsonl, third.jsonl", "12 calls", "collection: on",
                     'no capture "X"', "second.jsonl:4", "the log's end is missing"):
            self.assertIn(text, session)
        self.assertEqual(self.rows("Captures"), [
            ["3", "IMG</script>", "failed", "0, 3", "7", "100.007", "2", "mfnr", "30.5", "1", "1"],
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
            ["Flushed", "at 100.007 ms"], ["Removed", "no"], ["To the flush", "100.007 ms"]])
        self.assertEqual(self.find("#capture .findings").text.split("\n"), [
            "node error mfnr · made.jsonl:9", "too late updateUIInfo · second.jsonl:8", "cut"])
        self.assertEqual(self.rows("Nodes"), [
            ["mfnr", "5010", "5012.25", "5040.5", "30.5", "NodeProcessError", "yes", "made.jsonl:7"],
            ["fusion", "5050", "-1 (timed out)", "inf", "not known", "not known", "no",
             "made.jsonl:7"]])
        self.assertEqual(self.rows("Stages"), [["0", "1request_to_zuhal", "not known"],
                                               ["1", "2request_to_vendor", "5"]])
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

    def colours(self, selector):
        """That are on the canvas, as red, green and blue."""
        return {tuple(colour) for colour in self.browser.execute_script("""
            const canvas = document.querySelector(arguments[0]);
            const {data} = canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height);
            const colours = new Set();
            for (let i = 0; i < data.length; i += 4) {
              if (data[i + 3] === 255) {
                colours.add(`${data[i]} ${data[i + 1]} ${data[i + 2]}`);
              }
            }
            return Array.from(colours, text => text.split(" ").map(Number));""",
                                                                  f"{selector} canvas")}

    def spans(self, chart):
        """What a time line says while the arrow goes through it."""
        canvas = self.find(f"{chart} canvas")
        said = []
        for _ in range(100):
            canvas.send_keys(Keys.ARROW_DOWN)
            text = self.find(f"{chart} .about").text
            if said and said[-1] == text:
                return said
            said.append(text)
        return said

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
        self.press(Keys.TAB)

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

    # Use.
    def test_filters(self):
        self.open(make("ordinary", 1000))
        self.assertEqual(self.text("shown"), "1000 of 1000 shown")
        bars = self.picture("#overview")
        self.find("#name").send_keys("burst_20261121_101500_77")
        self.assertEqual(self.text("shown"), "11 of 1000 shown")
        self.assertEqual(self.names()[:2], ["BURST_20261121_101500_77", "BURST_20261121_101500_770"])
        self.assertNotEqual(self.picture("#overview"), bars)
        self.find("#overview canvas").send_keys(Keys.ARROW_DOWN, Keys.ARROW_DOWN)
        self.assertIn("BURST_20261121_101500_770: at", self.find("#overview .about").text)
        Select(self.find("#mode")).select_by_visible_text("7")
        self.assertEqual(self.text("shown"), "3 of 1000 shown")
        self.find("#filters button[type=reset]").click()
        self.wait_for(lambda: self.text("shown") == "1000 of 1000 shown")
        self.find("#failed").click()
        self.assertEqual(self.text("shown"), "20 of 1000 shown")
        self.find("#failed").click()
        self.find("#no-effect").click()
        self.assertEqual(self.text("shown"), "32 of 1000 shown")
        self.find("#slow-capture").send_keys("331")
        self.assertEqual(self.text("shown"), "0 of 1000 shown")
        self.assertEqual(self.names(), [])
        self.find("#filters button[type=reset]").click()
        self.find("#slow-node").send_keys("400")
        self.wait_for(lambda: self.text("shown") == "2 of 1000 shown")
        self.assertEqual([row[7] for row in self.rows("Captures")], ["fusion", "fusion"])
        self.screenshot("filters")

    def test_sorting(self):
        self.open(make("ordinary", 600))
        header = next(each for each in self.browser.find_elements(By.CSS_SELECTOR, "#list th")
                      if each.text == "Its ms")
        header.find_element(By.TAG_NAME, "button").click()
        self.assertEqual(header.get_attribute("aria-sort"), "descending")
        self.assertEqual([row[0] for row in self.rows("Captures")[:2]], ["7", "507"])
        header.find_element(By.TAG_NAME, "button").click()
        self.assertEqual(header.get_attribute("aria-sort"), "ascending")
        self.assertLess(float(self.rows("Captures")[0][8]), 31)

    def test_ten_thousand_captures(self):
        page = make("ordinary", 10000)
        self.assertLessEqual(page.stat().st_size, 25_000_000)
        self.open(page)
        table = self.find("#list table")
        self.assertEqual(table.get_attribute("aria-rowcount"), "10001")
        self.assertLess(len(self.rows("Captures")), 100)
        self.run("document.querySelector('#list .scroll').scrollTop = 140000")
        self.wait_for(lambda: "5005" in [row[0] for row in self.rows("Captures")])
        self.assertLess(len(self.rows("Captures")), 100)
        self.find("#list .scroll").click()
        self.press(Keys.END, Keys.ENTER)
        self.assertEqual(self.text("capture-title"), "BURST_20261121_101500_10000")
        self.screenshot("ten-thousand")
        self.find("#list .scroll").click()
        self.press(Keys.END)
        self.assertEqual(self.run("return document.activeElement.dataset.row"), "9999")
        self.run("document.querySelector('#list .scroll').scrollTop = 0")
        self.wait_for(lambda: self.names()[0].endswith("_1"))
        self.assertEqual(self.run("return document.activeElement.className"), "scroll")
        self.find("#name").send_keys("_9999")
        self.assertEqual(self.names(), ["BURST_20261121_101500_9999"])

    def test_keyboard(self):
        self.open(make("ordinary", 30))
        seen = []
        for _ in range(40):
            self.press(Keys.TAB)
            seen.append(self.run("const focused = document.activeElement; return focused.id || "
                                 "focused.className || focused.tagName"))
            if seen[-1] == "scroll":
                break
        self.assertEqual(seen[:3], ["SUMMARY", "name", "mode"])
        self.assertIn("CANVAS", seen)
        self.press(Keys.ARROW_DOWN, Keys.ARROW_DOWN, Keys.ARROW_DOWN, Keys.ARROW_UP, Keys.ENTER)
        self.assertEqual(self.text("capture-title"), "BURST_20261121_101500_2")
        self.assertEqual(self.run("return document.activeElement.id"), "capture-title")
        self.check_chart_keys("#capture", "update[A-Za-z]+", 9)
        self.check_chart_keys("#overview", "BURST_20261121_101500_4", 4)
        self.press(Keys.ENTER)
        self.assertEqual(self.text("capture-title"), "BURST_20261121_101500_4")

    def check_chart_keys(self, chart, name, downs):
        canvas = self.find(f"{chart} canvas")
        self.run(f"document.querySelector('{chart} canvas').focus()")
        whole = self.picture(chart)
        pictures = {whole}
        for key in ("+", "+", Keys.ARROW_RIGHT, Keys.ARROW_LEFT, "-"):
            canvas.send_keys(key)
            pictures.add(self.picture(chart))
        self.assertGreaterEqual(len(pictures), 4)
        canvas.send_keys("0")
        self.assertEqual(self.picture(chart), whole)
        for _ in range(downs + 1):
            canvas.send_keys(Keys.ARROW_DOWN)
        canvas.send_keys(Keys.ARROW_UP)
        self.assertNotEqual(self.picture(chart), whole)
        self.assertRegex(self.find(f"{chart} .about").text, f"^{name}: at [0-9.]+ ms")

    def test_touch(self):
        self.browser.execute_cdp_cmd("Emulation.setTouchEmulationEnabled",
                                     {"enabled": True, "maxTouchPoints": 2})
        self.open(make("ordinary", 200))
        whole = self.picture("#overview")
        self.pinch(self.find("#overview canvas"))
        self.wait_for(lambda: self.picture("#overview") != whole)
        self.browser.execute_cdp_cmd("Emulation.setTouchEmulationEnabled", {"enabled": False})
        self.find("#overview button[aria-label='Show all the time']").click()
        self.wait_for(lambda: self.picture("#overview") == whole)

    def test_mouse(self):
        self.open(make("ordinary", 200))
        canvas = self.find("#overview canvas")
        whole = self.picture("#overview")
        self.wheel(canvas, -600, CTRL)
        self.wait_for(lambda: self.picture("#overview") != whole)
        zoomed = self.picture("#overview")
        ActionChains(self.browser).drag_and_drop_by_offset(canvas, 200, 0).perform()
        self.assertNotEqual(self.picture("#overview"), zoomed)
        moved = self.picture("#overview")
        self.wheel(canvas, 300, 0)  # without Ctrl it is the page's
        self.wait_for(lambda: self.run("return scrollY > 0"))
        self.assertEqual(self.picture("#overview"), moved)
        self.find("#overview button[aria-label='Show all the time']").click()
        self.assertEqual(self.picture("#overview"), whole)
        self.hover(canvas, 12, 46)
        self.assertIn("BURST_20261121_101500_2: at 35 ms", self.find("#overview .about").text)
        self.hover(canvas, 6, 26)
        self.assertIn("BURST_20261121_101500_1: at 0 ms", self.find("#overview .about").text)
        ActionChains(self.browser).click().perform()
        self.assertEqual(self.text("capture-title"), "BURST_20261121_101500_1")

    def hover(self, canvas, x, y):
        size = canvas.size
        ActionChains(self.browser).move_to_element_with_offset(
            canvas, x - size["width"] // 2, y - size["height"] // 2).perform()

    def middle(self, canvas):
        box = self.browser.execute_script(
            "const box = arguments[0].getBoundingClientRect(); "
            "return [box.left + box.width / 2, box.top + box.height / 2]", canvas)
        return [float(each) for each in box]

    def wheel(self, canvas, delta, modifiers):
        x, y = self.middle(canvas)
        self.browser.execute_cdp_cmd("Input.dispatchMouseEvent", {
            "type": "mouseWheel", "x": x, "y": y, "deltaX": 0, "deltaY": delta,
            "modifiers": modifiers})

    def pinch(self, canvas):
        x, y = self.middle(canvas)

        def touch(kind, *positions):
            points = [{"x": x + at, "y": y, "id": number} for number, at in enumerate(positions)]
            self.browser.execute_cdp_cmd("Input.dispatchTouchEvent",
                                         {"type": kind, "touchPoints": points})
        touch("touchStart", -20, 20)
        for distance in (40, 80, 160):
            touch("touchMove", -distance, distance)
        touch("touchEnd")

    # Looks.
    def emulate(self, **media):
        features = [{"name": name.replace("_", "-"), "value": value}
                    for name, value in media.items()]
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": features})

    def test_light_and_dark(self):
        self.open(make("ordinary", 40))
        self.choose(1)
        papers, pictures = set(), set()
        for scheme in ("light", "dark"):
            self.emulate(prefers_color_scheme=scheme)
            papers.add(self.run("return getComputedStyle(document.documentElement).backgroundColor"))
            self.wait_for(lambda: self.picture("#capture") not in pictures)
            pictures.add(self.picture("#capture"))
            self.screenshot(scheme)
        self.emulate()
        self.assertEqual(papers, {"rgb(255, 255, 255)", "rgb(22, 25, 29)"})

    def test_narrow(self):
        self.open(make("ordinary", 40))
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": 390, "height": 844, "deviceScaleFactor": 2, "mobile": True})
        self.choose(1)
        overflow = self.run("return document.scrollingElement.scrollWidth - innerWidth")
        self.screenshot("narrow")
        self.browser.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})
        self.assertLessEqual(overflow, 0)

    def test_paper(self):
        self.open(make("ordinary", 300))
        self.choose(1)
        self.run("addEventListener('beforeprint', () => { window.printed = "
                 "document.querySelectorAll('#list tbody tr:not(.space)').length; })")
        pdf = self.browser.execute_cdp_cmd("Page.printToPDF", {})["data"]
        (RESULTS / "paper.pdf").write_bytes(base64.b64decode(pdf))
        self.assertEqual(self.run("return window.printed"), 300)
        self.assertLess(len(self.rows("Captures")), 100)


if __name__ == "__main__":
    RESULTS.mkdir(parents=True, exist_ok=True)
    unittest.main(argv=[sys.argv[0], *sys.argv[5:]])
