"""pytest plugin: each test has a telephone of its own, with an exchange of its own.

    async def test_hold(telephone, exchange):
        await exchange.does("107", "ring 1s, answer")
        call = await telephone.line("4711").dial("107")
        await call.connected()
        await telephone.key("Hold").press()
        await call.held()
        assert telephone.lamp("4711") == "flashing"

The fixture `telephone` starts the program in a folder of its own, in virtual time unless told otherwise, connects, and
ends it after the test. When a test fails, its report contains the log of its telephones. Tests that use a fixture of
this plugin may be coroutines; no other plugin is needed for that. docs/clients.md has the options and the marker.
"""

# mypy: disallow_untyped_decorators=False
# pytest 7 does not declare the types of its hookimpl.

import asyncio
import inspect
import os
import re
import selectors
import shutil
import subprocess
import tempfile
import time
from collections.abc import Coroutine, Iterator
from pathlib import Path
from typing import Any, Literal, Protocol

import pytest

from telephone_client import Call, IncomingCall, Key, LampMode, NotConnected, Telephone

_START = 20.0  # seconds that a telephone may take to start; it takes a fraction of one
_END = 5.0  # seconds that it may take to end before it is killed
_LOG_LINES = 300  # of its log in a report


class Lamp:
    """The lamp of a key, for assertions: equal to a mode, as LampMode or as a word ("steady")."""

    def __init__(self, telephone: Telephone, key: Key) -> None:
        self.telephone = telephone
        self.key = key
        self.mode = key.lamp.mode
        self.colour = key.lamp.colour

    def __eq__(self, other: object) -> bool:
        if isinstance(other, str):
            _require_mode(other)
            return self.mode.phrase == other
        if isinstance(other, LampMode):
            return self.mode == other
        return NotImplemented

    __hash__ = None  # type: ignore[assignment]  # the modes that it equals hash differently

    def __repr__(self) -> str:
        return f"<lamp of {self.key}>"


def _require_mode(word: str) -> None:
    words = [each.phrase for each in LampMode]
    if word not in words:
        raise ValueError(f'a lamp is never "{word}"; its modes are {", ".join(words)}')


class TelephoneUnderTest(Telephone):
    """A telephone that was started for a test."""

    program: "_Program"

    async def ring(self, line: str = "4711", number: str = "555", name: str | None = None) -> Call:
        """Lets a number of the exchange call a line, and returns the call once it is offered. Its waits see what an
        application has done to it meanwhile."""
        since = self.position
        await self.do.call(line, number, name=name)
        event = await self.wait_for(IncomingCall, line=line)
        return Call(self, event.call_id, event.line_id, since)

    async def advance(self, seconds: float) -> None:
        """In virtual time: lets so much time pass."""
        await self.do.advance(seconds)

    def lamp(self, key: str | int) -> Lamp:
        """The lamp of a key, as it is now: `assert telephone.lamp("dnd") == "steady"`."""
        return Lamp(self, self.key(key))

    @property
    def log(self) -> str:
        """The log so far."""
        return self.program.log()


class Exchange:
    """The exchange of a telephone: what its numbers do (docs/exchange.md)."""

    def __init__(self, telephone: Telephone) -> None:
        self._telephone = telephone

    async def does(self, number: str, steps: str) -> None:
        """What a number does in its next calls: "ring 2s, answer 5s, hang-up"."""
        await self._telephone.do.exchange(number, steps, does=True)

    async def now(self, number: str, steps: str) -> None:
        """What a number does at once, in its present call, or in a new one if the first step is call."""
        await self._telephone.do.exchange(number, steps)

    async def registrar(
        self, what: Literal["accept", "refuse", "redirect", "away", "forget"], value: str | int | None = None
    ) -> None:
        """What the registrar does from now on."""
        await self._telephone.do.exchange_registrar(what, value)

    async def message(self, line: str, new: int, old: int = 0) -> None:
        """Sets how many messages a line's mailbox has."""
        await self._telephone.do.message(line, new=new, old=old)


