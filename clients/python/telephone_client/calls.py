"""Lines, calls and keys of a telephone: thin objects over its requests and its state. Nothing is kept in them that the
telephone knows; any number of them may stand for the same thing."""

from collections.abc import Awaitable, Callable
from typing import TYPE_CHECKING, Final

from ._errors import CallOver, FeatureError, RequestRefused
from ._messages import Event
from .protocol import (
    CallHeld,
    CallRetrieved,
    CallState,
    CallStateChange,
    EventCause,
    Feature,
    FeatureFailed,
    FeatureSuccess,
    ForwardingType,
    LampMode,
    Reason,
    RefuseCall,
)
from . import state

if TYPE_CHECKING:
    from .telephone import Telephone

_WITHIN: Final = 10.0
_OVER: Final = frozenset({CallState.IDLE, CallState.BUSY, CallState.FAILED})
_HELD: Final = frozenset({CallState.HELD, CallState.HELD_BY_BOTH})
_TRANSFERS: Final = frozenset({Feature.BLIND_TRANSFER, Feature.ATTENDED_TRANSFER})


def _entered(event: Event) -> CallState | None:
    """The state that a call has entered by an event."""
    if isinstance(event, CallStateChange):
        return event.call_state
    if isinstance(event, CallHeld):
        return CallState.HELD
    return CallState.CONNECTED if isinstance(event, CallRetrieved) else None


