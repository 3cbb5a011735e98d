"""Delivers events to iterators, and to waits for one event, which may have come just before.

Every event gets a position, which grows over restarts of the telephone; the numbers of events begin again.
"""

import asyncio
import itertools
import weakref
from collections import deque
from collections.abc import AsyncIterator, Callable
from typing import Generic, TypeVar, cast

from ._errors import ConnectionLost, EventsLost
from ._messages import Event

E = TypeVar("E", bound=Event)


class Signal:
    """Wakes all tasks that wait for it at the moment."""

    def __init__(self) -> None:
        self.count = 0  # of the notices so far
        self._waiting: set[asyncio.Future[None]] = set()

    def notify(self) -> None:
        self.count += 1
        for each in self._waiting:
            if not each.done():
                each.set_result(None)

    async def wait(self) -> None:
        future: asyncio.Future[None] = asyncio.get_running_loop().create_future()
        self._waiting.add(future)
        try:
            await future
        finally:
            self._waiting.discard(future)


class EventIterator(AsyncIterator[E], Generic[E]):
    """The events of some kinds from its creation on, each once, in order. It keeps up to `capacity` events that nobody
    has taken yet. Beyond that it drops the new ones, and raises EventsLost when those before are taken; then it ends.
    It ends without an error when the telephone is closed. Other iterators notice nothing of it."""

    def __init__(self, kinds: tuple[type[E], ...], capacity: int) -> None:
        self._kinds = kinds
        self._capacity = capacity
        self._events: deque[E] = deque()
        self._came = Signal()
        self._lost: tuple[int, int] | None = None
        self._has_ended = False

    def __aiter__(self) -> "EventIterator[E]":
        return self

    async def __anext__(self) -> E:
        while not self._events:
            if self._lost:
                lost, self._lost, self._has_ended = self._lost, None, True
                raise EventsLost(*lost)
            if self._has_ended:
                raise StopAsyncIteration
            await self._came.wait()
        return self._events.popleft()

    def _put(self, event: Event) -> None:
        if self._has_ended or not isinstance(event, self._kinds):
            return
        if self._lost or len(self._events) >= self._capacity:
            self._lost = (self._lost[0] if self._lost else event.number, event.number)
        else:
            self._events.append(cast(E, event))
        self._came.notify()

    def _end(self) -> None:
        self._has_ended = True
        self._came.notify()


class Hub:
    """Keeps the latest `kept` events for waits that begin a moment after the event."""

    def __init__(self, kept: int) -> None:
        self.position = 0  # of the latest event
        self._kept: deque[tuple[int, Event]] = deque(maxlen=kept)
        self._iterators: weakref.WeakSet[EventIterator[Event]] = weakref.WeakSet()
        self._came = Signal()
        self._has_ended = False

    def publish(self, event: Event) -> None:
        self.position += 1
        self._kept.append((self.position, event))
        for each in list(self._iterators):
            each._put(event)
        self._came.notify()

    def iterate(self, kinds: tuple[type[E], ...], capacity: int) -> EventIterator[E]:
        iterator = EventIterator(kinds, capacity)
        if self._has_ended:
            iterator._end()
        self._iterators.add(iterator)  # type: ignore[arg-type]  # it is given events of its kinds only
        return iterator

    def find(self, matches: Callable[[int, Event], bool], since: int) -> tuple[int, Event] | None:
        """The first such event behind a position."""
        return next(((at, event) for at, event in self._behind(since) if matches(at, event)), None)

    async def next(self) -> None:
        """Returns at the next event. ConnectionLost if there will be none."""
        if not self._has_ended:
            await self._came.wait()
        if self._has_ended:
            raise ConnectionLost("the telephone was closed")

    def since(self, position: int) -> list[Event]:
        """The events behind a position that are still kept."""
        return [event for _, event in self._behind(position)]

    def _behind(self, position: int) -> list[tuple[int, Event]]:
        newest_first = itertools.islice(reversed(self._kept), self.position - position)
        return list(newest_first)[::-1]

    def end(self) -> None:
        """Ends all iterators and waits."""
        self._has_ended = True
        self._came.notify()
        for each in list(self._iterators):
            each._end()
