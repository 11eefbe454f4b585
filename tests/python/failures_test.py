"""What cannot be read is an Error with the status and the words of the tool."""
import contextlib
import os
import pickle
import re
import sqlite3

import pytest
import zymdb
from conftest import outcome, run

ERROR, NO_DATABASE, PARSING, CORRUPT, CANNOT_BE_READ = 1, 6, 32, 42, 44


def change(inventory, *statements):
    with contextlib.closing(sqlite3.connect(inventory)) as database, database:
        for statement in statements:
            database.execute(statement)


def make_newer(path):
    run("init", inventory=path)
    change(path, "PRAGMA user_version = 99")


def make_foreign(path):
    change(path, "CREATE TABLE strange (number)")


def make_damaged(path):
    run("init", inventory=path)
    content = path.read_bytes()
    path.write_bytes(content[:8192] + bytes(len(content) - 8192))


def make_damaged_snapshot(path):
    run("init", inventory=path.with_suffix(".whole"))
    run("snapshot", path, inventory=path.with_suffix(".whole"))
    path.write_bytes(path.read_bytes()[:-10])


UNUSABLE = {
    "missing": (lambda path: None, CANNOT_BE_READ, "PATH: No such file or directory"),
    "folder": (lambda path: path.mkdir(), CANNOT_BE_READ, "PATH: it is not a file"),
    "text": (lambda path: path.write_text("no database at all " * 100), CORRUPT, "PATH: file is not a database"),
    "foreign": (make_foreign, CORRUPT, "PATH: it is not a database of this kind"),
    "newer": (make_newer, ERROR, "PATH: its version 99 is newer than this program's 3"),
    "damaged": (make_damaged, CORRUPT, "PATH: database disk image is malformed"),
    "damaged snapshot": (make_damaged_snapshot, ERROR, "PATH: the snapshot is "),
}
each_unusable = pytest.mark.parametrize("make, status, text", UNUSABLE.values(), ids=UNUSABLE)


def assert_told(error, status, text, path):
    assert (error.status, str(error)) == (status, error.text)
    assert text.replace("PATH", str(path)) in error.text
    assert "\n" not in error.text


@each_unusable
def test_opening_what_is_no_inventory_fails(make, status, text, tmp_path):
    path = tmp_path / "inventory.db"
    make(path)
    with pytest.raises(zymdb.Error) as failure:
        zymdb.open(path)
    assert_told(failure.value, status, text, path)


@each_unusable
@pytest.mark.parametrize("read", [zymdb.adapters, zymdb.settings, zymdb.generation], ids=lambda read: read.__name__)
def test_reading_what_the_environment_names_and_is_no_inventory_fails(read, make, status, text, tmp_path, monkeypatch):
    path = tmp_path / "inventory.db"
    make(path)
    monkeypatch.setenv("ZYMDB_INVENTORY", str(path))
    for _ in range(2):
        with pytest.raises(zymdb.Error) as failure:
            read()
        assert_told(failure.value, status, text, path)


@each_unusable
def test_the_words_are_those_of_the_tool(make, status, text, tmp_path):
    path = tmp_path / "inventory.db"
    make(path)
    with pytest.raises(zymdb.Error) as failure:
        zymdb.open(path)
    assert outcome("show", "adapters", inventory=path).stderr == f"zymdb: {failure.value.text}\n"


@pytest.mark.parametrize("address, text", [("strange://host/name", "names a database that no engine opens"),
                                           ("sqlite:", "names no file")])
def test_an_address_that_leads_nowhere_is_no_database(address, text):
    with pytest.raises(zymdb.Error) as failure:
        zymdb.open(address)
    assert_told(failure.value, NO_DATABASE, text, address)


@pytest.mark.parametrize("path, error", [("", ValueError), ("a\0b", ValueError), (b"bytes", TypeError),
                                         (None, TypeError), (3, TypeError)])
def test_what_is_no_path_is_refused_and_changes_nothing(path, error, example):
    zymdb.open(example)
    with pytest.raises(error):
        zymdb.open(path)
    assert zymdb.adapters()
    assert os.environ["ZYMDB_INVENTORY"] == str(example)


def test_reading_makes_no_inventory(tmp_path, monkeypatch):
    monkeypatch.setenv("ZYMDB_INVENTORY", str(tmp_path / "slip.db"))
    for read in [zymdb.adapters, zymdb.pending, zymdb.generation]:
        with pytest.raises(zymdb.Error):
            read()
    assert not list(tmp_path.iterdir())


def test_the_cards_that_the_library_knows_need_no_inventory(tmp_path, monkeypatch):
    monkeypatch.setenv("ZYMDB_INVENTORY", str(tmp_path / "missing.db"))
    assert len(zymdb.cards()) == 37


def test_after_a_failure_the_former_inventory_is_read(example, tmp_path):
    zymdb.open(example)
    before = zymdb.adapters()
    with pytest.raises(zymdb.Error):
        zymdb.open(tmp_path / "missing.db")
    assert os.environ["ZYMDB_INVENTORY"] == str(example)
    assert zymdb.adapters() == before


def test_after_a_failure_no_inventory_is_chosen_where_none_was(tmp_path):
    with pytest.raises(zymdb.Error):
        zymdb.open(tmp_path / "missing.db")
    assert "ZYMDB_INVENTORY" not in os.environ


def test_an_inventory_that_comes_later_is_read(example, tmp_path, monkeypatch):
    path = tmp_path / "inventory.db"
    monkeypatch.setenv("ZYMDB_INVENTORY", str(path))
    with pytest.raises(zymdb.Error):
        zymdb.adapters()
    run("snapshot", path, inventory=example)
    assert zymdb.adapters()


def damage(inventory, table):
    with contextlib.closing(sqlite3.connect(inventory)) as database:
        page, = database.execute("SELECT rootpage FROM sqlite_schema WHERE name = ?", (table,)).fetchone()
        size, = database.execute("PRAGMA page_size").fetchone()
    with open(inventory, "r+b") as file:
        file.seek((page - 1) * size)
        file.write(b"\xa5" * size)


# Rows that are lost must not pass for hardware that is not there.
def test_a_damaged_table_fails_and_the_others_are_read(copied):
    damage(copied, "PCIAdapter")
    zymdb.open(copied)
    with pytest.raises(zymdb.Error) as failure:
        zymdb.adapters()
    assert failure.value.status == CORRUPT
    assert re.match("cannot read the adapters: .*malformed", failure.value.text)
    assert zymdb.processors()


def test_a_generation_that_cannot_be_read_is_no_missing_one(copied):
    damage(copied, "Journal")
    zymdb.open(copied)
    with pytest.raises(zymdb.Error) as failure:
        zymdb.generation()
    assert_told(failure.value, CORRUPT, "malformed", copied)


def test_settings_that_are_being_parsed_are_told_by_their_status(example, settled_settings):
    zymdb.open(example)
    settled_settings.touch()
    for read in [zymdb.settings, zymdb.pending]:
        with pytest.raises(zymdb.Error) as failure:
            read()
        assert_told(failure.value, PARSING, "the settings are being parsed right now", example)
    settled_settings.unlink()
    assert zymdb.settings() and zymdb.pending()


def test_an_error_can_be_sent_to_another_process():
    error = pickle.loads(pickle.dumps(zymdb.Error(42, "the file is damaged")))
    assert (error.status, error.text, str(error)) == (42, "the file is damaged", "the file is damaged")
