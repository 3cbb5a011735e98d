"""The connection over the application socket, a UNIX stream socket."""

import asyncio
import json
import os
import socket
from collections import deque
from collections.abc import AsyncIterator
from pathlib import Path

from ._connection import Connection, EventMessage, GapMessage, Message, StateMessage, read_time, require_protocol
from ._errors import ConnectionLost, MessageRefused, NotConnected
from ._framing import RawMessage, Splitter
from ._messages import Reply, quoted_word

_PIECE = 65536  # bytes received at once


def default_path() -> Path:
    """Where the telephone of this user has its socket."""
    run = os.environ.get("XDG_RUNTIME_DIR")
    folder = Path(run) if run and os.path.isdir(run) else Path(f"/tmp/telephone-{os.getuid()}")
    return folder / "telephone.socket"


class _Pending:
    """A message that was sent, and what has come of its reply."""

    def __init__(self) -> None:
        self.done: asyncio.Future[Reply] = asyncio.get_running_loop().create_future()
        self.answer: str | None = None
        self.reasons: list[str] = []

    def finish(self, reply: Reply) -> None:
        if not self.done.done():
            self.done.set_result(reply)

    def fail(self, error: Exception) -> None:
        if not self.done.done():
            self.done.set_exception(error)


class SocketConnection(Connection):
    """Replies come in the order of what was sent, so each belongs to the oldest message without one.

    It reads to the end also when nothing can be sent any more: a telephone with too many applications says so, and
    closes the connection.
    """

    def __init__(self, connected: socket.socket) -> None:
        self._socket = connected
        self._output: asyncio.Queue[bytes] = asyncio.Queue()
        self._pending: deque[_Pending] = deque()
        self._events: asyncio.Queue[Message | None] = asyncio.Queue()  # None: there will be no more
        self._lost: ConnectionLost | None = None
        self._tasks = [asyncio.create_task(self._read()), asyncio.create_task(self._write())]

    @classmethod
    async def open(cls, path: Path, name: str, strict: bool) -> "SocketConnection":
        """Connects, with reasons and strict on. NotConnected if no telephone answers."""
        connected = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        connected.setblocking(False)
        try:
            await asyncio.get_running_loop().sock_connect(connected, str(path))
        except OSError as error:
            connected.close()
            raise NotConnected(f"no telephone answers at {path}: {error.strerror or error}") from error
        connection = cls(connected)
        try:
            require_protocol(json.loads(await connection.command(f"hello {quoted_word(name)}")))
            await connection.command("reasons on")
            await connection.command(f"strict {'on' if strict else 'off'}")
        except MessageRefused as error:
            await connection.close()
            raise NotConnected(str(error)) from error
        except BaseException:
            await connection.close()
            raise
        return connection

    async def request(self, text: str) -> Reply:
        return await self._send(text)

    async def command(self, text: str) -> str:
        return (await self._send(text)).answer or ""

    async def messages(self, after: int, start: str) -> AsyncIterator[Message]:
        await self.command(f"events after {after} of {start}")
        while (message := await self._events.get()) is not None:
            yield message
        raise self._lost or ConnectionLost("the connection was closed")

    @property
    def is_lost(self) -> bool:
        return self._lost is not None

    async def close(self) -> None:
        self._end(ConnectionLost("the connection was closed"))
        for each in self._tasks:
            each.cancel()
        await asyncio.gather(*self._tasks, return_exceptions=True)
        self._socket.close()

    async def _send(self, text: str) -> Reply:
        if self._lost:
            raise NotConnected(str(self._lost))
        data = text.encode() + b"\0"
        pending = _Pending()
        self._pending.append(pending)
        self._output.put_nowait(data)
        return await pending.done

    async def _write(self) -> None:
        try:
            while True:
                await asyncio.get_running_loop().sock_sendall(self._socket, await self._output.get())
        except OSError:
            pass  # the reader learns of the end, and perhaps of its reason

    async def _read(self) -> None:
        splitter = Splitter()
        reason = "the telephone has ended the connection"
        try:
            while data := await asyncio.get_running_loop().sock_recv(self._socket, _PIECE):
                for message in splitter.feed(data):
                    self._take(message)
        except OSError as error:
            reason = f"the connection was lost: {error.strerror or error}"
        except Exception as error:  # a message that makes no sense: nothing behind it can be trusted
            reason = f"the connection was ended: {error}"
        self._end(ConnectionLost(reason))

    def _take(self, message: RawMessage) -> None:
        match message.kind:
            case "event" if len(message.words) == 2:
                number, time = message.words
                self._events.put_nowait(EventMessage(int(number), read_time(time), message.text))
            case "gap":
                gap = json.loads(message.text)
                self._events.put_nowait(GapMessage(gap["first"], gap["last"]))
            case "state":
                self._events.put_nowait(StateMessage(message.text))
            case "answer" | "reason" | "finished" | "result" | "error" if self._pending:
                self._take_reply(message, self._pending[0])

    def _take_reply(self, message: RawMessage, pending: _Pending) -> None:
        match message.kind:
            case "answer":
                pending.answer = message.text
                return
            case "reason":
                pending.reasons.append(message.text)
                return
            case "finished":
                pending.finish(Reply(pending.answer, tuple(pending.reasons)))
            case "result":
                pending.finish(Reply(message.text))
            case "error":
                pending.fail(MessageRefused(message.text))
        self._pending.popleft()

    def _end(self, error: ConnectionLost) -> None:
        if self._lost:
            return
        self._lost = error
        for pending in self._pending:
            pending.fail(error)
        self._pending.clear()
        self._events.put_nowait(None)
