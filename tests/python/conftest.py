"""Inventories that the tests read, made by the tool as its users make them."""
import contextlib
import fcntl
import os
import shutil
import sqlite3
import subprocess
import sys
from pathlib import Path

import pytest
import zymdb

ROOT = Path(os.environ["ZYMDB_SOURCE_DIR"])
EXAMPLE = ROOT / "data/example-server"
DPU_SLOT = 3


def outcome(*words, inventory):
    """The tool, run to its end."""
    environment = {**os.environ, "ZYMDB_INVENTORY": str(inventory)}
    return subprocess.run([os.environ["ZYMDB_TOOL"], *map(str, words)], capture_output=True, text=True, env=environment)


def run(*words, inventory):
    """What the tool prints."""
    done = outcome(*words, inventory=inventory)
    assert done.returncode == 0, done
    return done.stdout


@contextlib.contextmanager
def marker_turn():
    """The machine has one marker of settings that are parsed: tests that depend on it take turns."""
    with open("/tmp/zymdb-test-marker.lock", "a") as turn:
        fcntl.flock(turn, fcntl.LOCK_EX)
        yield Path("/tmp/dp.ucmparsing")


@pytest.fixture
def settled_settings():
    with marker_turn() as marker:
        marker.unlink(missing_ok=True)
        yield marker
        marker.unlink(missing_ok=True)


def execute(inventory, statement, values=()):
    with contextlib.closing(sqlite3.connect(inventory)) as database, database:
        database.execute(statement, values)


def collect_example(folder):
    inventory = folder / "inventory.db"
    subprocess.run([sys.executable, EXAMPLE / "system_tree.py", folder / "sys"], check=True)
    run("collect", "--quiet", "--lspci", EXAMPLE / "server.lspci", "--smbios", EXAMPLE / "server.smbios",
        "--sysfs", folder / "sys", inventory=inventory)
    with marker_turn():
        run("settings", "import", EXAMPLE / "settings.json", inventory=inventory)
        run("settings", "set", "BootProtocol.4b0000=PXE", inventory=inventory)
    run("dpu", "append", DPU_SLOT, "--message", "boot completed", inventory=inventory)
    execute(inventory, "INSERT INTO PldmDeviceFirmware (DeviceName, VersionString, UpdateErrCode, Updated) "
                       "VALUES ('a device', '1.2', 9, 1)")
    return inventory


@pytest.fixture(scope="session")
def example(tmp_path_factory):
    """The example server, with every class of records. Nobody changes it."""
    return collect_example(tmp_path_factory.mktemp("example"))


@pytest.fixture
def copied(example, tmp_path):
    """A copy of it, with its properties, to be changed."""
    for file in example.parent.glob("inventory*.db*"):
        shutil.copy(file, tmp_path)
    return tmp_path / example.name


def fill_table(database, table, values):
    """Gives every column a value that has none, and adds a row of such values."""
    columns = [(name, kind) for _, name, kind, *_ in database.execute(f'PRAGMA table_info("{table}")') if name != "_id"]
    for name, kind in columns:
        database.execute(f'UPDATE "{table}" SET "{name}" = ? WHERE "{name}" IS NULL', (values(kind),))
    names, places = ", ".join(f'"{name}"' for name, _ in columns), ", ".join("?" * len(columns))
    database.execute(f'INSERT OR REPLACE INTO "{table}" ({names}) VALUES ({places})',
                     [values(kind) for _, kind in columns])


def fill_tables(inventory, values):
    with contextlib.closing(sqlite3.connect(inventory)) as database, database:
        tables = [name for name, in database.execute("SELECT name FROM sqlite_schema WHERE type = 'table'")]
        for table in tables:
            if table != "Journal" and not table.startswith("sqlite_"):
                fill_table(database, table, values)


@pytest.fixture(autouse=True)
def nothing_chosen(monkeypatch):
    """Tests choose their inventories themselves, and leave none open."""
    monkeypatch.delenv("ZYMDB_INVENTORY", raising=False)
    yield
    zymdb.close()
