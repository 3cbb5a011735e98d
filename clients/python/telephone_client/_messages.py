"""What requests, commands and events have in common, whatever the protocol contains."""

from abc import ABC, abstractmethod
from dataclasses import dataclass, field
from datetime import datetime
from typing import ClassVar, Self, TypeAlias

from ._elements import Elements, Stamp
from ._errors import NoEffect, ProtocolError, RequestRefused

SUCCESS = "sfiSuccess"


@dataclass(frozen=True, kw_only=True)
class Event:
    """Something that has happened at the telephone."""

    METHOD: ClassVar[str] = ""
    LINE: ClassVar[str] = ""  # the member that names the line; empty: none
    CALL: ClassVar[str] = ""  # the member that names the call; empty: none

    number: int
    """Counts the events of this start of the telephone, from 1."""
    time: datetime
    """When it was delivered, in UTC."""
    text: str = field(repr=False)
    """The event as the telephone sent it."""

    @property
    def line(self) -> str | None:
        """The line or appearance that the event is about; None: none."""
        return str(getattr(self, self.LINE)) if self.LINE else None

    @property
    def call(self) -> int | None:
        """The id of the call that the event is about; None: none."""
        return int(getattr(self, self.CALL)) if self.CALL else None

    @classmethod
    def read(cls, stamp: Stamp, elements: Elements) -> Self:
        """The event whose elements these are. ProtocolError if one is missing."""
        return cls(number=stamp.number, time=stamp.time, text=stamp.text)


@dataclass(frozen=True, kw_only=True)
class UnknownEvent(Event):
    """An event that this client does not know: the telephone is newer. Its text says more."""


@dataclass(frozen=True)
class Reply:
    """The reply to a request. answer: None if it has none."""

    answer: str | None
    reasons: tuple[str, ...] = ()


class RequestSender(ABC):
    """Sends requests and makes exceptions of refusals. The methods for the requests are generated."""

    @abstractmethod
    async def send_request(self, text: str, *, changes: bool = True) -> Reply:
        """Sends a request as it stands and returns its reply, also one that reports a failure.

        changes: whether it may change the telephone.
        """

    async def _act(self, text: str, success: str = SUCCESS) -> None:
        reply = await self.send_request(text)
        if reply.answer != success:
            raise RequestRefused(text, reply.answer or "no answer", reply.reasons)
        if reply.reasons:
            raise NoEffect(text, success, reply.reasons)

    async def _act_unanswered(self, text: str) -> None:
        reply = await self.send_request(text)
        if reply.reasons:
            raise NoEffect(text, reply.answer or "no answer", reply.reasons)

    async def _ask(self, text: str) -> tuple[str, tuple[str, ...]]:
        """The answer and its reasons. A word of failure is a refusal."""
        reply = await self.send_request(text, changes=False)
        if reply.answer is None or reply.answer.startswith("sfiFailure"):
            raise RequestRefused(text, reply.answer or "no answer", reply.reasons)
        return reply.answer, reply.reasons

    async def _ask_text(self, text: str) -> str:
        answer, _ = await self._ask(text)
        return answer

    async def _ask_elements(self, text: str) -> tuple[Elements, tuple[str, ...]]:
        answer, reasons = await self._ask(text)
        return Elements(answer), reasons

    async def _ask_value(self, text: str) -> str:
        """What stands behind the result word and a comma."""
        answer, reasons = await self._ask(text)
        result, _, value = answer.partition(",")
        self._require_success(text, result, reasons)
        if not value:
            raise ProtocolError(f"the answer {answer} to {text} has no value")
        return value

    @staticmethod
    def _require_success(text: str, result: str, reasons: tuple[str, ...]) -> None:
        if result != SUCCESS:
            raise RequestRefused(text, str.__str__(result), reasons)


Word: TypeAlias = str | int | float | None


class CommandSender(ABC):
    """Sends commands. The methods for the commands are generated."""

    @abstractmethod
    async def send_command(self, text: str) -> str:
        """Sends a command as it is typed, and returns its result. MessageRefused if it is refused."""

    async def _command(self, name: str, *arguments: tuple[str, Word]) -> str:
        """Sends a command with arguments: the word before each, and its value; None or False: left out."""
        words = [name]
        for keyword, value in arguments:
            if value is None or value is False:
                continue
            words += [keyword] if keyword else []
            words += [] if value is True else [quoted_word(str(value))]
        return await self.send_command(" ".join(words))


def quoted_word(text: str) -> str:
    """A word of a command, in quotes if it needs them."""
    if text and not any(each in " \t\r\n\"'#" for each in text):
        return text
    escaped = text.replace("\\", "\\\\").replace('"', '\\"')
    return f'"{escaped}"'
