"""A telephone with its panel, and browsers without a window that use it as a person does: with clicks and keys. Every
wait is for a condition and has a deadline; everything is on loopback and ends by its process id.
"""

import json
import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.request
from pathlib import Path

from selenium import webdriver
from selenium.common.exceptions import StaleElementReferenceException
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "faults"))
from harness import TELEPHONE, free_port  # noqa: E402

DEADLINE = 15  # seconds


def until(condition, what, seconds=DEADLINE):
    """Waits until the condition holds, and returns its value. What is waited for is a text, or a function that gives it."""
    deadline = time.monotonic() + seconds
    while True:
        try:
            value = condition()
        except StaleElementReferenceException:
            value = None
        if value:
            return value
        if time.monotonic() > deadline:
            raise AssertionError(f"after {seconds} seconds: {what() if callable(what) else what}")
        time.sleep(0.03)


class Telephone:
    """A telephone at a port that stays the same when it is started again."""

    def __init__(self):
        self.folder = tempfile.TemporaryDirectory()
        self.port = free_port()
        self.socket = str(Path(self.folder.name, "telephone.socket"))
        self.log = Path(self.folder.name, "log")
        self.configuration = Path(self.folder.name, "telephone.toml")
        self.configuration.write_text(f'[http]\naddress = "127.0.0.1:{self.port}"\n')
        self.start()

    def start(self):
        words = [TELEPHONE, "--config", str(self.configuration), "--socket", self.socket, "--log-file", str(self.log)]
        self.process = subprocess.Popen([*words, "panel"], stdout=subprocess.PIPE, text=True,
                                        env={**os.environ, "TELEPHONE_CHECK": "events"})
        for line in self.process.stdout:
            if line.startswith("panel: "):
                self.address = line.split()[1]
                return
        raise AssertionError(f"the telephone has not started: {self.log.read_text()[-2000:]}")

    def kill(self):
        self.process.send_signal(signal.SIGKILL)
        self.process.wait()
        self.process.stdout.close()

    def close(self):
        if self.process.poll() is None:
            self.kill()
        self.folder.cleanup()

    def ask(self, path, body=None):
        token = self.address.split("token=")[1]
        request = urllib.request.Request(f"http://127.0.0.1:{self.port}{path}", data=body and body.encode(),
                                         headers={"Authorization": f"Bearer {token}"})
        with urllib.request.urlopen(request, timeout=10) as answer:
            return json.load(answer)

    def command(self, text):
        return self.ask("/commands", text)["result"]

    def state(self):
        return self.ask("/state")

    def calls(self):
        """The states of the calls that are not over, by id."""
        return {call["id"]: call["state"] for call in self.state()["calls"] if not call["over"]}


class Browser:
    """A page with the panel."""

    def __init__(self, width=1440, height=900):
        options = Options()
        options.binary_location = "/usr/bin/chromium"
        for word in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--hide-scrollbars"):
            options.add_argument(word)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        self.size(width, height)

    def size(self, width, height):
        self.tell("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)

    def tell(self, command, **parameters):
        return self.driver.execute_cdp_cmd(command, parameters)

    def prefer(self, **features):
        """prefer(prefers_color_scheme="dark")"""
        self.tell("Emulation.setEmulatedMedia",
                  features=[{"name": name.replace("_", "-"), "value": value} for name, value in features.items()])

    def open(self, telephone):
        self.driver.get(telephone.address)
        until(lambda: self.text("#connection") == "connected" and self.all("#people .key"), "the panel is connected")

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def one(self, selector):
        return until(lambda: self.all(selector), lambda: f"the page has {selector}")[0]

    def text(self, selector):
        found = self.all(selector)
        return found[0].get_attribute("textContent") if found else None

    def waits_for(self, selector, text):
        until(lambda: text in (self.text(selector) or ""), lambda: f"{selector} contains {text}, not {self.text(selector)}")

    def softkey(self, label):
        """Presses the softkey, once the state offers it."""
        find = lambda: [key for key in self.all("#soft button") if key.text == label and not key.get_attribute("aria-disabled")]
        until(find, lambda: f"there is a softkey {label} in {[key.text for key in self.all('#soft button')]}")[0].click()

    def rows(self):
        """The texts of the rows in sight, without their times."""
        return self.run("return [...document.querySelectorAll('.row')].map((row) => [row.className, +row.getAttribute("
                        "'aria-posinset'), [...row.children].slice(2).map((cell) => cell.textContent).join(' ')])"
                        ".sort((a, b) => a[1] - b[1]).map(([kind, , text]) => `${kind}: ${text.trim()}`)")

    def ladder(self, kind):
        """The words of the ladder's steps of a kind; empty: of all."""
        return self.run("return [...document.querySelectorAll('.ladder .step:not(.pause)' + arguments[0])].map((step) => "
                        "step.lastChild.textContent.replace(/^\\S+ /, ''))", f".{kind}" if kind else "")

    def lamp(self, key):
        lamp = self.one(f"[data-key='{key}'].key .lamp")
        return lamp.get_attribute("data-mode"), lamp.get_attribute("data-colour")

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def errors(self):
        """What the page has logged, but for what belongs to a lost connection."""
        return [entry["message"] for entry in self.driver.get_log("browser") if "Failed to load resource" not in entry["message"]]

    def close(self):
        self.driver.quit()


class PanelTest(unittest.TestCase):
    """A telephone for each test, a browser for all of a file."""

    @classmethod
    def setUpClass(cls):
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.close)

    def setUp(self):
        self.telephone = Telephone()
        self.addCleanup(self.telephone.close)
        self.browser.open(self.telephone)
        self.browser.errors()

    def tearDown(self):
        self.assertEqual(self.browser.errors(), [])

    def waits_for_calls(self, calls):
        until(lambda: self.telephone.calls() == calls, lambda: f"the calls are {calls}, not {self.telephone.calls()}")
