"""The reader of the protocol's description, from which all clients are written."""

import json
import sys
from pathlib import Path

import pytest

PROJECT = Path(__file__).resolve().parents[3]
sys.path.insert(0, str(PROJECT / "clients/generator"))
import names
import protocol as generator

DESCRIPTION, STATE = PROJECT / "docs/protocol.json", PROJECT / "docs/state.schema.json"


@pytest.mark.parametrize("name, snake, lower_camel, upper_camel", [
    ("OutgoingCallMakeRequest", "outgoing_call_make_request", "outgoingCallMakeRequest", "OutgoingCallMakeRequest"),
    ("CallID", "call_id", "callID", "CallID"),
    ("GPUCLGName", "gpuclg_name", "gpuclgName", "GPUCLGName"),
    ("b2buaCSTAResponse", "b2bua_csta_response", "b2buaCSTAResponse", "B2buaCSTAResponse"),
    ("CallLineURIsRecorded", "call_line_uris_recorded", "callLineURIsRecorded", "CallLineURIsRecorded"),
    ("IsVideoCall", "is_video_call", "isVideoCall", "IsVideoCall"),
    ("call-back on no reply", "call_back_on_no_reply", "callBackOnNoReply", "CallBackOnNoReply"),
    ("state save", "state_save", "stateSave", "StateSave"),
])
def test_identifiers_follow_one_rule(name, snake, lower_camel, upper_camel):
    assert (names.snake(name), names.lower_camel(name), names.upper_camel(name)) == (snake, lower_camel, upper_camel)


@pytest.fixture
def loaded(tmp_path):
    """Loads a changed description."""

    def load(change):
        description = json.loads(DESCRIPTION.read_text())
        change(description)
        file = tmp_path / "protocol.json"
        file.write_text(json.dumps(description))
        return generator.load(file, STATE)

    return load


def test_what_the_description_says_is_there():
    read = generator.load(DESCRIPTION, STATE)
    assert [len(each) for each in (read.requests, read.events, read.enumerations, read.commands)] == [43, 28, 30, 48]
    hold = next(each for each in read.requests if each.name == "HoldCall")
    reason = hold.parameters[2]
    assert (reason.tag, reason.type, reason.enumeration.name, reason.is_required) == (
        "HoldCallReason", generator.Type.NUMBER, "Feature", False)
    assert [each.type_name for each in hold.events] == ["CallHeld", "FeatureFailed"]
    assert read.state[-1].name == "State"


def test_patterns_of_commands():
    commands = {each.name: each.arguments for each in generator.load(DESCRIPTION, STATE).commands}
    Argument = generator.Argument
    assert commands["call"] == (
        Argument("", "LINE", (), False, False), Argument("from", "NUMBER", (), False, False),
        Argument("name", "NAME", (), True, False))
    assert commands["plug"] == (
        Argument("", "headset|handset|line", ("headset", "handset", "line"), False, False),
        Argument("out", "", (), True, False))
    assert commands["say"] == (Argument("", "TEXT", (), True, True),)


def test_arguments_of_commands_have_an_order_and_labels():
    commands = {each.name: each for each in generator.load(DESCRIPTION, STATE).offered_commands}

    def labels(name, reserved=()):
        command = commands[name]
        return [[one.label(reserved.__contains__) for one in group] for group in (command.positional, command.by_name)]

    assert labels("call") == [["LINE", "from"], ["name"]]
    assert labels("call", reserved=("from",)) == [["LINE", "NUMBER"], ["name"]]
    assert labels("exchange") == [["NUMBER", "STEPS"], ["does"]]
    assert labels("exchange registrar") == [["choice", "VALUE"], []]
    assert commands["press"].meaning == "Presses a key, named by number, label or function."
    assert len(commands) == 43 and "strict" not in commands


@pytest.mark.parametrize("change, error", [
    (lambda each: each.update(format=2), "format 2; this program reads format 1"),
    (lambda each: each["events"][0]["elements"][0].update(kind="colour"), "LineID: unknown kind colour with form 'line id'"),
    (lambda each: each["requests"].append(each["requests"][0]), "requests: two names lead to outgoing_call_make_request"),
    (lambda each: each["events"][4].update(operation="callState"), "types: two names lead to CallState"),
    (lambda each: each["commands"][0].update(arguments="NAME from"), "help: from has no value"),
])
def test_what_the_loader_does_not_understand_is_an_error(loaded, change, error):
    with pytest.raises(ValueError, match=error):
        loaded(change)
