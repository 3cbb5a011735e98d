#!/usr/bin/env python3
"""The manual pages and the completions for shells, as the build makes them."""

import os
import pty
import re
import select
import shutil
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

from installation import BUILD, run

MANUALS = BUILD / "packaging/manuals"
COMMANDS = ["console", "tour", "play", "test", "chaos", "serve", "panel", "exchange", "fleet", "do", "request", "watch",
            "replay", "trace", "why", "ladder", "store", "devices", "describe"]
CLEAR_LINE = "\x15"
# What is typed, and what the shell offers.
OFFERED = [
    ("telephone ", COMMANDS),
    ("telephone pl", ["play"]),
    ("telephone --config desk.toml p", ["play", "panel"]),
    ("telephone --lo", ["--log-level", "--log-file"]),
    ("telephone play --ju", ["--junit"]),
    ("telephone play --color ", ["auto", "always", "never"]),
    ("telephone play --color=al", ["always"]),
    ("telephone --check ", ["none", "events", "all"]),
    ("telephone --log-level ", []),
    ("telephone play des", ["desk.toml", "desk.script"]),
    ("telephone play --junit out", ["out.xml"]),
    ("telephone test --files fo", ["folder"]),
    ("telephone watch --only CallH", ["CallHeldEvent"]),
    ("telephone watch --only CallHeldEvent,CallR", ["CallHeldEvent,CallRetrievedEvent"]),
    ("telephone request HoldC", ["HoldCall"]),
    ("telephone request HoldCall ", ["Line=", "CallID=", "HoldCallReason=", "Manual="]),
    ("telephone request --lenient HoldCall Line=4711 C", ["CallID="]),
    ("telephone request HoldCall CallID=1 Ca", []),
    ("telephone request SetAgentState agentState=logged", ["loggedOn", "loggedOff"]),
    ("telephone do stor", ["store"]),
    ("telephone do store ", ["list", "get", "set"]),
    ("telephone do plug ", ["headset", "handset", "line"]),
    ("telephone store ", ["list", "get", "set"]),
    ("telephone describe HoldC", ["HoldCall", "HoldCallReason"]),
]


class ShellTest(unittest.TestCase):
    def setUp(self):
        self.folder = self.enterContext(tempfile.TemporaryDirectory(prefix="shell-"))
        for name in ("desk.toml", "desk.script", "out.xml"):
            Path(self.folder, name).touch()
        Path(self.folder, "folder").mkdir()

    def test_bash_offers_what_fits(self):
        script = f"source {MANUALS}/telephone.bash\n"
        for typed, _ in OFFERED:
            script += (f'COMPREPLY=() COMP_LINE="{typed}" COMP_POINT={len(typed)}\n'
                       '"$(complete -p telephone | sed "s/.*-F \\([^ ]*\\) .*/\\1/")"\necho "${COMPREPLY[@]}"\n')

        offered = run("bash", "--norc", "-c", script, cwd=self.folder).splitlines()

        self.assertEqual([(typed, sorted(words.split())) for (typed, _), words in zip(OFFERED, offered, strict=True)],
                         [(typed, sorted(words)) for typed, words in OFFERED])

    @unittest.skipUnless(shutil.which("zsh"), "zsh is not installed")
    def test_zsh_completes_on_a_terminal(self):
        run("zsh", "-n", MANUALS / "_telephone")
        zsh = Terminal(["zsh", "-f", "-i"], self.folder)
        zsh.type(f"fpath=({MANUALS} $fpath); autoload -U compinit; compinit -u -D; PS1='rea''dy> '; clear\n", "ready> ")
        for typed, completed in (
                ("telephone pla\t", "telephone play "),
                ("telephone --log-l\t", "telephone --log-level="),
                ("telephone request HoldC\t", "telephone request HoldCall "),
                ("telephone request HoldCall Man\t", "telephone request HoldCall Manual="),
                ("telephone request SetAgentState agentState=notR\t", "agentState=notReady "),
                ("telephone do sto\t", "telephone do store "),
                ("telephone watch --only CallRet\t", "CallRetrievedEvent"),
                ("telephone play --color al\t", "telephone play --color always "),
                ("telephone play desk.s\t", "telephone play desk.script ")):
            with self.subTest(typed):
                zsh.type(f"{CLEAR_LINE}{typed}", completed)
        zsh.end()

    def test_manual_pages_have_no_warnings(self):
        for page in ("telephone.1", "telephone-check.1", "telephone.toml.5", "telephone-protocol.7"):
            self.assertEqual(run("groff", "-man", "-Tutf8", "-ww", "-z", "-rLL=80n", MANUALS / page), "", page)

    def test_manual_describes_every_command_and_option(self):
        page = run("sh", "-c", f"MANWIDTH=80 man -l {MANUALS}/telephone.1 | col -bx",
                   env={**os.environ, "LC_ALL": "C.UTF-8"})

        for command in COMMANDS:
            self.assertRegex(page, rf"\n   telephone {command}\b")
        self.assertRegex(page, r"\n       --check none\|events\|all\n              End with status 4 at the first message")
        self.assertRegex(page, r"\n       -c, --config FILE\n")
        self.assertRegex(page, r"\n       press KEY\n")


class Terminal:
    """A program on a terminal of its own."""

    def __init__(self, command, folder):
        self.process, self.descriptor = pty.fork()
        if self.process == 0:
            os.chdir(folder)
            os.execvpe(command[0], command, {"PATH": os.environ["PATH"], "HOME": folder, "TERM": "dumb", "COLUMNS": "200"})

    def type(self, text, expected):
        """Types and waits for a text on the terminal."""
        os.write(self.descriptor, text.encode())
        shown = ""
        deadline = time.monotonic() + 5
        while expected not in shown:
            ready, _, _ = select.select([self.descriptor], [], [], max(0, deadline - time.monotonic()))
            if not ready:
                raise AssertionError(f"{expected!r} did not appear: {shown!r}")
            shown += re.sub(r"\x1b\[[0-9;?]*[A-Za-z]|[\r\x07]|\x08.", "", os.read(self.descriptor, 65536).decode(errors="replace"))

    def end(self):
        """Ends the program."""
        os.close(self.descriptor)
        os.waitpid(self.process, 0)


if __name__ == "__main__":
    unittest.main()
