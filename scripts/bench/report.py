#!/usr/bin/env python3
"""report.py DATA --json FILE [--before DATA] [--docs DIRECTORY]: shows the table of a run, and writes it
as JSON; with --docs also into performance.md of that directory, between its markers, and the plots
beside it. Ends with 1 when a figure is missing, or when a count is not what it has to be. No time can
make it fail.

Python, since the table needs medians of paired ratios and columns of even width, which its standard
library brings; the plots are gnuplot's.
"""

import argparse
import json
import pathlib
import re
import sys

import plots
from data import Data
from rows import ROWS

HEADS = ("Figure", "Beside", "Before", "Median", "10 % – 90 %", "Goal", "Met")


def spread(row, value):
    if value.low == value.high:
        return "none"
    return f"{row.form.format(value.low)} – {row.form.format(value.high)}"


def is_met(row, value):
    return None if value is None or row.is_met is None else row.is_met(value.median)


def word(met):
    return {None: "", True: "yes", False: "no"}[met]


def cells(row, value, before):
    shown = row.form.format(value.median) if value else "missing"
    return (row.figure, row.floor, row.form.format(before.median) if before else "", shown,
            spread(row, value) if value else "", row.goal, word(is_met(row, value)))


def without_empty_columns(lines):
    keep = [at for at in range(len(HEADS)) if any(line[at] for line in lines)]
    return [[line[at] for at in keep] for line in [HEADS, *lines]]


def terminal_table(lines):
    plain = [[cell.replace("`", "") for cell in line] for line in without_empty_columns(lines)]
    widths = [max(len(line[at]) for line in plain) for at in range(len(plain[0]))]
    return "\n".join("  ".join(cell.ljust(width) for cell, width in zip(line, widths)).rstrip()
                     for line in plain)


def page_table(lines):
    rows = ["| " + " | ".join(line) + " |" for line in without_empty_columns(lines)]
    rule = "|" + "---|" * (rows[0].count("|") - 1)
    return "\n".join([rows[0], rule, *rows[1:]])


def as_object(row, value, before):
    entry = {"figure": row.figure, "beside": row.floor, "goal": row.goal, "met": is_met(row, value)}
    if value:
        entry |= {"median": value.median, "low": value.low, "high": value.high, "rounds": value.rounds}
    if value and value.size:
        entry["size"] = value.size
    if before:
        entry["before"] = before.median
    return entry


def replace_part(page, name, text):
    part = re.compile(rf"(<!-- {name} -->\n).*?(<!-- end of {name} -->)", re.DOTALL)
    if not part.search(page):
        sys.exit(f"the page has no part {name}")
    return part.sub(lambda found: f"{found[1]}{text}\n{found[2]}", page)


def write_docs(directory, lines, data):
    path = directory / "performance.md"
    page = replace_part(path.read_text(encoding="utf-8"), "table", page_table(lines) + "\n\n" +
                        plots.links("status", "panel-reply", "subscription", "growth"))
    page = replace_part(page, "shares", plots.links("connect") + "\n\n" + plots.shares_table(data))
    path.write_text(page, encoding="utf-8")
    plots.draw_all(data, directory / "images")


def faults_of(values):
    for row, value in values:
        if value is None:
            yield f"missing: {row.figure}, beside {row.floor}"
        elif row.is_count and not is_met(row, value):
            yield f"not {row.goal}: {row.figure} ({row.form.format(value.median)})"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("data")
    parser.add_argument("--json", required=True)
    parser.add_argument("--before")
    parser.add_argument("--docs", type=pathlib.Path)
    arguments = parser.parse_args()
    data = Data(arguments.data)
    earlier = Data(arguments.before) if arguments.before else None
    values = [(row, row.find(data)) for row in ROWS]
    before = [row.find(earlier) if earlier else None for row in ROWS]
    lines = [cells(row, value, old) for (row, value), old in zip(values, before)]
    print(terminal_table(lines))
    objects = [as_object(row, value, old) for (row, value), old in zip(values, before)]
    pathlib.Path(arguments.json).write_text(
        json.dumps({"figures": objects}, indent=1, ensure_ascii=False) + "\n", encoding="utf-8")
    faults = list(faults_of(values))
    for fault in faults:
        print(fault)
    if arguments.docs and not faults:
        write_docs(arguments.docs, lines, data)
    sys.exit(1 if faults else 0)


main()
