"""The client and the texts of tests/golden: it writes the requests, and reads the answers and events."""

import asyncio
import dataclasses
import json
import re
import sys
import typing
from datetime import datetime, timezone
from enum import Enum
from pathlib import Path

import pytest

from telephone_client import ProtocolError, Reply, RequestRefused, ServiceState, protocol
from telephone_client._feed import read_event

PROJECT = Path(__file__).resolve().parents[3]
sys.path.insert(0, str(PROJECT / "clients/generator"))
from names import snake  # the rule for identifiers: only to find the method and the argument

# Requests that are wrong on purpose: no client writes them.
NOT_WRITTEN = {
    ("OutgoingCallMakeRequest", "last flag alone"),
    ("SetServiceState", "a word in lower case"),
    ("SetServiceState", "no closing tag"),
    ("setIsInServiceInitiatedState", "failure"),
    ("setIsInServiceInitiatedState", "a number in place of the word"),
    ("callbackDOFeatureCallID", "failure"),
}
# The service states as the operation of the service has them.
SERVICE_STATES = [ServiceState.IN_SERVICE, ServiceState.OUT_OF_SERVICE, ServiceState.DO_NOT_DISTURB]
SUCCESS = 5
DESCRIBED = {each["operation"]: each for each in json.loads((PROJECT / "docs/protocol.json").read_text())["events"]}


def golden(name):
    return json.loads((PROJECT / "tests/golden" / name).read_text(encoding="utf-8"))


def exchanges():
    return [pytest.param(each["method"], one, id=f"{each['method']}, {one['case']}")
            for each in golden("requests.json") for one in each["exchanges"]]


class Recorder(protocol.Requests):
    """In the place of a telephone: takes one request, and answers as told."""

    def __init__(self, answer):
        self.answer = answer
        self.request = None

    async def send_request(self, text, *, changes=True):
        self.request = text
        return Reply(self.answer)


def arguments_of(method, exchange):
    """The arguments with which the client writes a request; None if it cannot write it."""
    hints = typing.get_type_hints(method)
    text = re.sub("</Line>.*", "</Line>", exchange["request"], flags=re.S) if "body" in hints else exchange["request"]
    tags = re.findall(r"<(\w+)>.*?</\1>", text, re.S)[1:]  # without Method
    if "body" in hints and "Line" in tags:
        tags.append("body")
    names = [snake(tag) for tag in tags]
    required = [name for name, each in method.__kwdefaults__.items()] if method.__kwdefaults__ else []
    required = [name for name in hints if name not in required and name != "return"]
    if set(required) - set(names) or set(names) - set(hints):
        return None
    values = exchange["call"][1:]
    if len(values) != len(names):  # elements were left out: those that are there come first
        values = values[: len(names)]
    return {name: typed(hints[name], value) for name, value in zip(names, values)}


def typed(hint, value):
    kinds = [each for each in (hint, *typing.get_args(hint)) if isinstance(each, type) and issubclass(each, Enum)]
    kind = kinds[0] if kinds else None
    if kind is ServiceState:
        return SERVICE_STATES[value]
    return kind(value) if kind else value


def send(method, exchange):
    """Sends a request to a recorder that answers as the exchange says. Any arguments will do where none are known."""
    recorder = Recorder(exchange["answer"])
    function = getattr(protocol.Requests, snake(method))
    arguments = arguments_of(function, exchange)
    if arguments is None:
        hints = {name: each for name, each in typing.get_type_hints(function).items() if name != "return"}
        optional = function.__kwdefaults__ or {}
        required = {name: each for name, each in hints.items() if name not in optional}
        arguments = {name: typed(each, "x" if issubclass(each, str) and each is not ServiceState else 0)
                     for name, each in required.items()}
    try:
        return recorder, asyncio.run(function(recorder, **arguments))
    except (RequestRefused, ProtocolError) as error:
        return recorder, error


