"""A running telephone and what tests do to it from outside: applications at its socket, far ends and registrars that
speak just enough SIP, and its process. Everything is on loopback, at ports chosen by the system; every wait is for a
condition and has a deadline.
"""

import json
import os
import random
import re
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

TELEPHONE = os.environ.get("TELEPHONE") or sys.exit("TELEPHONE must name the telephone program")

IDLE, REMOTE_RINGING, INCOMING, RINGING, CONNECTED, REMOTELY_HELD, BUSY, FAILED = 0, 3, 4, 5, 6, 8, 13, 14
REPORT = re.compile("ERROR: (Address|Leak)Sanitizer|WARNING: ThreadSanitizer|runtime error: ")
OVER = (IDLE, BUSY, FAILED)

FAST = 8
# The environment of a telephone whose timers run FAST times as fast (clockShim.cpp): an unanswered request fails after
# 4 seconds instead of 32 (RFC 3261, 64*T1).
FAST_TIMERS = {"LD_PRELOAD": os.environ.get("CLOCK_SHIM", ""), "CLOCK_RATE": str(FAST)}


def free_port():
    """A loopback port that is free at present, for UDP and for TCP. It lies below those that the kernel gives to sockets
    without a port of their own (Linux: from 32768), so that none of theirs takes it before it is used.
    """
    while True:
        port = random.randrange(20000, 32768)
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as udp, socket.socket() as tcp:
            try:
                udp.bind(("127.0.0.1", port))
                tcp.bind(("127.0.0.1", port))
            except OSError:
                continue
            return port


def until(condition, seconds, what):
    """Waits until the condition holds, and returns its value."""
    deadline = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise AssertionError(f"after {seconds} seconds: {what}")
        time.sleep(0.02)


def request(method, **elements):
    return f"<Method>{method}</Method>" + "".join(f"<{name}>{value}</{name}>" for name, value in elements.items())


def element(event, name):
    found = re.search(f"<{name}>(.*?)</{name}>", event, re.DOTALL)
    return found.group(1) if found else None


