"""The protocol as the writers of the clients see it: requests, answers, events, enumerations, commands, state.

`load` reads docs/protocol.json, whose form docs/protocol.schema.json describes, and docs/state.schema.json. What the
writers of all languages need to know is worked out here, once: of what type a value is, how a parameter is written, how
an answer is read, what the pattern of a command says, and the names of the types. Everything is immutable. What the
loader does not understand is a ValueError, so that a protocol that has grown cannot be translated wrongly in silence.
"""

import json
import re
from dataclasses import dataclass, replace
from enum import Enum
from pathlib import Path
from typing import Any, Callable, Dict, List, Optional, Tuple, Union

import names

# Commands of the connection, which the clients themselves send; another use would confuse them.
CONNECTION_COMMANDS = ("events", "events off", "reasons", "strict", "raw")


@dataclass(frozen=True)
class Value:
    """A value of an enumeration. Messages carry `number` or `word`, whichever is not None."""

    number: Optional[int]
    word: Optional[str]
    name: str  # as people say it: "remote ringing"
    meaning: str  # a sentence, as all meanings here


@dataclass(frozen=True)
class Enumeration:
    """A type with named values. Messages may carry values that it does not list."""

    name: str  # "CallState", UpperCamel
    meaning: str
    is_numbers: bool  # messages carry numbers; else words
    values: Tuple[Value, ...]


class Type(Enum):
    """What a value is, and how it is written in a message."""

    TEXT = "text"  # as it stands; with an enumeration: one of its words
    NUMBER = "number"  # decimal; with an enumeration: one of its numbers. In answers and events up to 32 bits unsigned
    FLAG = "flag"  # 1 or 0
    TRUTH = "truth"  # true or false
    TRUE_WORD = "TRUE"  # TRUE or FALSE
    NUMBERS = "numbers"  # a list of numbers with commas between them; empty: an empty list
    TEXTS = "texts"  # a list of texts with commas between them; "," and "\" in a text have a "\" before them
    BODY = "body"  # no element: everything behind the last element


@dataclass(frozen=True)
class Field:
    """A value with a tag: an element of an answer or an event."""

    tag: str
    type: Type
    enumeration: Optional[Enumeration]
    form: str  # what a value without an enumeration is, "call id"; may be empty
    meaning: str


@dataclass(frozen=True)
class Parameter(Field):
    """A parameter of a request."""

    need: str  # "required", "optional", "not used"
    missing: Union[str, int, bool]  # what the service reads if the element is left out
    missing_effect: str  # what it then does; may be empty
    wrong: str  # what a wrong value does; may be empty
    minimum: Optional[int]
    maximum: Optional[int]
    always_written: bool  # even if the caller gives no value: the body begins behind this element

    @property
    def is_required(self) -> bool:
        return self.need == "required"


class AnswerKind(Enum):
    """How an answer is read. Each answer but TRUTH and NOTHING may also be a bare word of Result: the failure."""

    RESULT = "result word"
    RESULT_AND_VALUE = "result word and value"  # "sfiSuccess,true"; the value is the only element
    TEXTS = "texts"  # one text
    TRUTH = "truth"  # "true" or "false"; the value is the only element
    ELEMENTS = "elements"  # one of the elements is a Result
    FIXED_TEXT = "fixed text"  # `form`, whatever happened
    NOTHING = "nothing"  # there is none


@dataclass(frozen=True)
class Answer:
    kind: AnswerKind
    form: str  # the text, unless it is a result word; may be empty
    elements: Tuple[Field, ...]
    type_name: str  # name for a type of the elements: "ForwardingConfiguration"; empty unless the kind is ELEMENTS
    promises: str
    does_not_promise: str  # may be empty

    @property
    def values(self) -> Tuple[Field, ...]:
        """The elements that tell something besides success: those that are not a Result."""
        return tuple(each for each in self.elements if not is_result(each))


