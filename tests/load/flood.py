#!/usr/bin/env python3
"""Floods: what requests from one source do to a telephone in a call.

    flood.py                the short form, 3 seconds of each kind (run as a test)
    flood.py --seconds N    N seconds of each kind, and then a minute of rest

For each kind of request (OPTIONS, REGISTER, SUBSCRIBE, INVITE), at 2,000 a second. Both forms assert that memory stays under
40 MB and that the call goes on. The long form, which needs a machine of its own, also asserts that memory is back within 2 MB
of what it was after a minute, that the call loses no audio, and that 99 of 100 requests of an application are answered within
50 ms; the short form only shows these.

The environment variable TELEPHONE names the program.
"""

import argparse
import socket
import sys
import threading
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "faults"))
from harness import CONNECTED, SDP, FarEnd, Telephone, free_port, peer_lines, until  # noqa: E402
from load import LINE, Report  # noqa: E402

RATE = 2000
MEMORY_ALLOWED = 40 * 1024  # kB
MEMORY_LEFT = 2 * 1024
ANSWER_ALLOWED = 0.050  # seconds
GAP_ALLOWED = 0.200  # seconds without a packet of audio; they come every 20 ms
REST = 60


class Listener(FarEnd):
    """A far end that notes when audio arrives."""

    def __init__(self):
        self.audio = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.audio.bind(("127.0.0.1", 0))
        self.packets = 0
        self.gap = 0
        super().__init__("answers")
        threading.Thread(target=self.listen, daemon=True).start()

    def sdp(self, direction="sendrecv", version=1):
        return SDP.format(port=self.audio.getsockname()[1], direction=direction, version=version)

    def listen(self):
        last = None
        while True:
            self.audio.recv(2048)
            now = time.monotonic()
            if last is not None:
                self.gap = max(self.gap, now - last)
            last = now
            self.packets += 1


class Flood(threading.Thread):
    """Sends requests at the rate, each of another dialog, and reads no answer."""

    def __init__(self, method, port, seconds):
        super().__init__(daemon=True)
        self.method, self.port, self.seconds = method, port, seconds
        self.sent = 0
        self.start()

    def run(self):
        own = free_port()
        body = SDP.format(port=own, direction="sendrecv", version=1) if self.method == "INVITE" else ""
        extra = {"SUBSCRIBE": "Event: dialog\r\n", "INVITE": "Content-Type: application/sdp\r\n"}.get(self.method, "")
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as udp:
            udp.bind(("127.0.0.1", own))
            began = time.monotonic()
            while (passed := time.monotonic() - began) < self.seconds:
                while self.sent < passed * RATE:
                    self.sent += 1
                    udp.sendto(self.text(own, extra, body).encode(), ("127.0.0.1", self.port))
                time.sleep(0.001)

    def text(self, own, extra, body):
        return (f"{self.method} sip:{LINE}@127.0.0.1:{self.port} SIP/2.0\r\nVia: SIP/2.0/UDP 127.0.0.1:{own};"
                f"branch=z9hG4bK{self.method}{self.sent}\r\nMax-Forwards: 70\r\nFrom: <sip:flood@127.0.0.1:{own}>;tag={self.sent}\r\n"
                f"To: <sip:{LINE}@127.0.0.1:{self.port}>\r\nCall-ID: {self.method}{self.sent}\r\nCSeq: 1 {self.method}\r\n"
                f"Contact: <sip:flood@127.0.0.1:{own}>\r\n{extra}Content-Length: {len(body)}\r\n\r\n{body}")


def flood(report, method, seconds, rest):
    far = Listener()
    # Few calls: those that still ring after the flood would count as memory that is not given back.
    with Telephone(peer_lines(1) + "[media]\nsource = \"tone\"\n[calls]\nmaximum = 10\n", level=2) as telephone:
        application = telephone.application()
        application.call(LINE, 1, far.uri())
        application.wait_state(1, CONNECTED)
        until(lambda: far.packets > 10, 5, "no audio arrives")
        before = telephone.status("VmRSS")
        far.gap, packets, began, worked = 0, far.packets, time.monotonic(), telephone.cpu_seconds()
        sender = Flood(method, telephone.sip_port, seconds)
        answers = []
        while sender.is_alive():
            asked = time.monotonic()
            application.ask("GetServiceState")
            answers.append(time.monotonic() - asked)
            time.sleep(0.02)
        heard, took, gap = far.packets - packets, time.monotonic() - began, far.gap
        during, worked = telephone.status("VmHWM"), telephone.cpu_seconds() - worked
        report.say(f"{method}: {sender.sent / took:.0f} requests/s for {took:.0f} s; memory", f"{before} kB before, {during} kB at most",
                   during <= MEMORY_ALLOWED)
        report.say(f"{method}: processor", f"{100 * worked / took:.0f} % of one core")
        report.say(f"{method}: audio", f"{heard / took:.1f} packets/s, longest gap {gap * 1000:.0f} ms",
                   heard > 0 and (not rest or gap <= GAP_ALLOWED))
        answers.sort()
        usual, most, slowest = answers[len(answers) // 2], answers[len(answers) * 99 // 100], answers[-1]
        report.say(f"{method}: answers to an application",
                   f"median {usual * 1000:.1f} ms, 99 % within {most * 1000:.1f} ms, slowest {slowest * 1000:.1f} ms",
                   not rest or most <= ANSWER_ALLOWED)
        assert not application.is_over(1), "the call is over"
        if rest:
            time.sleep(rest)
            left = telephone.status("VmRSS") - before
            report.say(f"{method}: memory after {rest} s", f"{left:+d} kB", left <= MEMORY_LEFT)
    far.close()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seconds", type=int)
    parser.add_argument("--only", choices=["OPTIONS", "REGISTER", "SUBSCRIBE", "INVITE"])
    options = parser.parse_args()
    report = Report()
    for method in ("OPTIONS", "REGISTER", "SUBSCRIBE", "INVITE"):
        if options.only in (None, method):
            flood(report, method, options.seconds or 3, REST if options.seconds else 0)
    return 1 if report.failures else 0


if __name__ == "__main__":
    sys.exit(main())
