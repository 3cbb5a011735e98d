"""Records one exchange for each request from a running telephone: the request, its answer and the events that follow.

    record_exchanges.py FILE          writes the exchanges as JSON; docs/requests.md shows them
    record_exchanges.py --check FILE  replays them and compares; exits with 1 when one differs

The environment variable TELEPHONE names the program. Each exchange has a telephone of its own, in virtual time, so that
it is the same every time.
"""

import json
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tests" / "faults"))
import harness  # noqa: E402
from harness import BUSY, CONNECTED, IDLE, REMOTE_RINGING, RINGING  # noqa: E402

CSTA = "<MonitorStart><monitorObject><deviceObject>4711</deviceObject></monitorObject></MonitorStart>"


# --- what there is before the request: each first line says it on the page

def nothing(_):
    """No call is up."""


def connected(application, call=1, number="100"):
    """Call 1 is connected to 100."""
    application.call(4711, call, number)
    application.wait_state(call, CONNECTED)


def held(application):
    """Call 1 is held, by hand."""
    connected(application)
    application.do("HoldCall", Line=4711, CallID=1, Manual=1)
    application.wait("CallHeldEvent", CallID=1)


def consulted(application):
    """Call 1 is held, and call 2, a consultation, is connected."""
    connected(application)
    application.do("Consult", Line=4711, CallID=2, Destination=100)
    application.wait_state(2, CONNECTED)
    application.wait("CallHeldEvent", CallID=1)


def offered(application):
    """Call 1001 is offered to line 4711, and calls do not ring by themselves."""
    connected(application, number="199")
    application.wait_state(1, IDLE)
    application.wait("IncomingCallEvent", CallID=1001)


def ringing(application):
    """Call 1001 is ringing on line 4711."""
    offered(application)
    application.wait_state(1001, RINGING)


def ringing_there(application):
    """Call 1 of line 4711 is ringing at 102."""
    application.call(4711, 1, "102")
    application.wait_state(1, REMOTE_RINGING)


def busy(application):
    """Call 1 was made to 101, which is busy."""
    application.call(4711, 1, "101")
    application.wait_state(1, BUSY)


def call_back_set(application):
    """A call-back to 101 is set."""
    busy(application)
    application.do("ActivateCallbackBusy", Line=4711, CallID=1)
    application.wait("callCompletionEvent", CallCompletionState=0)


def muted(application):
    """The microphone is muted."""
    application.do("SetMicrophoneMute", Status=1)


def forwarded(application):
    """Calls that nobody answers are forwarded to 102."""
    application.do("setForwardingConfiguration", Line=4711, fwType=6, status=1, uri=102, cfnrRingCount=4,
                   forceQORAUpdate=0)


def undisturbed(application):
    """Do-not-disturb is on."""
    application.do("SetDoNotDisturb", Line=4711, doNotDisturbOn=1)
    application.wait("DoNotDisturbEvent")


def inactive(application):
    """The telephone was deactivated."""
    application.do("Deactivate", AllowAutoActivate=1)
    for line in (4711, 4712):
        application.wait("RegistrationStateChangeEvent", LineID=line, Registered=0)


# --- the exchanges: the request, what there is before it, and the last events that it causes

def state(call, value):
    return ("CallStateChangeEvent", {"CallID": call, "CallState": value})


def event(name, **elements):
    return (name, elements)


def request(name, **elements):
    return harness.request(name, **elements)


