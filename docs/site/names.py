#!/usr/bin/env python3
"""Prints where each name of the protocol is described, one "NAME PAGE" a line: names.py PROTOCOL.JSON"""
import json
import sys

with open(sys.argv[1], encoding="utf-8") as file:
    protocol = json.load(file)
for request in protocol["requests"]:
    print(request["name"], f"docs/requests.html#{request['name'].lower()}")
for event in protocol["events"]:
    for name in {event["operation"], event.get("method", event["operation"])}:
        print(name, f"docs/events.html#{event['operation'].lower()}")
for enumeration in protocol["enumerations"]:
    print(enumeration["name"], f"docs/enumerations.html#{enumeration['name'].lower()}")
