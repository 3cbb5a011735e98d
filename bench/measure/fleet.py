"""Fifty telephones on one machine, registered at one exchange, each in a call at the same time."""

import contextlib
import pathlib
import socket
import statistics
import subprocess
import time

from .processes import LOOPBACK, Telephone, free_port, running, telephone, wait_for_port

TELEPHONES = 50
TALK = 5.0  # seconds
LIMIT = 30.0
SUBSCRIBE = "<Method>Subscribe</Method>"
CONNECTED = b"<CallState>6</CallState>"
ECHO = "100"


def configuration_of(line: str, port: int) -> str:
    return (
        f'[[line]]\nid = "{line}"\n[server]\nregistrar = "sip:{LOOPBACK}:{port}"\n'
        '[exchange]\nenabled = false\npassword = "secret"\n[media]\nsource = "tone"\n'
    )


def call_echo(phone: Telephone, line: str) -> None:
    """Returns when the call is answered."""
    request = f"<Method>OutgoingCallMakeRequest</Method><Line>{line}</Line><CallID>1</CallID>"
    request += f"<Destination>{ECHO}</Destination>"
    with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as application:
        application.settimeout(LIMIT)
        application.connect(str(phone.socket))
        application.sendall(f"{SUBSCRIBE}\0{request}\0".encode())
        heard = b""
        while CONNECTED not in heard:
            heard += application.recv(65536)


@contextlib.contextmanager
def exchange(build: pathlib.Path):
    port = free_port()
    command = [build / "telephone" / "telephone", "exchange", "--port", str(port), "--log-level", "2"]
    with running(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
        wait_for_port(process, port)
        yield port


def measure(build: pathlib.Path, folder: pathlib.Path) -> dict[str, float]:
    lines = [str(5000 + number) for number in range(TELEPHONES)]
    with exchange(build) as port, contextlib.ExitStack() as stack:
        phones = [
            stack.enter_context(telephone(build, folder / line, configuration_of(line, port))) for line in lines
        ]
        for phone, line in zip(phones, lines):
            call_echo(phone, line)
        before = [phone.processor_seconds() for phone in phones]
        time.sleep(TALK)
        used = [phone.processor_seconds() - start for phone, start in zip(phones, before)]
        return {
            "fleet_mb": statistics.median(phone.resident_kilobytes() for phone in phones) / 1024,
            "fleet_own_mb": statistics.median(phone.own_kilobytes() for phone in phones) / 1024,
            "fleet_percent": 100 * statistics.mean(used) / TALK,
        }
