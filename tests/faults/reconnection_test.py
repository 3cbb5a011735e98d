"""A client that is killed and comes back a hundred times while calls are made, and asks for the events after the last
one that it kept: it has every event once, in order and unchanged, as another client has that was never interrupted.
"""

import socket
import subprocess
import sys
import threading
import unittest
from pathlib import Path

from harness import CONNECTED, Telephone

RECORDING_CLIENT = Path(__file__).with_name("recording_client.py")
COMEBACKS = 100
MISSED = 3  # at least so many events come while the client is away
MOST_BEFORE_A_KILL = 7


class Observer(threading.Thread):
    """Reads all events and is never interrupted."""

    def __init__(self, telephone):
        super().__init__(daemon=True)
        self.application = telephone.application(subscribe=False)
        self.came = threading.Condition()
        self.events = []  # number, time and text, as the recording client keeps them
        self.application.command("events after 0")
        self.start()

    def run(self):
        try:
            while message := self.application.message(60):
                with self.came:
                    self.events.append(f"{self.application.last_number} {self.application.last_time} {message[1]}")
                    self.came.notify_all()
        except ConnectionError:
            pass  # the end

    def wait_for(self, count):
        with self.came:
            assert self.came.wait_for(lambda: len(self.events) >= count, 20), f"only {len(self.events)} events came"


    def end(self):
        self.application.socket.shutdown(socket.SHUT_RDWR)
        self.join()


class Calls(threading.Thread):
    """Makes, holds, retrieves and clears calls until it is told to end."""

    def __init__(self, telephone):
        super().__init__()
        self.application = telephone.application()
        self.over = threading.Event()
        self.made = 0
        self.failure = None
        self.start()

    def run(self):
        try:
            while not self.over.is_set():
                self.make(self.made + 1)
                self.made += 1
        except Exception as failure:
            self.failure = failure

    def make(self, call):
        application = self.application
        application.events.clear()
        application.call(4711, call, "100")
        application.wait_state(call, CONNECTED)
        application.do("HoldCall", Line=4711, CallID=call)
        application.wait("CallHeldEvent", CallID=call)
        application.do("RetrieveCall", Line=4711, CallID=call)
        application.wait("CallRetrievedEvent", CallID=call)
        application.clear(4711, call)

    def end(self):
        self.over.set()
        self.join()
        if self.failure:
            raise self.failure


class Reconnection(unittest.TestCase):
    def test_killed_and_back_a_hundred_times(self):
        with Telephone(level=3) as telephone:
            observer = Observer(telephone)
            file = telephone.path / "events"
            calls = Calls(telephone)
            try:
                for comeback in range(COMEBACKS):
                    self.run_client(telephone, file, comeback % MOST_BEFORE_A_KILL)
                    kept = file.read_text().count("\n")
                    observer.wait_for(kept + MISSED)
            finally:
                calls.end()
            last = telephone.application(subscribe=False).latest_event()
            observer.wait_for(last)
            observer.end()
            self.run_client(telephone, file, last - kept)

            self.assertEqual([int(event.split(" ")[0]) for event in observer.events], list(range(1, last + 1)))
            self.assertEqual(file.read_text().splitlines(), observer.events)
            print(f"{COMEBACKS} comebacks, {calls.made} calls, {last} events", file=sys.stderr)

    def run_client(self, telephone, file, count):
        """Lets the client keep at least so many events, then kills it."""
        client = subprocess.Popen([sys.executable, RECORDING_CLIENT, telephone.socket, file], stdout=subprocess.PIPE,
                                  bufsize=0)
        try:
            for _ in range(1 + count):
                self.assertEqual(client.stdout.read(1), b".", "the client ended by itself")
        finally:
            client.kill()
            client.wait()
            client.stdout.close()


if __name__ == "__main__":
    unittest.main()
