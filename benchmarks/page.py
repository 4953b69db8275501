"""Prints how large a page is and how long Chromium takes to draw and to filter it.

page.py MAKE_VIEWS RESULTS; a page of 10,000 captures beside one of 100.
"""

import pathlib
import statistics
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tests" / "view"))

from browser import start_browser  # pylint: disable=wrong-import-position

LOADS = 7
FILTERS = ("_77", "_777", "9", "no such name")


def measures(browser, name):
    return browser.execute_script(
        "return performance.getEntriesByName(arguments[0]).map(entry => entry.duration)", name)


def measured(browser, page):
    """Medians in milliseconds, of the first drawing and of a filter."""
    first, filters = [], []
    for _ in range(LOADS):
        browser.get("about:blank")
        browser.get(page.as_uri())
        first += measures(browser, "first draw")
        for text in FILTERS:
            browser.execute_script("""
                const name = document.getElementById("name");
                name.value = arguments[0];
                name.dispatchEvent(new Event("input", {bubbles: true}));""", text)
        filters += measures(browser, "filter")[1:]
    return statistics.median(first), statistics.median(filters)


def main():
    make_views, results = (pathlib.Path(each).resolve() for each in sys.argv[1:3])
    browser = start_browser()
    try:
        print(f"medians of {LOADS} loads and {LOADS * len(FILTERS)} filters, 8 nodes a capture")
        print(f"{'captures':>8} {'MB':>6} {'first draw, ms':>15} {'filter, ms':>11}")
        for number in (100, 10000):
            page = results / f"bench-{number}.html"
            subprocess.run([make_views, "ordinary", str(number), "", page], check=True)
            first, filtering = measured(browser, page)
            size = page.stat().st_size / 1e6
            print(f"{number:8} {size:6.2f} {first:15.0f} {filtering:11.1f}")
    finally:
        browser.quit()


if __name__ == "__main__":
    main()
