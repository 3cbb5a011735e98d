"""Everything from the wire is text, whatever it looks like; and who is admitted."""

import unittest
import urllib.error
import urllib.request

from panel import PanelTest, until

MARKUP = "<script>alert(1)</script>"


class TextTest(PanelTest):
    def call_from(self, name):
        quoted = name.replace("\\", "\\\\").replace('"', '\\"')
        self.telephone.command(f'call 4711 from 555 name "{quoted}"')
        self.browser.waits_for("#screen .eyebrow", "ringing")

    def elements(self):
        return self.browser.run("return ['script', 'img', 'iframe', 'style'].map((tag) => document.getElementsByTagName(tag).length)")

    def assertShown(self, name, shown, in_row=None):
        before = self.elements()
        self.call_from(name)
        self.assertEqual(self.browser.text("#screen .who"), shown)
        row = in_row or f'"{shown}"'
        until(lambda: any("ringing" in each and row in each for each in self.browser.rows()), lambda: f"a row has the name: {self.browser.rows()}")
        self.browser.all(".row.event")[-1].click()
        self.browser.waits_for("#detail h2", "ringing")
        self.browser.one("#tab-state").click()
        self.browser.one("#tab-ladder").click()
        self.assertEqual(self.elements(), before)
        self.assertEqual(self.browser.run("return document.documentElement.scrollWidth - innerWidth"), 0)

    def test_MarkupFromTheWire_IsReplacedByTheTelephone(self):
        self.assertShown(MARKUP, "(script)alert(1)(/script)")

    def test_MarkupInTheState_IsAnOddName(self):
        # As if the telephone let it through: it replaces these signs in names from the wire.
        self.browser.run("""const original = window.fetch; window.fetch = async (...words) => {
            const answer = await original(...words); const text = await answer.text();
            const odd = text.replaceAll('(', '<').replaceAll(')', '>');
            return new Response(words[0] === '/state' ? odd : text, {status: answer.status}); }""")
        before = self.elements()
        self.call_from("<img src=x onerror=alert<1>>")
        self.assertEqual(self.browser.text("#screen .who"), "<img src=x onerror=alert<1>>")
        self.browser.one("#tab-state").click()
        self.browser.waits_for("#state", "ringing <img src=x onerror=alert<1>>")
        self.assertEqual(self.elements(), before)

    def test_NameThatTurnsTheText_HasAVisibleSign(self):
        self.assertShown("a\u202eb", "a⟨U+202E⟩b", '"a\\u{202e}b"')

    def test_LongName_IsCutAndMovesNothing(self):
        self.assertShown("x" * 100, "x" * 100, "x" * 60)

    def test_RequestWithMarkup_IsShownAsItIs(self):
        self.browser.one("#box").send_keys("GetDoNotDisturb deviceID=<b>x</b>\n")
        until(lambda: any("deviceID=<b>x</b>" in row for row in self.browser.rows()), lambda: f"the request is a row: {self.browser.rows()}")
        self.assertEqual(self.browser.run("return document.querySelectorAll('.row b b, .row .more > span b').length"), 0)

    def test_Cookie_IsHiddenFromScriptsAndTheTokenFromTheAddress(self):
        self.assertEqual(self.browser.driver.current_url, f"http://127.0.0.1:{self.telephone.port}/panel")
        self.assertEqual(self.browser.run("return document.cookie"), "")
        cookie = self.browser.driver.get_cookie(f"telephone-{self.telephone.port}")
        self.assertTrue(cookie["httpOnly"])
        self.assertEqual(cookie["sameSite"], "Strict")

    def test_Policy_AllowsNothingButThePanelItself(self):
        outcome = self.browser.driver.execute_async_script("""const done = arguments[0];
            document.addEventListener('securitypolicyviolation', (event) => done(event.effectiveDirective), {once: true});
            const script = document.createElement('script'); script.textContent = 'window.ran = true'; document.head.append(script);""")
        self.assertEqual(outcome, "script-src-elem")
        self.assertIsNone(self.browser.run("return window.ran ?? null"))
        self.browser.errors()

    def test_PageWithoutToken_IsRefused(self):
        with self.assertRaises(urllib.error.HTTPError) as refused:
            urllib.request.urlopen(f"http://127.0.0.1:{self.telephone.port}/panel", timeout=10)
        self.assertEqual(refused.exception.code, 401)


if __name__ == "__main__":
    unittest.main()
