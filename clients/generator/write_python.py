"""Writes the generated modules of the Python client: protocol.py (enumerations, events, requests, commands), state.py.

    write_python.py docs/protocol.json docs/state.schema.json FOLDER

What does not depend on the protocol's contents is in the package's other modules, which the written ones import.
"""

import keyword
import sys
import textwrap
from pathlib import Path
from typing import Iterable, List, Optional

from names import snake, upper_snake
from protocol import (Answer, AnswerKind, Argument, Command, Enumeration, Event, Field, Member, Parameter, Protocol,
                      Record, Request, Type, is_result, load)

WIDTH = 120

PLAIN_TYPES = {
    Type.TEXT: "str",
    Type.NUMBER: "int",
    Type.FLAG: "bool",
    Type.TRUTH: "bool",
    Type.TRUE_WORD: "bool",
    Type.NUMBERS: "tuple[int, ...]",
    Type.TEXTS: "tuple[str, ...]",
    Type.BODY: "str",
}

# The method of Elements that reads an element without an enumeration.
READERS = {
    Type.TEXT: "text",
    Type.NUMBER: "number",
    Type.FLAG: "flag",
    Type.TRUTH: "truth",
    Type.NUMBERS: "numbers",
    Type.TEXTS: "texts",
}


def docstring(indent: int, *paragraphs: str) -> List[str]:
    """A docstring; empty paragraphs are left out. A paragraph that contains line ends is kept as it is."""
    margin = " " * indent
    blocks = []
    for paragraph in filter(None, paragraphs):
        lines = paragraph.split("\n") if "\n" in paragraph else textwrap.wrap(paragraph, WIDTH - indent - 6)
        blocks.append([(margin + line).rstrip().replace("\\", "\\\\") for line in lines])
    text = [line for block in blocks for line in [*block, ""]][:-1]
    text[0] = f'{margin}"""{text[0].strip()}'
    if len(text) == 1:
        return [text[0] + '"""']
    return [*text, f'{margin}"""']


def identifier(name: str) -> str:
    """A name of the protocol as a name of Python."""
    plain = snake(name)
    return plain + "_" if keyword.iskeyword(plain) else plain


def type_of(field: Field) -> str:
    return field.enumeration.name if field.enumeration else PLAIN_TYPES[field.type]


def quoted(text: str) -> str:
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def enumeration(each: Enumeration) -> List[str]:
    base = "NumberEnumeration" if each.is_numbers else "WordEnumeration"
    lines = [f"class {each.name}({base}):", *docstring(4, each.meaning), ""]
    for value in each.values:
        carried = str(value.number) if value.word is None else quoted(value.word)
        lines.append(f"    {upper_snake(value.name)} = {carried}, {quoted(value.name)}")
        lines += docstring(4, value.meaning)
    return lines


def members(fields: Iterable[Field]) -> List[str]:
    lines = []
    for field in fields:
        lines.append(f"    {identifier(field.tag)}: {type_of(field)}")
        lines += docstring(4, field.meaning)
    return lines


def reading(field: Field) -> str:
    """The expression that reads an element of a message."""
    if field.type is Type.BODY:
        return "elements.body()"
    if field.enumeration:
        return f'{field.enumeration.name}(elements.{READERS[field.type]}("{field.tag}"))'
    return f'elements.{READERS[field.type]}("{field.tag}")'


def event(each: Event) -> List[str]:
    sent = "" if each.sent_by == "this telephone" else "Sent by other telephones; this one never sends it."
    lines = ["@dataclass(frozen=True, kw_only=True)", f"class {each.type_name}(Event):",
             *docstring(4, each.meaning, each.when, sent), "", f'    METHOD = "{each.method}"']
    for constant, element in (("LINE", each.line), ("CALL", each.call)):
        if element:
            lines.append(f'    {constant} = "{identifier(element.tag)}"')
    lines += ["", *members(each.elements), ""] if each.elements else [""]
    lines += ["    @classmethod", "    def read(cls, stamp: Stamp, elements: Elements) -> Self:", "        return cls("]
    lines += [f"            {one}=stamp.{one}," for one in ("number", "time", "text")]
    lines += [f"            {identifier(field.tag)}={reading(field)}," for field in each.elements]
    return [*lines, "        )"]


def answer_type(each: Answer) -> List[str]:
    lines = ["@dataclass(frozen=True, kw_only=True)", f"class {each.type_name}:", *docstring(4, each.promises), ""]
    return [*lines, *members(each.values)]


def parameter(each: Parameter) -> str:
    if each.is_required:
        return f"{identifier(each.tag)}: {type_of(each)}"
    return f"{identifier(each.tag)}: {type_of(each)} | None = None"