class Call:
    """A call, by its id.

    The waits (`connected`, `held`, ...) return at once if the call is in that state, or if it has been since this
    object was made or its last wait ended. They raise CallOver if the call has ended, and NotInTime.
    """

    def __init__(self, telephone: "Telephone", id: int, line: str = "", since: int | None = None) -> None:
        """since: position of the event from which on waits look; None: from now on."""
        self._telephone = telephone
        self._line = line
        self._since = telephone.position if since is None else since
        self.id: Final = id

    def __repr__(self) -> str:
        return f"Call({self.id}, {self.state.phrase})"

    @property
    def record(self) -> state.Call | None:
        """What the state says about the call; None: there is none with this id."""
        calls = self._telephone.state.calls
        return next((each for each in reversed(calls) if each.id == self.id and not each.over), None)

    @property
    def state(self) -> CallState:
        """The state that the call is in; idle if there is none with this id."""
        record = self.record
        return record.state if record else CallState.IDLE

    @property
    def line(self) -> str:
        """The line or appearance that it is on."""
        record = self.record
        return record.place if record else self._line

    async def accept(self) -> None:
        """Lets the call ring that is offered, if the telephone does not do so by itself (automatic-ringing)."""
        await self._telephone.accept_call(self.id, line=self.line, auto_answer=False)

    async def answer(self) -> None:
        """Answers the call that rings."""
        await self._telephone.answer_call(self.line, self.id)

    async def deflect(self, destination: str) -> None:
        """Sends the call that rings on to another number."""
        await self._telephone.deflect_call(self.id, destination, line=self.line)

    async def refuse(self, reason: RefuseCall = RefuseCall.BUSY) -> None:
        """Refuses the call that rings."""
        await self._telephone.refuse_call(self.id, reason, line=self.line)

    async def hang_up(self, cause: EventCause = EventCause.NORMAL_CLEARING) -> None:
        """Ends the call."""
        await self._telephone.call_clear_request(self.id, line=self.line, cause=cause)

    async def hold(self) -> None:
        """Puts the call on hold; `held` waits for it."""
        await self._telephone.hold_call(self.id, line=self.line)

    async def retrieve(self) -> None:
        """Retrieves the call from hold; `connected` waits for it."""
        await self._telephone.retrieve_call(self.line, self.id)

    async def transfer(self, destination: str) -> None:
        """Sends the far end to another number; `transferred` waits for the outcome."""
        await self._telephone.blind_transfer(self.id, destination, line=self.line)

    async def consult(self, destination: str) -> "Call":
        """Calls another party and holds this call for it. `complete` then transfers this call to that party, and
        `confer` joins all three."""
        return await self._telephone.line(self.line).consult(destination)

    async def complete(self) -> None:
        """Connects the far end of this call, which is on hold, with that of the active one; `transferred` waits."""
        await self._telephone.attended_transfer(self.id, line=self.line)

    async def confer(self) -> None:
        """Joins this call, which is on hold, with the active one; `in_conference` waits for it."""
        await self._telephone.conference_call(self.id, line=self.line)

    async def send_digits(self, digits: str) -> None:
        """Sends digits to the far end: 0-9, *, #, A-D."""
        await self._telephone.generate_digits(self.id, digits, line=self.line)

    async def ringing(self, within: float | None = _WITHIN) -> None:
        """Waits until the call rings, here or at the far end."""
        await self._enters(frozenset({CallState.RINGING, CallState.REMOTE_RINGING}), within, "ringing")

    async def connected(self, within: float | None = _WITHIN) -> None:
        """Waits until the parties can talk."""
        await self._enters(frozenset({CallState.CONNECTED}), within, "connected", Feature.RETRIEVE)

    async def held(self, within: float | None = _WITHIN) -> None:
        """Waits until this telephone holds the call."""
        await self._enters(_HELD, within, "held", Feature.HOLD, Feature.CONSULTATION_HOLD)

    async def in_conference(self, within: float | None = _WITHIN) -> None:
        """Waits until the call is in a conference."""
        await self._enters(frozenset({CallState.CONFERENCE}), within, "in a conference", Feature.CONFERENCE)

    async def transferred(self, within: float | None = _WITHIN) -> None:
        """Waits for the outcome of a transfer. FeatureError if it has failed."""

        def matches(_position: int, event: Event) -> bool:
            is_outcome = isinstance(event, (FeatureSuccess, FeatureFailed)) and event.feature in _TRANSFERS
            return is_outcome and event.call == self.id

        what = f"the outcome of the transfer of call {self.id}"
        _, event = await self._telephone.wait(matches, self._since, within, what)
        self._require_no_failure(event)

    async def ended(self, within: float | None = _WITHIN) -> Reason:
        """Waits until the call is over, and returns why it ended; normal if that was before this object was made."""

        def matches(_position: int, event: Event) -> bool:
            return event.call == self.id and _entered(event) in _OVER

        came = any(matches(0, each) for each in self._telephone.events_since(self._since))
        if self._telephone.has_mirror and self.record is None and not came:
            return Reason.NORMAL
        _, event = await self._telephone.wait(matches, self._since, within, f"the end of call {self.id}")
        return event.reason if isinstance(event, CallStateChange) else Reason.NORMAL

    async def _enters(self, states: frozenset[CallState], within: float | None, what: str, *features: Feature) -> None:
        if self._telephone.has_mirror and self.state in states:
            self._since = self._telephone.position
            return

        def matches(_position: int, event: Event) -> bool:
            if event.call != self.id:
                return False
            has_failed = isinstance(event, FeatureFailed) and event.feature in features
            return has_failed or _entered(event) in states | _OVER

        position, event = await self._telephone.wait(matches, self._since, within, f"call {self.id} {what}")
        self._since = position
        self._require_no_failure(event)
        if isinstance(event, CallStateChange) and event.call_state in _OVER:
            why = f"{event.call_state.phrase}, {event.reason.phrase}"
            raise CallOver(f"call {self.id} is not {what}: it has ended ({why})")

    @staticmethod
    def _require_no_failure(event: Event) -> None:
        if isinstance(event, FeatureFailed):
            why = event.feature_failure.phrase
            raise FeatureError(f"{event.feature.phrase} of call {event.call_id} has failed: {why}")


