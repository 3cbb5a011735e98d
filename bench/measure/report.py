"""The table, on the terminal and in docs/performance.md."""

import pathlib

from . import growth
from .goals import ROWS, Figures, Row

BEGIN = "<!-- measured: written by scripts/bench -->\n"
END = "<!-- end of what was measured -->\n"
HEAD = ("What", "Goal", "Measured", "Met")


def cells(row: Row, figures: Figures) -> tuple[str, str, str, str]:
    try:
        value = row.figure(figures)
    except KeyError:
        return row.what, row.goal, "not measured", "no"
    met = "" if row.goal == "shown" else "yes" if row.met(value) else "no"
    return row.what, row.goal, row.text(figures, value), met


def table(figures: Figures) -> list[tuple[str, ...]]:
    return [cells(row, figures) for row in ROWS]


def aligned(lines: list[tuple[str, ...]]) -> str:
    widths = [max(len(line[column]) for line in lines) for column in range(len(lines[0]))]
    return "\n".join("  ".join(cell.ljust(width) for cell, width in zip(line, widths)).rstrip() for line in lines)


def as_markdown(lines: list[tuple[str, ...]]) -> str:
    rows = ["| " + " | ".join(line) + " |" for line in lines]
    return "\n".join([rows[0], "|" + "---|" * len(lines[0]), *rows[1:]]) + "\n"


def write(page: pathlib.Path, figures: Figures, machine: list[tuple[str, str]]) -> None:
    """Replaces the text between the two marks of the page."""
    before, _, rest = page.read_text().partition(BEGIN)
    after = rest.partition(END)[2]
    measured = [as_markdown([("Machine", ""), *machine]), as_markdown([HEAD, *table(figures)])]
    measured.append(as_markdown([("How costs grow", "Median"), *growth.rows(figures)]))
    page.write_text(before + BEGIN + "\n" + "\n".join(measured) + "\n" + END + after)
