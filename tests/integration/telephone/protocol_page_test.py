"""Runs every block of docs/protocol.md: conversations, commands and Python, each against a telephone at its default
socket. Usage: protocol_page_test.py TELEPHONE PAGE
"""

import os
import re
import shlex
import socket
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

TELEPHONE, PAGE = sys.argv[1:3]
DEADLINE = 20
LINES = 2  # of the telephone without a configuration


def blocks():
    """The page's blocks, as their language, first line and text."""
    found = re.findall(r"^```(\w*)\n(.*?)^```$", Path(PAGE).read_text(), re.MULTILINE | re.DOTALL)
    return [(language, text.split("\n")[0], text) for language, text in found]


def pattern(expected):
    """The page writes ... for what differs."""
    return ".*".join(re.escape(part) for part in expected.split("..."))


class Telephone:
    """A telephone at the default socket of its own user folder."""

    def __enter__(self):
        self.folder = tempfile.TemporaryDirectory(prefix="telephone-")
        self.environment = {**os.environ, "XDG_RUNTIME_DIR": self.folder.name, "TELEPHONE_CHECK": "events"}
        self.socket = f"{self.folder.name}/telephone.socket"
        self.process = subprocess.Popen([TELEPHONE, "serve"], env=self.environment, stdout=subprocess.PIPE,
                                        stderr=subprocess.DEVNULL, text=True)
        line = self.process.stdout.readline()
        assert line == f"applications can connect at {self.socket}\n", line
        self.wait_for_mailboxes()
        return self

    def wait_for_mailboxes(self):
        """The page shows a telephone at rest: each line's mailbox has reported."""
        with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as connection:
            connection.settimeout(DEADLINE)
            connection.connect(self.socket)
            connection.sendall(b"events after 0\0")
            received = b""
            while received.count(b"<Method>messageWaitingEvent</Method>") < LINES:
                received += connection.recv(65536)

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait(DEADLINE)
        self.process.stdout.close()
        self.folder.cleanup()


class Page(unittest.TestCase):
    def check_conversation(self, telephone, text):
        with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as connection:
            connection.settimeout(DEADLINE)
            connection.connect(telephone.socket)
            messages = connection.makefile("rwb")
            for direction, body in re.findall(r"^([<>]) (.*(?:\n  .*)*)$", text, re.MULTILINE):
                if direction == ">":
                    messages.write(body.encode() + b"\0")
                    messages.flush()
                    continue
                received = b""
                while not received.endswith(b"\0"):
                    byte = messages.read(1)
                    self.assertTrue(byte, "the telephone has closed the connection")
                    received += byte
                head, content = received[:-1].decode().split("\n", 1)
                wanted_head, _, wanted = body.partition("\n  ")
                self.assertRegex(head, f"^{pattern(wanted_head)}$")
                self.assertRegex(content, re.compile(f"^{pattern(wanted)}$", re.DOTALL))

    def check_commands(self, telephone, text):
        for command, output in re.findall(r"^\$ (.*)\n((?:[^$].*\n)*)", text, re.MULTILINE):
            words = shlex.split(command)
            self.assertEqual(words[0], "telephone")
            process = subprocess.Popen([TELEPHONE, *words[1:]], env=telephone.environment, stdout=subprocess.PIPE,
                                       stderr=subprocess.DEVNULL, text=True)
            if words[1] == "watch":
                printed = process.stdout.readline()
                process.terminate()
            else:
                printed = process.stdout.read()
            process.stdout.close()
            process.wait(DEADLINE)
            self.assertRegex(printed.rstrip(), re.compile(f"^{pattern(output.rstrip())}$", re.DOTALL), command)

    def test_every_block(self):
        kinds = []
        for language, first, text in blocks():
            if language == "python":
                continue
            kinds.append(first[0])
            check = self.check_commands if first[0] == "$" else self.check_conversation
            with self.subTest(block=first), Telephone() as telephone:
                check(telephone, text)
        self.assertGreaterEqual(kinds.count(">"), 7)
        self.assertEqual(kinds.count("$"), 1)

    def test_python(self):
        """The page's program follows the telephone, from the state on, up to the event that the end below causes."""
        program = "".join(text for language, _, text in blocks() if language == "python") + PROGRAM_END
        with Telephone() as telephone:
            subprocess.run([sys.executable, "-c", program], env=telephone.environment, check=True, timeout=DEADLINE)


PROGRAM_END = """
class Seen(Exception):
    pass

def show_event(number, text):
    assert number == state["event"] + 1, (number, state["event"])
    assert text == "<Method>DoNotDisturbEvent</Method><deviceId>4711</deviceId><doNotDisturbOn>1</doNotDisturbOn>", text
    raise Seen

other = Telephone()
other.send("SetDoNotDisturb Line=4711 doNotDisturbOn=1")
try:
    follow(telephone, show_event, None)
except Seen:
    pass
"""


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