class Application:
    """A program at the application socket."""

    def __init__(self, path, subscribe=True):
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self.socket.settimeout(20)
        self.socket.connect(path)
        self.input = b""
        self.events = []
        self.last_number = 0
        self.last_time = None
        if subscribe:
            answer = self.request(request("Subscribe"))
            assert answer == "sfiSuccess", answer

    def close(self):
        self.socket.close()

    def send(self, text):
        self.socket.sendall(text.encode() + b"\0")

    def message(self, seconds=20):
        """The next message as its kind and text, or None if none arrives in that time."""
        deadline = time.monotonic() + seconds
        while b"\0" not in self.input:
            left = deadline - time.monotonic()
            if left <= 0:
                return None
            self.socket.settimeout(left)
            try:
                data = self.socket.recv(65536)
            except TimeoutError:
                return None
            if not data:
                raise ConnectionError("the telephone has closed the connection")
            self.input += data
        whole, self.input = self.input.split(b"\0", 1)
        kind, text = whole.decode(errors="replace").split("\n", 1)
        if kind.startswith("event "):
            number = int(kind.split()[1])
            self.last_time = kind.split()[2] if kind.count(" ") == 2 else None
            assert number > self.last_number, f"event {number} after {self.last_number}"
            self.last_number = number
            self.events.append(text)
            kind = "event"
        return kind, text

    def request(self, text, seconds=20):
        """The answer, or None for a request that has none."""
        self.send(text)
        answer = None
        deadline = time.monotonic() + seconds
        while True:
            message = self.message(max(0.001, deadline - time.monotonic()))
            assert message is not None, f"{text} is not finished after {seconds} seconds"
            if message[0] == "answer":
                answer = message[1]
            elif message[0] == "finished":
                return answer
            elif message[0] == "error":
                raise AssertionError(message[1])

    def command(self, text, seconds=20):
        """The result of a command of the telephone."""
        self.send(text)
        deadline = time.monotonic() + seconds
        while True:
            message = self.message(max(0.001, deadline - time.monotonic()))
            assert message is not None, f"{text} has no result after {seconds} seconds"
            if message[0] == "result":
                return message[1]
            assert message[0] == "event", message[1]

    def latest_event(self):
        """The number of the latest event, across the telephone."""
        return json.loads(self.command("state"))["event"]

    def ask(self, method, seconds=20, **elements):
        return self.request(request(method, **elements), seconds)

    def do(self, method, **elements):
        answer = self.ask(method, **elements)
        assert answer == "sfiSuccess", f"{method} {elements}: {answer}"

    def find(self, method, **elements):
        wanted = {name: str(value) for name, value in elements.items()}
        for event in self.events:
            if element(event, "Method") == method and all(element(event, n) == v for n, v in wanted.items()):
                return event
        return None

    def wait(self, method, seconds=20, **elements):
        """The first such event with these values, among those received and those still to come."""
        deadline = time.monotonic() + seconds
        while True:
            event = self.find(method, **elements)
            if event:
                return event
            left = deadline - time.monotonic()
            if left <= 0 or self.message(left) is None:
                raise AssertionError(f"no {method} {elements} in {seconds} seconds; received: {self.events[-6:]}")

    def wait_state(self, call, state, seconds=20):
        return self.wait("CallStateChangeEvent", seconds, CallID=call, CallState=state)

    def settle(self, seconds=0.3):
        """Receives until nothing has arrived for that time."""
        while self.message(seconds) is not None:
            pass

    def is_over(self, call):
        return any(self.find("CallStateChangeEvent", CallID=call, CallState=state) for state in OVER)

    def wait_over(self, call, seconds=20):
        """Waits until the call has ended, however it ended."""
        deadline = time.monotonic() + seconds
        while not self.is_over(call):
            left = deadline - time.monotonic()
            if left <= 0 or self.message(left) is None:
                raise AssertionError(f"call {call} is not over after {seconds} seconds; received: {self.events[-6:]}")

    def call(self, line, call, destination):
        self.do("OutgoingCallMakeRequest", Line=line, CallID=call, Destination=destination, DSSDirectCall=0,
                BridgeCall=0, CallCompletionCall=0)

    def clear(self, line, call):
        self.do("CallClearRequest", Line=line, CallID=call, Cause=1)
        self.wait_over(call)