@dataclass(frozen=True)
class Event:
    """An event that is delivered."""

    operation: str  # "callHeld"
    method: str  # "CallHeldEvent": the value of the element Method
    type_name: str  # "CallHeld": the operation in UpperCamel, without "Event" at its end
    name: str  # what happened, in words: "held"
    sent_by: str  # "this telephone", "other telephones"
    meaning: str
    when: str
    elements: Tuple[Field, ...]  # in the order in which they are sent

    @property
    def line(self) -> Optional[Field]:
        """The element that names the line; None if there is none."""
        return next((each for each in self.elements if each.form == "line id"), None)

    @property
    def call(self) -> Optional[Field]:
        """The element that names the call; None if there is none."""
        return next((each for each in self.elements if each.form == "call id"), None)


@dataclass(frozen=True)
class Request:
    name: str  # "HoldCall": the value of the element Method
    meaning: str
    parameters: Tuple[Parameter, ...]  # in the order in which they are written
    what_counts: str
    answer: Answer
    events: Tuple[Event, ...]  # those that may follow
    sample: str  # a complete request


@dataclass(frozen=True)
class Argument:
    """A group of the arguments of a command: a word, and the value behind it."""

    keyword: str  # "from" of "from NUMBER"; empty: none
    name: str  # "NUMBER"; empty: the keyword alone; the choices joined with "|" if the value has no other name
    choices: Tuple[str, ...]  # words that the value is one of; empty: any
    is_optional: bool
    takes_rest: bool  # the value is the rest of the line: one word or several

    def label(self, is_reserved: Callable[[str], bool]) -> str:
        """What a function calls it: the word before it, unless the language reserves that; else its value's name."""
        if self.keyword and not is_reserved(self.keyword):
            return self.keyword
        return "choice" if self.choices else self.name


@dataclass(frozen=True)
class Command:
    name: str  # one word or two: "state save"
    arguments: Tuple[Argument, ...]
    usage: str  # "LINE from NUMBER [name NAME]"
    help: str

    @property
    def meaning(self) -> str:
        """The help as a sentence."""
        return self.help[0].upper() + self.help[1:] + ("" if self.help.endswith(".") else ".")

    @property
    def positional(self) -> Tuple[Argument, ...]:
        """Those that a function takes by their position: the required ones, then those without a word before them."""
        return (*(one for one in self.arguments if not one.is_optional),
                *(one for one in self.arguments if one.is_optional and not one.keyword))

    @property
    def by_name(self) -> Tuple[Argument, ...]:
        """The others. A language without arguments by name takes them last."""
        return tuple(one for one in self.arguments if one.is_optional and one.keyword)


@dataclass(frozen=True)
class Member:
    """A member of a record of the state."""

    name: str  # "held_by_far_end": snake case, as in the JSON
    type: str  # "text", "integer", "number", "boolean", or the name of a record
    enumeration: Optional[Enumeration]  # of a text: it is the name of a value; of an integer: the number of one
    is_list: bool
    is_nullable: bool
    meaning: str  # may be empty; not always a sentence


@dataclass(frozen=True)
class Record:
    """An object of the state's JSON."""

    name: str  # UpperCamel: "State" for the whole, else the name in the schema
    members: Tuple[Member, ...]


@dataclass(frozen=True)
class Protocol:
    version: str  # of the telephone: "1.1.0"
    requests: Tuple[Request, ...]
    events: Tuple[Event, ...]
    enumerations: Tuple[Enumeration, ...]
    commands: Tuple[Command, ...]
    state: Tuple[Record, ...]  # a record comes after those that it uses; "State" is the last

    @property
    def offered_commands(self) -> Tuple[Command, ...]:
        """Those that a client offers."""
        return tuple(each for each in self.commands if each.name not in CONNECTION_COMMANDS)


def is_result(field: Field) -> bool:
    """Whether the value says how the request ended."""
    return field.enumeration is not None and field.enumeration.name == "Result"


def load(protocol: Path, state_schema: Path) -> Protocol:
    """Reads docs/protocol.json and docs/state.schema.json."""
    document = json.loads(protocol.read_text(encoding="utf-8"))
    if document["format"] != 1:
        raise ValueError(f"{protocol} has format {document['format']}; this program reads format 1")
    enumerations = {each["name"]: _enumeration(each) for each in document["enumerations"]}
    events = {each["method"]: _event(each, enumerations) for each in document["events"] if "method" in each}
    requests = tuple(_request(each, enumerations, events) for each in document["requests"])
    commands = tuple(_command(each) for each in document["commands"])
    state = _records(json.loads(state_schema.read_text(encoding="utf-8")), enumerations)
    loaded = Protocol(document["telephone"], requests, tuple(events.values()), tuple(enumerations.values()), commands,
                      state)
    _require_distinct_names(loaded)
    return loaded


