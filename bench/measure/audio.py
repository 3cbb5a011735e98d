"""Two hundred calls at the same time between two user agents of one process: plain, and encrypted."""

import pathlib

from .sockets import run_json

CALLS = 200
TALK = 10  # seconds
ENCRYPTED = {"plain": 0, "encrypted": CALLS}


def measure(build: pathlib.Path, folder: pathlib.Path) -> dict[str, float]:
    figures: dict[str, float] = {}
    for kind, encrypted in ENCRYPTED.items():
        found = run_json(build / "bench" / "bench_encrypted_calls", str(CALLS), str(TALK), kind)
        if found["encrypted"] != encrypted:
            raise RuntimeError(f"{found['encrypted']} of {CALLS} {kind} calls are encrypted")
        figures[f"{kind}_calls_percent"] = found["percent"]
        figures[f"{kind}_calls_lost"] = found["lost"]
        figures[f"{kind}_calls_kb"] = found["kb"] / (2 * CALLS)
    return figures