class Line:
    """A line, or an appearance of one (4711#2), by its id."""

    def __init__(self, telephone: "Telephone", id: str) -> None:
        self._telephone = telephone
        self.id: Final = id

    def __repr__(self) -> str:
        return f"Line({self.id})"

    @property
    def record(self) -> state.Line:
        """What the state says about the line; of an appearance, about its line. ValueError if there is no such line."""
        id = self.id.partition("#")[0]
        lines = self._telephone.state.lines
        found = next((each for each in lines if each.id == id), None)
        if found is None:
            raise ValueError(f"there is no line {id}; the lines are {', '.join(each.id for each in lines)}")
        return found

    @property
    def calls(self) -> list[Call]:
        """The present calls on it, the latest last."""
        return [each for each in self._telephone.calls if each.line == self.id or each.line.startswith(f"{self.id}#")]

    async def dial(self, destination: str) -> Call:
        """Makes a call; `connected` of the call waits for the answer."""
        return await self._begin(lambda id: self._telephone.outgoing_call_make_request(self.id, id, destination))

    async def consult(self, destination: str) -> Call:
        """Makes a call, and holds the active one for it."""
        return await self._begin(lambda id: self._telephone.consult(self.id, id, destination))

    async def pick_up(self, number: str) -> Call:
        """Takes the call that rings at another number."""
        return await self._begin(lambda id: self._telephone.directed_pickup_call(self.id, id, number))

    async def pick_up_group(self) -> Call:
        """Takes a call that rings in the pickup group."""
        return await self._begin(lambda id: self._telephone.group_pickup_call(self.id, id))

    async def alternate(self) -> None:
        """Holds the active call and retrieves the held one."""
        await self._telephone.alternate_calls(line=self.id)

    async def do_not_disturb(self, on: bool) -> None:
        """Refuses calls to the line, or no longer does."""
        await self._telephone.set_do_not_disturb(self.id, on)

    async def forward(self, destination: str, kind: ForwardingType = ForwardingType.UNCONDITIONAL) -> None:
        """Forwards calls to the line."""
        await self._telephone.set_forwarding_configuration(self.id, kind, True, destination)

    async def stop_forwarding(self, kind: ForwardingType = ForwardingType.UNCONDITIONAL) -> None:
        """Switches a forwarding rule off; its destination stays."""
        kept = next((each.destination for each in self.record.forwarding if each.type == kind), None)
        await self._telephone.set_forwarding_configuration(self.id, kind, False, kept or "")

    async def _begin(self, request: Callable[[int], Awaitable[None]]) -> Call:
        """Begins a call with a free id, and with another one if another program was faster."""
        while True:
            since, id = self._telephone.position, self._telephone.next_call_id()
            try:
                await request(id)
            except RequestRefused:
                await self._telephone.refresh()
                if self._telephone.call(id).record is None:
                    raise
                continue
            return Call(self._telephone, id, self.id, since)


class Key:
    """A key with its lamp, or a lamp outside the keys, by its number or its function."""

    def __init__(self, telephone: "Telephone", record: state.Key) -> None:
        self._telephone = telephone
        self._record = record

    def __repr__(self) -> str:
        number = "" if self._record.number is None else f"{self._record.number} "
        label = self._record.label or self._record.target
        return f"Key({number}{self._record.function}{f' {label}' if label else ''}, {self.lamp.mode.phrase})"

    @classmethod
    def find(cls, telephone: "Telephone", name: str | int) -> "Key":
        """The key with that number, label, function or target."""
        keys = telephone.state.keys
        wanted = str(name).casefold()
        for attribute in ("number", "label", "function", "target"):
            found = [each for each in keys if str(getattr(each, attribute)).casefold() == wanted]
            if len(found) == 1:
                return cls(telephone, found[0])
            if found:
                numbers = ", ".join(str(each.number) for each in found)
                raise ValueError(f"{len(found)} keys are called {name}: {numbers}")
        labels = ", ".join(each.label or each.function for each in keys)
        raise ValueError(f"there is no key {name}; the keys are {labels}")

    @property
    def record(self) -> state.Key:
        """What the state says about the key at present."""
        mine = (self._record.number, self._record.function)
        keys = self._telephone.state.keys
        return next((each for each in keys if (each.number, each.function) == mine), self._record)

    @property
    def lamp(self) -> state.Lamp:
        """Its lamp at present."""
        return self.record.lamp

    async def press(self) -> None:
        """Presses the key."""
        await self._telephone.do.press(self._pressable())

    async def release(self) -> None:
        """Releases the key."""
        await self._telephone.do.release(self._pressable())

    async def becomes(self, mode: LampMode, within: float | None = _WITHIN) -> None:
        """Waits until the lamp is in a mode. NotInTime if it does not enter it."""
        await self._telephone.until(lambda _: self.lamp.mode == mode, within)

    def _pressable(self) -> int:
        if self._record.number is None:
            raise ValueError(f"{self._record.function} is a lamp without a key")
        return self._record.number
