"""Calls to SIPp, set up and cleared: by text request, without and with a trace, and by the SIP stack alone."""

import pathlib
import statistics
from collections.abc import Sequence

from .goals import Figures
from .processes import LOOPBACK, sipp_answering, telephone
from .sockets import run_json

ROUNDS = 3
CALLS = 3000
# Only one call of a telephone is not held: a further call would put it on hold.
LINES = 2
AT_ONCE = 32  # the stack is fastest with this many
CONFIGURATION = "".join(f'[[line]]\nid = "{number}"\nregisters = false\n' for number in range(1, LINES + 1))
CONFIGURATION += '[exchange]\nenabled = false\n[media]\nsource = "silence"\n'


def by_stack(build: pathlib.Path, folder: pathlib.Path) -> Figures:
    with sipp_answering(folder) as port:
        return run_json(build / "bench" / "bench_bare_calls", LOOPBACK, str(port), str(AT_ONCE), str(CALLS))


def by_request(build: pathlib.Path, folder: pathlib.Path, options: Sequence[str | pathlib.Path] = ()) -> Figures:
    with sipp_answering(folder) as port, telephone(build, folder / "calls", CONFIGURATION, options=options) as phone:
        far_end = f"sip:service@{LOOPBACK}:{port}"
        return run_json(build / "bench" / "bench_calls", phone.socket, far_end, str(LINES), str(CALLS))


def call_rates(build: pathlib.Path, folder: pathlib.Path) -> Figures:
    """Alternately, each round in new processes: ended calls slow the stack for half a minute."""
    bare: list[Figures] = []
    ours: list[Figures] = []
    traced: list[Figures] = []
    for _ in range(ROUNDS):
        bare.append(by_stack(build, folder))
        ours.append(by_request(build, folder))
        traced.append(by_request(build, folder, ["--trace", folder / "calls.trace"]))
    return {
        "bare_calls": statistics.median(one["calls_per_second"] for one in bare),
        "request_calls": statistics.median(one["calls_per_second"] for one in ours),
        "traced_calls": statistics.median(one["calls_per_second"] for one in traced),
        "failed_calls": sum(one["failed"] for one in ours + traced),
    }