class _Program:
    """The process of a telephone, and its folder."""

    def __init__(self, program: str, time_: str, config: Path | None, toml: str, options: tuple[str, ...]) -> None:
        self.folder = Path(tempfile.mkdtemp(prefix="telephone-"))  # a short path: that of a socket is limited
        self.socket = self.folder / "socket"
        command = [program, "--socket", str(self.socket), "--time", time_, "--log-file", str(self.folder / "log")]
        if toml:
            (self.folder / "telephone.toml").write_text(toml, encoding="utf-8")
            config = self.folder / "telephone.toml"
        command += ["--config", str(config)] if config else []
        with open(self.folder / "errors", "wb") as errors:
            self._process = subprocess.Popen(
                [*command, *options, "serve"], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=errors
            )
        self._output = b""

    @property
    def pid(self) -> int:
        """The id of the process."""
        return self._process.pid

    def wait_until_ready(self) -> None:
        """Returns when applications can connect. NotConnected if the telephone does not start."""
        if not self._read_until(rb"applications can connect", _START):
            raise NotConnected(f"the telephone does not start:\n{self.log()}")

    def http(self) -> str:
        """The address of the telephone over HTTP, which it prints last of all."""
        found = self._read_until(rb"HTTP: (\S+)/\?token", _END)
        if not found:
            raise ValueError("the configuration of the telephone has no [http] with an address")
        return found[1].decode()

    def _read_until(self, pattern: bytes, seconds: float) -> re.Match[bytes] | None:
        """Reads what the program prints until it contains the pattern; None if it does not in time."""
        assert self._process.stdout is not None
        end = time.monotonic() + seconds
        with selectors.DefaultSelector() as selector:
            selector.register(self._process.stdout, selectors.EVENT_READ)
            while not (found := re.search(pattern, self._output)):
                data = os.read(self._process.stdout.fileno(), 4096) if selector.select(end - time.monotonic()) else b""
                if not data:
                    return None
                self._output += data
        return found

    def end(self) -> str:
        """Ends the process, and says what was wrong with its end; empty: nothing."""
        self._process.terminate()
        try:
            status = self._process.wait(_END)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
            return f"the telephone did not end within {_END} seconds, and was killed"
        finally:
            if self._process.stdout:
                self._process.stdout.close()
        return f"the telephone has ended with status {status}" if status else ""

    def log(self) -> str:
        """The end of the log, and what the program has written to standard error."""
        text = ""
        for name in ("log", "errors"):
            file = self.folder / name
            text += file.read_text(encoding="utf-8", errors="replace") if file.exists() else ""
        return "\n".join(text.splitlines()[-_LOG_LINES:])

    def remove(self) -> None:
        shutil.rmtree(self.folder, ignore_errors=True)


class StartTelephone(Protocol):
    """The fixture `start_telephone`: starts another telephone, which ends with the test."""

    def __call__(
        self,
        *,
        time: str | None = None,
        config: str | Path | None = None,
        toml: str = "",
        options: tuple[str, ...] = (),
        over: Literal["socket", "http"] = "socket",
    ) -> Coroutine[Any, Any, TelephoneUnderTest]:
        """time, config, toml, options: as those of the marker. over: what the client uses."""


class _Telephones:
    """The telephones of a test."""

    def __init__(self, item: pytest.Item) -> None:
        self._config = item.config
        self._programs: list[_Program] = []
        self._telephones: list[TelephoneUnderTest] = []

    async def start(
        self,
        *,
        time: str | None = None,
        config: str | Path | None = None,
        toml: str = "",
        options: tuple[str, ...] = (),
        over: Literal["socket", "http"] = "socket",
    ) -> TelephoneUnderTest:
        time = time or _option(self._config, "time") or "virtual"
        config = config or (None if toml else _option(self._config, "config"))
        file = self._config.rootpath / config if config else None
        program = _Program(_program_of(self._config), time, file, toml, options)
        self._programs.append(program)
        program.wait_until_ready()
        address: str | Path = program.http() if over == "http" else program.socket
        telephone = TelephoneUnderTest.connect(
            address, token=Path(f"{program.socket}.token"), name="test", advances=time.startswith("virtual")
        )
        telephone.program = program
        self._telephones.append(await telephone.open())
        return telephone

    async def close(self) -> None:
        for each in self._telephones:
            await each.close()

    def end(self) -> None:
        """Ends all programs. Fails if one ends, or has ended, in another way than it should."""
        wrong = [each.end() for each in self._programs]
        if any(wrong):
            pytest.fail("; ".join(filter(None, wrong)), pytrace=False)

    def logs(self) -> list[str]:
        return [each.log() for each in self._programs]

    def remove(self) -> None:
        for each in self._programs:
            each.remove()


