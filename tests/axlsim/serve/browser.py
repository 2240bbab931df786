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
    """One Chromium for one test; its screenshot is saved beside the test's log."""

    def __init__(self, test_name):
        os.makedirs(ARTIFACTS, exist_ok=True)
        self.screenshot = os.path.join(ARTIFACTS, test_name + ".png")
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

    def close(self):
        try:
            self.driver.save_screenshot(self.screenshot)
        finally:
            self.driver.quit()
