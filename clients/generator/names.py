"""Identifiers for the generated clients, from the names of the protocol by one rule.

A name is taken apart into words: at everything that is not a letter or a digit, before a capital that follows a small
letter, and behind a run of capitals ("MWIServiceType": MWI, Service, Type; "CallIDsRecorded": Call, IDs, Recorded).
A language puts the words together in its own way. Pure functions.
"""

import re
from typing import Iterable, List

_WORD = re.compile(r"[A-Z]+s(?![a-z])|[A-Z]+(?![a-z])|[A-Z]?[a-z0-9]+|[0-9]+")


def words(name: str) -> List[str]:
    """The words of a name, with the capitals that they have in it."""
    return _WORD.findall(name)


def snake(name: str) -> str:
    """CallIDsRecorded -> call_ids_recorded."""
    return "_".join(words(name)).lower()


def upper_snake(name: str) -> str:
    """remote ringing -> REMOTE_RINGING."""
    return snake(name).upper()


def upper_camel(name: str) -> str:
    """b2buaCSTAResponse -> B2buaCSTAResponse; capitals of the protocol stay, so a search for its name finds the type."""
    return "".join(word[0].upper() + word[1:] for word in words(name))


def lower_camel(name: str) -> str:
    """CallID -> callID, URI -> uri, remote ringing -> remoteRinging."""
    first, *rest = words(name)
    return first.lower() + upper_camel(" ".join(rest))


def require_distinct(identifiers: Iterable[str], where: str) -> None:
    """ValueError if two of the identifiers are the same."""
    seen = set()
    for identifier in identifiers:
        if identifier in seen:
            raise ValueError(f"{where}: two names lead to {identifier}")
        seen.add(identifier)
