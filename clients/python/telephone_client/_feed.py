"""Keeps the connection to the telephone, connects again after a loss, and keeps the mirror of the state.

The mirror is read anew whenever an event has come that it does not contain, and the event is delivered after that. So
whoever receives an event finds what it reports in the mirror.
"""

import asyncio
import json
import logging
from collections import deque
from collections.abc import Awaitable, Callable
from dataclasses import dataclass
from datetime import datetime

from ._connection import Connection, EventMessage, GapMessage, Message, StateMessage, read_time
from ._elements import Elements, Stamp
from ._errors import ConnectionLost, NotConnected, ProtocolError
from ._hub import Hub, Signal
from ._messages import Event, UnknownEvent
from .protocol import EVENTS
from .state import State

_HELD_BACK = 10_000  # events that may wait for the mirror; then they are delivered before it is up to date
_log = logging.getLogger("telephone_client")


@dataclass(frozen=True, kw_only=True)
class Gap(Event):
    """Events were lost: the telephone has been started again, or no longer keeps them. The state replaces them.

    number: of the latest event that the state contains. time: of the state.
    """

    first: int
    """Number of the first event that was lost."""
    last: int
    """Number of the last event that was lost."""


def read_event(number: int, time: datetime, text: str) -> Event:
    """The event of its kind; UnknownEvent for an unknown kind or a missing element."""
    stamp, elements = Stamp(number, time, text), Elements(text)
    try:
        kind = EVENTS.get(elements.text("Method"), UnknownEvent)
        return kind.read(stamp, elements)
    except ProtocolError:
        return UnknownEvent.read(stamp, elements)


def read_state(text: str) -> State:
    """The state from its JSON. ProtocolError if something is missing."""
    try:
        return State.read(json.loads(text))
    except KeyError as error:
        raise ProtocolError(f"the state of the telephone lacks {error}") from error


@dataclass(frozen=True)
class Pauses:
    """Seconds before the first and, at most, before each later attempt to connect again."""

    first: float = 0.1
    most: float = 5.0


