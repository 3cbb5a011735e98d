#!/usr/bin/env python3
"""Writes the functions that platform/ declares as rows of a C++ table: name, header, first sentence of the documentation.

Usage: write_purposes.py ROOT OUTPUT HEADER...

A header is named by its path from ROOT. A declaration without documentation of its own shares that of the one before.
Overloads have one row, with the sentences of each.
"""
import pathlib
import re
import sys

CLASS = re.compile(r"(?:class|struct) (?:__attribute__\(\(.*\)\) )?(\w+)(?: final)?(?: :.*)?$")
FUNCTION = re.compile(r"(?:[\w:<>,*& ]+[*& ])?(~?\w+)\(.*")


def sentence(lines):
    text = " ".join(line for line in lines if not line.startswith("@"))
    return re.split(r"(?<=\.)(?: |$)", text, maxsplit=1)[0]


def functions(text):
    """Pairs of qualified name and sentence."""
    owner, documentation, was_documentation = "", [], False
    for line in text.splitlines():
        code = line.strip()
        if code.startswith("///"):
            documentation = documentation if was_documentation else []
            documentation.append(code.removeprefix("///").strip())
            was_documentation = True
            continue
        was_documentation = was_documentation and code.startswith(("#", "__attribute__"))
        indent = len(line) - len(line.lstrip())
        if indent == 0 and (found := CLASS.match(code)) and not code.endswith(";"):
            owner = found.group(1)
        elif code == "};" and indent == 0:
            owner = ""
        elif documentation and "= delete" not in code and indent == (4 if owner else 0) and (found := FUNCTION.match(code)):
            yield f"{owner}::{found.group(1)}" if owner else found.group(1), sentence(documentation)


def main():
    root, output, headers = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3:]
    rows = {}
    for header in headers:
        for name, text in functions((root / header).read_text()):
            rows.setdefault(name, (header, []))[1].append(text)
    quote = lambda text: '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'
    output.write_text("".join(f"{{{quote(name)}, {quote(header)}, {quote(' '.join(dict.fromkeys(texts)))}}},\n"
                              for name, (header, texts) in rows.items()))


main()
