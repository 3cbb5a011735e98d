"""The page of a fleet: its tiles, its commands, and the way from a tile to the panel of the telephone."""

import os
import signal
import subprocess
import tempfile
import unittest
from pathlib import Path

from panel import TELEPHONE, Browser, until
from pictures_test import FOLDER, SIZES, STILL

TELEPHONES = 4
CONFIGURATION = '[[line]]\nid = "1{number}"\ndisplay-name = "&lt;b&gt; {number}"\n'


class Fleet:
    """A fleet whose prompt stays open until it is closed."""

    def __init__(self, count):
        self.folder = tempfile.TemporaryDirectory()
        configuration = Path(self.folder.name, "fleet.toml")
        configuration.write_text(CONFIGURATION)
        self.process = subprocess.Popen([TELEPHONE, "--config", str(configuration), "--check", "events", "fleet", str(count),
                                         "--files", str(Path(self.folder.name, "files"))],
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        for line in self.process.stdout:
            if line.startswith("panel: "):
                self.address = line.split()[1]
            if "files in" in line:
                return
        raise AssertionError(f"the fleet has not started: status {self.process.wait()}")

    def kill(self):
        self.process.send_signal(signal.SIGKILL)
        self.process.wait()

    def close(self):
        if self.process.poll() is None:
            self.process.terminate()
            self.process.wait()
        self.process.stdin.close()
        self.process.stdout.close()
        self.folder.cleanup()


class FleetTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.close)
        FOLDER.mkdir(parents=True, exist_ok=True)

    def setUp(self):
        self.fleet = Fleet(TELEPHONES)
        self.addCleanup(self.fleet.close)
        self.browser.driver.get(self.fleet.address)
        self.browser.waits_for("#registered", f"{TELEPHONES} of {TELEPHONES}")
        self.browser.errors()

    def tearDown(self):
        self.assertEqual(self.browser.errors(), [])

    def tile(self, number):
        """What the tile says, and its lamp."""
        return self.browser.run("""const tile = document.querySelector(`.tile[data-key="${arguments[0]}"]`);
            return [tile.querySelector('.does').textContent, tile.querySelector('.lamp').dataset.mode]""", number)

    def waits_for_tile(self, number, does, mode):
        until(lambda: self.tile(number) == [does, mode], lambda: f"telephone {number}: {does}, {mode}, not {self.tile(number)}")

    def command(self, text):
        self.browser.one("#box").send_keys(text + "\n")

    def test_Command_OfThePage_IsRunAndSeen(self):
        self.command("call 1 2")
        self.browser.waits_for("#note", "1 call connected")
        self.waits_for_tile(1, "connected", "steady")
        self.waits_for_tile(2, "connected", "steady")
        self.waits_for_tile(3, "idle", "off")
        self.assertEqual(self.browser.text("#calling"), "2")
        self.assertIn("&lt;b&gt; 001", self.browser.text(".tile[data-key='2'] small"))

        self.command("do 1 HoldCall Line=1001 CallID=1")
        self.waits_for_tile(1, "held", "fluttering")
        self.command("do 9 press 1")
        self.browser.waits_for("#note", "there is no telephone 9; the fleet has 1 to 4")

    def test_Filter_LeavesWhatItNames(self):
        numbers = lambda: [int(tile.get_attribute("data-key")) for tile in self.browser.all(".tile")]
        self.browser.one("#filter").send_keys("1003")
        until(lambda: numbers() == [3], lambda: f"only 3 is left: {numbers()}")
        self.browser.one("#filter").clear()
        self.browser.one("#filter").send_keys(" ")
        self.command("call 3 4")
        next(button for button in self.browser.all("#kinds button") if button.text.startswith("In a call")).click()
        until(lambda: numbers() == [3, 4], lambda: f"those in a call are left: {numbers()}")

    def test_Tile_LeadsToThePanelOfTheTelephone(self):
        first = self.browser.driver.current_window_handle
        self.browser.one(".tile[data-key='2'] a").click()
        until(lambda: len(self.browser.driver.window_handles) == 2, "another page is open")
        self.browser.driver.switch_to.window(next(each for each in self.browser.driver.window_handles if each != first))
        self.browser.waits_for("#connection", "connected")
        self.browser.waits_for("#people .key b", "1002")
        self.assertNotIn("token", self.browser.driver.current_url)
        self.browser.driver.refresh()
        self.browser.waits_for("#connection", "connected")
        self.browser.driver.close()
        self.browser.driver.switch_to.window(first)

    def test_TelephoneKilled_IsShownAsEndedAndComesBack(self):
        process = self.browser.run("return fetch('/telephones').then((answer) => answer.json()).then((fleet) => fleet.telephones[2].process)")
        os.kill(process, signal.SIGKILL)
        until(lambda: self.tile(3)[0] == "ended", lambda: f"it has ended: {self.tile(3)}")
        self.assertIn("ended by signal 9 (Killed)", self.browser.text(".tile[data-key='3'] small"))
        self.waits_for_tile(3, "idle", "off")
        self.assertIn("2 starts", self.browser.text(".tile[data-key='3'] small"))

    def test_FleetKilled_IsSaidAndLeavesNoTelephone(self):
        processes = self.browser.run("return fetch('/telephones').then((answer) => answer.json()).then((fleet) => fleet.telephones.map((each) => each.process))")
        self.fleet.kill()
        until(lambda: not any(Path(f"/proc/{each}").exists() for each in processes), "all telephones have ended")
        until(lambda: self.browser.one("#banner").is_displayed(), "the page says so")
        self.assertEqual(self.browser.text("#connection"), "reconnecting")

    def test_Tiles_HaveNamesAndFitEveryWidth(self):
        self.command("call pairs")
        self.browser.waits_for("#note", "2 calls connected")
        self.waits_for_tile(1, "connected", "steady")
        self.assertRegex(self.browser.one(".tile[data-key='1'] a").get_attribute("aria-label"),
                         r"^Telephone 1, line 1001, connected, 1002, \d:\d\d, lamp steady green, \d+\.\d MB, \d+\.\d s$")
        for name, (width, height, theme) in SIZES.items():
            self.browser.size(width, height)
            if self.browser.run("return document.documentElement.dataset.theme") != theme:
                self.browser.one("#theme").click()
            self.assertEqual(self.browser.run("return document.documentElement.scrollWidth - innerWidth"), 0)
            self.browser.run(STILL)
            self.browser.driver.save_screenshot(str(FOLDER / f"fleet-{name}.png"))
        self.browser.size(1440, 900)


if __name__ == "__main__":
    unittest.main()
