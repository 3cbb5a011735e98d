"""The base of the enumerations. A telephone may send values that they do not list: these become members, too."""

from enum import Enum, IntEnum
from typing import Self


def _name_of(value: object) -> str:
    return "UNLISTED_" + "".join(each if each.isalnum() else "_" for each in str(value))


class NumberEnumeration(IntEnum):
    """An enumeration whose numbers messages carry. `phrase` is the value as people say it: "remote ringing"."""

    phrase: str

    def __new__(cls, number: int, phrase: str = "") -> Self:
        member = int.__new__(cls, number)
        member._value_ = number
        member.phrase = phrase
        return member

    @classmethod
    def _missing_(cls, value: object) -> Self | None:
        if not isinstance(value, int):
            return None
        return cls._unlisted(value, str(value))

    @classmethod
    def named(cls, phrase: str) -> Self:
        """The member with this phrase. A phrase that is not listed becomes a member with the number -1."""
        for each in cls:
            if each.phrase == phrase:
                return each
        return cls._unlisted(-1, phrase)

    @classmethod
    def _unlisted(cls, number: int, phrase: str) -> Self:
        member = int.__new__(cls, number)
        member._name_ = _name_of(phrase)
        member._value_ = number
        member.phrase = phrase
        return member

    def __reduce_ex__(self, protocol: object) -> tuple[type[Self], tuple[int]]:
        return type(self), (self._value_,)

    def __str__(self) -> str:
        return self.phrase


class WordEnumeration(str, Enum):
    """An enumeration whose words messages carry. `phrase` is the value as people say it: "logged on"."""

    phrase: str

    def __new__(cls, word: str, phrase: str = "") -> Self:
        member = str.__new__(cls, word)
        member._value_ = word
        member.phrase = phrase
        return member

    @classmethod
    def _missing_(cls, value: object) -> Self | None:
        if not isinstance(value, str):
            return None
        return cls._unlisted(value, value)

    @classmethod
    def named(cls, phrase: str) -> Self:
        """The member with this phrase. A phrase that is not listed becomes a member whose word is the phrase."""
        for each in cls:
            if each.phrase == phrase:
                return each
        return cls._unlisted(phrase, phrase)

    @classmethod
    def _unlisted(cls, word: str, phrase: str) -> Self:
        member = str.__new__(cls, word)
        member._name_ = _name_of(word)
        member._value_ = word
        member.phrase = phrase
        return member

    def __reduce_ex__(self, protocol: object) -> tuple[type[Self], tuple[str]]:
        return type(self), (self._value_,)

    def __str__(self) -> str:
        return self.phrase
