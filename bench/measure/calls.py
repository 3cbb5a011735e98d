"""Calls to SIPp's called party, set up and cleared: by text request, and by the SIP stack alone."""

import pathlib
import statistics

from .processes import LOOPBACK, sipp_answering, telephone
from .sockets import run_json

ROUNDS = 3
CALLS = 3000
AT_ONCE = 32
LINES = "".join(f'[[line]]\nid = "{number}"\nregisters = false\n' for number in range(1, AT_ONCE + 1))
CONFIGURATION = LINES + '[exchange]\nenabled = false\n[media]\nsource = "silence"\n'


def call_rates(build: pathlib.Path, folder: pathlib.Path) -> dict[str, float]:
    """The stack and the telephone by turns, each round at a far end of its own."""
    bare: list[dict[str, float]] = []
    by_request: list[dict[str, float]] = []
    with telephone(build, folder / "calls", CONFIGURATION) as phone:
        for _ in range(ROUNDS):
            with sipp_answering(folder) as port:
                arguments = (LOOPBACK, str(port), str(AT_ONCE), str(CALLS))
                bare.append(run_json(build / "bench" / "bench_bare_calls", *arguments))
            with sipp_answering(folder) as port:
                far_end = f"sip:service@{LOOPBACK}:{port}"
                arguments = (str(phone.socket), far_end, str(AT_ONCE), str(CALLS))
                by_request.append(run_json(build / "bench" / "bench_calls", *arguments))
    return {
        "bare_calls": statistics.median(one["calls_per_second"] for one in bare),
        "request_calls": statistics.median(one["calls_per_second"] for one in by_request),
        "failed_calls": sum(one["failed"] for one in by_request),
    }