def is_written(method, exchange):
    function = getattr(protocol.Requests, snake(method))
    return (method, exchange["case"]) not in NOT_WRITTEN and arguments_of(function, exchange) is not None


WRITTEN = [each for each in exchanges() if is_written(*each.values)]


@pytest.mark.parametrize("method, exchange", WRITTEN)
def test_a_request_is_written_as_the_service_reads_it(method, exchange):
    recorder, _ = send(method, exchange)
    assert recorder.request == exchange["request"]


def test_most_requests_can_be_written():
    assert (len(WRITTEN), len(exchanges())) == (104, 145)  # the others lack a required parameter, or are wrong


@pytest.mark.parametrize("method, exchange", exchanges())
def test_an_answer_is_read_as_the_service_means_it(method, exchange):
    _, value = send(method, exchange)
    if exchange["answer"] == "sfiSuccess" and "outputs" in exchange:  # a state that has no word
        assert isinstance(value, ProtocolError)
    elif method == "getManualHoldIndication":
        assert value is bool(exchange["result"])
    elif exchange["answer"] in (None, "UACSTA message is sent."):  # it does not tell
        assert value is None
    elif exchange["result"] != SUCCESS or exchange["answer"] == "sfiFailure":
        assert isinstance(value, RequestRefused)
        refused = value.answer
        assert refused == (exchange["answer"] if "<" not in exchange["answer"] else "sfiFailure")
    elif method == "GetServiceState":
        assert value is SERVICE_STATES[exchange["outputs"][0]]
    elif method == "GetDevices":
        assert value == "".join(exchange["outputs"])
    elif dataclasses.is_dataclass(value):
        assert list(dataclasses.astuple(value)) == exchange["outputs"]
    else:
        assert value == (exchange["outputs"][0] if "outputs" in exchange else None)


def flat(arguments):
    """The arguments of an event as its elements have them: pairs and parties take up several, lists one."""
    for each in arguments:
        if isinstance(each, dict):
            yield from each.values()
        elif isinstance(each, list) and len(each) == 2 and all(isinstance(one, int) for one in each):
            yield from each
        else:
            yield each


def events():
    return [pytest.param(each["operation"], one, id=f"{each['operation']}, {one['case']}")
            for each in golden("events.json") for one in each["events"] if one["message"] is not None]


@pytest.mark.parametrize("operation, event", events())
def test_an_event_is_read_as_the_service_sent_it(operation, event):
    message, arguments = event["message"], event["arguments"]
    if operation == "securityStatusChanged":  # lists as this telephone writes them, and not flat
        message = re.sub(r"(Recorded>)\[(.*?)\](</Call)", r"\1\2\3", message)
        expected = [*arguments[:3], tuple(arguments[3]), tuple(arguments[4])]
    else:
        expected = list(flat(arguments))
    moment = datetime(2026, 1, 2, tzinfo=timezone.utc)
    read = read_event(7, moment, message)
    tags = [each["tag"] for each in DESCRIBED[operation]["elements"]]
    expected = [as_any_reader_sees_it(tag, each, message) for tag, each in zip(tags, expected, strict=True)]
    own = [field.name for field in dataclasses.fields(read)][3:]
    assert [getattr(read, name) for name in own] == expected
    assert (read.number, read.time, read.text) == (7, moment, message)


def as_any_reader_sees_it(tag, value, message):
    """No reader can tell where a value ends that contains its own closing tag. Some events cut their line at a NUL."""
    if value == ("</CallLineURIsRecorded>",):
        return ()
    if tag == "LineID" and "<LineID>47</LineID>" in message:
        return "47"
    return value.split(f"</{tag}>")[0] if isinstance(value, str) else value


def test_an_event_of_a_later_version_is_unknown_and_not_lost():
    read = read_event(7, datetime(2026, 1, 2, tzinfo=timezone.utc), "<Method>NewEvent</Method><A>1</A>")
    assert type(read).__name__ == "UnknownEvent"
    assert read.text == "<Method>NewEvent</Method><A>1</A>"
