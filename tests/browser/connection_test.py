"""The telephone ends and comes back; and a flood of events."""

import socket
import threading
import time
import unittest

from panel import PanelTest, until

RATE = 1000  # events a second
FLOOD = 10  # seconds


class ConnectionTest(PanelTest):
    def test_TelephoneKilled_ComesBack(self):
        page = self.browser
        page.one("#ladder .numbers button").click()
        page.waits_for("#screen .eyebrow", "connected")
        page.one("#box").send_keys("HoldCall Line=4711")

        self.telephone.kill()
        until(lambda: page.one("#banner").is_displayed(), "the page says that the connection is lost", 2)
        self.assertEqual(page.text("#connection"), "reconnecting")
        self.assertEqual(page.one("#soft button").get_attribute("aria-disabled"), "true")
        page.one("[data-key='6'].key").click()
        self.assertEqual(page.text("#alarm"), "There is no connection to the telephone")
        page.one("#box").click()

        self.telephone.start()
        page.waits_for("#connection", "connected")
        page.waits_for("#screen .who", "Ready")
        until(lambda: not page.one("#banner").is_displayed(), "the band is gone")
        self.assertEqual(page.lamp(1), ("off", "none"))
        self.assertEqual(page.lamp(6), ("off", "none"))
        self.assertEqual(page.one("#box").get_attribute("value"), "HoldCall Line=4711")
        self.assertEqual(page.run("return document.activeElement.id"), "box")
        until(lambda: [row for row in page.rows() if "restarted" in row], lambda: f"the restart is a row: {page.rows()}")
        until(lambda: len([row for row in page.rows() if row.endswith("registered")]) == 4, lambda: f"each registration is there once: {page.rows()}")

    def test_EventsDuringALostStream_AreFetchedOnceAndInOrder(self):
        page = self.browser
        page.tell("Network.enable")
        page.tell("Network.emulateNetworkConditions", offline=True, latency=0, downloadThroughput=-1, uploadThroughput=-1)
        self.addCleanup(page.tell, "Network.emulateNetworkConditions", offline=False, latency=0, downloadThroughput=-1, uploadThroughput=-1)
        page.waits_for("#connection", "reconnecting")
        self.telephone.ask("/requests", "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100")
        self.waits_for_calls({1: "connected"})
        page.tell("Network.emulateNetworkConditions", offline=False, latency=0, downloadThroughput=-1, uploadThroughput=-1)
        page.waits_for("#screen .eyebrow", "connected")
        events = lambda: [row.split(": ")[1] for row in page.rows() if row.startswith("row event: 4711 1 ")]
        until(lambda: len(events()) >= 4, lambda: f"the events are rows: {page.rows()}")
        self.assertEqual(events(), ["4711 1 dialling 100", "4711 1 proceeding 100", "4711 1 remote ringing 100, call-back possible",
                                    "4711 1 connected 100, digits as events"])

    def flood(self):
        with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as application:
            application.connect(self.telephone.socket)
            reader = threading.Thread(target=lambda: all(iter(lambda: application.recv(65536), b"")))
            reader.start()
            began = time.monotonic()
            for sent in range(0, RATE * FLOOD, 50):
                time.sleep(max(0, began + sent / RATE - time.monotonic()))
                texts = [f"<Method>SetDoNotDisturb</Method><Line>4711</Line><doNotDisturbOn>{number % 2}</doNotDisturbOn>\0" for number in range(50)]
                application.sendall("".join(texts).encode())
            application.shutdown(socket.SHUT_WR)
            reader.join()

    def test_ThousandEventsASecond_LeaveThePageUsable(self):
        page = self.browser
        before = self.telephone.state()["event"]
        flood = threading.Thread(target=self.flood)
        flood.start()
        until(lambda: "a second" in page.text("#follow"), "the rate is shown")
        answers = []
        while flood.is_alive():
            answers.append(page.driver.execute_async_script("""const done = arguments[0]; const began = performance.now();
                document.querySelector('#digits [data-key="1"]').click(); requestAnimationFrame(() => done(performance.now() - began));"""))
            time.sleep(0.3)
        flood.join()
        sent = self.telephone.state()["event"] - before
        self.assertGreaterEqual(sent, RATE * FLOOD)
        until(lambda: page.text("#number") == str(self.telephone.state()["event"]), "the page has all of them")
        answers.sort()
        print(f"{sent} events; a key is answered within {answers[len(answers) // 2]:.0f} ms (median), {answers[-1]:.0f} ms (longest)")
        self.assertLess(answers[len(answers) // 2], 100)
        self.assertLessEqual(page.run("return document.querySelectorAll('.row').length"), 80)
        page.one("#filter").send_keys("nothing-has-this")
        until(lambda: page.rows() == [], "the filter works")
        page.one("#filter").clear()


if __name__ == "__main__":
    unittest.main()
