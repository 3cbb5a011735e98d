"""Writes the C++ client, TelephoneClient.h and TelephoneClient.cpp, from the templates in clients/cpp.

    write_cpp.py docs/protocol.json docs/state.schema.json FOLDER

What does not depend on the protocol's contents is in the templates. A comment // @PLACE@ in them is replaced here.
"""

import re
import sys
import textwrap
from pathlib import Path
from typing import Dict, Iterable, List

from names import lower_camel, require_distinct, upper_camel
from protocol import (Answer, AnswerKind, Argument, Command, Enumeration, Event, Field, Member, Parameter, Protocol,
                      Record, Request, Type, Value, is_result, load)

WIDTH = 120
TEMPLATES = Path(__file__).resolve().parent.parent / "cpp"
KEYWORDS = {"default", "delete", "new", "private", "public", "register", "switch", "this", "union"}

# How a value without an enumeration is declared: as a member, and as a parameter of a function.
MEMBER_TYPES = {
    Type.TEXT: "std::string",
    Type.NUMBER: "std::int64_t",
    Type.FLAG: "bool",
    Type.TRUTH: "bool",
    Type.TRUE_WORD: "bool",
    Type.NUMBERS: "std::vector<std::int64_t>",
    Type.TEXTS: "std::vector<std::string>",
    Type.BODY: "std::string",
}
STATE_TYPES = {"text": "std::string", "integer": "std::int64_t", "number": "double", "boolean": "bool"}
INITIALIZERS = {"std::int64_t": " = 0", "bool": " = false", "double": " = 0"}


def identifier(name: str) -> str:
    plain = lower_camel(name)
    return plain + "_" if plain in KEYWORDS else plain


def quoted(text: str) -> str:
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def comment(text: str, indent: int = 0) -> List[str]:
    margin = " " * indent + "// "
    return textwrap.wrap(text, WIDTH, initial_indent=margin, subsequent_indent=margin) if text else []


def sentence(text: str) -> str:
    """A description of a member of the state, some of which are not sentences. What is null there is empty here."""
    text = re.sub(r"\bnull\b", "empty", text)
    return text[0].upper() + text[1:].rstrip(".") + "." if text else ""


def block(head: str, lines: Iterable[str], tail: str) -> List[str]:
    return [head, *("    " + line if line else line for line in lines), tail]


# ---- Enumerations ----

def constant(name: str) -> str:
    return "k" + upper_camel(name)


def enumeration(each: Enumeration) -> List[str]:
    lines = []
    for value in each.values:
        written = (f"{constant(value.name)} = {value.number}," if each.is_numbers
                   else f"static constexpr char const* {constant(value.name)} = {quoted(value.word or '')};")
        lines += [*comment(value.meaning), written]
    if each.is_numbers:
        declared = block(f"enum class {each.name} : std::int64_t\n{{", lines, "};")
    else:
        declared = block(f"struct {each.name} : Word\n{{", ["using Word::Word;", *lines], "};")
    return [*comment(each.meaning), *declared, f"std::string_view name({passed(each)} value);", ""]


def passed(each: Enumeration) -> str:
    return each.name if each.is_numbers else f"{each.name} const&"


def enumeration_table(each: Enumeration) -> List[str]:
    rows = [f"{{{value.number or 0}, {quoted(value.word or '')}, {quoted(value.name)}}}," for value in each.values]
    table = f"k{each.name}Values"
    return [*block(f"constexpr std::array<Listed, {len(rows)}> {table}{{{{", rows, "}};"),
            f"[[maybe_unused]] constexpr auto const& valuesOf({passed(each)} /*kind*/)", "{", f"    return {table};", "}", ""]


def name_function(each: Enumeration) -> List[str]:
    value = "static_cast<std::int64_t>(value)" if each.is_numbers else "value"
    return [f"std::string_view name({passed(each)} value)", "{", f"    return nameOf(k{each.name}Values, {value});", "}", ""]


# ---- Records: events, answers, the state ----

def type_of(field: Field) -> str:
    return field.enumeration.name if field.enumeration else MEMBER_TYPES[field.type]


def initializer(type_name: str, field_enumeration: object) -> str:
    is_number = isinstance(field_enumeration, Enumeration) and field_enumeration.is_numbers
    return "{}" if is_number and not type_name.startswith("std::") else INITIALIZERS.get(type_name, "")


def visitor(names: List[str]) -> List[str]:
    """The function fields(), which takes the calls that it makes."""
    arguments = "Record& record, Visitor&& visit" if names else "Record& /*record*/, Visitor&& /*visit*/"
    return block(f"template <typename Record, typename Visitor>\nstatic void fields({arguments})\n{{".replace("\n", "\n    "),
                 names, "}")


def members(fields: Iterable[Field]) -> List[str]:
    lines = []
    for field in fields:
        name = type_of(field)
        lines += [*comment(field.meaning), f"{name} {identifier(field.tag)}{initializer(name, field.enumeration)};"]
    return lines


