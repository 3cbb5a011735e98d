#!/usr/bin/env python3
"""Prints the entry of a version in CHANGELOG.md as Debian's changelog: changelog.py CHANGELOG VERSION RELEASE MAINTAINER.

The date is SOURCE_DATE_EPOCH."""
import datetime
import email.utils
import os
import re
import sys
import textwrap


def entry_of(changes, version):
    """The lines below the version's heading."""
    lines = iter(changes.splitlines())
    if not any(line == f"## {version}" for line in lines):
        sys.exit(f"CHANGELOG.md has no version {version}")
    entry = []
    for line in lines:
        if line.startswith("## "):
            break
        entry.append(line)
    return entry


def bullets_of(entry):
    """The items of its lists, each in one line."""
    bullets = []
    for line in entry:
        if line.startswith("- "):
            bullets.append(line[2:])
        elif bullets and line.startswith("  "):
            bullets[-1] += " " + line.strip()
    return bullets


def plain(text):
    """Without the marks of Markdown; a link is its target."""
    text = re.sub(r"\[[^]]*\]\(([^)]*)\)", r"\1", text)
    return text.replace("**", "").replace("`", "")


def main():
    path, version, release, maintainer = sys.argv[1:]
    with open(path, encoding="utf-8") as file:
        bullets = bullets_of(entry_of(file.read(), version))
    print(f"communications-service ({version}-{release}) unstable; urgency=medium\n")
    for bullet in bullets:
        print(textwrap.fill(plain(bullet), 78, initial_indent="  * ", subsequent_indent="    ",
                            break_long_words=False, break_on_hyphens=False))
    moment = datetime.datetime.fromtimestamp(int(os.environ["SOURCE_DATE_EPOCH"]), datetime.timezone.utc)
    date = email.utils.format_datetime(moment)
    print(f"\n -- {maintainer}  {date}")


main()
