"""The messages of the application socket: each ends with a NUL; the first line says of what kind it is."""

from dataclasses import dataclass


@dataclass(frozen=True)
class RawMessage:
    """kind: the first word of the first line. words: the others. text: what stands behind the first line."""

    kind: str
    words: tuple[str, ...]
    text: str


class Splitter:
    """Takes what was received in pieces of any size and gives the messages in it."""

    def __init__(self) -> None:
        self._rest = bytearray()

    def feed(self, data: bytes) -> list[RawMessage]:
        """The messages that are complete now. Bytes that are not UTF-8 become U+FFFD."""
        searched = len(self._rest)
        self._rest += data
        if self._rest.find(0, searched) < 0:
            return []
        *messages, rest = bytes(self._rest).split(b"\0")
        self._rest = bytearray(rest)
        return [_message(each) for each in messages]


def _message(data: bytes) -> RawMessage:
    head, _, text = data.decode(errors="replace").partition("\n")
    kind, *words = head.split(" ")
    return RawMessage(kind, tuple(words), text)
