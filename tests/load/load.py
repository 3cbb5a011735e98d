#!/usr/bin/env python3
"""Load and soak: how much load a telephone sustains, and whether it is unchanged afterwards.

    load.py                 the short form, about a minute (run as a test)
    load.py --minutes N     the long form: in addition, 10,000 calls, 1,000,000 requests and N minutes of both

Measured: the highest rate of calls at which none fails. Asserted: none of fifty concurrent calls is lost; after thousands
of calls, memory has grown by less than 1 MB and no descriptor is left open; every one of a million requests is answered.

Needs sipp. The environment variable TELEPHONE names the program.
"""

import argparse
import collections
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "faults"))
from harness import CONNECTED, FAST, FAST_TIMERS, OVER, Telephone, element, free_port, peer_lines, request, until  # noqa: E402

FOLDER = Path(__file__).resolve().parent
LINE = 4711
MEMORY_ALLOWED = 1024  # kB
# Seconds. Ended calls keep their transactions for 32 of them, for retransmissions (RFC 3261, timers D and J).
REST = 42


class Report:
    def __init__(self):
        self.rows = []
        self.failures = 0

    def say(self, what, value, held=True):
        self.failures += not held
        self.rows.append(f"{'ok  ' if held else 'FAIL'}  {what}: {value}")
        print(self.rows[-1], flush=True)


