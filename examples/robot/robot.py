"""A robot that answers, holds and transfers calls by rules.

    python3 robot.py RULES.toml [SOCKET]

The first rule whose pattern fits the caller's number applies; a caller whom no rule fits is left to people.
"""

import asyncio
import fnmatch
import re
import sys
import tomllib
from collections.abc import Awaitable, Callable, Sequence
from dataclasses import dataclass
from pathlib import Path

from telephone_client import Call, IncomingCall, Telephone, TelephoneError


async def wait(_call: Call, seconds: str) -> None:
    await asyncio.sleep(float(seconds))


# What a step does with a call and with the word behind it, and what it waits for afterwards.
STEPS: dict[str, Callable[[Call, str], Awaitable[object]]] = {
    "answer": lambda call, _: both(call.answer, call.connected),
    "refuse": lambda call, _: both(call.refuse, call.ended),
    "deflect": lambda call, number: both(lambda: call.deflect(number), call.ended),
    "hold": lambda call, _: both(call.hold, call.held),
    "retrieve": lambda call, _: both(call.retrieve, call.connected),
    "digits": lambda call, digits: call.send_digits(digits),
    "transfer": lambda call, number: both(lambda: call.transfer(number), call.transferred),
    "end": lambda call, _: both(call.hang_up, call.ended),
    "wait": wait,
}


async def both(act: Callable[[], Awaitable[object]], outcome: Callable[[], Awaitable[object]]) -> None:
    await act()
    await outcome()


@dataclass(frozen=True)
class Rule:
    caller: str  # pattern of the number: 555, 55*, *
    steps: Sequence[tuple[str, str]]  # the name of a step, and the word behind it

    @classmethod
    def read(cls, table: dict[str, str]) -> "Rule":
        """ValueError if a step does not exist."""
        steps = [each.strip().partition(" ") for each in table["steps"].split(",")]
        for name, _, _ in steps:
            if name not in STEPS:
                raise ValueError(f"there is no step {name}; the steps are {', '.join(STEPS)}")
        return cls(table["caller"], [(name, word) for name, _, word in steps])


async def treat(call: Call, rule: Rule) -> None:
    try:
        for name, word in rule.steps:
            await STEPS[name](call, word)
            print(f"call {call.id}: {name} {word}".rstrip(), flush=True)
    except TelephoneError as error:
        print(f"call {call.id}: {error}", flush=True)


async def run(rules: Sequence[Rule], address: str | None) -> None:
    async with Telephone.connect(address, name="robot") as phone, asyncio.TaskGroup() as calls:
        print("waiting for calls", flush=True)
        async for event in phone.events(IncomingCall):
            number = re.sub("^sips?:|@.*", "", event.uri)
            rule = next((each for each in rules if fnmatch.fnmatch(number, each.caller)), None)
            if rule:
                calls.create_task(treat(phone.call(event.call_id, event.line_id), rule))


if __name__ == "__main__":
    try:
        tables = tomllib.loads(Path(sys.argv[1]).read_text(encoding="utf-8"))["rule"]
        asyncio.run(run([Rule.read(each) for each in tables], sys.argv[2] if len(sys.argv) > 2 else None))
    except (ValueError, OSError) as error:
        sys.exit(str(error))
    except KeyboardInterrupt:
        pass
