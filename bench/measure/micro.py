"""The benchmarks inside one process: the median of each, in nanoseconds of processor time."""

import json
import pathlib
import subprocess

PROGRAMS = (
    "bench_requests",
    "bench_alternatives",
    "bench_events",
    "bench_service",
    "bench_lookups",
    "bench_time",
    "bench_trace",
)
REPETITIONS = 25


def run_program(program: pathlib.Path, repetitions: int) -> dict[str, float]:
    """Every benchmark of a program by its name. Repetitions are interleaved, so that a busy moment affects them all."""
    done = subprocess.run(
        [
            program,
            "--benchmark_format=json",
            "--benchmark_min_time=0.02",
            f"--benchmark_repetitions={repetitions}",
            "--benchmark_enable_random_interleaving=true",
            "--benchmark_report_aggregates_only=true",
        ],
        check=True,
        capture_output=True,
        text=True,
    )
    rows = json.loads(done.stdout)["benchmarks"]
    return {row["run_name"]: row["cpu_time"] for row in rows if row.get("aggregate_name") == "median"}


def run_all(build: pathlib.Path, repetitions: int = REPETITIONS) -> dict[str, float]:
    """Of the programs that the build has: a build of an earlier revision may lack some."""
    times: dict[str, float] = {}
    for name in PROGRAMS:
        program = build / "bench" / name
        if program.exists():
            times.update(run_program(program, repetitions))
    return times
