#!/usr/bin/env python3
"""Checks that the porting kit is complete, and that docs/porting.md counts and links truly.

Usage: check_kit.py ROOT

The record tests/abi/operations.txt tells which operations each class of platform/ has. The kit has a class Default... for
each class that a telephone implements, with every operation; each either reports that it is not there or is one of WORKING.
"""
import pathlib
import re
import sys

# What the library or the kit's framework implements, and bases with operations that do nothing.
NOT_A_PORTERS = {
    "Executable", "Threadable", "Service", "Proxy", "Invoker", "MgmtAgentIfc", "physicalEventObserver",
    "functionalEventObserver", "CommunicationsServiceIfc", "CommunicationsServiceEventIfc", "MediaRecordingServiceIfc",
    "TeamServiceIfc", "std"}
# Implemented by ServiceHost and its parts.
FRAMEWORK = {"FrameworkContext", "InvokerResponse", "ProxyRequest"}
# Classes that the telephone defines, rather than derives from.
DEFINED = {"SIPConfigManager": "SIPConfigManager.cpp"}
# Operations that do what their contract says.
WORKING = {"CSfi::SetCommsService", "CSfi::StartTimer", "CSfi::Lock", "CSfi::Unlock"}


def recorded(root):
    """Class -> names of its operations, one for each slot."""
    found = {}
    for line in (root / "tests/abi/operations.txt").read_text().splitlines():
        if not line.startswith("#"):
            name, _, signature = line.split(" ", 2)
            operation = re.match(r"[\w]+::(\w+)", signature.split("(")[0].replace("[abi:cxx11]", "")).group(1)
            found.setdefault(name, []).append(operation)
    return {name: operations for name, operations in found.items() if name not in NOT_A_PORTERS}


def complaints_about_kit(root, classes):
    for name, operations in classes.items():
        if name in FRAMEWORK:
            continue
        file = root / "platform/kit" / DEFINED.get(name, f"Default{name}.h")
        if not file.exists():
            yield f"{file.relative_to(root)} is missing"
            continue
        text = file.read_text()
        for operation in sorted(set(operations)):
            said = len(re.findall(rf'\breport\(\s*"{operation}"', text))
            if f"{name}::{operation}" in WORKING:
                said += operations.count(operation)
            if said != operations.count(operation):
                yield f"{file.name} has {said} of {operations.count(operation)} operations {operation}"


def counts(root, classes):
    """What the page counts, by the words that follow the number."""
    required = (root / "tests/abi/required_symbols.txt").read_text().splitlines()
    required = [line for line in required if not line.startswith("#")]
    readers = sum(bool(re.match(r"_Z\d+sfi", line)) for line in required)
    accessors = sum(bool(re.search(r"(8Instance|11GetInstance)Ev$", line)) for line in required)
    named = len(re.findall(r"kByName, ", (root / "platform/kit/Check.h").read_text()))
    singletons = ("CSfi", "LineManager", "TeamServiceKeyset", "TeamServiceFeatures", "DirectedPickupHandler",
                  "FeatureToggle", "MediaRecordingService")
    return {
        "symbols": len(required),
        "accessors": accessors,
        "readers": readers,
        "named services": named,
        "classes": len(classes),
        "operations": sum(map(len, classes.values())),
        "operations of the singletons": sum(len(classes[name]) for name in singletons),
    }


def complaints_about_page(root, classes):
    page = (root / "docs/porting.md").read_text()
    for what, number in counts(root, classes).items():
        stated = re.findall(rf"\b(\d+) {what}\b(?! of the)", page)
        if not stated:
            yield f"docs/porting.md does not count the {what} ({number})"
        for each in stated:
            if int(each) != number:
                yield f"docs/porting.md says {each} {what}; there are {number}"
    for name, operations in classes.items():
        row = re.search(rf"^\| \[`{name}`\]\(([^)]*)\) \| (\d+) \| (.*) \|$", page, re.MULTILINE)
        if row is None:
            yield f"docs/porting.md has no row for {name}"
        elif int(row.group(2)) != len(operations):
            yield f"docs/porting.md says {row.group(2)} operations of {name}; there are {len(operations)}"
        elif row.group(3) != ", ".join(f"`{each}`" for each in dict.fromkeys(operations)):
            yield f"docs/porting.md lists other operations of {name} than its header, or in another order"
        elif not (root / "docs" / row.group(1)).exists():
            yield f"docs/porting.md links to {row.group(1)}, which does not exist"


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    classes = recorded(root)
    complaints = [*complaints_about_kit(root, classes), *complaints_about_page(root, classes)]
    for complaint in complaints:
        print(complaint, file=sys.stderr)
    sys.exit(1 if complaints else 0)


main()
