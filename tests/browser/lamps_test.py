"""Lamps: colour, cadence and words say the same."""

import unittest

from panel import PanelTest, until

# Key, duration in seconds and start of each animation that runs.
ANIMATIONS = """return document.getAnimations().filter((each) => each.playState === 'running' && each.effect.target.closest('.key')).map((each) =>
    [each.effect.target.closest('.key').dataset.key, each.effect.getTiming().duration, each.startTime])"""


class LampsTest(PanelTest):
    def tearDown(self):
        self.browser.prefer()
        super().tearDown()

    def hold(self):
        self.telephone.ask("/requests", "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100")
        self.waits_for_calls({1: "connected"})
        until(lambda: self.browser.lamp(1) == ("steady", "green"), "the lamp of the line is steady")
        self.telephone.ask("/requests", "HoldCall Line=4711 CallID=1")
        until(lambda: self.browser.lamp(7) == ("flashing", "green"), "the lamp of Hold is flashing")

    def test_LampsOfAHeldCall_BlinkInStep(self):
        self.browser.prefer(prefers_reduced_motion="no-preference")
        self.hold()
        self.assertEqual(self.browser.lamp(1), ("fluttering", "green"))
        until(lambda: sorted(self.browser.run(ANIMATIONS)) == [["1", 340, 0], ["7", 1000, 0]],
              lambda: f"one flutters and one flashes, both since the beginning: {self.browser.run(ANIMATIONS)}")
        light = lambda: self.browser.run("return getComputedStyle(document.querySelector('.key[data-key=\"7\"] .lamp i')).opacity")
        until(lambda: light() == "1", "it is lit")
        until(lambda: light() == "0.14", "it is dark")
        until(lambda: light() == "1", "it is lit again")
        self.assertEqual(self.browser.one("[data-key='7'].key").get_attribute("aria-label"), "Key 7, hold, Hold, lamp flashing green")

    def test_ReducedMotion_LeavesThePieces(self):
        self.browser.prefer(prefers_reduced_motion="reduce")
        self.hold()
        self.assertEqual(self.browser.run(ANIMATIONS), [])
        image = lambda key: self.browser.run(f"return getComputedStyle(document.querySelector('.key[data-key=\"{key}\"] .lamp i')).backgroundImage")
        self.assertTrue(image(1).startswith("repeating-linear-gradient"), image(1))
        self.assertTrue(image(7).startswith("linear-gradient"), image(7))
        self.assertEqual(image(2), "none")

    def test_WatchedNumber_LightsItsKey(self):
        self.telephone.ask("/requests", "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=102")  # rings, never answers
        until(lambda: self.browser.lamp(4)[0] != "off", "the key of 102 is lit")
        colour, mode = self.browser.lamp(4)[1], self.browser.lamp(4)[0]
        self.assertIn(f"lamp {mode} {colour}", self.browser.one("[data-key='4'].key").get_attribute("aria-label"))


if __name__ == "__main__":
    unittest.main()