class Sipp:
    """SIPp with a scenario of this folder, killed at the end of the block."""

    def __init__(self, scenario, port, *options):
        self.folder = tempfile.TemporaryDirectory(prefix="sipp-")
        self.process = subprocess.Popen(
            ["sipp", "-sf", str(FOLDER / f"{scenario}.xml"), "-i", "127.0.0.1", "-p", str(port), "-nostdin", "-trace_err",
             "-trace_stat", "-stf", "stat.csv", "-fd", "1", "-watchdog_interval", "0", *options],
            cwd=self.folder.name, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        self.folder.cleanup()

    def wait(self, seconds):
        return self.process.wait(seconds)

    def numbers(self):
        """The numbers of successful and failed calls so far."""
        lines = (Path(self.folder.name) / "stat.csv").read_text().splitlines()
        last = dict(zip(lines[0].split(";"), lines[-1].split(";")))
        return int(last["SuccessfulCall(C)"]), int(last["FailedCall(C)"])


class Answering(threading.Thread):
    """An application that answers incoming calls one at a time: the next when the previous one is over."""

    def __init__(self, telephone):
        super().__init__(daemon=True)
        self.application = telephone.application()
        self.waiting = collections.deque()
        self.active = None
        self.stopping = False
        self.start()

    def run(self):
        try:
            while not self.stopping:
                message = self.application.message(0.2)
                self.application.events.clear()
                if message and message[0] == "event":
                    self.hear(message[1])
        except OSError:
            pass

    def hear(self, event):
        call = element(event, "CallID")
        if "<Method>IncomingCallEvent" in event:
            self.waiting.append((element(event, "LineID"), call))
        elif "<Method>CallStateChangeEvent" in event and int(element(event, "CallState")) in OVER:
            if call == self.active:
                self.active = None
            else:
                self.waiting = collections.deque(each for each in self.waiting if each[1] != call)
        if self.active is None and self.waiting:
            line, self.active = self.waiting.popleft()
            self.application.send(request("AnswerCall", Line=line, CallID=self.active))

    def stop(self):
        self.stopping = True
        self.join()


def settle(application, telephone):
    """Waits until no more events arrive."""
    until(lambda: not application.message(0.5), 60, "events keep arriving")


def holds_rate(report, rate, seconds):
    """Whether none fails of that many incoming calls a second, each answered and ended, for the given time."""
    with Telephone(peer_lines(1) + "[calls]\nmaximum = 1000\n[limits]\nrequests = 0\ntransactions = 0\n", level=0) as telephone:
        answering = Answering(telephone)
        with Sipp("uac", free_port(), "-s", str(LINE), "-r", str(rate), "-m", str(rate * seconds), "-l", "100000",
                  "-timeout", str(seconds + 5), f"127.0.0.1:{telephone.sip_port}") as sipp:
            try:
                sipp.wait(seconds + 20)
                successful, failed = sipp.numbers()
            except subprocess.TimeoutExpired:
                successful, failed = 0, 0
        answering.stop()
        if telephone.process.poll() is not None:
            report.say(f"{rate} calls a second", "the telephone ended", False)
    return failed == 0 and successful == rate * seconds


def highest_rate(report, seconds):
    """Doubles the rate in short trials until a call fails, then lowers it until it is sustained for the whole time."""
    trial = max(1, min(seconds // 3, 5))
    rate = 20
    while rate <= 2560 and holds_rate(report, rate * 2, trial):
        rate *= 2
    while rate > 0 and not holds_rate(report, rate, seconds):
        rate = rate * 3 // 4
    report.say(f"highest rate sustained for {seconds} s without a failed call", f"{rate} calls/s", rate > 0)


def make_calls(application, destination, first, count, clear=True):
    for call in range(first, first + count):
        application.call(LINE, call, destination)
        application.wait_state(call, CONNECTED)
        if clear:
            application.clear(LINE, call)
            application.events.clear()


def calls_at_once(report, count, seconds):
    port = free_port()
    with Sipp("uas", port), Telephone(peer_lines(1), level=2) as telephone:
        application = telephone.application()
        make_calls(application, f"sip:sipp@127.0.0.1:{port}", 1, count, clear=False)
        application.message(seconds)
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            application.message(max(0.001, deadline - time.monotonic()))
        lost = [call for call in range(1, count + 1) if application.is_over(call)]
        report.say(f"{count} concurrent calls for {seconds} s", f"{count - len(lost)} still active", not lost)
        for call in range(1, count + 1):
            application.clear(LINE, call)
        report.say(f"{count} calls cleared", "all reported")


def calls_in_a_row(report, count, warm_up, rest, timers=None):
    port = free_port()
    with Sipp("uas", port), Telephone(peer_lines(1), level=2, environment=timers) as telephone:
        application = telephone.application()
        destination = f"sip:sipp@127.0.0.1:{port}"
        make_calls(application, destination, 1, warm_up)
        settle(application, telephone)
        time.sleep(rest)
        memory, descriptors = telephone.status("VmRSS"), telephone.descriptors()
        began = time.monotonic()
        make_calls(application, destination, 1 + warm_up, count)
        took = time.monotonic() - began
        settle(application, telephone)
        report.say(f"{count} consecutive calls", f"{count / took:.0f} calls/s")

        def back():
            return telephone.descriptors() <= descriptors and telephone.status("VmRSS") - memory <= MEMORY_ALLOWED

        try:
            until(back, REST, "")
        except AssertionError:
            pass
        grown = telephone.status("VmRSS") - memory
        report.say("memory after them", f"{grown:+d} kB of {memory} kB", grown <= MEMORY_ALLOWED)
        left = telephone.descriptors() - descriptors
        report.say("descriptors after them", f"{left:+d} of {descriptors}", left <= 0)


def many_requests(report, count):
    with Telephone(peer_lines(1), level=2) as telephone:
        application = telephone.application(subscribe=False)
        one = request("GetServiceState").encode() + b"\0"
        expected = b"answer\nsfiSuccess,sfiServiceInService\0finished\n\0"
        batch = 500
        application.socket.settimeout(30)

        def send():
            for _ in range(count // batch):
                application.socket.sendall(one * batch)

        memory = None
        began = time.monotonic()
        sender = threading.Thread(target=send, daemon=True)
        sender.start()
        left = b""
        done = 0
        wrong = 0
        while done < count // batch * batch:
            data = application.socket.recv(1 << 20)
            assert data, "the telephone closed the connection"
            left += data
            whole = len(left) // len(expected)
            wrong += left[: whole * len(expected)] != expected * whole
            done += whole
            left = left[whole * len(expected):]
            if memory is None and done > count // 10:
                memory = telephone.status("VmRSS")
        took = time.monotonic() - began
        sender.join()
        report.say(f"{done} requests through one socket", f"{done / took:.0f} requests/s, {wrong} wrong answers", wrong == 0)
        grown = telephone.status("VmRSS") - memory
        report.say("memory after them", f"{grown:+d} kB", grown <= MEMORY_ALLOWED)


def soak(report, minutes):
    """Consecutive calls and requests until the time is over; then memory and descriptors must be as before."""
    port = free_port()
    with Sipp("uas", port), Telephone(peer_lines(1), level=2) as telephone:
        application = telephone.application()
        destination = f"sip:sipp@127.0.0.1:{port}"
        make_calls(application, destination, 1, 500)
        settle(application, telephone)
        memory, descriptors = telephone.status("VmRSS"), telephone.descriptors()
        deadline = time.monotonic() + minutes * 60
        calls = 501
        asked = 0
        while time.monotonic() < deadline:
            make_calls(application, destination, calls, 20)
            calls += 20
            for _ in range(200):
                assert application.ask("GetDevices") is not None
                asked += 1
        settle(application, telephone)
        time.sleep(REST)
        grown = telephone.status("VmRSS") - memory
        report.say(f"{minutes} minutes: {calls - 501} calls, {asked} requests; memory after them", f"{grown:+d} kB",
                   grown <= MEMORY_ALLOWED)
        report.say("descriptors after them", f"{telephone.descriptors() - descriptors:+d}",
                   telephone.descriptors() <= descriptors)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--minutes", type=float)
    parser.add_argument("--report", type=Path)
    parser.add_argument("--only", choices=["rate", "at-once", "in-a-row", "requests", "soak"])
    options = parser.parse_args()
    long = options.minutes is not None
    report = Report()
    parts = {
        "rate": lambda: highest_rate(report, 60 if long else 3),
        "at-once": lambda: calls_at_once(report, 50, 60 if long else 3),
        "in-a-row": lambda: calls_in_a_row(report, 10000, 1000, REST) if long else calls_in_a_row(report, 300, 300, REST / FAST, FAST_TIMERS),
        "requests": lambda: many_requests(report, 1000000 if long else 50000),
        "soak": lambda: soak(report, options.minutes) if long else None,
    }
    for name, part in parts.items():
        if options.only in (None, name):
            part()
    if options.report:
        options.report.write_text("\n".join(report.rows) + "\n")
    return 1 if report.failures else 0


if __name__ == "__main__":
    sys.exit(main())
