#!/usr/bin/env python3
"""Checks the telephone's dependencies against the table of its folders in docs/architecture.md.

Usage: check_dependencies.py includes|singletons ROOT

The table has the columns "Folder", "What it is" and "May use", with names in backticks, and runs from the top layer down:
a folder uses folders of later rows only. `telephone` is the code directly in telephone/, `platform` and `include` are open
to all, and so are `base`, `time` and `trace`. Checked are:

includes    Every folder has one row, every row a folder; a folder includes exactly what its row lists.
singletons  Singletons are for the library: the telephone defines their accessors and never calls them.
"""
import pathlib
import re
import sys

ROOT_FOLDER = "telephone"
FOR_ALL = {"base", "time", "trace", "platform", "include"}


def source_files(root):
    return sorted(file for file in (root / "telephone").rglob("*") if file.suffix in (".h", ".cpp"))


def folder_of(path):
    """telephone/lines/Lines.h -> lines; telephone/Telephone.h -> telephone."""
    parts = pathlib.PurePath(path).parts
    return parts[1] if len(parts) > 2 else ROOT_FOLDER


def read_table(root):
    """The rows as pairs of folders and names they may use, top layer first."""
    lines = iter((root / "docs/architecture.md").read_text().splitlines())
    if not any(re.match(r"\|\s*Folder\s*\|.*\|\s*May use\s*\|", line) for line in lines):
        sys.exit("docs/architecture.md: there is no table with the columns Folder and May use")
    next(lines)
    rows = []
    for line in lines:
        if not line.startswith("|"):
            break
        cells = line.strip().strip("|").split("|")
        rows.append((re.findall(r"`([^`]+)`", cells[0]), set(re.findall(r"`([^`]+)`", cells[-1])) - FOR_ALL))
    return rows


def complaints_about_rows(rows, folders):
    layer = {}
    for index, (names, _) in enumerate(rows):
        for name in names:
            if name in layer:
                yield f"{name} has two rows"
            if name not in folders:
                yield f"{name} has a row and no folder"
            layer[name] = index
    for folder in sorted(folders - layer.keys()):
        yield f"telephone/{folder} has no row"
    for index, (names, used) in enumerate(rows):
        for name in sorted(used):
            if name not in layer:
                yield f"{', '.join(names)} may use {name}, which has no row"
            elif layer[name] <= index:
                yield f"{', '.join(names)} may use {name}, which is not below it"


def check_includes(root):
    files = source_files(root)
    folders = {folder_of(file.relative_to(root)) for file in files}
    rows = read_table(root)
    yield from complaints_about_rows(rows, folders)
    row_of = {name: row for row in rows for name in row[0]}
    used_by_row = {id(row): set() for row in rows}
    for file in files:
        path = file.relative_to(root)
        own = folder_of(path)
        row = row_of.get(own, ([], set()))
        for name in re.findall(r'^\s*#\s*include\s*"([^"]+)"', file.read_text(), re.MULTILINE):
            if name.startswith("telephone/"):
                used = folder_of(name)
                used_by_row.setdefault(id(row), set()).add(used)
                if used != own and used not in row[1] | FOR_ALL:
                    yield f"{path} includes {name}, and {own} may not use {used}"
            elif "/" in name and not name.startswith("platform/"):
                yield f"{path} includes {name}, which is not for the telephone"
    for row in rows:
        for name in sorted(row[1] - used_by_row[id(row)]):
            yield f"{', '.join(row[0])} may use {name} and does not"


def check_singletons(root):
    accessor = re.compile(r"\b\w+::(?:Instance|GetInstance)\s*\(")
    definition = re.compile(r"^\w+\s*\*\s*\w+::(?:Instance|GetInstance)\(\)\s*$")
    for file in source_files(root):
        for number, line in enumerate(file.read_text().splitlines(), 1):
            code = line.split("//")[0]
            if accessor.search(code) and not definition.match(code):
                yield f"{file.relative_to(root)}:{number}: {code.strip()}: singletons are for the library alone"


CHECKS = {"includes": check_includes, "singletons": check_singletons}


def main():
    check, root = CHECKS[sys.argv[1]], pathlib.Path(sys.argv[2]).resolve()
    found = list(check(root))
    print("\n".join(found), file=sys.stderr, end="\n" if found else "")
    sys.exit(1 if found else 0)


main()
