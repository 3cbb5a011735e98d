"""python3 -m measure BUILD PAGE: measures a build, prints the table and writes it into a page."""

import pathlib
import sys
import tempfile
import time
import traceback
from collections.abc import Callable

from . import audio, calls, fleet, footprint, machine, micro, report, sockets
from .goals import Figures

Part = Callable[[pathlib.Path, pathlib.Path], Figures]

PARTS: tuple[tuple[str, Part], ...] = (
    ("requests, events, operations, lookups", lambda build, folder: micro.run_all(build)),
    ("application socket", sockets.round_trips),
    ("subscribers", sockets.subscribers),
    ("calls", calls.call_rates),
    ("encrypted calls", audio.measure),
    ("library", footprint.library),
    ("idle telephone", footprint.idle_telephone),
    ("idle telephone with HTTP", footprint.with_http),
    ("fifty telephones", fleet.measure),
)


def measure(build: pathlib.Path) -> Figures:
    """A part that fails leaves its own rows unmeasured, and no others."""
    figures: Figures = {}
    with tempfile.TemporaryDirectory(prefix="bench-") as folder:
        for name, part in PARTS:
            start = time.monotonic()
            try:
                figures.update(part(build, pathlib.Path(folder)))
            except Exception:
                traceback.print_exc()
            print(f"measured {name} in {time.monotonic() - start:.0f} s", file=sys.stderr)
    return figures


def main() -> None:
    build, page = (pathlib.Path(argument) for argument in sys.argv[1:3])
    figures = measure(build)
    print(report.aligned([report.HEAD, *report.table(figures)]))
    report.write(page, figures, machine.description(build))


main()
