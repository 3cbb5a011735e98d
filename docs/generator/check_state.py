#!/usr/bin/env python3
"""Checks states of the telephone, one JSON object a line on standard input, against their schema.

Usage: check_state.py SCHEMA

To prove that the check can fail, each state is spoiled: without any one of its members, or with one more, it must be
refused.
"""

import json
import sys

import jsonschema


def objects(value):
    """The value and everything in it that has members."""
    if isinstance(value, dict):
        yield value
        value = list(value.values())
    if isinstance(value, list):
        for each in value:
            yield from objects(each)


def unnoticed(validator, state):
    """What the schema lets pass of a spoiled state."""
    for each in objects(state):
        each["surprise"] = True
        if validator.is_valid(state):
            yield f"a new member beside {', '.join(each)}"
        del each["surprise"]
        for name in list(each):
            members = dict(each)
            del each[name]
            if validator.is_valid(state):
                yield f"the missing member {name}"
            each.update(members)


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        schema = json.load(file)
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    states = [json.loads(line) for line in sys.stdin]
    faults = [f"{error.json_path}: {error.message}" for state in states for error in validator.iter_errors(state)]
    if not states:
        faults.append("there is no state to check")
    elif not faults:
        faults = [f"the schema does not notice {each}" for each in unnoticed(validator, states[-1])]
    print("\n".join(faults) or f"{len(states)} states fit their schema")
    return 1 if faults else 0


sys.exit(main())
