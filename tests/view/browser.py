"""Chromium without a window."""

from selenium import webdriver
from selenium.webdriver.chrome.service import Service


def start_browser():
    options = webdriver.ChromeOptions()
    for option in ("--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--disable-gpu",
                   "--window-size=1200,900", "--hide-scrollbars"):
        options.add_argument(option)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