EXCHANGES = [
    (request("OutgoingCallMakeRequest", Line=4711, CallID=1, Destination=100, DSSDirectCall=0, BridgeCall=0,
             CallCompletionCall=0), nothing, [state(1, CONNECTED)]),
    (request("AcceptCall", Line=4711, CallID=1001, AutoAnswer=0), offered, [state(1001, RINGING)]),
    (request("AnswerCall", Line=4711, CallID=1001), ringing, [state(1001, CONNECTED)]),
    (request("DeflectCall", Line=4711, CallID=1001, Destination=100), ringing, [event("CallForwardedEvent")]),
    (request("HoldCall", Line=4711, CallID=1, HoldCallReason=5, Manual=1), connected, [event("CallHeldEvent")]),
    (request("RetrieveCall", Line=4711, CallID=1), held, [event("CallRetrievedEvent")]),
    (request("Consult", Line=4711, CallID=2, Destination=100), connected, [state(2, CONNECTED)]),
    (request("AttendedTransfer", Line=4711, activeCall=2, heldCall=1), consulted, [state(1, IDLE), state(2, IDLE)]),
    (request("BlindTransfer", Line=4711, CallID=1, Destination=100), connected, [state(1, IDLE)]),
    (request("RefuseCall", Line=4711, CallID=1001, RefuseCallReason=1), ringing, [state(1001, IDLE)]),
    (request("CallClearRequest", Line=4711, CallID=1, Cause=1), connected, [state(1, IDLE)]),
    (request("SystemStatus", SystemStatus="MessagesPhonelet-Normal", SystemStatusInfo="on"), nothing,
     [event("systemStatusEvent")]),
    (request("Subscribe"), nothing, []),
    (request("ActivateCallbackRinging", Line=4711, CallID=1), ringing_there, [event("callCompletionEvent")]),
    (request("ActivateCallbackBusy", Line=4711, CallID=1), busy, [event("callCompletionEvent")]),
    (request("CancelCallbacks", Line=4711, CallID=1, URI="", CancelCallBackType=0, DisplayOutcomeCallUI=1),
     call_back_set, [event("callCompletionEvent", CallCompletionState=2)]),
    (request("DirectedPickupCall", Line=4712, CallID=2, CallToBePickedUp=102, BLFPickup=0), ringing_there,
     [event("FeatureSuccessEvent")]),
    (request("GroupPickupCall", Line=4712, CallID=2), ringing_there, [event("FeatureSuccessEvent")]),
    (request("ConferenceCall", Line=4711, activeCall=2, heldCall=1, feature=3), consulted,
     [event("FeatureSuccessEvent"), event("conferenceStatusEvent", CallID=1), event("conferenceStatusEvent", CallID=2)]),
    (request("SetServiceState", state="sfiServiceOutOfService"), nothing,
     [event("RegistrationStateChangeEvent", LineID=4711), event("RegistrationStateChangeEvent", LineID=4712)]),
    (request("GetServiceState"), nothing, []),
    (request("SetDoNotDisturb", Line=4711, doNotDisturbOn=1), nothing, [event("DoNotDisturbEvent")]),
    (request("GetDoNotDisturb", deviceID=4711), undisturbed, []),
    (request("SetAgentState", Line=4711, agentState="ready"), nothing, [event("AgentStateEvent")]),
    (request("GenerateDigits", Line=4711, activeCall=1, digits="12#"), connected, []),
    (request("GetDevices"), nothing, []),
    (request("SetMicrophoneMute", Status=1), nothing, []),
    (request("GetMicrophoneMute"), muted, []),
    (request("getManualHoldIndication", Line=4711, CallID=1), held, []),
    (request("Activate"), inactive,
     [event("RegistrationStateChangeEvent", LineID=4711), event("RegistrationStateChangeEvent", LineID=4712)]),
    (request("Deactivate", AllowAutoActivate=1), nothing,
     [event("RegistrationStateChangeEvent", LineID=4711), event("RegistrationStateChangeEvent", LineID=4712)]),
    (request("SendCSTARequest", Line=4711) + CSTA, nothing, [event("b2buaCSTAResponse")]),
    (request("InitializeOrFinalizeServerFeatures", Line=4711, initialize=1), nothing,
     [event("serverFeatureStatusEvent")]),
    (request("AlternateCalls", Line=4711), consulted, [event("FeatureSuccessEvent")]),
    (request("GetMessageWaitingIndicator"), nothing, []),
    (request("setAssociatedCalls", associated=1), nothing, []),
    (request("setLampMode", Line=4711, lampId="Hold", lampMode=2), nothing, []),
    (request("makeSecurityChangeReinvite", Line=4711, CallID=1, forceFlag=0), connected,
     [event("securityStatusChanged")]),
    (request("setForwardingConfiguration", Line=4711, fwType=6, status=1, uri=102, cfnrRingCount=4, forceQORAUpdate=0),
     nothing, []),
    (request("getForwardingConfiguration", fwType=6), forwarded, []),
    (request("setIsInServiceInitiatedState", Line=4711, IsInServiceInitiatedState="TRUE"), nothing, []),
    (request("SendUACSTAServerMessage", Line=4711) + CSTA, nothing, [event("b2buaCSTAResponse")]),
    (request("callbackDOFeatureCallID", CallID=1, instanceId=1), nothing, []),
]

# An application accepts calls itself only where the telephone leaves it to do so.
CONFIGURATION = "[exchange]\nport = 5060\n[calls]\nautomatic-ringing = {}\n"


class Application(harness.Application):
    """Moves the telephone's time while it waits."""

    def wait(self, method, seconds=20, **elements):
        for _ in range(10 * seconds):
            event = self.find(method, **elements)
            if event:
                return event
            self.command("advance 0.1")
        raise AssertionError(f"no {method} {elements} in {seconds} seconds; received: {self.events[-6:]}")

    def settle(self, seconds=0.3):
        self.command(f"advance {seconds}")


def exchange_of(text, prepare, last):
    """Plays one exchange on a telephone of its own."""
    name = harness.element(text, "Method")
    automatic = "false" if name == "AcceptCall" else "true"
    with harness.Telephone(CONFIGURATION.format(automatic), options=("--time", "virtual"), level=2) as telephone:
        application = telephone.application(subscribe=name != "Subscribe", kind=Application)
        prepare(application)
        application.settle()
        application.events.clear()
        answer = application.request(text)
        for method, elements in last:
            application.wait(method, **elements)
        application.settle()
        return {"name": name, "before": prepare.__doc__, "request": text, "answer": answer,
                "events": application.events}


def main():
    check = sys.argv[1] == "--check"
    file = Path(sys.argv[-1])
    exchanges = [exchange_of(*each) for each in EXCHANGES]
    if not check:
        file.write_text(json.dumps(exchanges, indent=2) + "\n")
        return 0
    kept = json.loads(file.read_text())
    different = [(before, now) for before, now in zip(kept, exchanges) if before != now]
    for before, now in different:
        print(f"{file} differs:\n{json.dumps(before, indent=2)}\nnow:\n{json.dumps(now, indent=2)}")
    return 1 if different or len(kept) != len(exchanges) else 0


if __name__ == "__main__":
    sys.exit(main())
