"""Calls by clicks, and two pages of one telephone."""

import unittest

from panel import Browser, PanelTest, until


class CallsTest(PanelTest):
    def test_Call_ByClicks_IsMadeHeldJoinedAndEnded(self):
        page = self.browser
        page.one("#ladder .numbers button").click()  # 100 answers
        self.waits_for_calls({1: "connected"})
        page.softkey("Hold")
        self.waits_for_calls({1: "held"})
        page.waits_for("#screen .eyebrow", "held")
        page.softkey("Retrieve")
        self.waits_for_calls({1: "connected"})

        page.softkey("Consult…")
        page.one("#box").send_keys("103")
        page.one("#send").click()
        self.waits_for_calls({1: "held", 2: "connected"})
        page.waits_for("#screen .who", "103")
        page.waits_for("#screen .others", "100")
        page.softkey("Join")
        self.waits_for_calls({1: "conference", 2: "conference"})
        page.waits_for("#screen .who", "Conference of 3")

        page.softkey("Drop 100")
        self.waits_for_calls({2: "connected"})
        page.softkey("End")
        self.waits_for_calls({})
        page.waits_for("#screen .who", "Ready")

    def test_Row_OfARequest_ShowsItsAnswerAndTheEventsFollow(self):
        page = self.browser
        page.one("#ladder .numbers button").click()
        page.waits_for("#screen .eyebrow", "connected")
        until(lambda: page.rows()[-1].startswith("row event: 4711 1 connected 100"), lambda: f"the last row is connected: {page.rows()}")
        rows = page.rows()
        made = next(place for place, row in enumerate(rows) if row.startswith("row request: 4711 1 OutgoingCallMakeRequest 100✓ success"
                                                                              ) or "OutgoingCallMakeRequest 100 ✓ success" in row)
        self.assertEqual([row.split(": ")[1] for row in rows[made + 1:made + 4]],
                         ["4711 1 dialling 100", "4711 1 proceeding 100", "4711 1 remote ringing 100, call-back possible"])

    def test_Ladder_ShowsWhatPassesBetweenServiceAndFarEnd(self):
        page = self.browser
        page.one("#ladder .numbers button").click()
        page.waits_for("#screen .eyebrow", "connected")
        page.softkey("Hold")
        page.waits_for("#screen .eyebrow", "held")
        until(lambda: page.ladder("event")[-1:] == ["held"], lambda: f"the ladder ends with held: {page.ladder('event')}")
        self.assertEqual(page.ladder("event"), ["remote ringing", "connected", "held"])
        self.assertEqual(page.ladder("request"), ["OutgoingCallMakeRequest", "HoldCall"])
        self.assertEqual(page.ladder("operation"), ["CallMake 100", "CallFeature"])
        self.assertEqual(page.ladder("sip"), ["INVITE", "180 Ringing", "200 OK", "INVITE sendonly", "200 OK recvonly"])
        whole = page.ladder("")
        self.assertLess(whole.index("OutgoingCallMakeRequest"), whole.index("CallMake 100"))
        self.assertLess(whole.index("CallMake 100"), whole.index("INVITE"))
        self.assertLess(whole.index("200 OK recvonly"), whole.index("held"))

    def test_SipMessages_AreRowsOnRequest_WithoutDigests(self):
        page = self.browser
        page.one("#ladder .numbers button").click()
        page.waits_for("#screen .eyebrow", "connected")
        self.assertFalse([row for row in page.rows() if row.startswith("row sip")])
        next(button for button in page.all("#kinds button") if button.text == "SIP").click()
        until(lambda: [row for row in page.rows() if row.startswith("row sip: 1 INVITE")], lambda: f"the INVITE is a row: {page.rows()}")
        page.all(".row.sip")[0].click()
        page.waits_for("#detail h2", "SIP message")
        self.assertIn("INVITE sip:100@", page.text("#detail pre.raw"))

    def test_Refusal_ShowsItsReasonBelowIt(self):
        page = self.browser
        page.one("#box").send_keys("HoldCall Line=4711 CallID=7\n")
        page.waits_for("#note", "line 4711 has no call 7; the telephone has no calls")
        until(lambda: page.rows()[-1] == "row reason: line 4711 has no call 7; the telephone has no calls", lambda: f"the reason is a row: {page.rows()}")
        self.assertIn("✕ failure", page.rows()[-2])

    def test_BusyNumber_CanBeCalledBack(self):
        page = self.browser
        page.all("#ladder .numbers button")[1].click()  # 101 is busy
        page.waits_for("#screen .eyebrow", "busy")
        page.softkey("Call back")
        until(lambda: any("call-back 101" in row for row in page.rows()), lambda: f"the call-back is a row: {page.rows()}")

    def test_IncomingCall_RingsAndIsAnswered(self):
        page = self.browser
        self.telephone.command('call 4711 from 555 name "Ann Example"')
        page.waits_for("#screen .eyebrow", "ringing on 4711")
        self.assertEqual(page.text("#screen .who"), "Ann Example")
        self.assertEqual(page.driver.title, "☎ ringing: Telephone")
        self.assertEqual(page.text("#alarm"), "Call on line 4711 from Ann Example")
        self.assertEqual(page.lamp(1), ("flashing", "green"))
        self.assertEqual(page.one("[data-key='1'].key").get_attribute("aria-label"), "Key 1, line, 4711, ringing, lamp flashing green")
        self.assertEqual(page.text("#hint code"), "AnswerCall Line=4711 CallID=1001")
        page.softkey("Answer")
        self.waits_for_calls({1001: "connected"})
        page.waits_for("#screen .eyebrow", "connected")
        self.assertEqual(page.driver.title, "Telephone")

    def test_DigitsHandsetAndKeys_DoWhatTheTelephoneDoes(self):
        page = self.browser
        for digit in "100":
            page.one(f"#digits [data-key='{digit}']").click()
        self.assertEqual(page.text("#screen .who"), "100")
        page.softkey("Call")
        page.waits_for("#screen .eyebrow", "connected")
        page.one("#digits [data-key='5']").click()
        until(lambda: any("GenerateDigits" in row and "digits=5" in row and "✓" in row for row in page.rows()), "the digit is sent")
        page.one("[data-key='7'].key").click()
        self.waits_for_calls({1: "held"})
        self.assertFalse(self.telephone.state()["hook_up"])
        page.one("#fixed [data-key=Headset]").click()
        until(lambda: self.telephone.state()["plugged"] == ["headset"], "the headset is plugged in")
        page.one("#fixed [data-key=Handset]").click()
        until(lambda: self.telephone.state()["hook_up"], "the handset is lifted")

    def test_TwoBrowsers_ShowTheSame(self):
        other = Browser()
        self.addCleanup(other.close)
        other.open(self.telephone)
        self.browser.one("[data-key='6'].key").click()  # do not disturb
        for page in (self.browser, other):
            until(lambda: page.lamp(6)[0] == "steady", "the lamp is lit in both")
        other.one("#ladder .numbers button").click()
        for page in (self.browser, other):
            page.waits_for("#screen .eyebrow", "connected")
            until(lambda: any("connected 100" in row for row in page.rows()), "both have the event")
        self.browser.one("#fixed [data-key=Handset]").click()
        for page in (self.browser, other):
            page.waits_for("#fixed [data-key=Handset] span", "lifted")


if __name__ == "__main__":
    unittest.main()