_TELEPHONES = pytest.StashKey[_Telephones]()


def _option(config: pytest.Config, name: str) -> str | None:
    """An option of the command line, or else of the configuration of pytest."""
    value = config.getoption(f"telephone_{name}") or config.getini(f"telephone_{name}")
    return str(value) if value else None


def _program_of(config: pytest.Config) -> str:
    program = _option(config, "program") or os.environ.get("TELEPHONE") or shutil.which("telephone")
    if not program:
        raise pytest.UsageError("the program telephone is not in PATH: give its path with --telephone-program")
    return program


def pytest_addoption(parser: pytest.Parser) -> None:
    group = parser.getgroup("telephone", "telephones of the tests")
    for name, meaning in (
        ("program", "path of the program; else that in the environment variable TELEPHONE, else telephone in PATH"),
        ("time", "virtual, or real; virtual if missing"),
        ("config", "configuration file of the telephones (docs/configuration.md)"),
    ):
        group.addoption(f"--telephone-{name}", dest=f"telephone_{name}", metavar=name.upper(), help=meaning)
        parser.addini(f"telephone_{name}", meaning)


def pytest_configure(config: pytest.Config) -> None:
    config.addinivalue_line(
        "markers",
        "telephone(time=None, config=None, toml='', options=(), over='socket'): the telephone of the fixture: its "
        "time, its configuration as a file or as text, further options of the program, and whether the client uses "
        "http",
    )


@pytest.fixture
def telephone_runner() -> Iterator[asyncio.Runner]:
    """The event loop of a test. A test without coroutines runs what it needs in it: `telephone_runner.run(...)`."""
    with asyncio.Runner() as runner:
        yield runner


@pytest.fixture
def start_telephone(request: pytest.FixtureRequest, telephone_runner: asyncio.Runner) -> Iterator[StartTelephone]:
    """Starts a telephone: `other = await start_telephone(toml="...")`."""
    telephones = _Telephones(request.node)
    request.node.stash[_TELEPHONES] = telephones
    yield telephones.start
    telephone_runner.run(telephones.close())
    telephones.end()


@pytest.fixture
def telephone(
    request: pytest.FixtureRequest, telephone_runner: asyncio.Runner, start_telephone: StartTelephone
) -> TelephoneUnderTest:
    """A telephone of this test alone; the marker `telephone` says what is special about it."""
    marker = request.node.get_closest_marker("telephone")
    arguments = marker.kwargs if marker else {}
    return telephone_runner.run(start_telephone(**arguments))


@pytest.fixture
def exchange(telephone: TelephoneUnderTest) -> Exchange:
    """The exchange of the fixture `telephone`."""
    return Exchange(telephone)


@pytest.hookimpl(tryfirst=True)
def pytest_pyfunc_call(pyfuncitem: pytest.Function) -> bool | None:
    """Runs a coroutine that uses a fixture of this plugin."""
    if not inspect.iscoroutinefunction(pyfuncitem.obj) or "telephone_runner" not in pyfuncitem.fixturenames:
        return None
    names = inspect.signature(pyfuncitem.obj).parameters
    arguments = {name: pyfuncitem.funcargs[name] for name in names if name in pyfuncitem.funcargs}
    runner = pyfuncitem.funcargs["telephone_runner"]
    assert isinstance(runner, asyncio.Runner)
    runner.run(pyfuncitem.obj(**arguments))
    return True


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item: pytest.Item) -> Any:
    """Attaches the logs to the report of a failure."""
    outcome = yield
    report = outcome.get_result()
    telephones = item.stash.get(_TELEPHONES, None)
    if telephones is None:
        return
    if report.failed:
        for log in telephones.logs():
            report.sections.append(("log of the telephone", log))
    if report.when == "teardown":
        telephones.remove()


def pytest_assertrepr_compare(op: str, left: object, right: object) -> list[str] | None:
    """Says which lamps are lit when an assertion about one fails."""
    lamp = left if isinstance(left, Lamp) else right if isinstance(right, Lamp) else None
    if lamp is None:
        return None
    lit = [str(each) for each in lamp.telephone.keys if each.lamp.mode is not LampMode.OFF]
    other = right if lamp is left else left
    return [f"{lamp!r} {op} {str(other)!r}", f"lamps that are lit: {', '.join(lit) or 'none'}"]