def _enumeration(json_: Dict[str, Any]) -> Enumeration:
    values = tuple(Value(each.get("number"), each.get("word"), each["name"], each["meaning"])
                   for each in json_["values"])
    return Enumeration(json_["name"], json_["meaning"], json_["carries"] == "numbers", values)


# The type of a value that has no enumeration, by its kind and, where the kind alone does not say it, by its form.
_TYPES = {
    "text": Type.TEXT,
    "number": Type.NUMBER,
    "flag": Type.FLAG,
    "body": Type.BODY,
    "text, true or false": Type.TRUTH,
    "word, TRUE or anything else": Type.TRUE_WORD,
    "list, list of call ids": Type.NUMBERS,
    "list, list of line ids": Type.TEXTS,
}


def _type(json_: Dict[str, Any]) -> Type:
    kind, form = json_["kind"], json_.get("form", "")
    if "enumeration" in json_ and kind in ("number", "text", "word"):
        return Type.NUMBER if kind == "number" else Type.TEXT
    found = _TYPES.get(f"{kind}, {form}") or _TYPES.get(kind)
    if found is None:
        raise ValueError(f"{json_['tag']}: unknown kind {kind} with form {form!r}")
    return found


def _field(json_: Dict[str, Any], enumerations: Dict[str, Enumeration]) -> Field:
    enumeration = enumerations[json_["enumeration"]] if "enumeration" in json_ else None
    return Field(json_["tag"], _type(json_), enumeration, json_.get("form", ""), json_["meaning"])


def _event(json_: Dict[str, Any], enumerations: Dict[str, Enumeration]) -> Event:
    elements = tuple(_field(each, enumerations) for each in json_["elements"])
    type_name = names.upper_camel(re.sub("Event$", "", json_["operation"]))
    return Event(json_["operation"], json_["method"], type_name, json_["name"], json_["sent_by"], json_["meaning"],
                 json_["when"], elements)


def _parameter(json_: Dict[str, Any], enumerations: Dict[str, Enumeration], has_body: bool) -> Parameter:
    field, missing = _field(json_, enumerations), json_["missing"]
    return Parameter(field.tag, field.type, field.enumeration, field.form, field.meaning, json_["need"],
                     missing["value"], missing.get("effect", ""), json_.get("wrong", ""), json_.get("minimum"),
                     json_.get("maximum"), always_written=has_body and field.tag == "Line")


def _answer(json_: Dict[str, Any], request: str, enumerations: Dict[str, Enumeration]) -> Answer:
    kind = AnswerKind(json_["kind"])
    elements = tuple(_field(each, enumerations) for each in json_["elements"])
    has_elements = kind is AnswerKind.ELEMENTS
    type_name = names.upper_camel(re.sub("^[Gg]et", "", request)) if has_elements else ""
    if has_elements and not any(is_result(each) for each in elements):
        raise ValueError(f"{request}: no element of the answer is a Result")
    return Answer(kind, json_.get("form", ""), elements, type_name, json_["promises"],
                  json_.get("does_not_promise", ""))


def _request(json_: Dict[str, Any], enumerations: Dict[str, Enumeration], events: Dict[str, Event]) -> Request:
    has_body = any(each["kind"] == "body" for each in json_["parameters"])
    parameters = tuple(_parameter(each, enumerations, has_body) for each in json_["parameters"])
    answer = _answer(json_["answer"], json_["name"], enumerations)
    return Request(json_["name"], json_["meaning"], parameters, json_["what_counts"], answer,
                   tuple(events[each] for each in json_["events"]), json_["sample"])


_GROUP = re.compile(r"\[([^\]]*)\]|(\S+)")