def call(head: str, arguments: Iterable[str], tail: str) -> List[str]:
    """A call, or the head of a function. What is too long for a line gets a line for each argument."""
    arguments = list(arguments)
    line = f"{head}{', '.join(arguments)}{tail}"
    if len(line) <= WIDTH:
        return [line]
    margin = " " * (len(head) - len(head.lstrip()))
    return [head, *[f"{margin}    {each}," if each != "*" else f"{margin}    *," for each in arguments], margin + tail]


def signature(name: str, required: List[str], optional: List[str], result: str) -> List[str]:
    """The head of a method. What is optional is given by name."""
    arguments = ["self", *required, *(["*", *optional] if optional else [])]
    return call(f"    async def {name}(", arguments, f") -> {result}:")


def written(each: Parameter) -> str:
    name = identifier(each.tag)
    if each.type is Type.BODY:
        return f"body={name}"
    if each.type is Type.TRUE_WORD:
        absent = "" if each.is_required else f"None if {name} is None else "
        name = f'{absent}"TRUE" if {name} else "FALSE"'
    if each.always_written and not each.is_required:
        name = f'{name} or ""'
    return f'("{each.tag}", {name})'


def explained(each: Parameter) -> str:
    read_as = "empty" if each.missing == "" else str(each.missing).lower()
    missing = f" If left out: {read_as}" if each.need == "optional" else ""
    effect = f": {each.missing_effect}" if missing and each.missing_effect else ""
    text = f"{each.meaning}{missing}{effect}" + ("." if missing else "")
    return "\n".join(textwrap.wrap(f"{identifier(each.tag)}: {text}", WIDTH - 12, subsequent_indent="    "))


def result_of(answer: Answer) -> str:
    """The type that the method of a request returns."""
    if answer.kind in (AnswerKind.RESULT, AnswerKind.NOTHING, AnswerKind.FIXED_TEXT):
        return "None"
    if answer.kind is AnswerKind.TEXTS:
        return "str"
    if answer.kind is AnswerKind.ELEMENTS:
        return answer.type_name
    return type_of(answer.values[0])


def value_of(field: Field) -> str:
    """The expression that reads `value`."""
    if field.enumeration:
        return f"{field.enumeration.name}(value)"
    return "truth(value)" if field.type is Type.TRUTH else "value"


# How the method of a request ends, by the kind of its answer. `text` is the request.
ENDINGS = {
    AnswerKind.RESULT: ["await self._act(text)"],
    AnswerKind.NOTHING: ["await self._act_unanswered(text)"],
    AnswerKind.FIXED_TEXT: ["await self._act(text, success={form})"],
    AnswerKind.TEXTS: ["return await self._ask_text(text)"],
    AnswerKind.TRUTH: ["value = await self._ask_text(text)", "return {value}"],
    AnswerKind.RESULT_AND_VALUE: ["value = await self._ask_value(text)", "return {value}"],
}


def body_of(request: Request) -> List[str]:
    answer = request.answer
    parameters = [written(each) for each in request.parameters]
    lines = call("        text = request_text(", [f'"{request.name}"', *parameters], ")")
    if answer.kind is AnswerKind.ELEMENTS:
        return lines + elements_of(answer)
    value = value_of(answer.values[0]) if answer.values else ""
    return lines + ["        " + each.format(form=quoted(answer.form), value=value) for each in ENDINGS[answer.kind]]


def elements_of(answer: Answer) -> List[str]:
    lines = ["        elements, reasons = await self._ask_elements(text)"]
    for field in answer.elements:
        lines.append(f"        {'result' if is_result(field) else identifier(field.tag)} = {reading(field)}")
    lines.append("        self._require_success(text, result, reasons)")
    values = [f"{identifier(field.tag)}={identifier(field.tag)}" for field in answer.values]
    return lines + call(f"        return {answer.type_name}(", values, ")")


def request(each: Request) -> List[str]:
    required = [parameter(one) for one in each.parameters if one.is_required]
    optional = [parameter(one) for one in each.parameters if not one.is_required]
    answer = each.answer
    lines = signature(snake(each.name), required, optional, result_of(answer))
    lines += docstring(
        8,
        each.meaning,
        "\n".join(explained(one) for one in each.parameters),
        f"It promises: {answer.promises}",
        f"It does not promise: {answer.does_not_promise}" if answer.does_not_promise else "",
        f"Events: {', '.join(one.type_name for one in each.events)}." if each.events else "",
    )
    return lines + body_of(each)


def argument_name(each: Argument) -> str:
    return snake(each.label(keyword.iskeyword))


def argument_type(each: Argument) -> str:
    if not each.name:
        return "bool"
    if each.choices:
        return f"Literal[{', '.join(quoted(choice) for choice in each.choices)}]"
    return "str | int | float"


def argument(each: Argument) -> str:
    if not each.is_optional:
        return f"{argument_name(each)}: {argument_type(each)}"
    if not each.name:
        return f"{argument_name(each)}: bool = False"
    return f"{argument_name(each)}: {argument_type(each)} | None = None"


