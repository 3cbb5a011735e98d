"""What happens when the connection is cut, or the telephone is killed and started again."""

import asyncio
import os
import signal
import socket
import subprocess
from pathlib import Path

import pytest

from telephone_client import CallHeld, Event, Gap, NotConnected, Pauses, Telephone

TELEPHONE = os.environ["TELEPHONE"]
PAUSES = Pauses(first=0.02, most=0.1)


class Program:
    """A telephone that is killed and started again with the same socket and the same address for HTTP."""

    def __init__(self, folder):
        self.socket = folder / "socket"
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            self.http = f"http://127.0.0.1:{free.getsockname()[1]}"
        self._config = folder / "telephone.toml"
        self._config.write_text(f'[http]\naddress = "{self.http.removeprefix("http://")}"\n')

    def start(self):
        command = [TELEPHONE, "--time", "virtual", "--log-level", "0", "--config", self._config, "--socket", self.socket]
        self._process = subprocess.Popen([*command, "serve"], stdout=subprocess.PIPE, text=True)
        while "HTTP: " not in self._process.stdout.readline():
            assert self._process.poll() is None

    def kill(self):
        self._process.send_signal(signal.SIGKILL)
        self._process.wait()
        self._process.stdout.close()


@pytest.fixture
def program(tmp_path):
    program = Program(tmp_path)
    program.start()
    yield program
    program.kill()


def client(program, over):
    token = Path(f"{program.socket}.token")
    return Telephone.connect(program.http if over == "http" else program.socket, token=token, pauses=PAUSES, advances=True)


class Relay:
    """Between a client and the telephone's socket; the test cuts it."""

    def __init__(self, path, target):
        self.path, self._target = path, target
        self._writers = []

    async def open(self):
        self._server = await asyncio.start_unix_server(self._serve, self.path)

    def cut(self):
        self._server.close()
        os.unlink(self.path)
        for each in self._writers:
            each.close()
        self._writers.clear()

    async def _serve(self, reader, writer):
        far_reader, far_writer = await asyncio.open_unix_connection(self._target)
        self._writers += [writer, far_writer]
        await asyncio.gather(self._copy(reader, far_writer), self._copy(far_reader, writer))

    @staticmethod
    async def _copy(reader, writer):
        while not writer.is_closing() and (data := await reader.read(65536)):
            writer.write(data)
        writer.close()


async def until(condition):
    async with asyncio.timeout(20):
        while not condition():
            await asyncio.sleep(0.01)


@pytest.mark.parametrize("over", ["socket", "http"])
async def test_a_telephone_that_is_killed_and_started_again(program, over, telephone_runner):
    async with client(program, over) as phone:
        gaps, everything = phone.events(Gap), phone.events()
        call = await phone.line("4711").dial("100")
        await call.connected()
        before, last = phone.state.start, phone.state.event
        program.kill()
        await until(lambda: not phone.is_connected)
        assert [each.id for each in phone.calls] == [call.id]
        with pytest.raises(NotConnected):
            await call.hold()
        program.start()
        await until(lambda: phone.is_connected)
        [gap] = [await anext(gaps)]
        assert gap.first == 1
        assert (phone.calls, call.record) == ([], None)
        assert phone.state.start != before or phone.state.event < last  # in virtual time, starts may have the same name
        call = await phone.line("4711").dial("100")
        await call.connected()
        await call.hold()
        await phone.wait_for(CallHeld, call=call)
        kinds = [type(await anext(everything)).__name__ for _ in range(10)]
        assert kinds == [*["CallStateChange"] * 4, "Gap", *["CallStateChange"] * 4, "CallHeld"]


async def test_what_happens_while_the_connection_is_cut_comes_afterwards(program, tmp_path, telephone_runner):
    relay = Relay(str(tmp_path / "relay"), str(program.socket))
    await relay.open()
    async with client(program, "socket") as other, Telephone.connect(relay.path, pauses=PAUSES) as phone:
        everything, reference = phone.events(), other.events()
        call = await other.line("4711").dial("100")
        await call.connected()
        relay.cut()
        await until(lambda: not phone.is_connected)
        with pytest.raises(NotConnected):
            await phone.do.say("nothing")
        await call.hold()
        await call.held()
        await other.set_do_not_disturb("4712", True)
        await relay.open()
        await until(lambda: phone.is_connected)
        assert phone.line("4712").record.do_not_disturb  # which has no event
        await call.hang_up()
        await call.ended()
        async with asyncio.timeout(20):
            expected = [await anext(reference) for _ in range(6)]
            assert [await anext(everything) for _ in range(6)] == expected
        assert [type(each).__name__ for each in expected] == [*["CallStateChange"] * 4, "CallHeld", "CallStateChange"]


async def test_a_telephone_that_is_not_there_yet(tmp_path, telephone_runner):
    program = Program(tmp_path)
    phone = Telephone.connect(program.socket, pauses=PAUSES, within=20)
    opening = asyncio.create_task(phone.open())
    await asyncio.sleep(0)
    program.start()
    try:
        await opening
        assert phone.state.ready
        await phone.close()
    finally:
        program.kill()


async def test_a_closed_telephone_does_not_come_back(program, telephone_runner):
    phone = client(program, "socket")
    await phone.open()
    await phone.close()
    with pytest.raises(NotConnected, match="^the telephone was closed$"):
        await phone.do.say("x")
    assert not phone.is_connected
    assert issubclass(Gap, Event)