class Telephone:
    """A telephone in a process and a folder of its own, serving applications. It ends at the first message that
    contradicts the description of the protocol, which fails the test."""

    def __init__(self, configuration="", environment=None, prefix=(), options=(), level=4, in_folder=False):
        self.applications = []
        self.folder = tempfile.TemporaryDirectory(prefix="telephone-")
        self.path = Path(self.folder.name)
        self.socket = str(self.path / "socket")
        self.log = self.path / "log"
        self.sip_port = free_port()
        if "[sip]" not in configuration:
            configuration += f"\n[sip]\nport = {self.sip_port}\n"
        (self.path / "telephone.toml").write_text(configuration)
        command = [*(prefix(self.path) if callable(prefix) else prefix), TELEPHONE,
                   "--config", str(self.path / "telephone.toml"), "--socket", self.socket,
                   "--log-level", str(level), *options, "serve"]
        self.output = open(self.log, "wb")
        environment = {"TELEPHONE_CHECK": "all", **os.environ, **(environment or {})}
        self.process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=self.output,
                                        stderr=subprocess.STDOUT, env=environment,
                                        cwd=self.path if in_folder else None)
        try:
            until(lambda: self.process.poll() is not None or "applications can connect" in self.text(), 30,
                  "the telephone does not serve applications")
            assert self.process.poll() is None, f"the telephone ended at start:\n{self.text()}"
        except BaseException:
            self.__exit__(None, None, None)
            raise

    def __enter__(self):
        return self

    def __exit__(self, kind, error, trace):
        for application in self.applications:
            application.close()
        try:
            if error is None and self.process.poll() is None:
                self.end()
            assert not REPORT.search(self.text()), "a sanitizer reported an error"
        except BaseException as found:
            error = error or found
            raise
        finally:
            self.process.kill()
            self.process.wait()
            self.output.close()
            if error is not None:
                print(f"--- log of the telephone\n{self.text()[-6000:]}")
            self.folder.cleanup()

    def text(self):
        return self.log.read_text(errors="replace")

    def application(self, subscribe=True, kind=Application):
        application = kind(self.socket, subscribe)
        self.applications.append(application)
        return application

    def wait_log(self, text, seconds=20):
        until(lambda: text in self.text(), seconds, f"the log does not say \"{text}\"")

    def pid(self):
        return self.process.pid

    def cpu_seconds(self):
        fields = Path(f"/proc/{self.pid()}/stat").read_text().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def status(self, name):
        """A number from /proc/PID/status; memory is in kB."""
        for line in Path(f"/proc/{self.pid()}/status").read_text().splitlines():
            if line.startswith(name + ":"):
                return int(line.split()[1])
        raise AssertionError(f"/proc/PID/status has no {name}")

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.pid()}/fd"))

    def end(self):
        """Ends the telephone as its owner would; it must exit with status 0, within a minute even under a sanitizer."""
        os.kill(self.pid(), signal.SIGTERM)
        status = self.process.wait(60)
        assert status == 0, f"the telephone ended with status {status}"


SDP = ("v=0\r\no=far 1 {version} IN IP4 127.0.0.1\r\ns=-\r\nc=IN IP4 127.0.0.1\r\nt=0 0\r\n"
       "m=audio {port} RTP/AVP 0\r\na=rtpmap:0 PCMU/8000\r\na={direction}\r\n")


class SipEndpoint:
    """A UDP port that receives SIP messages on its own thread until it is killed."""

    def __init__(self):
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.bind(("127.0.0.1", 0))
        self.port = self.socket.getsockname()[1]
        self.received = []
        self.killed = False
        self.thread = threading.Thread(target=self._run, daemon=True)
        self.thread.start()

    def uri(self, user="far"):
        return f"sip:{user}@127.0.0.1:{self.port}"

    def kill(self):
        """Receives and sends nothing from now on, like a telephone that has been unplugged."""
        self.killed = True
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as last:
            last.sendto(b"", ("127.0.0.1", self.port))
        self.thread.join()

    def close(self):
        if not self.killed:
            self.kill()
        self.socket.close()

    def _run(self):
        while True:
            data, sender = self.socket.recvfrom(65536)
            if self.killed:
                return
            text = data.decode(errors="replace")
            if text.strip():
                self.received.append(text)
                self.handle(text, sender)

    def handle(self, text, sender):
        pass

    def has(self, start):
        return next((text for text in self.received if text.startswith(start)), None)

    @staticmethod
    def header(text, name):
        found = re.search(rf"^{name}\s*:\s*(.*?)\r$", text, re.MULTILINE | re.IGNORECASE)
        return found.group(1) if found else ""

    def answer(self, text, sender, status, reason, body="", extra=""):
        to = self.header(text, "To")
        if "tag=" not in to and status > 100:
            to += f";tag=far{self.port}"
        vias = re.findall(r"^Via\s*:.*?\r\n", text, re.MULTILINE | re.IGNORECASE)
        kind = "Content-Type: application/sdp\r\n" if body else ""
        answer = (f"SIP/2.0 {status} {reason}\r\n{''.join(vias)}From: {self.header(text, 'From')}\r\nTo: {to}\r\n"
                  f"Call-ID: {self.header(text, 'Call-ID')}\r\nCSeq: {self.header(text, 'CSeq')}\r\n"
                  f"Contact: <{self.uri()}>\r\n{extra}{kind}Content-Length: {len(body)}\r\n\r\n{body}")
        self.socket.sendto(answer.encode(), sender)


