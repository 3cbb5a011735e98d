"""Elements, <Tag>value</Tag>: how requests are written, answers and events are read. Values are not escaped."""

from dataclasses import dataclass
from datetime import datetime
from typing import TypeAlias

from ._errors import ProtocolError

Written: TypeAlias = str | int | None
"""A value of a parameter. None: the element is left out; True and False are 1 and 0."""


def request_text(method: str, *parameters: tuple[str, Written], body: str | None = None) -> str:
    """The text of a request. ValueError if a value cannot be sent."""
    elements = [_element(tag, value) for tag, value in parameters if value is not None]
    return f"<Method>{method}</Method>{''.join(elements)}{_sendable(body or '', 'the body')}"


def _element(tag: str, value: str | int) -> str:
    text = str.__str__(value) if isinstance(value, str) else str(int(value))
    if f"</{tag}>" in text:
        raise ValueError(f"the value of {tag} contains </{tag}>, which ends it")
    return f"<{tag}>{_sendable(text, f'the value of {tag}')}</{tag}>"


def _sendable(text: str, what: str) -> str:
    if "\0" in text:
        raise ValueError(f"{what} contains a NUL, which ends a message")
    return text


def truth(text: str) -> bool:
    """Reads "true" or "false"."""
    if text not in ("true", "false"):
        raise ProtocolError(f'"{text}" is neither true nor false')
    return text == "true"


@dataclass(frozen=True)
class Stamp:
    """What the telephone says about an event besides its text."""

    number: int
    time: datetime
    text: str


class Elements:
    """Reads elements one after the other. A value ends at the first closing tag of its own name, so what a far end puts
    into its name cannot pass for an element that comes later."""

    def __init__(self, text: str) -> None:
        self._text = text
        self._position = 0

    def text(self, tag: str) -> str:
        """The value of the next element with this tag."""
        opening, closing = f"<{tag}>", f"</{tag}>"
        begin = self._text.find(opening, self._position)
        end = self._text.find(closing, begin + len(opening))
        if begin < 0 or end < 0:
            raise ProtocolError(f"there is no {tag} in {self._text}")
        self._position = end + len(closing)
        return self._text[begin + len(opening) : end]

    def number(self, tag: str) -> int:
        return _number(self.text(tag), tag)

    def flag(self, tag: str) -> bool:
        return _number(self.text(tag), tag) != 0

    def truth(self, tag: str) -> bool:
        return truth(self.text(tag))

    def texts(self, tag: str) -> tuple[str, ...]:
        return _split(self.text(tag))

    def numbers(self, tag: str) -> tuple[int, ...]:
        return tuple(_number(each, tag) for each in self.texts(tag))

    def body(self) -> str:
        """Everything behind the elements that were read."""
        return self._text[self._position :]


def _number(text: str, tag: str) -> int:
    try:
        return int(text)
    except ValueError:
        raise ProtocolError(f'{tag} "{text}" is not a number') from None


def _split(text: str) -> tuple[str, ...]:
    """The texts of a list: separated by commas; "," and "\\" in a text have a "\\" before them."""
    if not text:
        return ()
    items = [""]
    letters = iter(text)
    for letter in letters:
        if letter == ",":
            items.append("")
        else:
            items[-1] += next(letters, "") if letter == "\\" else letter
    return tuple(items)