def _command(json_: Dict[str, str]) -> Command:
    arguments: List[Argument] = []
    keyword = ""
    for match in _GROUP.finditer(json_["arguments"]):
        optional, word = match.groups()
        if optional is not None:
            *keywords, value = optional.split(" ") if " " in optional or not optional.islower() else (optional, "")
            arguments.append(_argument(" ".join(keywords), value, is_optional=True))
        elif word.islower() and "|" not in word:
            keyword = word
        else:
            arguments.append(_argument(keyword, word, is_optional=False))
            keyword = ""
    if keyword:
        raise ValueError(f"{json_['name']}: {keyword} has no value")
    return Command(json_["name"], tuple(arguments), json_["arguments"], json_["help"])


def _argument(keyword: str, value: str, is_optional: bool) -> Argument:
    name = value[:-3] if value.endswith("...") else value
    choices = tuple(name.split("|")) if "|" in name else ()
    return Argument(keyword, name, choices, is_optional, takes_rest=value.endswith("..."))


class _StateSchema:
    """Collects the records of the state's schema, which uses few of the words of JSON Schema."""

    _PLAIN = {"string": "text", "integer": "integer", "number": "number", "boolean": "boolean"}

    def __init__(self, schema: Dict[str, Any], enumerations: Dict[str, Enumeration]) -> None:
        self._definitions = schema["$defs"]
        self._enumerations = enumerations
        self.records: Dict[str, Record] = {}

    def add_record(self, name: str, json_: Dict[str, Any]) -> None:
        members = tuple(self._member(each, value) for each, value in json_["properties"].items())
        self.records.setdefault(names.upper_camel(name), Record(names.upper_camel(name), members))

    def _member(self, name: str, json_: Dict[str, Any]) -> Member:
        if "oneOf" in json_:  # null, or something else
            return replace(self._member(name, {**json_["oneOf"][1], **_description(json_)}), is_nullable=True)
        if "$ref" in json_:
            return self._reference(name, json_)
        meaning = json_.get("description", "")
        if "enum" in json_:
            return Member(name, "text", self._named_in(meaning), False, False, meaning)
        kinds = json_["type"] if isinstance(json_["type"], list) else [json_["type"]]
        kind = next(each for each in kinds if each != "null")
        if kind == "array":
            return replace(self._member(name, json_["items"]), is_list=True, meaning=meaning)
        if kind == "object":
            self.add_record(name, json_)
            return Member(name, names.upper_camel(name), None, False, False, meaning)
        return Member(name, self._PLAIN[kind], self._named_in(meaning), False, "null" in kinds, meaning)

    def _reference(self, name: str, json_: Dict[str, Any]) -> Member:
        target = json_["$ref"].rsplit("/", 1)[1]
        definition = self._definitions[target]
        if definition.get("type") != "object":
            return self._member(name, {**definition, **_description(json_)})
        self.add_record(target, definition)
        meaning = json_.get("description", definition.get("description", ""))
        return Member(name, names.upper_camel(target), None, False, False, meaning)

    def _named_in(self, meaning: str) -> Optional[Enumeration]:
        """The enumeration that a description begins with."""
        return self._enumerations.get(re.split(r"\W", meaning, maxsplit=1)[0])


def _description(json_: Dict[str, Any]) -> Dict[str, Any]:
    return {"description": json_["description"]} if "description" in json_ else {}


def _records(schema: Dict[str, Any], enumerations: Dict[str, Enumeration]) -> Tuple[Record, ...]:
    reader = _StateSchema(schema, enumerations)
    reader.add_record("state", schema)
    return tuple(reader.records.values())


def _require_distinct_names(protocol: Protocol) -> None:
    names.require_distinct([each.name for each in protocol.enumerations] + [each.type_name for each in protocol.events]
                           + [each.answer.type_name for each in protocol.requests if each.answer.type_name], "types")
    names.require_distinct([names.snake(each.name) for each in protocol.requests], "requests")
    names.require_distinct([names.snake(each.name) for each in protocol.commands], "commands")
    for enumeration in protocol.enumerations:
        names.require_distinct([names.snake(each.name) for each in enumeration.values], enumeration.name)
    for request in protocol.requests:
        names.require_distinct([names.snake(each.tag) for each in request.parameters], request.name)
    for event in protocol.events:
        names.require_distinct([names.snake(each.tag) for each in event.elements], event.method)
