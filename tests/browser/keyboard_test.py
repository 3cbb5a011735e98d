"""The panel by keyboard alone, and what a screen reader finds."""

import unittest

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.keys import Keys

from panel import PanelTest, until

UNNAMED = """return [...document.querySelectorAll('button, input, [role=img], [role=listbox], [role=tree], section, aside, nav')]
    .filter((each) => each.checkVisibility() && !each.ariaHidden && !(each.ariaLabel || each.textContent.trim() || each.title)).map((each) => each.outerHTML)"""
FOCUSED = "const at = document.activeElement; return at.closest('[id]')?.id ?? at.tagName"


class KeyboardTest(PanelTest):
    def press(self, *keys):
        for key in keys:
            ActionChains(self.browser.driver).send_keys(key).perform()

    def focused(self):
        return self.browser.run("return document.activeElement.closest('[id]').id")

    def tab_to(self, place):
        for _ in range(30):
            if self.focused_group() == place:
                return
            self.press(Keys.TAB)
        self.fail(f"Tab does not reach {place}; it is at {self.focused_group()}")

    def focused_group(self):
        return self.browser.run(FOCUSED)

    def test_Call_ByKeysAlone_IsMadeHeldJoinedAndEnded(self):
        self.press("1", "0", "0")
        self.browser.waits_for("#screen .who", "100")
        self.tab_to("soft")
        self.press(Keys.ENTER)
        self.waits_for_calls({1: "connected"})
        until(lambda: self.browser.all("#soft button")[0].text == "Hold", "Hold is offered")
        self.press("h")
        self.waits_for_calls({1: "held"})
        until(lambda: self.browser.all("#soft button")[0].text == "Retrieve", "Retrieve is offered")
        self.press("h")
        self.waits_for_calls({1: "connected"})

        self.press(":")
        self.assertEqual(self.focused(), "box")
        self.press("cons", Keys.TAB, Keys.TAB, Keys.TAB)  # completes Consult, Line, the first line
        self.assertEqual(self.browser.one("#box").get_attribute("value"), "Consult Line=4711 ")
        self.press("CallID=2 Destination=100", Keys.ENTER)
        self.waits_for_calls({1: "held", 2: "connected"})
        self.press(Keys.ESCAPE)
        self.tab_to("soft")
        until(lambda: self.browser.all("#soft button")[1].text == "Join", "Join is offered")
        self.press(Keys.HOME, Keys.ARROW_RIGHT, Keys.ENTER)
        self.waits_for_calls({1: "conference", 2: "conference"})
        until(lambda: "Drop" in self.browser.all("#soft button")[1].text, "Drop is offered")
        self.press(Keys.ENTER)
        self.waits_for_calls({2: "connected"})
        until(lambda: self.browser.all("#soft button")[3].text == "End", "End is offered")
        self.press("e")
        self.waits_for_calls({})

    def test_Tab_GoesFromGroupToGroup(self):
        places = []
        self.browser.run("document.activeElement.blur()")
        for _ in range(24):
            self.press(Keys.TAB)
            places.append(self.focused_group())
        order = [place for number, place in enumerate(places) if place not in places[:number]]
        wanted = ["soft", "people", "functions", "digits", "fixed", "filter", "kinds", "follow", "clear", "log", "box", "send"]
        self.assertEqual([place for place in order if place in wanted], wanted)

    def test_Rows_ByArrows_OpenTheDetail(self):
        self.browser.one("#ladder .numbers button").click()
        self.browser.waits_for("#screen .eyebrow", "connected")
        until(lambda: any("connected" in row for row in self.browser.rows()), "the event is there")
        self.browser.run("document.getElementById('log').focus()")
        self.press(Keys.ARROW_UP)
        self.browser.waits_for("#detail h2", "connected")
        self.browser.waits_for("#detail", "HoldCall Line=4711 CallID=1")
        self.assertTrue(self.browser.one("#log").get_attribute("aria-activedescendant"))

    def test_Focus_SurvivesEveryChangeOfState(self):
        self.browser.run("document.querySelector('.key[data-key=\"7\"]').focus()")
        self.telephone.ask("/requests", "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100")
        self.browser.waits_for("#screen .eyebrow", "connected")
        self.assertEqual(self.browser.run("return document.activeElement.dataset.key"), "7")

    def test_Everything_HasAName(self):
        for view in ("#tab-ladder", "#tab-state", "#tab-detail"):
            self.browser.one(view).click()
            self.assertEqual(self.browser.run(UNNAMED), [])
        self.assertEqual(len(self.browser.run("return document.querySelectorAll('[id]').length && [...document.querySelectorAll('[id]')].map((each) => each.id)")),
                         len(set(self.browser.run("return [...document.querySelectorAll('[id]')].map((each) => each.id)"))))


if __name__ == "__main__":
    unittest.main()
