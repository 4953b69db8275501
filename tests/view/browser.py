"""Chromium without a window."""

from selenium import webdriver
from selenium.webdriver.chrome.service import Service


class Driver(Service):
    """Asked by its address: a bare root may not know the name localhost."""

    @property
    def service_url(self):
        return f"http://127.0.0.1:{self.port}"


def start_browser():
    options = webdriver.ChromeOptions()
    for option in ("--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--disable-gpu",
                   "--window-size=1200,900", "--hide-scrollbars"):
        options.add_argument(option)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    return webdriver.Chrome(service=Driver("/usr/bin/chromedriver"), options=options)
