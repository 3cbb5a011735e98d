"""The call view, as a person uses it: what is typed, and what is shown."""

import asyncio
import sys
from pathlib import Path

import pytest

VIEW = Path(__file__).with_name("call_view.py")


class View:
    """The view in a process of its own."""

    async def open(self, *arguments):
        self._process = await asyncio.create_subprocess_exec(
            sys.executable, VIEW, *map(str, arguments), stdin=asyncio.subprocess.PIPE, stdout=asyncio.subprocess.PIPE)
        return self

    def type(self, line):
        self._process.stdin.write(f"{line}\n".encode())

    async def shows(self, text):
        """Waits for a line."""
        async with asyncio.timeout(20):
            while text not in (line := (await self._process.stdout.readline()).decode()):
                assert line, f"the view has ended without: {text}"

    async def close(self):
        self._process.stdin.close()
        return await self._process.wait()


@pytest.mark.telephone(toml='[http]\naddress = "127.0.0.1:0"\n')
@pytest.mark.parametrize("way", ["socket", "http"])
async def test_calls_are_shown_and_buttons_work(telephone, way):
    program = telephone.program
    view = await View().open(*[program.socket] if way == "socket" else [program.http(), f"{program.socket}.token"])
    await view.shows("-- 0 calls")
    await telephone.ring("4711", "555", name="Ann \u202eB")  # turns the direction of writing
    await view.shows("4711   1001 ringing         Ann ?B (555)")
    view.type("answer 1001")
    await view.shows("4711   1001 connected       ")
    view.type("hold 1001")
    await view.shows("4711   1001 held            ")
    view.type("hold 99")
    await view.shows("not done: there is no call 99; the telephone has call 1001")
    view.type("dnd 4712 on")
    await view.shows("4712   do not disturb")
    view.type("end 1001")
    await view.shows("-- 0 calls")
    view.type("dial 4711 102")
    await view.shows("4711   1    remote ringing  102")
    await telephone.do.call("4712", "556")
    await view.shows("missed: 556")
    view.type("juggle")
    await view.shows("dial, answer, hold, retrieve, transfer, end or dnd")
    assert await view.close() == 0
