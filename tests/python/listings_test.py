"""What the package reads is what the tool prints."""
import dataclasses
import json
import re
import typing

import pytest
import zymdb
from conftest import DPU_SLOT, execute, fill_tables, outcome, run

# What is not printed by `zymdb show LISTING`.
COMMANDS = {"pending": ["settings", "pending"], "events": ["dpu", "log", DPU_SLOT]}

pytestmark = pytest.mark.usefixtures("settled_settings")


def function_of(record):
    answer = f"list[{record.__name__}]"
    found = [each for each in map(zymdb.__dict__.get, zymdb.__all__)
             if getattr(each, "__annotations__", {}).get("return") == answer]
    assert len(found) == 1, found
    return found[0]


def read(record):
    return function_of(record)(*([DPU_SLOT] if record.listing == "events" else []))


def assert_as_printed(record, inventory):
    """The records, which are what the tool prints; none where it fails, and so does the package."""
    zymdb.open(inventory)
    command = COMMANDS.get(record.listing, ["show", record.listing])
    printed = outcome(*command, "--json", inventory=inventory)
    if printed.returncode != 0:
        with pytest.raises(zymdb.Error) as failure:
            read(record)
        assert printed.stderr == f"zymdb: {failure.value.text}\n"
        return []
    records, objects = read(record), json.loads(printed.stdout)[record.listing]
    assert [each.to_dict() for each in records] == objects
    assert [list(each.to_dict()) for each in records] == [list(each) for each in objects]
    return records


def assert_of_their_types(record, records):
    hints = typing.get_type_hints(record)
    for each in records:
        assert type(each) is record
        for key, value in each.to_dict().items():
            assert getattr(each, key) == value
            assert isinstance(value, hints[key]), key


each_record = pytest.mark.parametrize("record", zymdb.RECORD_TYPES, ids=lambda record: record.listing)


@each_record
def test_records_of_the_example_server_are_what_the_tool_prints(record, example):
    records = assert_as_printed(record, example)
    assert records
    assert_of_their_types(record, records)


# Rows in which every column has a value, so that every field of every record is read once.
@each_record
def test_records_in_which_all_is_known_are_what_the_tool_prints(record, copied):
    fill_tables(copied, lambda kind: 1 if "INT" in kind.upper() else "1a")
    assert_of_their_types(record, assert_as_printed(record, copied))


@each_record
def test_numbers_of_all_sizes_are_what_the_tool_prints(record, copied):
    sizes = iter([0, 255, 2**31, 2**32 - 1, 2**53 + 1, 2**63 - 1, -1] * 1000)
    fill_tables(copied, lambda kind: next(sizes) if "INT" in kind.upper() else "x")
    assert_of_their_types(record, assert_as_printed(record, copied))


# Bytes that are no UTF-8 become the same characters, wherever they stand.
HOSTILE = [b"\xff", b"\xe2\x82", b"a\xe2\x82b", b"\xf0\x80\x80\x80", b"\xed\xa0\x80", b"\xf4\x90\x80\x80", b"\xc0\xaf",
           b"\x80", b"\x1b[31m", b"tab\tline\nend", b'"\\/', "\u2028\ufeff\U0001f4a5".encode(), b"\xe2\x82\xac" * 100,
           b"<b>&amp;"]


@pytest.mark.parametrize("text", HOSTILE, ids=repr)
def test_texts_of_any_bytes_are_what_the_tool_prints(text, copied):
    execute(copied, "UPDATE PCIAdapter SET CardName = CAST(? AS TEXT)", (text,))
    adapters = assert_as_printed(zymdb.Adapter, copied)
    assert all(each.CardName for each in adapters)


@each_record
def test_an_empty_inventory_is_what_the_tool_prints(record, tmp_path):
    inventory = tmp_path / "empty.db"
    run("init", inventory=inventory)
    assert_as_printed(record, inventory)


def test_every_listing_of_the_tool_has_its_class(example):
    commands = run("show", "--help", inventory=example).split("Subcommands:")[1].split("\n\n")[0]
    listings = re.findall(r"^  (\S+)", commands, re.MULTILINE)
    assert len(listings) > 10
    assert {each.listing for each in zymdb.RECORD_TYPES} == {*listings, *COMMANDS}


@each_record
def test_a_class_says_what_each_field_means(record, example):
    if record.listing in COMMANDS:
        help_text = run(*COMMANDS[record.listing], "--help", inventory=example)
    else:
        help_text = run("show", record.listing, "--help", inventory=example)
    meanings = re.findall(r"^[* ] \S+ +(.*) \[(\w+)\]$", help_text, re.MULTILINE)
    assert [key for _, key in meanings] == [key for key in typing.get_type_hints(record) if key != "listing"]
    told = " ".join(record.__doc__.split())
    for meaning, key in meanings:
        assert f"{key}: {' '.join(meaning.split())}" in told
    assert function_of(record).__doc__.rstrip(".") in record.__doc__


def test_a_record_is_a_value(example):
    zymdb.open(example)
    once, again = zymdb.adapters(), zymdb.adapters()
    assert once == again
    assert len(set(once)) == len(once)
    with pytest.raises(AttributeError):
        once[0].CardName = "another"


def test_a_field_is_named_as_in_json_and_unknown_ones_are_none(copied):
    execute(copied, "UPDATE System SET SKU = NULL, Model = 'ES-2240'")
    zymdb.open(copied)
    assert [(each.SKU, each.Model) for each in zymdb.system()] == [(None, "ES-2240")]


def test_the_fields_that_the_tests_fill_are_read(copied):
    """Else the tests above would compare nothing new. Some codes mean "not known"."""
    fill_tables(copied, lambda kind: 1 if "INT" in kind.upper() else "1a")
    zymdb.open(copied)
    fields, known = 0, 0
    for record in set(zymdb.RECORD_TYPES) - {zymdb.Firmware}:
        fields += len(dataclasses.fields(record))
        known += len({key for each in read(record) for key, value in each.to_dict().items() if value is not None})
    assert fields > 300
    assert fields - known < 5
