"""Runs the in-process benchmarks and gives the median of each, in nanoseconds."""

import json
import pathlib
import subprocess

PROGRAMS = ("bench_requests", "bench_alternatives", "bench_events", "bench_service")


def run_program(program: pathlib.Path, repetitions: int) -> dict[str, float]:
    """Every benchmark of one program: its name and its median time."""
    done = subprocess.run(
        [
            program,
            "--benchmark_format=json",
            "--benchmark_min_time=0.05",
            f"--benchmark_repetitions={repetitions}",
            "--benchmark_enable_random_interleaving=true",
            "--benchmark_report_aggregates_only=true",
        ],
        check=True,
        capture_output=True,
        text=True,
    )
    rows = json.loads(done.stdout)["benchmarks"]
    return {row["run_name"]: row["real_time"] for row in rows if row.get("aggregate_name") == "median"}


def run_all(build: pathlib.Path, repetitions: int = 7) -> dict[str, float]:
    times: dict[str, float] = {}
    for name in PROGRAMS:
        times.update(run_program(build / "bench" / name, repetitions))
    return times
