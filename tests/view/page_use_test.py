"""Uses pages in Chromium as a person would, with mouse, touch and keys.

page_use_test.py MAKE_VIEWS REPLAY RECORDING RESULTS [TEST]; pages and pictures of them stay in RESULTS.
"""

import base64
import sys
import unittest

from selenium.webdriver import ActionChains, Keys
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import Select

from page_case import RESULTS, PageCase, make

CTRL = 2  # as the browser's protocol numbers it


class Use(PageCase):
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
        self.open(make("complete", 2))
        # What is not known comes last either way.
        for title, orders in (("To the flush, ms", (("descending", "3"), ("ascending", "3"))),
                              ("Number", (("ascending", "3"), ("descending", "4")))):
            header = next(each for each in self.browser.find_elements(By.CSS_SELECTOR, "#list th")
                          if each.text == title)
            for order, first in orders:
                header.find_element(By.TAG_NAME, "button").click()
                self.assertEqual(header.get_attribute("aria-sort"), order)
                self.assertEqual(header.text, title + (" ↑" if order == "ascending" else " ↓"))
                self.assertEqual(self.rows("Captures")[0][0], first)

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
        self.press(Keys.PAGE_UP)
        self.assertLess(int(self.run("return document.activeElement.dataset.row")), 9998)
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
        canvas.send_keys("++++++")
        zoomed = self.picture("#overview")
        canvas.send_keys(Keys.ARROW_UP)  # to the last, which cannot be seen
        self.assertNotEqual(self.picture("#overview"), zoomed)

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
