"""The size of the library and the telephone, and the time that the telephone takes to start."""

import pathlib
import shutil
import statistics
import subprocess
import time

from .processes import telephone
from .sockets import run_json

STARTS = 5
SETTLING = 2.0  # seconds until the work that follows the start is done
IDLE = 5.0
HTTP = '[http]\naddress = "127.0.0.1:0"\n'


def library(build: pathlib.Path, folder: pathlib.Path) -> dict[str, float]:
    """Stripped, as installed in a telephone."""
    stripped = folder / "libcommunications_service.so"
    shutil.copy(build / "src" / "libcommunications_service.so", stripped)
    subprocess.run(["strip", "--strip-unneeded", stripped], check=True)
    loaded = [run_json(build / "bench" / "bench_load", stripped) for _ in range(STARTS)]
    return {
        "library_bytes": stripped.stat().st_size,
        "library_kb": statistics.median(one["added_kb"] for one in loaded),
    }


def start_ms(build: pathlib.Path, folder: pathlib.Path, configuration: str) -> float:
    starts = []
    for _ in range(STARTS):
        with telephone(build, folder, configuration) as phone:
            starts.append(phone.seconds_to_ready)
    return statistics.median(starts) * 1000


def with_http(build: pathlib.Path, folder: pathlib.Path) -> dict[str, float]:
    figures = {"http_start_ms": start_ms(build, folder / "http", HTTP)}
    with telephone(build, folder / "http", HTTP) as phone:
        time.sleep(SETTLING)
        figures["http_idle_mb"] = phone.resident_kilobytes() / 1024
    return figures


def idle_telephone(build: pathlib.Path, folder: pathlib.Path) -> dict[str, float]:
    """The standard telephone: two lines, registered at its own exchange."""
    milliseconds = start_ms(build, folder / "idle", "")
    with telephone(build, folder / "idle") as phone:
        time.sleep(SETTLING)
        before = phone.processor_seconds()
        time.sleep(IDLE)
        used = phone.processor_seconds() - before
        return {
            "start_ms": milliseconds,
            "idle_mb": phone.resident_kilobytes() / 1024,
            "idle_percent": 100 * used / IDLE,
        }
