"""Applications that never read, read one byte a second or die in the middle of a message, and two hundred at once: the
others get their answers and events undisturbed, and the telephone's memory stays bounded.
"""

import time
import unittest

from harness import CONNECTED, Telephone, request


class ApplicationFaults(unittest.TestCase):
    def setUp(self):
        self.telephone = Telephone()
        self.addCleanup(self.telephone.__exit__, None, None, None)
        self.application = self.telephone.application()

    def require_call(self, call):
        """Makes a call and ends it; returns the seconds until it was connected and cleared."""
        began = time.monotonic()
        self.application.call(4711, call, "100")
        self.application.wait_state(call, CONNECTED, 5)
        self.application.clear(4711, call)
        return time.monotonic() - began

    def make_events(self, count):
        """Each pair of requests causes at least one event for every subscriber."""
        for n in range(count):
            self.application.send(request("setForwardingConfiguration", Line=4711, fwType=0, status=n % 2,
                                          uri="sip:" + "x" * 200, cfnrRingCount=1, forceQORAUpdate=1))
            self.application.send(request("SetDoNotDisturb", Line=4711, doNotDisturbOn=n % 2))
        finished = 0
        while finished < 2 * count:
            message = self.application.message()
            self.assertIsNotNone(message, f"only {finished} requests finished")
            finished += message[0] == "finished"

    def test_one_that_never_reads(self):
        deaf = self.telephone.application()
        for _ in range(50):
            deaf.send(request("GetDevices"))
        self.make_events(500)
        before = self.telephone.status("VmRSS")

        self.make_events(3000)

        self.require_call(1)
        self.assertLess(self.telephone.status("VmRSS") - before, 64 * 1024, "kB of additional memory")
        deaf.close()
        self.require_call(2)

    def test_one_that_sends_endlessly_and_never_reads(self):
        deaf = self.telephone.application()
        deaf.socket.setblocking(False)
        sent = 0
        deadline = time.monotonic() + 2
        while time.monotonic() < deadline:
            try:
                sent += deaf.socket.send(request("GetDevices").encode() + b"\0")
            except BlockingIOError:
                # The telephone reads no more requests than it can answer.
                if self.require_call(1) < 5:
                    break
        self.assertGreater(sent, 0)
        self.require_call(2)
        self.assertLess(self.telephone.status("VmRSS"), 256 * 1024)

    def test_one_that_reads_one_byte_a_second(self):
        slow = self.telephone.application()
        slow.send(request("GetDevices"))
        text = b""
        for call in range(1, 5):
            slow.socket.settimeout(5)
            text += slow.socket.recv(1)
            self.require_call(call)
            time.sleep(1)
        self.assertEqual(text, b"answ")

    def test_one_that_dies_in_the_middle_of_a_message(self):
        for n in range(20):
            dying = self.telephone.application()
            dying.socket.sendall(b"<Method>OutgoingCallMakeRequest</Method><Line>4711</Line><CallID>9"[: 20 + 2 * n])
            dying.close()
        self.require_call(1)
        self.assertIsNone(self.application.find("CallStateChangeEvent", CallID=9))

    def test_one_that_writes_one_byte_a_second(self):
        slow = self.telephone.application(subscribe=False)
        whole = b"<Method>GetDevices</Method>\0"
        slow.socket.sendall(whole[:-3])
        for n in range(3):
            self.require_call(n + 1)
            slow.socket.sendall(whole[len(whole) - 3 + n: len(whole) - 2 + n])
        self.assertEqual(slow.message()[0], "answer")

    def test_two_hundred_at_once(self):
        many = [self.telephone.application() for _ in range(200)]
        for n, each in enumerate(many):
            each.send(request("getForwardingConfiguration", fwType=n % 9))
        for each in many:
            kinds = []
            while "finished" not in kinds:
                message = each.message()
                self.assertIsNotNone(message, "no answer arrived")
                kinds.append(message[0])
            self.assertEqual(kinds.count("answer"), 1)
        self.require_call(1)
        for each in many:
            each.wait_state(1, CONNECTED)
        for each in many:
            each.close()
        self.require_call(2)

    def test_more_than_the_maximum_are_refused_until_another_leaves(self):
        telephone = Telephone("[applications]\nmaximum = 3\n")
        self.addCleanup(telephone.__exit__, None, None, None)
        three = [telephone.application(subscribe=False) for _ in range(3)]
        fourth = telephone.application(subscribe=False)
        kind, _ = fourth.message()
        self.assertEqual(kind, "error")
        with self.assertRaises(ConnectionError):
            fourth.message()
        three.pop().close()

        def is_accepted():
            try:
                return telephone.application(subscribe=False).ask("GetServiceState") is not None
            except (AssertionError, OSError):
                return False

        deadline = time.monotonic() + 10
        while not is_accepted():
            self.assertLess(time.monotonic(), deadline, "no application is accepted after another has left")


if __name__ == "__main__":
    unittest.main()
