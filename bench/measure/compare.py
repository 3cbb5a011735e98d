"""python3 -m measure.compare BEFORE AFTER: the benchmarks of two builds by turns, and the ratio of each."""

import pathlib
import statistics
import sys

from . import micro, report
from .goals import Figures, figure

ROUNDS = 10
REPETITIONS = 3  # in a round
HEAD = ("Benchmark", "Before", "After", "Ratio", "Least", "Most")


def rounds(builds: tuple[pathlib.Path, pathlib.Path]) -> list[tuple[Figures, Figures]]:
    """What the builds need in each round, in nanoseconds. The one that begins changes: a machine grows warm."""
    measured = []
    for number in range(ROUNDS):
        order = builds if number % 2 == 0 else builds[::-1]
        figures = {build: micro.run_all(build, REPETITIONS) for build in order}
        measured.append((figures[builds[0]], figures[builds[1]]))
        print(f"round {number + 1} of {ROUNDS}", file=sys.stderr)
    return measured


def table(measured: list[tuple[Figures, Figures]]) -> list[tuple[str, ...]]:
    """A line for each benchmark that both builds have: medians, and the ratio with its spread over the rounds."""
    lines = []
    for name in measured[0][1]:
        pairs = [(before[name], after[name]) for before, after in measured if name in before]
        if not pairs:
            continue
        ratios = [after / before for before, after in pairs]
        medians = [f"{figure(statistics.median(column))} ns" for column in zip(*pairs)]
        lines.append((name, *medians, *(f"{value:.2f}" for value in (statistics.median(ratios), min(ratios), max(ratios)))))
    return lines


def main() -> None:
    before, after = (pathlib.Path(argument) for argument in sys.argv[1:3])
    print(report.aligned([HEAD, *table(rounds((before, after)))]))


if __name__ == "__main__":
    main()
