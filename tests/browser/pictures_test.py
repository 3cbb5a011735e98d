"""Pictures of the panel, dark, light and small, and that nothing needs sideways scrolling. Lamps stand still and lit."""

import os
import unittest
from pathlib import Path

from panel import PanelTest, until

FOLDER = Path(os.environ.get("PANEL_PICTURES") or "pictures")
STILL = "document.getAnimations().forEach((each) => { each.pause(); each.currentTime = 10; })"
SIZES = {"light": (1440, 900, "light"), "dark": (1440, 900, "dark"), "half": (1000, 800, "dark"), "small": (390, 844, "light")}


class PicturesTest(PanelTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        FOLDER.mkdir(parents=True, exist_ok=True)

    def picture(self, scene, sizes=("dark", "light")):
        for name in sizes:
            width, height, theme = SIZES[name]
            self.browser.size(width, height)
            if self.browser.run("return document.documentElement.dataset.theme") != theme:
                self.browser.one("#theme").click()
            views = ("device", "stream", "inspect") if name == "small" else ("",)
            for view in views:
                if view:
                    self.browser.one(f"#views [data-view={view}]").click()
                self.assertEqual(self.browser.run("return document.documentElement.scrollWidth - innerWidth"), 0)
                self.browser.run(STILL)
                self.browser.driver.save_screenshot(str(FOLDER / ("-".join(filter(None, ("panel", scene, name, view))) + ".png")))
        self.browser.size(1440, 900)

    def test_AtRest(self):
        until(lambda: len(self.browser.rows()) >= 4, "the first events are there")
        self.picture("rest", ("dark", "light", "half"))

    def test_InACall(self):
        self.browser.one("#ladder .numbers button").click()
        self.waits_for_calls({1: "connected"})
        self.telephone.ask("/requests", "HoldCall Line=4711 CallID=1")
        self.waits_for_calls({1: "held"})
        self.browser.softkey("Consult…")
        self.browser.one("#box").send_keys("103\n")
        self.waits_for_calls({1: "held", 2: "connected"})
        self.browser.waits_for("#screen .who", "103")
        self.browser.one("#box").send_keys("ConferenceCall Line=4711 activeCall=")
        self.picture("call", ("dark", "light", "half"))

    def test_IncomingCall(self):
        self.telephone.ask("/requests", "OutgoingCallMakeRequest Line=4712 CallID=1 Destination=100")
        self.waits_for_calls({1: "connected"})
        self.telephone.ask("/requests", "HoldCall Line=4712 CallID=1")
        self.telephone.command('call 4711 from 555 name "<script>alert(1)</script>"')
        self.browser.waits_for("#screen .eyebrow", "ringing")
        self.browser.one("#tab-detail")
        until(lambda: any("incoming call" in row for row in self.browser.rows()), "the call is a row")
        next(row for row in self.browser.all(".row") if "incoming call" in row.text).click()
        self.picture("incoming", ("dark", "light", "small"))

    def test_Conference(self):
        for call in (1, 2):
            name = "OutgoingCallMakeRequest" if call == 1 else "Consult"
            self.browser.one("#box").send_keys(f"{name} Line=4711 CallID={call} Destination=100\n")
            until(lambda: self.telephone.calls().get(call) == "connected", "it is connected")
        self.browser.softkey("Join")
        self.waits_for_calls({1: "conference", 2: "conference"})
        self.browser.waits_for("#screen .who", "Conference of 3")
        self.browser.one("#box").send_keys("HoldCall Line=4711 CallID=7\n")
        self.browser.waits_for("#note", "line 4711 has no call 7")
        self.browser.one("#tab-state").click()
        self.picture("conference", ("dark", "light", "small"))

    def test_ConnectionLost(self):
        self.browser.one("#ladder .numbers button").click()
        self.browser.waits_for("#screen .eyebrow", "connected")
        self.telephone.kill()
        self.browser.waits_for("#connection", "reconnecting")
        self.picture("lost")


if __name__ == "__main__":
    unittest.main()
