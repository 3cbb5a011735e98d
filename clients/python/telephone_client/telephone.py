"""A telephone: its requests, commands, events and state over one connection that is renewed when it is lost."""

import asyncio
import functools
import math
import weakref
from collections.abc import AsyncIterator, Awaitable, Callable
from pathlib import Path
from types import TracebackType
from typing import Any, Final, Self, TypeVar, overload

from ._connection import Connection
from ._errors import ConnectionLost, NotInTime
from ._feed import Feed, Pauses
from ._http import HttpConnection
from ._hub import EventIterator, Hub
from ._messages import Event, Reply
from ._socket import SocketConnection, default_path
from .calls import Call, Key, Line
from .protocol import Commands, Requests
from .state import State

E = TypeVar("E", bound=Event)
R = TypeVar("R")

WITHIN = 10.0  # seconds that a wait takes at most unless it says otherwise
_STEP = 0.1  # seconds by which a wait moves virtual time at once


class _Marks:
    """From where a task's next wait looks for its event."""

    def __init__(self, position: int) -> None:
        self.request = position  # where its latest request was sent
        self.wait = position  # of the latest event that a wait has taken
        self.taken: set[int] = set()


class _TelephoneCommands(Commands):
    def __init__(self, send: Callable[[str], Awaitable[str]]) -> None:
        self._send = send

    async def send_command(self, text: str) -> str:
        return await self._send(text)


