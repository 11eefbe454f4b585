#!/usr/bin/env python3
"""Writes the classes of records from what they are described as: make_records.py DESCRIPTIONS TARGET

A class is named after its listing, without the plural's s: "logical-ports" are of LogicalPort. What cannot be a name in
Python ends the build.
"""
import json
import keyword
import sys
import textwrap
from pathlib import Path

HEAD = '''\
"""The records of the inventory, and a function for each listing. Written from the descriptions of records/."""
from __future__ import annotations

from dataclasses import dataclass
from typing import ClassVar

from zymdb._inventory import read
from zymdb._record import Record
'''
# Of what is listed by slot, what the listing's own name does not tell.
FUNCTION_NAMES = {"events": "dpu_events"}
# Every record has these already.
TAKEN = {"listing", "to_dict"}


def name(text):
    if not text.isidentifier() or keyword.iskeyword(text) or text in TAKEN:
        raise SystemExit(f"make_records: {text} is no name in Python")
    return text


def function_name(listing):
    return name(FUNCTION_NAMES.get(listing["name"], listing["name"].replace("-", "_")))


def class_name(listing):
    words = function_name(listing).split("_")
    return name("".join(word.capitalize() for word in words).removesuffix("s"))


def sentence(text):
    return text[0].upper() + text[1:] + "."


def literal(text):
    """A line of a docstring."""
    return text.replace("\\", "\\\\").replace('"""', '\\"\\"\\"')


def field_lines(field):
    meaning = field["meaning"] + (f", {field['unit']}" if field["unit"] else "")
    return textwrap.wrap(f"{field['key']}: {literal(meaning)}", 100, initial_indent=" " * 8, subsequent_indent=" " * 12)


def class_of(listing):
    lines = ["", "", "@dataclass(frozen=True, slots=True)", f"class {class_name(listing)}(Record):",
             f'    """{literal(sentence(listing["description"]))}', "", "    Attributes:"]
    for field in listing["fields"]:
        lines += field_lines(field)
    lines += ['    """', "", f"    listing: ClassVar[str] = {listing['name']!r}", ""]
    lines += [f"    {name(field['key'])}: {field['type']} | None" for field in listing["fields"]]
    return lines


def function_of(listing):
    record = class_name(listing)
    parameter, argument = ("slot: int", ", slot") if listing["takes_slot"] else ("", "")
    return ["", "", f"def {function_name(listing)}({parameter}) -> list[{record}]:",
            f'    """{literal(sentence(listing["description"]))}"""', f"    return read({record}{argument})"]


def module(listings):
    lines = [HEAD.rstrip()]
    for listing in listings:
        lines += [*class_of(listing), *function_of(listing)]
    listed = ", ".join(class_name(each) for each in listings)
    lines += ["", "", "#: All classes of records.", "RECORD_TYPES: tuple[type[Record], ...] = (",
              *textwrap.wrap(listed + ",", 116, initial_indent="    ", subsequent_indent="    "), ")"]
    names = ["RECORD_TYPES", *(each for listing in listings for each in (class_name(listing), function_name(listing)))]
    lines += ["", "__all__ = [", *textwrap.wrap(", ".join(f'"{each}"' for each in names) + ",", 116,
                                                 initial_indent="    ", subsequent_indent="    "), "]"]
    return "\n".join(lines) + "\n"


def main():
    descriptions, target = Path(sys.argv[1]), Path(sys.argv[2])
    target.write_text(module(json.loads(descriptions.read_text())["listings"]))


if __name__ == "__main__":
    main()