def calls_of_fields(fields: Iterable[Field]) -> List[str]:
    return [f"visit({quoted('' if each.type is Type.BODY else each.tag)}, record.{identifier(each.tag)});" for each in fields]


def event(each: Event) -> List[str]:
    sent = "" if each.sent_by == "this telephone" else " Sent by other telephones; this one never sends it."
    lines = [f"static constexpr char const* kMethod = {quoted(each.method)};", *members(each.elements), "",
             *visitor(calls_of_fields(each.elements))]
    return [*comment(f"{each.meaning} {each.when}{sent}"), *block(f"struct {each.type_name}\n{{", lines, "};"), ""]


def any_event(events: Iterable[Event]) -> str:
    kinds = ", ".join(["UnknownEvent", "Gap", *(one.type_name for one in events)])
    return "\n".join(textwrap.wrap(f"using AnyEvent = std::variant<{kinds}>;", WIDTH, subsequent_indent="    ")) + "\n"


def answer_type(each: Answer) -> List[str]:
    lines = [*members(each.values), "", *visitor(calls_of_fields(each.values))]
    return [*comment(each.promises), *block(f"struct {each.type_name}\n{{", lines, "};"), ""]


def state_type(each: Member) -> str:
    name = each.enumeration.name if each.enumeration else STATE_TYPES.get(each.type, each.type)
    name = f"std::vector<{name}>" if each.is_list else name
    return f"std::optional<{name}>" if each.is_nullable else name


def record(each: Record) -> List[str]:
    lines = []
    for member in each.members:
        name = state_type(member)
        lines += [*comment(sentence(member.meaning)), f"{name} {identifier(member.name)}{initializer(name, member.enumeration)};"]
    calls = [f"visit({quoted(member.name)}, record.{identifier(member.name)});" for member in each.members]
    return [*block(f"struct {each.name}\n{{", [*lines, "", *visitor(calls)], "};"), ""]


# ---- Requests ----

def result_of(answer: Answer) -> str:
    if answer.kind in (AnswerKind.RESULT, AnswerKind.NOTHING, AnswerKind.FIXED_TEXT):
        return "Nothing"
    if answer.kind is AnswerKind.TEXTS:
        return "std::string"
    if answer.kind is AnswerKind.ELEMENTS:
        return answer.type_name
    return type_of(answer.values[0])


def parameter(each: Parameter, with_default: bool) -> str:
    name, default = type_of(each), ""
    if not each.is_required:
        name, default = f"std::optional<{name}>", " = {}" if with_default else ""
    by_value = each.is_required and (each.type in (Type.FLAG, Type.TRUE_WORD)
                                     or each.type is Type.NUMBER)
    return f"{name}{'' if by_value else ' const&'} {identifier(each.tag)}{default}"


def signature(each: Request, with_defaults: bool) -> List[str]:
    """Those that may be left out come last."""
    ordered = sorted(each.parameters, key=lambda one: not one.is_required)
    parameters = [parameter(one, with_defaults) for one in ordered]
    return function(f"Request<{result_of(each.answer)}> {lower_camel(each.name)}(", parameters, with_defaults)


def function(head: str, parameters: List[str], is_declaration: bool) -> List[str]:
    """The head of a function. What is too long for a line gets a line for each parameter."""
    tail = ");" if is_declaration else ")"
    line = f"{head}{', '.join(parameters)}{tail}"
    if len(line) <= WIDTH:
        return [line]
    return [head, *(f"    {one}," for one in parameters[:-1]), f"    {parameters[-1]}{tail}"]


def explained(each: Parameter) -> str:
    missing = "" if each.is_required else f" If left out: {str(each.missing).lower() if each.missing != '' else 'empty'}"
    effect = f": {each.missing_effect}" if missing and each.missing_effect else ""
    return f"{identifier(each.tag)}: {each.meaning}{missing}{effect}" + ("." if missing else "")


def request_declaration(each: Request) -> List[str]:
    lines = comment(each.meaning)
    for one in each.parameters:
        lines += comment(explained(one))
    lines += comment(f"It promises: {each.answer.promises}")
    if each.answer.does_not_promise:
        lines += comment(f"It does not promise: {each.answer.does_not_promise}")
    if each.events:
        lines += comment(f"Events: {', '.join(one.type_name for one in each.events)}.")
    return [*lines, *signature(each, True), ""]


def written(each: Parameter) -> str:
    name = identifier(each.tag)
    if each.type is Type.BODY:
        return f".body({name})"
    if each.type is Type.TRUE_WORD:
        name = f'std::string({name} ? "TRUE" : "FALSE")'
    if each.always_written and not each.is_required:
        name = f"{name}.value_or(std::string())"
    return f'.element("{each.tag}", {name})'