class Telephone(Requests):
    """The requests are methods of it, the commands methods of `do`: `await phone.do.press(3)`.

    When a request or a command returns, `state` contains what it has done so far, and the events of that have been
    delivered. Requests whose effect takes time, as calls do, tell the rest by events.

    All methods belong to the event loop in which the telephone was opened; any number of tasks may use them.
    """

    def __init__(
        self,
        connect: Callable[[], Awaitable[Connection]],
        *,
        mirror: bool = True,
        advances: bool = False,
        pauses: Pauses = Pauses(),
        capacity: int = 10_000,
        within: float = 0,
    ) -> None:
        """`connect` says how to do this usually.

        connect: makes a connection. The others are those of `connect`.
        """
        self._hub = Hub(capacity)
        self._feed = Feed(connect, self._hub, pauses, mirror)
        self.has_mirror: Final = mirror
        self._advances = advances
        self._capacity = capacity
        self._within = within
        self._advanced = 0.0  # seconds by which waits have moved virtual time
        self._advancing = asyncio.Lock()
        self._marks: weakref.WeakKeyDictionary[asyncio.Task[object], _Marks] = weakref.WeakKeyDictionary()
        self._call_id = 0  # the latest one that was chosen for a call
        self.do: Commands = _TelephoneCommands(self.send_command)

    @classmethod
    def connect(
        cls,
        address: str | Path | None = None,
        *,
        token: str | Path | None = None,
        certificate: Path | None = None,
        name: str = "python",
        strict: bool = True,
        mirror: bool = True,
        advances: bool = False,
        pauses: Pauses = Pauses(),
        capacity: int = 10_000,
        within: float = 0,
    ) -> Self:
        """A telephone for `async with`, which opens and closes it.

        address: path of the application socket, or http://HOST:PORT or https://HOST:PORT; None: the socket of this
            user's telephone.
        token: over HTTP, the token as text, or the Path of the file that contains it; None: the file beside the default
            socket.
        certificate: over HTTPS, the file with the certificate of the telephone's authority; None: those of the system.
        name: what the telephone's log calls this program.
        strict: the telephone refuses unknown names and wrong values, instead of guessing.
        mirror: `state` is kept up to date, which takes a reading of the state after each event and each request.
        advances: in virtual time, waits move the time, and each request and command returns when everything has
            happened that needs no time; False: somebody else moves it.
        pauses: before attempts to connect again.
        capacity: events that are kept for an iterator that does not take them.
        within: seconds to wait for a telephone that is not there yet.
        """
        text = str(address) if address is not None else ""
        connect: Callable[[], Awaitable[Connection]]
        if text.startswith(("http://", "https://")):
            token = token if token is not None else Path(f"{default_path()}.token")
            connect = functools.partial(HttpConnection.open, text, token, strict, certificate)
        else:
            connect = functools.partial(SocketConnection.open, Path(text or default_path()), name, strict)
        return cls(connect, mirror=mirror, advances=advances, pauses=pauses, capacity=capacity, within=within)

    async def open(self) -> Self:
        """Connects. NotConnected if no telephone answers."""
        await self._feed.start(self._within)
        return self

    async def close(self) -> None:
        """Ends the connection. Requests that wait for their reply raise ConnectionLost, iterators end."""
        await self._feed.close()

    async def __aenter__(self) -> Self:
        return await self.open()

    async def __aexit__(
        self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None
    ) -> None:
        await self.close()

    # The state

    @property
    def state(self) -> State:
        """The mirror of the telephone's state. During a loss of the connection, the last one that was known.

        Some changes have no event: a lifted handset, what others set. `refresh` reads the state for these.
        """
        return self._feed.state

    @property
    def is_connected(self) -> bool:
        """Whether there is a connection. Without one, requests and commands raise NotConnected at once."""
        return self._feed.is_connected

    async def refresh(self) -> State:
        """Reads the state now."""
        return await self._feed.refresh()

    async def states(self) -> AsyncIterator[State]:
        """The state now, and again whenever it has been read or the connection was lost or came back. Only the latest
        counts: whoever is slow misses some, and never waits for old ones. It ends when the telephone is closed."""
        while not self._feed.is_closed:
            count = self._feed.changed.count
            yield self.state
            if self._feed.changed.count == count:
                await self._feed.changed.wait()

    async def until(self, holds: Callable[[State], bool], within: float | None = WITHIN) -> State:
        """Waits until something holds of the state, and returns the state. NotInTime if it does not in time."""

        async def look() -> State | None:
            state = await self.refresh()
            return state if holds(state) else None

        return await self._soon(look, self._next_change, within, lambda: "the state did not become so")

    async def _next_change(self) -> None:
        """Returns at a change of the mirror, or after a while, since not every change has an event."""
        try:
            async with asyncio.timeout(_STEP):
                await self._feed.changed.wait()
        except TimeoutError:
            pass

    # Requests and commands

    async def send_request(self, text: str, *, changes: bool = True) -> Reply:
        self._mark_request()
        reply = await self._feed.connection.request(text)
        if changes:
            await self._settle()
        return reply

    async def send_command(self, text: str) -> str:
        self._mark_request()
        return await self._command(text)

    async def _command(self, text: str) -> str:
        result = await self._feed.connection.command(text)
        await self._settle()
        return result

    async def _settle(self) -> None:
        """After a request or a command: brings what it has done so far into the mirror."""
        if not self.has_mirror:
            return
        try:
            if self._advances:  # what needs no time happens now, whatever the order of threads is
                await self._feed.connection.command("advance 0")
            await self._feed.refresh()
        except ConnectionLost:
            pass  # the reply came before; what follows will notice the loss

    # Lines, calls, keys

    def line(self, id: str) -> Line:
        """A line, or an appearance of one (4711#2), whether it exists or not."""
        return Line(self, id)

    @property
    def lines(self) -> list[Line]:
        """The lines of the telephone, in the order of its configuration."""
        return [Line(self, each.id) for each in self.state.lines]

    def call(self, id: int, line: str = "") -> Call:
        """A call by its id, whether it exists or not. line: its line, until the state says so."""
        return Call(self, id, line)

    @property
    def calls(self) -> list[Call]:
        """The present calls, the latest last."""
        return [Call(self, each.id, each.place) for each in self.state.calls if not each.over]

    def key(self, name: str | int) -> Key:
        """A key, by number, label, function or target. ValueError if there is none, or are several.

        A label counts first, then a function, then a target. A lamp outside the keys has its function as name.
        """
        return Key.find(self, name)

    @property
    def keys(self) -> list[Key]:
        """The keys by rising number, then the lamps outside the keys."""
        return [Key(self, each) for each in self.state.keys]

    def next_call_id(self) -> int:
        """An id for a new call, from 1 to 1000, that no present call has. ValueError if all are in use."""
        used = {each.id for each in self.state.calls if not each.over}
        for _ in range(1000):
            self._call_id = self._call_id % 1000 + 1
            if self._call_id not in used:
                return self._call_id
        raise ValueError("all call ids from 1 to 1000 are in use")

    # Events

    @overload
    def events(self) -> EventIterator[Event]: ...

    @overload
    def events(self, *kinds: type[E]) -> EventIterator[E]: ...

    def events(self, *kinds: type[Any]) -> EventIterator[Any]:
        """The events from now on, of these kinds; without kinds, all. Each iterator receives all of its events.

        Nothing is lost while the connection is: the events in between come after it. If the telephone no longer
        keeps them, or was started again, Gap comes in their place, to whoever asks for all kinds or for Gap.
        """
        return self._hub.iterate(kinds or (Event,), self._capacity)

    async def wait_for(
        self,
        kind: type[E],
        *,
        call: Call | int | None = None,
        line: Line | str | None = None,
        where: Callable[[E], bool] | None = None,
        within: float | None = WITHIN,
    ) -> E:
        """Waits for an event and returns it. NotInTime if it does not come in time, ConnectionLost if the telephone is
        closed meanwhile.

        An event that has come already counts, too, if it came since this task's last request or command, or since its
        last wait, whichever was earlier, and no wait of this task has taken it. So a wait after a request sees what the
        request has caused, however fast that was.

        call, line: of the event; a line includes its appearances. where: what else must hold of it.
        within: seconds; None: no limit. In virtual time, if the waits of this telephone advance it, virtual ones.
        """
        marks = self._marks_of_task()

        def matches(position: int, event: Event) -> bool:
            return (
                isinstance(event, kind)
                and position not in marks.taken
                and _is_of(event, call, line)
                and (where is None or where(event))
            )

        position, event = await self.wait(matches, min(marks.request, marks.wait), within, kind.__name__)
        marks.wait = max(marks.wait, position)
        marks.taken = {each for each in marks.taken if each > min(marks.request, marks.wait)} | {position}
        assert isinstance(event, kind)
        return event

    @property
    def position(self) -> int:
        """How many events have been delivered, over all restarts."""
        return self._hub.position

    def events_since(self, position: int) -> list[Event]:
        """The events behind a position, as far as they are still kept."""
        return self._hub.since(position)

    async def wait(
        self, matches: Callable[[int, Event], bool], since: int, within: float | None, what: str
    ) -> tuple[int, Event]:
        """The first event behind a position for which `matches` holds, with its position. `wait_for` and the waits of a
        call are made of this. what: what is waited for, for the text of NotInTime."""

        async def look() -> tuple[int, Event] | None:
            return self._hub.find(matches, since)

        def failure() -> str:
            came = [_short(each) for each in self._hub.since(since)]
            return f"{what} did not come; came instead: {', '.join(came[-10:]) or 'nothing'}"

        return await self._soon(look, self._hub.next, within, failure)

    # Waiting, in real and in virtual time

    async def _soon(
        self,
        look: Callable[[], Awaitable[R | None]],
        change: Callable[[], Awaitable[None]],
        within: float | None,
        failure: Callable[[], str],
    ) -> R:
        """Looks for something after each change, until it is there or the time is over."""
        if self._advances:
            return await self._soon_by_advancing(look, math.inf if within is None else within, failure)
        try:
            async with asyncio.timeout(within):
                while (found := await look()) is None:
                    await change()
                return found
        except TimeoutError:
            raise NotInTime(f"{failure()} (within {within} seconds)") from None

    async def _soon_by_advancing(
        self, look: Callable[[], Awaitable[R | None]], within: float, failure: Callable[[], str]
    ) -> R:
        end = self._advanced + within
        while True:
            async with self._advancing:  # of several waits, one looks and moves the time at once
                if (found := await look()) is not None:
                    return found
                if self._advanced >= end:
                    raise NotInTime(f"{failure()} (within {within} seconds)")
                step = min(_STEP, max(end - self._advanced, 0.001))
                await self._command(f"advance {step:.3f}")
                self._advanced += step

    def _mark_request(self) -> None:
        self._marks_of_task().request = self._hub.position

    def _marks_of_task(self) -> _Marks:
        task = asyncio.current_task()
        assert task is not None  # called by coroutines only
        return self._marks.setdefault(task, _Marks(self._hub.position))


def _is_of(event: Event, call: Call | int | None, line: Line | str | None) -> bool:
    if call is not None and event.call != (call.id if isinstance(call, Call) else call):
        return False
    if line is None:
        return True
    id = line.id if isinstance(line, Line) else line
    return event.line is not None and (event.line == id or event.line.startswith(f"{id}#"))


def _short(event: Event) -> str:
    """An event for a message: CallHeld(line 4711, call 1)."""
    parts = [f"line {event.line}"] if event.line else []
    parts += [f"call {event.call}"] if event.call else []
    return f"{type(event).__name__}({', '.join([*parts, *_state_of(event)])})"


def _state_of(event: Event) -> list[str]:
    state = getattr(event, "call_state", None)
    return [str(state)] if state is not None else []
