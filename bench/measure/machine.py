"""The machine on which the figures were measured."""

import datetime
import os
import pathlib
import platform
import re
import subprocess


def first_match(path: str, pattern: str) -> str:
    found = re.search(pattern, pathlib.Path(path).read_text(), re.MULTILINE)
    return found.group(1).strip() if found else "unknown"


def compiler(build: pathlib.Path) -> str:
    path = first_match(str(build / "CMakeCache.txt"), r"^CMAKE_CXX_COMPILER:\w+=(.+)$")
    return subprocess.run([path, "--version"], check=True, capture_output=True, text=True).stdout.splitlines()[0]


def description(build: pathlib.Path) -> list[tuple[str, str]]:
    memory = int(first_match("/proc/meminfo", r"^MemTotal:\s+(\d+)"))
    return [
        ("Processor", f"{first_match('/proc/cpuinfo', r'^model name.*: (.+)$')}, {os.cpu_count()} cores"),
        ("Memory", f"{memory / 1024 / 1024:.0f} GB"),
        ("System", f"{first_match('/etc/os-release', r'^PRETTY_NAME=.(.+).$')}, kernel {platform.release()}"),
        ("Compiler", compiler(build)),
        ("Date", datetime.date.today().isoformat()),
    ]