class Feed:
    """One for a Telephone. `changed` wakes whoever looks at the mirror or at the connection."""

    def __init__(self, connect: Callable[[], Awaitable[Connection]], hub: Hub, pauses: Pauses, mirror: bool) -> None:
        self._connect = connect
        self._hub = hub
        self._pauses = pauses
        self._has_mirror = mirror
        self._state: State | None = None
        self._start = ""
        self._received = 0  # number of the latest event that was received
        self._delivered = 0  # number of the latest event that was delivered
        self._gap: GapMessage | None = None
        self._inbox: deque[Event] = deque()  # received, and not delivered yet
        self._wanted = Signal()  # the mirror must be read
        self._connection: Connection | None = None
        self._why_not = "the telephone has not been connected yet"
        self._living: asyncio.Task[None] | None = None
        self.is_closed = False
        self.changed = Signal()

    @property
    def connection(self) -> Connection:
        """The present connection. NotConnected without one."""
        if self._connection is None:
            raise NotConnected(self._why_not)
        return self._connection

    @property
    def is_connected(self) -> bool:
        return self._connection is not None and not self._connection.is_lost

    @property
    def state(self) -> State:
        """The mirror. NotConnected before the first connection."""
        if self._state is None:
            raise NotConnected(self._why_not)
        return self._state

    async def start(self, within: float) -> None:
        """Connects. NotConnected if that does not succeed in time; the first attempt is made in any case."""
        end = asyncio.get_running_loop().time() + within
        while True:
            try:
                await self._begin()
                return
            except ConnectionLost:
                if asyncio.get_running_loop().time() >= end:
                    raise
            await asyncio.sleep(self._pauses.first)

    async def _begin(self) -> None:
        self._living = asyncio.create_task(self._live(await self._connect()))
        while not self.is_connected:
            await self.changed.wait()
            if self._living.done():
                self._living.result()

    async def close(self) -> None:
        """Ends the connection and the iterators of the hub."""
        self._why_not = "the telephone was closed"
        self.is_closed = True
        connection, self._connection = self._connection, None
        if self._living:
            self._living.cancel()
            await asyncio.gather(self._living, return_exceptions=True)
        if connection:
            await connection.close()
        self._hub.end()
        self.changed.notify()

    async def refresh(self) -> State:
        """Reads the mirror, and returns when the events that it contains have been delivered."""
        connection = self.connection
        state = await self._read_state(connection)
        while self._delivered < state.event and self._start == state.start and self._connection is connection:
            await self.changed.wait()
        return state

    async def _live(self, connection: Connection) -> None:
        try:
            while True:
                await self._follow_until_lost(connection)
                connection = await self._connect_again()
        except Exception as error:
            self._why_not = str(error)
            raise
        finally:
            self.changed.notify()

    async def _follow_until_lost(self, connection: Connection) -> None:
        try:
            await self._follow(connection)
        except ConnectionLost as error:
            if not self._start:
                raise  # it has never been of use
            _log.info("%s", error)
            self._why_not = str(error)
        finally:
            await connection.close()
            self._connection = None
            self.changed.notify()

    async def _connect_again(self) -> Connection:
        pause = self._pauses.first
        while True:
            await asyncio.sleep(pause)
            try:
                return await self._connect()
            except ConnectionLost as error:
                self._why_not = str(error)
                pause = min(2 * pause, self._pauses.most)

    async def _follow(self, connection: Connection) -> None:
        """Takes what comes on a new connection until it is lost."""
        state = read_state(await connection.command("state"))
        if not self._start:
            self._start, self._received, self._delivered = state.start, state.event, state.event
        if state.start == self._start and state.event >= self._received:  # else a gap comes first
            self._take_state(state)
            self._connection = connection
            self.changed.notify()
        reading = asyncio.create_task(self._keep_mirror(connection))
        try:
            async for message in connection.messages(self._received, self._start):
                self._take(message)
                if isinstance(message, StateMessage):
                    self._connection = connection
                    self.changed.notify()
        finally:
            reading.cancel()

    async def _keep_mirror(self, connection: Connection) -> None:
        """Reads the mirror whenever an event has come that it does not contain."""
        while True:
            if not self._inbox:
                await self._wanted.wait()
            try:
                await self._read_state(connection)
            except ConnectionLost:
                return

    async def _read_state(self, connection: Connection) -> State:
        state = read_state(await connection.command("state"))
        self._take_state(state)
        return state

    def _take_state(self, state: State) -> None:
        is_newer = self._state is None or (state.start == self._start and state.event >= self._state.event)
        if is_newer:
            self._state = state
            self._deliver(state.event)
            self.changed.notify()

    def _take(self, message: Message) -> None:
        match message:
            case EventMessage():
                self._received = message.number
                self._inbox.append(read_event(message.number, message.time, message.text))
                if not self._has_mirror or len(self._inbox) > _HELD_BACK:
                    self._deliver(message.number)
                elif self._state and message.number <= self._state.event:
                    self._deliver(self._state.event)
                else:
                    self._wanted.notify()
            case GapMessage():
                self._gap = message
            case StateMessage():
                self._take_gap(read_state(message.json))

    def _take_gap(self, state: State) -> None:
        """The state comes in the place of events that were lost."""
        self._deliver(self._received)
        self._state, self._start, self._received, self._delivered = state, state.start, state.event, state.event
        gap, self._gap = self._gap, None
        if gap:
            stamp = Stamp(state.event, read_time(state.time), "")
            self._hub.publish(Gap(number=stamp.number, time=stamp.time, text="", first=gap.first, last=gap.last))

    def _deliver(self, last: int) -> None:
        while self._inbox and self._inbox[0].number <= last:
            event = self._inbox.popleft()
            self._delivered = event.number
            self._hub.publish(event)
        self.changed.notify()
