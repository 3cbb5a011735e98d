"""Requests over the application socket compared with an echo and a message bus, and events to many applications."""

import json
import pathlib
import statistics
import subprocess

from .processes import message_bus, telephone

ROUNDS = 5
LINE = '[[line]]\nid = "1"\nregisters = false\n[exchange]\nenabled = false\n'


def run_json(*command: str | pathlib.Path) -> dict[str, float]:
    done = subprocess.run(command, check=True, capture_output=True, text=True, timeout=120)
    return json.loads(done.stdout)


def median_of(rounds: list[dict[str, float]], key: str) -> float:
    return statistics.median(one[key] for one in rounds)


def round_trips(build: pathlib.Path, folder: pathlib.Path) -> dict[str, float]:
    """Echo and telephone alternately, so that both run under the same conditions."""
    program = build / "bench" / "bench_socket"
    echoes: list[dict[str, float]] = []
    answers: list[dict[str, float]] = []
    with telephone(build, folder / "round-trips", LINE, pinned=True) as phone:
        for _ in range(ROUNDS):
            echoes.append(run_json(program, "echo"))
            answers.append(run_json(program, "application", phone.socket))
    with message_bus(folder) as address:
        bus = run_json(program, "bus", address)
    return {
        "echo_us": median_of(echoes, "round_trip_us"),
        "echo_rate": median_of(echoes, "rate_64"),
        "application_us": median_of(answers, "round_trip_us"),
        "application_rate": median_of(answers, "rate_64"),
        "bus_us": bus["round_trip_us"],
    }


def subscribers(build: pathlib.Path, folder: pathlib.Path) -> dict[str, float]:
    program = build / "bench" / "bench_subscribers"
    times: dict[str, float] = {}
    with telephone(build, folder / "subscribers", LINE) as phone:
        for count, rounds in ((1, 2000), (10, 1000), (100, 300)):
            times[f"subscribers_{count}"] = run_json(program, phone.socket, str(count), "0", str(rounds))["event_us"]
        times["with_stopped"] = run_json(program, phone.socket, "10", "1", "1000")["event_us"]
    return times
