"""What the tests of pages have in common: pages, and the browser that opens them."""

import hashlib
import json
import pathlib
import subprocess
import sys
import unittest

from selenium.webdriver import ActionChains, Keys
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

from browser import start_browser

PROJECT = pathlib.Path(__file__).resolve().parents[2]
MAKE_VIEWS, REPLAY, RECORDING, RESULTS = (pathlib.Path(each).resolve() for each in sys.argv[1:5])


def make(kind, number):
    page = RESULTS / f"{kind}-{number}.html"
    subprocess.run([MAKE_VIEWS, kind, str(number), "", page], check=True)
    return page


def play(log, name=None):
    page = RESULTS / f"{name or pathlib.Path(log).stem}.html"
    subprocess.run([REPLAY, log, "--quiet", "--log-level", "silent", "--html", page], check=True)
    return page


class PageCase(unittest.TestCase):
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
        WebDriverWait(self.browser, 60).until(lambda _: condition())

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
