"""Out of file descriptors: an operation that needs one is refused with a reason, and nothing else suffers; the telephone
does not spin; as soon as descriptors are available, waiting applications are accepted and calls succeed.
"""

import resource
import time
import unittest

from harness import CONNECTED, Application, Telephone, until


class OutOfDescriptors(unittest.TestCase):
    def setUp(self):
        self.telephone = Telephone()
        self.addCleanup(self.telephone.__exit__, None, None, None)
        self.application = self.telephone.application()
        self.application.call(4711, 1, "100")
        self.application.wait_state(1, CONNECTED)

    def limit(self, more):
        """Lets the telephone open that many more descriptors."""
        now = self.telephone.descriptors()
        hard = resource.prlimit(self.telephone.pid(), resource.RLIMIT_NOFILE)[1]
        resource.prlimit(self.telephone.pid(), resource.RLIMIT_NOFILE, (now + more, hard))

    def test_existing_call_and_application_continue_and_new_ones_wait_for_descriptors(self):
        self.limit(0)

        answer = self.application.ask("OutgoingCallMakeRequest", Line=4712, CallID=2, Destination="100")
        if answer == "sfiSuccess":
            self.application.wait_over(2)
        waiting = Application(self.telephone.socket, subscribe=False)
        self.addCleanup(waiting.close)
        waiting.send("<Method>GetServiceState</Method>")
        self.assertEqual(self.application.ask("GetServiceState"), "sfiSuccess,sfiServiceInService")
        self.application.do("HoldCall", Line=4711, CallID=1, HoldCallReason=5, Manual=1)
        self.application.wait("CallHeldEvent", CallID=1)
        used = self.telephone.cpu_seconds()
        time.sleep(2)
        self.assertLess(self.telephone.cpu_seconds() - used, 1.0, "seconds of processor time in two idle seconds")

        self.limit(200)

        self.assertIsNotNone(until(lambda: waiting.message(0.2), 20, "the waiting application gets no answer"))
        self.application.call(4712, 3, "100")
        self.application.wait_state(3, CONNECTED)
        self.application.clear(4712, 3)
        self.application.clear(4711, 1)

    def test_descriptors_are_released_after_calls_that_failed_for_want_of_them(self):
        before = self.telephone.descriptors()
        self.limit(1)
        for call in range(10, 30):
            if self.application.ask("OutgoingCallMakeRequest", Line=4712, CallID=call, Destination="100") == "sfiSuccess":
                self.application.ask("CallClearRequest", Line=4712, CallID=call, Cause=1)
                self.application.wait_over(call)
        self.limit(200)

        until(lambda: self.telephone.descriptors() <= before, 40, "descriptors have leaked")
        self.application.clear(4711, 1)


if __name__ == "__main__":
    unittest.main()
