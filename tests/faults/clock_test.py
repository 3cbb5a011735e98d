"""The machine's clock set back an hour, and forward a day: timers, calls and registrations are unaffected. Only the
telephone sees the changed clock (clockShim.cpp).
"""

import os
import struct
import tempfile
import unittest

from harness import CONNECTED, FAST_TIMERS, Registrar, Telephone, until

HOUR = 3600


class Clock:
    """The difference between the telephone's wall clock and the real one."""

    def __init__(self):
        self.file = tempfile.NamedTemporaryFile()
        self.set(0)

    def set(self, seconds):
        self.file.seek(0)
        self.file.write(struct.pack("q", seconds))
        self.file.flush()

    def environment(self):
        return {"LD_PRELOAD": os.environ["CLOCK_SHIM"], "CLOCK_OFFSET_FILE": self.file.name}


class ClockChanged(unittest.TestCase):
    def start(self, configuration="", timers=None):
        clock = Clock()
        self.addCleanup(clock.file.close)
        telephone = Telephone(configuration, environment={**(timers or {}), **clock.environment()})
        self.addCleanup(telephone.__exit__, None, None, None)
        return clock, telephone, telephone.application()

    def require_timers(self, seconds):
        """Running timers and new timers keep their time, and calls keep their state."""
        clock, telephone, application = self.start()
        application.call(4711, 1, "100")
        application.wait_state(1, CONNECTED)
        # 103 answers after two seconds: its timer is running when the clock is set.
        application.call(4712, 2, "103")

        clock.set(seconds)

        application.wait_state(2, CONNECTED, 10)
        # 105 answers and hangs up two seconds later.
        application.call(4712, 3, "105")
        application.wait_state(3, CONNECTED, 10)
        application.wait_over(3, 10)
        self.assertFalse(application.is_over(1))
        self.assertFalse(application.is_over(2))
        application.clear(4712, 2)
        application.clear(4711, 1)
        telephone.end()

    def test_set_back_an_hour_in_the_middle_of_calls(self):
        self.require_timers(-HOUR)

    def test_set_forward_a_day_in_the_middle_of_calls(self):
        self.require_timers(24 * HOUR)

    def test_set_back_an_hour_registrations_are_still_refreshed(self):
        registrar = Registrar("accepts")
        self.addCleanup(registrar.close)
        clock, _, _ = self.start(
            f"[[line]]\nid = \"4711\"\n[server]\nregistrar = \"sip:127.0.0.1:{registrar.port}\"\nexpires = 10\n"
            "message-waiting = false\n[exchange]\nenabled = false\n", FAST_TIMERS)
        until(lambda: registrar.has("REGISTER"), 10, "no REGISTER arrived")

        clock.set(-HOUR)

        before = len(registrar.received)
        until(lambda: len(registrar.received) > before + 1, 25, "the registration was not refreshed")


if __name__ == "__main__":
    unittest.main()
