#!/usr/bin/env python3
"""Checks that the telephone waits, and asks for the time, only through telephone/time.

Usage: check_waits.py ROOT

A clock, thread, wait, sleep or poll of its own would stand outside virtual time: the run would hang, or differ from the
last one. ALLOWED lists the places that must, each with its reason; one that is no longer needed is a complaint, too.
"""
import pathlib
import re
import sys

FORBIDDEN = {
    "a clock": r"\b(?:steady|system|high_resolution)_clock::now\b|=\s*std::chrono::\w+_clock;|\btime\s*\(\s*(?:NULL|nullptr|0)\s*\)|\bclock_gettime\b|\bgettimeofday\b",
    "a thread": r"\bstd::j?thread\b(?!::id)|\bpthread_create\b|\bstd::async\b",
    "a wait": r"\bcondition_variable\b|\.wait(?:_for|_until)\s*\(|\bstd::(?:future|promise|latch|barrier|\w*semaphore)\b",
    "a sleep": r"\bsleep_(?:for|until)\s*\(|\b(?:u|nano)?sleep\s*\(",
    "a poll": r"(?<![\w.>])(?:::)?p?poll\s*\(|\bepoll_wait\s*\(",
    "chance": r"\bstd::random_device\b|\bmt19937\b|\bgetrandom\s*\(|(?<![\w:])s?rand\s*\(",
    "the local zone": r"\blocaltime(?:_r)?\s*\(",
}

# The file, what it may use, and why.
ALLOWED = {
    ("http/ConnectionThreads.h", "a thread"): "the HTTP library's connections, which only visit",
    ("http/ConnectionThreads.cpp", "a thread"): "as before",
    ("http/ConnectionThreads.h", "a wait"): "as before",
    ("http/EventStream.cpp", "a poll"): "on such a thread: a reader that has gone is noticed in real time",
    ("http/EventStream.cpp", "a clock"): "as before",
    ("http/EventStream.h", "a clock"): "as before",
    ("http/ConnectionThreads.cpp", "a wait"): "as before",
    ("http/HttpServer.cpp", "a thread"): "runs the HTTP library",
    ("http/HttpServer.cpp", "a wait"): "as before",
    ("http/AccessToken.cpp", "chance"): "a secret must not come from a seed",
}


def code_of(line):
    return line.split("//")[0]


def uses(root):
    """The file, the kind of use, the line number and the line of every use outside telephone/time."""
    folder = root / "telephone"
    for file in sorted(file for file in folder.rglob("*") if file.suffix in (".h", ".cpp")):
        name = str(file.relative_to(folder))
        if name.startswith("time/"):
            continue
        for number, line in enumerate(file.read_text().splitlines(), 1):
            for kind, pattern in FORBIDDEN.items():
                if re.search(pattern, code_of(line)):
                    yield name, kind, number, line.strip()


def complaints(root):
    needed = set()
    for name, kind, number, line in uses(root):
        if (name, kind) in ALLOWED:
            needed.add((name, kind))
        else:
            yield f"telephone/{name}:{number}: {kind} outside telephone/time: {line}"
    for name, kind in sorted(ALLOWED.keys() - needed):
        yield f"telephone/{name} has {kind} no longer: remove it from the list in check_waits.py"


def main():
    found = list(complaints(pathlib.Path(sys.argv[1])))
    print("\n".join(found), file=sys.stderr, end="\n" if found else "")
    sys.exit(1 if found else 0)


main()