def command(each: Command) -> List[str]:
    positional = [argument(one) for one in each.positional]
    by_name = [argument(one) for one in each.by_name]
    groups = [f'("{one.keyword}", {argument_name(one)})' for one in each.arguments]
    lines = signature(identifier(each.name), positional, by_name, "str")
    lines += docstring(8, each.meaning, f"As typed: {each.name} {each.usage}".rstrip())
    return lines + call("        return await self._command(", [quoted(each.name), *groups], ")")


def state_type(each: Member) -> str:
    plain = {"text": "str", "integer": "int", "number": "float", "boolean": "bool"}
    name = each.enumeration.name if each.enumeration else plain.get(each.type, each.type)
    name = f"tuple[{name}, ...]" if each.is_list else name
    return f"{name} | None" if each.is_nullable else name


def state_reading(each: Member) -> str:
    value = f'json["{each.name}"]'
    item = "each" if each.is_list else value
    if each.enumeration:
        item = f"{each.enumeration.name}.named({item})" if each.type == "text" else f"{each.enumeration.name}({item})"
    elif each.type[0].isupper():
        item = f"{each.type}.read({item})"
    if each.is_list:
        return f"tuple({value})" if item == "each" else f"tuple({item} for each in {value})"
    return f"None if {value} is None else {item}" if each.is_nullable and item != value else item


def record(each: Record) -> List[str]:
    lines = ["@dataclass(frozen=True, kw_only=True)", f"class {each.name}:"]
    for member in each.members:
        lines.append(f"    {identifier(member.name)}: {state_type(member)}")
        is_told_by_type = member.enumeration is not None and member.meaning == member.enumeration.name
        if member.meaning and not is_told_by_type:
            meaning = member.meaning.replace("null", "None").rstrip(".")
            lines += docstring(4, f"{meaning[0].upper()}{meaning[1:]}.")
    lines += ["", "    @classmethod", "    def read(cls, json: Any) -> Self:", "        return cls("]
    lines += [f"            {identifier(member.name)}={state_reading(member)}," for member in each.members]
    return [*lines, "        )"]


def module(title: str, imports: List[str], *parts: Optional[List[str]]) -> str:
    origin = "Written by clients/generator/write_python.py from the description of the protocol."
    lines = [f'"""{title}', "", origin, '"""', "", *imports]
    for part in filter(None, parts):
        lines += ["", "", *part]
    return "\n".join(lines) + "\n"


def class_of(name: str, base: str, title: str, methods: Iterable[List[str]]) -> List[str]:
    lines = [f"class {name}({base}):", f'    """{title}"""']
    for method in methods:
        lines += ["", *method]
    return lines


def protocol_module(protocol: Protocol) -> str:
    imports = [
        "from dataclasses import dataclass",
        "from typing import Final, Literal, Mapping, Self",
        "",
        "from ._elements import Elements, Stamp, request_text, truth",
        "from ._enumerations import NumberEnumeration, WordEnumeration",
        "from ._messages import CommandSender, Event, RequestSender",
    ]
    answers = [each.answer for each in protocol.requests if each.answer.type_name]
    table = [f'    "{each.method}": {each.type_name},' for each in protocol.events]
    events = ["EVENTS: Final[Mapping[str, type[Event]]] = {", *table, "}", '"""The events by their method."""']
    requests = class_of("Requests", "RequestSender", "The requests of the telephone's service, each a method.",
                        [request(each) for each in protocol.requests])
    commands = class_of("Commands", "CommandSender",
                        "The telephone's own commands, each a method that returns the result as text.",
                        [command(each) for each in protocol.offered_commands])
    public = [*[each.name for each in protocol.enumerations], *[each.type_name for each in protocol.events], "EVENTS",
              *[each.type_name for each in answers], "Requests", "Commands"]
    names = ["__all__ = [", *[f'    "{each}",' for each in public], "]"]
    return module("The protocol: enumerations, events, requests and commands.", imports, names,
                  *[enumeration(each) for each in protocol.enumerations], *[event(each) for each in protocol.events],
                  events, *[answer_type(each) for each in answers], requests, commands)


def state_module(protocol: Protocol) -> str:
    used = sorted({member.enumeration.name for each in protocol.state for member in each.members if member.enumeration})
    imports = ["from dataclasses import dataclass", "from typing import Any, Self", "",
               f"from .protocol import {', '.join(used)}"]
    return module("The state of the telephone at one moment: State, and what it consists of.", imports,
                  *[record(each) for each in protocol.state])


def main() -> None:
    description, schema, folder = map(Path, sys.argv[1:])
    protocol = load(description, schema)
    (folder / "protocol.py").write_text(protocol_module(protocol), encoding="utf-8")
    (folder / "state.py").write_text(state_module(protocol), encoding="utf-8")


if __name__ == "__main__":
    main()
