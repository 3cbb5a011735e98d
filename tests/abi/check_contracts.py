#!/usr/bin/env python3
"""Checks that Doxygen reads the public headers without a warning, and that every operation documents what it returns.

Usage: check_contracts.py ROOT DOXYGEN. Writes to a temporary folder only.
"""
import pathlib
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as xml

LEAST_OPERATIONS = 300  # fewer: the headers were not read


def read_headers(root, doxygen, folder):
    """Runs Doxygen; its warnings go to standard error and fail it."""
    settings = (root / "docs/Doxyfile").read_text()
    settings += f"\nOUTPUT_DIRECTORY = {folder}\nGENERATE_HTML = NO\nGENERATE_XML = YES\n"
    return subprocess.run([doxygen, "-"], input=settings, text=True, cwd=root).returncode


def operations(folder):
    for page in sorted(pathlib.Path(folder, "xml").glob("*.xml")):
        for member in xml.parse(page).getroot().iterfind(".//memberdef[@kind='function']"):
            if member.get("prot") != "private":
                yield member


def returns_nothing(member):
    words = "".join(member.find("type").itertext()).replace("constexpr", "").replace("virtual", "").split()
    return words in ([], ["void"]) or (member.findtext("argsstring") or "").endswith("=delete")


def main():
    root, doxygen = pathlib.Path(sys.argv[1]).resolve(), sys.argv[2]
    with tempfile.TemporaryDirectory() as folder:
        if read_headers(root, doxygen, folder) != 0:
            sys.exit("Doxygen does not accept the public headers")
        found = list(operations(folder))
    if len(found) < LEAST_OPERATIONS:
        sys.exit(f"only {len(found)} operations found in the public headers")
    silent = [member for member in found
              if not returns_nothing(member) and member.find(".//simplesect[@kind='return']") is None]
    for member in silent:
        place = member.find("location")
        print(f"{place.get('file')}:{place.get('line')}: {member.findtext('name')} does not say what it returns",
              file=sys.stderr)
    sys.exit(1 if silent else 0)


main()
