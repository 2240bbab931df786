# SPDX-License-Identifier: MIT
"""A real headless Chromium on the live page or the HTML report, through Selenium."""
import os
import shutil

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.support.ui import WebDriverWait

ARTIFACTS = os.environ["AXLSIM_ARTIFACTS"]
PATIENCE_SECONDS = 20


def chromium():
    options = webdriver.ChromeOptions()
    options.binary_location = shutil.which("chromium") or "/usr/bin/chromium"
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu",
                     "--disable-dev-shm-usage", "--window-size=1400,1000",
                     "--no-first-run", "--disable-extensions"):
        options.add_argument(argument)
    service = Service(shutil.which("chromedriver") or "/usr/bin/chromedriver")
    return webdriver.Chrome(service=service, options=options)


class Browser:
    """One Chromium, shared by the tests of a module; each test saves its screenshot beside the
    tests' log."""

    def __init__(self):
        os.makedirs(ARTIFACTS, exist_ok=True)
        self.driver = chromium()

    def open(self, url):
        self.driver.get(url)

    def until(self, condition, message):
        return WebDriverWait(self.driver, PATIENCE_SECONDS).until(
            lambda driver: condition(), message)

    def element(self, element_id):
        return self.driver.find_element("id", element_id)

    def script(self, text, *arguments):
        return self.driver.execute_script(text, *arguments)

    def save_screenshot(self, test_name):
        self.driver.save_screenshot(os.path.join(ARTIFACTS, test_name + ".png"))

    def quit(self):
        self.driver.quit()
