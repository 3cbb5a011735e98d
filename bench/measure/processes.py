"""The programs measured from outside: telephones, SIPp as the far end, a message bus. Each ends with its block."""

import contextlib
import os
import pathlib
import signal
import socket
import subprocess
import time
from collections.abc import Iterator, Sequence

LOOPBACK = "127.0.0.1"
START_LIMIT = 30.0  # seconds
TICKS = os.sysconf("SC_CLK_TCK")
PROCESSOR = "0"  # for all pinned processes


def free_port() -> int:
    """A UDP port that is free at present."""
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
        probe.bind((LOOPBACK, 0))
        return probe.getsockname()[1]


@contextlib.contextmanager
def running(command: list[str | pathlib.Path], **more) -> Iterator[subprocess.Popen]:
    process = subprocess.Popen(command, **more)
    try:
        yield process
    finally:
        process.send_signal(signal.SIGTERM)
        try:
            process.wait(10)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()


class Telephone:
    """A telephone that serves applications, ready for requests."""

    def __init__(self, process: subprocess.Popen, path: pathlib.Path, seconds: float) -> None:
        self.process = process
        self.socket = path
        self.seconds_to_ready = seconds

    def resident_kilobytes(self) -> int:
        status = pathlib.Path(f"/proc/{self.process.pid}/status").read_text()
        return int(next(line for line in status.splitlines() if line.startswith("VmRSS:")).split()[1])

    def own_kilobytes(self) -> int:
        """Memory shared with no other process."""
        rollup = pathlib.Path(f"/proc/{self.process.pid}/smaps_rollup").read_text()
        return sum(int(line.split()[1]) for line in rollup.splitlines() if line.startswith("Private_"))

    def processor_seconds(self) -> float:
        # The name of the program is in brackets and may contain blanks.
        fields = pathlib.Path(f"/proc/{self.process.pid}/stat").read_text().rpartition(")")[2].split()
        return (int(fields[11]) + int(fields[12])) / TICKS


@contextlib.contextmanager
def telephone(
    build: pathlib.Path,
    folder: pathlib.Path,
    configuration: str = "",
    pinned: bool = False,
    options: Sequence[str | pathlib.Path] = (),
) -> Iterator[Telephone]:
    """Starts a telephone in its own folder with a configuration in TOML; empty: the standard one."""
    folder.mkdir(parents=True, exist_ok=True)
    path = folder / "socket"
    command: list[str | pathlib.Path] = ["taskset", "-c", PROCESSOR] if pinned else []
    command += [build / "telephone" / "telephone", "serve", "--socket", path, "--log-level", "2", *options]
    if configuration:
        (folder / "telephone.toml").write_text(configuration)
        command += ["--config", folder / "telephone.toml"]
    start = time.monotonic()
    with running(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) as process:
        line = process.stdout.readline()
        seconds = time.monotonic() - start
        if "applications can connect" not in line:
            raise RuntimeError("the telephone did not start: " + process.stderr.read())
        yield Telephone(process, path, seconds)


@contextlib.contextmanager
def sipp_answering(folder: pathlib.Path) -> Iterator[int]:
    """Runs SIPp with its built-in called party; yields its port."""
    port = free_port()
    command = ["sipp", "-sn", "uas", "-i", LOOPBACK, "-p", str(port), "-nostdin", "-deadcall_wait", "0"]
    with running(command, cwd=folder, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
        wait_for_port(process, port)
        yield port


def wait_for_port(process: subprocess.Popen, port: int) -> None:
    """Waits until the process has opened the UDP port."""
    wanted = f":{port:04X} "
    deadline = time.monotonic() + START_LIMIT
    while wanted not in pathlib.Path("/proc/net/udp").read_text():
        if process.poll() is not None or time.monotonic() > deadline:
            raise RuntimeError(f"{process.args[0]} does not listen")
        time.sleep(0.01)


@contextlib.contextmanager
def message_bus(folder: pathlib.Path) -> Iterator[str]:
    """Runs a private message bus, pinned; yields its address."""
    address = f"unix:path={folder / 'bus'}"
    command = ["taskset", "-c", PROCESSOR, "dbus-daemon", "--session", "--nofork", "--print-address"]
    command += [f"--address={address}"]
    with running(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True) as process:
        yield process.stdout.readline().strip()
