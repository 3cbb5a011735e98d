"""One connection to a telephone, whatever carries it. Telephone makes a new one after each loss."""

from abc import ABC, abstractmethod
from collections.abc import AsyncIterator
from dataclasses import dataclass
from datetime import datetime
from typing import Any, TypeAlias

from ._errors import NotConnected, ProtocolError
from ._messages import Reply


@dataclass(frozen=True)
class EventMessage:
    """An event: its number across the telephone, the moment of its delivery, its text."""

    number: int
    time: datetime
    text: str


@dataclass(frozen=True)
class GapMessage:
    """The telephone no longer keeps these events. A StateMessage follows."""

    first: int
    last: int


@dataclass(frozen=True)
class StateMessage:
    """The state as JSON, after a gap."""

    json: str


Message: TypeAlias = EventMessage | GapMessage | StateMessage


class Connection(ABC):
    """Requests and commands may be sent by several tasks at once. A task that is cancelled gives up its reply; the
    replies of the others stay theirs. After a loss, everything raises ConnectionLost."""

    @abstractmethod
    async def request(self, text: str) -> Reply:
        """Sends a request. MessageRefused if it did not reach the service."""

    @abstractmethod
    async def command(self, text: str) -> str:
        """Sends a command and returns its result. MessageRefused if it was refused."""

    @abstractmethod
    def messages(self, after: int, start: str) -> AsyncIterator[Message]:
        """The events after that number of that start, gaps and states. Used once. It ends with ConnectionLost."""

    @property
    @abstractmethod
    def is_lost(self) -> bool:
        """Whether it has ended."""

    @abstractmethod
    async def close(self) -> None:
        """Ends the connection. What waits for a reply raises ConnectionLost."""


_PROTOCOL = 1  # of the connection; a telephone with a greater one needs a newer client


def require_protocol(hello: Any) -> None:
    """NotConnected if the telephone, by its answer to `hello`, speaks a protocol that this client does not know."""
    if hello["protocol"] > _PROTOCOL:
        theirs = hello["protocol"]
        raise NotConnected(f"the telephone speaks protocol {theirs}, this client {_PROTOCOL}: use a newer client")


def read_time(text: str) -> datetime:
    """A moment as the telephone writes it: 2000-01-01T00:00:00.000Z."""
    try:
        return datetime.fromisoformat(text)
    except ValueError:
        raise ProtocolError(f'"{text}" is not a time') from None
