"""The connection over HTTP: each request and command has a connection of its own, the events are a stream.

Only as much of HTTP/1.1 (RFC 9112) as the telephone speaks, and of server-sent events.
"""

import asyncio
import json
import ssl
from collections.abc import AsyncIterator
from contextlib import asynccontextmanager
from pathlib import Path
from typing import Any
from urllib.parse import urlencode, urlsplit

from ._connection import Connection, EventMessage, GapMessage, Message, StateMessage, read_time, require_protocol
from ._errors import ConnectionLost, MessageRefused, NotConnected
from ._messages import Reply

_PIECE = 65536  # bytes received at once


class _Response:
    """The answer to an HTTP request, whose body is read in pieces."""

    def __init__(self, reader: asyncio.StreamReader, status: int, headers: dict[str, str]) -> None:
        self._reader = reader
        self._headers = headers
        self.status = status

    async def pieces(self) -> AsyncIterator[bytes]:
        if self._headers.get("transfer-encoding", "").lower() == "chunked":
            while size := int((await self._reader.readline()).split(b";")[0], 16):
                yield await self._reader.readexactly(size)
                await self._reader.readline()
            return
        left = int(self._headers.get("content-length", 0))
        while left:
            piece = await self._reader.readexactly(min(left, _PIECE))
            left -= len(piece)
            yield piece

    async def json(self) -> Any:
        return json.loads(b"".join([piece async for piece in self.pieces()]))


class HttpConnection(Connection):
    """No connection lasts over HTTP: this one counts as lost when the stream of events ends."""

    def __init__(self, url: str, token: str | Path | None, strict: bool, certificate: Path | None) -> None:
        self._url = urlsplit(url)
        self._token = token
        self._strict = strict
        self._tls = ssl.create_default_context(cafile=certificate) if self._url.scheme == "https" else None
        self._lost: ConnectionLost | None = None
        self._writers: set[asyncio.StreamWriter] = set()

    @classmethod
    async def open(
        cls, url: str, token: str | Path | None, strict: bool, certificate: Path | None = None
    ) -> "HttpConnection":
        """Asks the telephone who it is. NotConnected if none answers or it does not accept the token.

        token: the token, or the file that has it, which is read for each request, since each start has another.
        certificate: of the authorities for HTTPS; None: those of the system.
        """
        connection = cls(url, token, strict, certificate)
        try:
            require_protocol(await connection._json("GET", "/hello"))
        except MessageRefused as error:
            raise NotConnected(f"{url} gives no access: {error}") from error
        return connection

    async def request(self, text: str) -> Reply:
        target = "/requests" if self._strict else "/requests?lenient"
        reply = await self._json("POST", target, text)
        return Reply(reply.get("answer"), tuple(reply["reasons"]))

    async def command(self, text: str) -> str:
        result = (await self._json("POST", "/commands", text))["result"]
        return result if isinstance(result, str) else json.dumps(result)

    async def messages(self, after: int, start: str) -> AsyncIterator[Message]:
        query = urlencode({"after": after, "start": start})
        try:
            async with self._exchange("GET", f"/events?{query}") as response:
                await self._require_success(response)
                async for message in _messages(response):
                    yield message
        except (ConnectionLost, MessageRefused) as error:
            self._lost = ConnectionLost(str(error))
            raise self._lost from error
        self._lost = ConnectionLost("the telephone has ended the stream of events")
        raise self._lost

    @property
    def is_lost(self) -> bool:
        return self._lost is not None

    async def close(self) -> None:
        self._lost = ConnectionLost("the connection was closed")
        for writer in list(self._writers):
            writer.close()

    async def _json(self, method: str, target: str, body: str = "") -> Any:
        if self._lost:
            raise NotConnected(str(self._lost))
        async with self._exchange(method, target, body) as response:
            await self._require_success(response)
            return await response.json()

    @asynccontextmanager
    async def _exchange(self, method: str, target: str, body: str = "") -> AsyncIterator[_Response]:
        """Sends a request and gives its response, with the errors of the network as ConnectionLost."""
        try:
            reader, writer = await asyncio.open_connection(self._url.hostname, self._url.port, ssl=self._tls)
        except OSError as error:
            raise NotConnected(f"no telephone answers at {self._origin}: {error.strerror or error}") from error
        self._writers.add(writer)
        try:
            writer.write(self._head(method, target, body.encode()) + body.encode())
            yield await self._response(reader)
        except (OSError, EOFError, ValueError) as error:  # of a body that breaks off, int() raises ValueError
            raise ConnectionLost(f"the connection to {self._origin} broke off") from error
        finally:
            self._writers.discard(writer)
            writer.close()

    @property
    def _origin(self) -> str:
        return f"{self._url.scheme}://{self._url.netloc}"

    def _head(self, method: str, target: str, body: bytes) -> bytes:
        lines = [f"{method} {target} HTTP/1.1", f"Host: {self._url.netloc}", "Connection: close",
                 f"Content-Length: {len(body)}", "Content-Type: text/plain; charset=utf-8"]
        if (token := self._present_token()) is not None:
            lines.append(f"Authorization: Bearer {token}")
        return "".join(line + "\r\n" for line in [*lines, ""]).encode()

    def _present_token(self) -> str | None:
        if not isinstance(self._token, Path):
            return self._token
        try:
            return self._token.read_text(encoding="ascii").strip()
        except OSError as error:
            raise NotConnected(f"the token cannot be read from {self._token}: {error.strerror}") from error

    @staticmethod
    async def _response(reader: asyncio.StreamReader) -> _Response:
        status = (await reader.readline()).split(b" ")
        if len(status) < 2:
            raise EOFError
        headers: dict[str, str] = {}
        while (line := (await reader.readline()).strip()):
            name, _, value = line.decode("latin-1").partition(":")
            headers[name.lower()] = value.strip()
        return _Response(reader, int(status[1]), headers)

    @staticmethod
    async def _require_success(response: _Response) -> None:
        if response.status != 200:
            raise MessageRefused((await response.json())["error"])


async def _messages(response: _Response) -> AsyncIterator[Message]:
    """The messages of a stream of server-sent events. Comments and other events are left out."""
    rest, fields = b"", dict[str, str]()
    async for piece in response.pieces():
        *lines, rest = (rest + piece).split(b"\n")
        for line in lines:
            name, _, value = line.decode(errors="replace").partition(": ")
            if name:
                fields[name] = value
                continue
            if "data" in fields and (message := _message(fields)):
                yield message
            fields = {}


def _message(fields: dict[str, str]) -> Message | None:
    kind, data = fields.get("event", ""), fields["data"]
    if kind == "state":
        return StateMessage(data)
    if kind == "hello":
        return None
    object = json.loads(data)
    if kind == "gap":
        return GapMessage(object["first"], object["last"])
    if "raw" in object:
        return EventMessage(object["event"], read_time(object["time"]), object["raw"])
    return None
