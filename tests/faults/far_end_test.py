"""A far end killed in each state of a call: the call can be cleared or ends by itself, its line is free again, and the
telephone makes the next call.
"""

import unittest

from harness import CONNECTED, FAST_TIMERS, REMOTE_RINGING, REMOTELY_HELD, FarEnd, Telephone, element, peer_lines, until

# Seconds. With fast timers an unanswered request fails after 4 of them.
DEAD = 20


class FarEndKilled(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.telephone = Telephone(peer_lines(9), environment=FAST_TIMERS)
        cls.addClassCleanup(lambda: cls.telephone.__exit__(None, None, None))
        cls.application = cls.telephone.application()

    def make(self, how, line, call):
        far = FarEnd(how)
        self.addCleanup(far.close)
        self.application.call(line, call, far.uri())
        until(lambda: far.dialog, 10, "no INVITE arrived")
        return far

    def connected(self, line, call):
        far = self.make("answers", line, call)
        self.application.wait_state(call, CONNECTED)
        return far

    def require_next_call(self, line, call):
        far = self.connected(line, call)
        self.application.clear(line, call)
        self.assertTrue(until(lambda: far.has("BYE"), 10, "no BYE arrived"))

    def test_dialling_call_without_any_response_can_be_cleared_at_once(self):
        far = self.make("silent", 4711, 11)
        far.kill()
        self.application.clear(4711, 11)
        self.require_next_call(4711, 111)

    def test_ringing_call_can_be_cleared_and_ends_without_an_answer_to_its_cancel(self):
        far = self.make("rings", 4712, 12)
        self.application.wait_state(12, REMOTE_RINGING)
        far.kill()
        self.application.clear(4712, 12)
        self.require_next_call(4712, 112)

    def test_connected_call_can_be_cleared_without_an_answer_to_its_bye(self):
        far = self.connected(4713, 13)
        far.kill()
        self.application.clear(4713, 13)
        self.require_next_call(4713, 113)

    def test_connected_call_whose_hold_is_never_answered_reports_it_and_ends(self):
        far = self.connected(4714, 14)
        far.kill()
        self.application.ask("HoldCall", Line=4714, CallID=14, HoldCallReason=5, Manual=1)
        self.application.wait("FeatureFailedEvent", DEAD, CallID=14)
        self.application.wait_over(14)
        self.require_next_call(4714, 114)

    def test_held_call_can_be_cleared(self):
        far = self.connected(4715, 15)
        self.application.do("HoldCall", Line=4715, CallID=15, HoldCallReason=5, Manual=1)
        self.application.wait("CallHeldEvent", CallID=15)
        far.kill()
        self.application.clear(4715, 15)
        self.require_next_call(4715, 115)

    def test_call_held_by_the_far_end_can_be_cleared(self):
        far = self.connected(4716, 16)
        far.in_dialog("INVITE", 2, far.sdp("sendonly", 2))
        self.application.wait_state(16, REMOTELY_HELD)
        far.kill()
        self.application.clear(4716, 16)
        self.require_next_call(4716, 116)

    def test_incoming_call_whose_caller_died_can_be_answered_and_then_ends_by_itself_or_is_cleared(self):
        far = FarEnd("silent")
        self.addCleanup(far.close)
        far.invite(self.telephone.sip_port, 4717)
        call = element(self.application.wait("IncomingCallEvent", LineID=4717), "CallID")
        far.kill()
        self.application.ask("AnswerCall", Line=4717, CallID=call)
        self.application.ask("CallClearRequest", Line=4717, CallID=call, Cause=1)
        self.application.wait_over(call, DEAD)
        self.require_next_call(4717, 117)

    def test_answer_that_is_never_acknowledged_ends_the_call_by_itself(self):
        far = FarEnd("silent")
        self.addCleanup(far.close)
        far.invite(self.telephone.sip_port, 4719)
        call = element(self.application.wait("IncomingCallEvent", LineID=4719), "CallID")
        far.kill()
        self.application.ask("AnswerCall", Line=4719, CallID=call)
        self.application.wait_over(call, DEAD)
        self.require_next_call(4719, 119)

    def test_call_whose_transfer_is_never_answered_reports_it_and_can_be_cleared(self):
        far = self.connected(4718, 18)
        far.kill()
        self.application.ask("BlindTransfer", Line=4718, CallID=18, Destination="sip:200@127.0.0.1:9")
        self.application.wait("FeatureFailedEvent", DEAD, CallID=18)
        self.application.ask("CallClearRequest", Line=4718, CallID=18, Cause=1)
        self.application.wait_over(18)
        self.require_next_call(4718, 118)


if __name__ == "__main__":
    unittest.main()