class FarEnd(SipEndpoint):
    """Another telephone: `how` says whether it rings, answers or stays silent."""

    def __init__(self, how):
        self.how = how  # silent, rings, answers
        self.dialog = None
        super().__init__()

    def sdp(self, direction="sendrecv", version=1):
        return SDP.format(port=self.port, direction=direction, version=version)

    def handle(self, text, sender):
        method = text.split(" ", 1)[0]
        if method == "INVITE" and "tag=" not in self.header(text, "To"):
            self.dialog = (text, sender)
            if self.how == "silent":
                return
            self.answer(text, sender, 180, "Ringing")
            if self.how == "answers":
                self.answer(text, sender, 200, "OK", self.sdp())
        elif method == "INVITE":
            self.answer(text, sender, 200, "OK", self.sdp())
        elif method in ("BYE", "CANCEL", "INFO", "OPTIONS", "NOTIFY"):
            self.answer(text, sender, 200, "OK")
        elif method == "REFER":
            self.answer(text, sender, 202, "Accepted")

    def in_dialog(self, method, number, body=""):
        """Sends a request within the call that this end received."""
        invite, sender = self.dialog
        contact = re.search(r"<(.*?)>", self.header(invite, "Contact")).group(1)
        kind = "Content-Type: application/sdp\r\n" if body else ""
        text = (f"{method} {contact} SIP/2.0\r\nVia: SIP/2.0/UDP 127.0.0.1:{self.port};branch=z9hG4bK{method}{number};"
                f"rport\r\nMax-Forwards: 70\r\nFrom: {self.header(invite, 'To')};tag=far{self.port}\r\n"
                f"To: {self.header(invite, 'From')}\r\nCall-ID: {self.header(invite, 'Call-ID')}\r\n"
                f"CSeq: {number} {method}\r\nContact: <{self.uri()}>\r\n{kind}Content-Length: {len(body)}\r\n\r\n{body}")
        self.socket.sendto(text.encode(), sender)

    def invite(self, port, user):
        """Calls the telephone."""
        body = self.sdp()
        text = (f"INVITE sip:{user}@127.0.0.1:{port} SIP/2.0\r\nVia: SIP/2.0/UDP 127.0.0.1:{self.port};"
                f"branch=z9hG4bKcall{self.port};rport\r\nMax-Forwards: 70\r\nFrom: <{self.uri()}>;tag=own\r\n"
                f"To: <sip:{user}@127.0.0.1:{port}>\r\nCall-ID: call{self.port}@127.0.0.1\r\nCSeq: 1 INVITE\r\n"
                f"Contact: <{self.uri()}>\r\nContent-Type: application/sdp\r\nContent-Length: {len(body)}\r\n\r\n{body}")
        self.socket.sendto(text.encode(), ("127.0.0.1", port))


class Registrar(SipEndpoint):
    """Answers REGISTER: `how` says whether it accepts, refuses or stays silent."""

    def __init__(self, how):
        self.how = how
        super().__init__()

    def handle(self, text, sender):
        if not text.startswith("REGISTER") or self.how == "silent":
            return
        if self.how == "refuses":
            self.answer(text, sender, 500, "Server Internal Error")
        else:
            contact = self.header(text, "Contact")
            expires = self.header(text, "Expires") or "60"
            self.answer(text, sender, 200, "OK", extra=f"Contact: {contact};expires={expires}\r\n")


def peer_lines(count, first=4711):
    """A configuration with that many lines, which call by address and do not register."""
    lines = "".join(f"[[line]]\nid = \"{first + n}\"\nregisters = false\n" for n in range(count))
    return lines + "[exchange]\nenabled = false\n"
