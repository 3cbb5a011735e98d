#!/usr/bin/env python3
"""An application for the tests of recordings: calls 100, holds the call once it is connected, and clears it.

Usage: replay_application.py SOCKET CALL_ID [twice]

With "twice", it sends HoldCall a second time. Prints the answers, then the state of the call while it was held.
"""

import json
import socket
import sys


class Telephone:
    def __init__(self, path):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.connect(path)
        self.rest, self.replies, self.events = b"", [], []

    def receive(self):
        data = self.socket.recv(65536)
        if not data:
            sys.exit("the telephone has ended")
        *messages, self.rest = (self.rest + data).split(b"\0")
        for message in messages:
            head, text = message.decode().split("\n", 1)
            (self.events if head.startswith("event ") else self.replies).append((head, text))

    def send(self, text):
        self.socket.sendall(text.encode() + b"\0")
        answer = ""
        while True:
            while not self.replies:
                self.receive()
            kind, text = self.replies.pop(0)
            if kind in ("answer", "result", "error"):
                answer = text
            if kind in ("finished", "result", "error"):
                return answer

    def wait(self, *parts):
        while True:
            while self.events:
                _, text = self.events.pop(0)
                if all(part in text for part in parts):
                    return
            self.receive()


def main():
    telephone, call = Telephone(sys.argv[1]), sys.argv[2]
    same_call = f"<CallID>{call}</CallID>"
    telephone.send("events")
    print(telephone.send(f"OutgoingCallMakeRequest Line=4711 CallID={call} Destination=100"))
    telephone.wait("CallStateChangeEvent", same_call, "<CallState>6<")
    for _ in sys.argv[2:]:
        print(telephone.send(f"HoldCall Line=4711 CallID={call}"))
    telephone.wait("CallHeldEvent", same_call)
    print([(each["id"], each["state"]) for each in json.loads(telephone.send("state"))["calls"]])
    print(telephone.send(f"CallClearRequest Line=4711 CallID={call}"))
    telephone.wait("CallStateChangeEvent", same_call, "<CallState>0<")


main()
