"""A call view for the terminal: it shows the lines and calls of a telephone, and does what is typed.

    python3 call_view.py [SOCKET, or http://HOST:PORT TOKEN-FILE]

Typed words: dial LINE NUMBER, answer CALL, hold CALL, retrieve CALL, transfer CALL NUMBER, end CALL, dnd LINE on|off.
Ctrl-D ends the view, and leaves the telephone as it is.
"""

import asyncio
import re
import sys
from pathlib import Path

from telephone_client import Call, IncomingCallMissed, NotConnected, Telephone, TelephoneError
from telephone_client.state import Party


def who(party: Party) -> str:
    """A party as a person reads it. The name comes from the far end: it must not control the terminal."""
    number = re.sub("^sips?:|@.*", "", party.address or "unknown")
    text = f"{party.name} ({number})" if party.name else number
    return "".join(each if each.isprintable() else "?" for each in text)


def drawing(phone: Telephone) -> str:
    rows = [f"-- {'' if phone.is_connected else 'no telephone; as it was: '}{len(phone.calls)} calls"]
    for line in phone.state.lines:
        notes = ["do not disturb"] if line.do_not_disturb else []
        notes += [f"{each.type}: {each.destination}" for each in line.forwarding if each.active]
        rows += [f"{line.id:<7}{', '.join(notes)}"] if notes else []
    for call in phone.calls:
        if call.record:
            rows.append(f"{call.line:<7}{call.id:<5}{call.state.phrase:<16}{who(call.record.party)}")
    return "\n".join(rows)


async def show(phone: Telephone) -> None:
    shown = ""
    async for _ in phone.states():
        if drawing(phone) != shown:
            shown = drawing(phone)
            print(shown, flush=True)


async def report_missed(phone: Telephone) -> None:
    """A missed call is not part of any state."""
    async for event in phone.events(IncomingCallMissed):
        print(f"missed: {who(Party(address=event.uri, name=event.name))}", flush=True)


async def do(phone: Telephone, button: str, *words: str) -> None:
    def call() -> Call:
        return phone.call(int(words[0]))

    match button, len(words):
        case "dial", 2:
            await phone.line(words[0]).dial(words[1])
        case "answer", 1:
            await call().answer()
        case "hold", 1:
            await call().hold()
        case "retrieve", 1:
            await call().retrieve()
        case "transfer", 2:
            await call().transfer(words[1])
        case "end", 1:
            await call().hang_up()
        case "dnd", 2:
            await phone.line(words[0]).do_not_disturb(words[1] == "on")
        case _:
            print("dial, answer, hold, retrieve, transfer, end or dnd", flush=True)


async def take_typed(phone: Telephone) -> None:
    reader = asyncio.StreamReader()
    await asyncio.get_running_loop().connect_read_pipe(lambda: asyncio.StreamReaderProtocol(reader), sys.stdin)
    while line := await reader.readline():
        try:
            if words := line.decode().split():
                await do(phone, *words)
        except (TelephoneError, ValueError) as error:
            print(f"not done: {error}", flush=True)


async def main(address: str | None = None, token: str | None = None) -> None:
    async with Telephone.connect(address, token=Path(token) if token else None, name="call view") as phone:
        others = [asyncio.create_task(show(phone)), asyncio.create_task(report_missed(phone))]
        await take_typed(phone)
        for each in others:
            each.cancel()


if __name__ == "__main__":
    try:
        asyncio.run(main(*sys.argv[1:]))
    except NotConnected as error:
        sys.exit(str(error))
