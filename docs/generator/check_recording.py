#!/usr/bin/env python3
"""Checks a recording on standard input, one JSON object a line, against its schema.

Usage: check_recording.py SCHEMA

To prove that the check can fail, each line is spoiled: without any one of its required members, or with one more, it must
be refused.
"""

import json
import sys

import jsonschema

FOR_PEOPLE = {"name", "line", "call", "elements", "strict", "reasons"}  # may be left out


def unnoticed(validator, line):
    """What the schema lets pass of a spoiled line."""
    if validator.is_valid({**line, "surprise": True}):
        yield f"a new member beside {', '.join(line)}"
    for name in line.keys() - FOR_PEOPLE:
        if validator.is_valid({other: line[other] for other in line if other != name}):
            yield f"the missing member {name} beside {', '.join(line)}"


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        schema = json.load(file)
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    lines = [json.loads(line) for line in sys.stdin]
    faults = [f"line {number}: {error.json_path}: {error.message}"
              for number, line in enumerate(lines, 1) for error in validator.iter_errors(line)]
    if not lines or "recording" not in lines[0] or any("recording" in line for line in lines[1:]):
        faults.append("the first line alone must have \"recording\"")
    if not faults:
        faults = [f"the schema does not notice {each}" for line in lines for each in unnoticed(validator, line)]
    print("\n".join(faults) or f"{len(lines)} lines fit their schema")
    return 1 if faults else 0


sys.exit(main())