def reader(answer: Answer) -> str:
    """The function that reads the answer."""
    if answer.kind is AnswerKind.FIXED_TEXT:
        return f"[](Reply const& reply) {{ return readAction(reply, {quoted(answer.form)}); }}"
    if answer.kind is AnswerKind.ELEMENTS:
        first, last = answer.elements[0], answer.elements[-1]
        if not (is_result(first) or is_result(last)):
            raise ValueError(f"{answer.type_name}: its Result is neither the first element nor the last one")
        tag, is_first = (first.tag, "true") if is_result(first) else (last.tag, "false")
        call = f"readElements<{answer.type_name}>(reply, {quoted(tag)}, {is_first})"
        return f"[](Reply const& reply) {{ return {call}; }}"
    return {
        AnswerKind.RESULT: "readResult",
        AnswerKind.NOTHING: "readNothing",
        AnswerKind.TEXTS: "readText",
        AnswerKind.TRUTH: "readBare<bool>",
        AnswerKind.RESULT_AND_VALUE: f"readBehindResult<{result_of(answer)}>",
    }[answer.kind]


def request_definition(each: Request) -> List[str]:
    writing = [f"            {written(one)}" for one in each.parameters]
    return [*signature(each, False), "{", f"    return {{RequestWriter({quoted(each.name)})", *writing,
            "            .text(),", f"            {reader(each.answer)}}};", "}", ""]


# ---- Commands ----

def choices(commands: Iterable[Command]) -> List[Enumeration]:
    """An enumeration for each command with a choice of words: Hook for hook up|down. Its numbers are never sent."""
    found = [Enumeration(upper_camel(each.name), f"The words that the command {each.name} takes.", True,
                         tuple(Value(number, None, word, "") for number, word in enumerate(one.choices)))
             for each in commands for one in each.arguments if one.choices]
    require_distinct([each.name for each in found], "choices of commands")
    return found


def label(each: Argument) -> str:
    return lower_camel(each.label(KEYWORDS.__contains__))


def argument(each: Argument, command: Command, with_default: bool) -> str:
    if not each.name:
        return f"bool {label(each)}{' = false' if with_default else ''}"
    if each.choices:
        return f"{upper_camel(command.name)} {label(each)}"
    if each.is_optional:
        return f"std::optional<Argument> const& {label(each)}{' = {}' if with_default else ''}"
    return f"Argument const& {label(each)}"


def command_signature(each: Command, with_defaults: bool) -> List[str]:
    arguments = [argument(one, each, with_defaults) for one in (*each.positional, *each.by_name)]
    return function(f"Request<std::string> {identifier(each.name)}(", arguments, with_defaults)


def command_declaration(each: Command) -> List[str]:
    typed = comment(f"As typed: {each.name} {each.usage}") if each.usage else []
    return [*comment(each.meaning), *typed, *command_signature(each, True), ""]


def command_definition(each: Command) -> List[str]:
    """Arguments are written in the order of the command, which may be another than that of the function."""
    values = [f"std::string(name({label(one)}))" if one.choices else label(one) for one in each.arguments]
    writing = [f"            .argument({quoted(one.keyword)}, {value})" for one, value in zip(each.arguments, values)]
    return [*command_signature(each, False), "{", "    return requests::command(",
            f"        CommandWriter({quoted(each.name)})", *writing, "            .text());", "}", ""]


# ---- Files ----

def joined(parts: Iterable[List[str]]) -> str:
    return "".join(line.rstrip() + "\n" for part in parts for line in part)


def places(protocol: Protocol) -> Dict[str, str]:
    answers = [one.answer for one in protocol.requests if one.answer.type_name]
    enumerations = [*protocol.enumerations, *choices(protocol.offered_commands)]
    return {
        "VERSION": protocol.version,
        "ENUMERATIONS": joined(enumeration(one) for one in enumerations),
        "EVENTS": joined(event(one) for one in protocol.events),
        "ANY_EVENT": any_event(protocol.events),
        "ANSWERS": joined(answer_type(one) for one in answers),
        "STATE": joined(record(one) for one in protocol.state),
        "ENUMERATION_TABLES": joined(enumeration_table(one) for one in enumerations),
        "NAMES": joined(name_function(one) for one in enumerations),
        "EVENT_KINDS": joined([f"    kKindOf<{one.type_name}>,"] for one in protocol.events),
    }


def write(template: str, folder: Path, filled: Dict[str, str]) -> None:
    """Writes a file with its places filled."""
    text = (TEMPLATES / f"{template}.in").read_text(encoding="utf-8")
    text = re.sub(r"^ *// @([A-Z_]+)@\n", lambda match: filled[match[1]], text, flags=re.MULTILINE)
    text = text.replace("@VERSION@", filled["VERSION"])
    (folder / template).write_text(text, encoding="utf-8")


def main(arguments: List[str]) -> None:
    description, schema, folder = map(Path, arguments)
    protocol = load(description, schema)
    filled = places(protocol)
    write("TelephoneClient.h", folder, {
        **filled,
        "REQUESTS": joined(request_declaration(one) for one in protocol.requests),
        "COMMANDS": joined(command_declaration(one) for one in protocol.offered_commands),
    })
    write("TelephoneClient.cpp", folder, {
        **filled,
        "REQUESTS": joined(request_definition(one) for one in protocol.requests),
        "COMMANDS": joined(command_definition(one) for one in protocol.offered_commands),
    })


if __name__ == "__main__":
    main(sys.argv[1:])
