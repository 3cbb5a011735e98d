"""A telephone that the test plays itself: it sees each message and replies when the test says so."""

import asyncio
import json

STATE = {
    "start": "first", "event": 0, "time": "2000-01-01T00:00:00.000Z", "domain": None, "ready": True,
    "service": "in service", "lines": [], "calls": [], "keys": [], "hook_up": False, "plugged": [], "muted": False,
    "locked": False, "store": {"path": None, "writable": True},
}
HELD = "<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>{}</CallID>"


class FakeTelephone:
    """`async with FakeTelephone(path) as fake`. Answers what a client sends at its beginning, and `state`; all other
    messages are in the queue `messages`, for the test to reply to. One connection at a time."""

    def __init__(self, path, protocol=1):
        self.protocol = protocol
        self.path = path
        self.state = dict(STATE)
        self.messages = asyncio.Queue()
        self.subscriptions = asyncio.Queue()  # the commands `events`
        self.connected = asyncio.Event()
        self._writer = None

    async def __aenter__(self):
        self._server = await asyncio.start_unix_server(self._serve, self.path)
        return self

    async def __aexit__(self, *_):
        self.hang_up()
        self.disappear()

    def disappear(self):
        """No client can connect any more."""
        self._server.close()

    def send(self, text):
        """Sends a message: its first line, a line end, its text."""
        self._writer.write(text.encode() + b"\0")

    def send_event(self, number, text):
        self.send(f"event {number} 2000-01-01T00:00:00.000Z\n{text}")

    def hang_up(self):
        if self._writer:
            self._writer.close()

    async def _serve(self, reader, writer):
        self._writer = writer
        self.connected.set()
        try:
            while True:
                message = (await reader.readuntil(b"\0"))[:-1].decode()
                self._reply(message)
        except (asyncio.IncompleteReadError, ConnectionError):
            writer.close()

    def _reply(self, message):
        if message == "state":
            self.send("result\n" + json.dumps(self.state))
        elif message.startswith("hello "):
            self.send("result\n" + json.dumps({"protocol": self.protocol}))
        elif message in ("reasons on", "strict on"):
            self.send("result\n")
        elif message.startswith("events "):
            self.send("result\n{}")
            self.subscriptions.put_nowait(message)
        else:
            self.messages.put_nowait(message)
