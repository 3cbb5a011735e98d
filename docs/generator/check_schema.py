#!/usr/bin/env python3
"""Checks the description of the protocol against its schema.

Usage: check_schema.py SCHEMA DESCRIPTION

Also checks what a schema cannot say: names that refer to other parts of the description. To prove that the check can
fail, the description is spoiled in several ways, each of which must be refused.
"""

import copy
import json
import sys

import jsonschema


def elements(description):
    """Every parameter and element, with the name of where it is."""
    for request in description["requests"]:
        for element in request["parameters"] + request["answer"]["elements"]:
            yield request["name"], element
    for event in description["events"]:
        for element in event["elements"]:
            yield event["operation"], element


def dangling_names(description):
    enumerations = {each["name"] for each in description["enumerations"]}
    sent = {each["method"] for each in description["events"] if "method" in each}
    for where, element in elements(description):
        if "enumeration" in element and element["enumeration"] not in enumerations:
            yield f"{where}: {element['tag']} has the unknown enumeration {element['enumeration']}"
    for request in description["requests"]:
        for event in request["events"]:
            if event not in sent:
                yield f"{request['name']} is followed by the unknown event {event}"


def spoil_number(description):
    for _, element in elements(description):
        if element["kind"] == "number":
            element.pop("enumeration", None)
            element.pop("form", None)
            return


def spoil_list(description):
    description["requests"] = []


def spoil_value(description):
    description["enumerations"][0]["values"][0]["word"] = "both a number and a word"


def spoil_member(description):
    description["events"][0]["surprise"] = True


def read(path):
    with open(path, encoding="utf-8") as file:
        return json.load(file)


def main():
    schema, description = read(sys.argv[1]), read(sys.argv[2])
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    faults = [f"{error.json_path}: {error.message}" for error in validator.iter_errors(description)]
    faults += dangling_names(description)
    for spoil in (spoil_number, spoil_list, spoil_value, spoil_member):
        spoiled = copy.deepcopy(description)
        spoil(spoiled)
        if validator.is_valid(spoiled):
            faults.append(f"the schema does not notice {spoil.__name__}")
    print("\n".join(faults) or "the description fits its schema")
    return 1 if faults else 0


sys.exit(main())
