"""Inventories to test with, filled by the tool: an empty one, the example server, one with hostile texts, one whose parts
resemble each other, and every recorded machine below $ZYMDB_RECORDED_MACHINES."""
import os
import sqlite3
import subprocess
import sys
from pathlib import Path

TOOL, ROOT = sys.argv[1], Path(sys.argv[2])
EXAMPLE = ROOT / "data/example-server"
HOSTILE = [b'<script>"\\', b"\xff\xfe broken", b"bell\x07 and\x1b[31m", b"two\nlines\r\n", b'a,"b",c', b"{}='#", b" # HELP x y\n",
           "\u4e2d\u6587 \U0001f600 \u2028".encode(), b"cut \xe4\xb8"]


def run(*command, **options):
    result = subprocess.run([str(each) for each in command], capture_output=True, **options)
    assert result.returncode == 0, f"{command}: {result.stdout[-500:]}{result.stderr[-500:]}"
    return result.stdout


class Machine:
    """An inventory in a folder of its own, and what is exported of it."""

    def __init__(self, name, folder):
        self.name, self.folder = name, Path(folder)
        self.environment = {**os.environ, "ZYMDB_INVENTORY": str(self.inventory)}

    @property
    def inventory(self):
        return self.folder / "inventory.db"

    def tool(self, *words):
        return run(TOOL, *words, env=self.environment).decode("utf-8")

    def collect(self, *sources):
        self.tool("collect", "--quiet", *sources)

    def collect_example(self):
        run(sys.executable, EXAMPLE / "system_tree.py", self.folder / "tree")
        self.collect("--lspci", EXAMPLE / "server.lspci", "--smbios", EXAMPLE / "server.smbios", "--sysfs", self.folder / "tree")

    def change(self, statements):
        with sqlite3.connect(self.inventory) as database:
            for statement in statements:
                database.execute(*statement)
        database.close()


def columns(database, wanted):
    tables = [row[0] for row in database.execute("SELECT name FROM sqlite_master WHERE type='table' AND name!='Journal'")]
    return [(table, row[1]) for table in tables for row in database.execute(f'PRAGMA table_info("{table}")') if row[2] == wanted]


def hostile(machine):
    """The example server, whose texts are all hostile: in each row another one, and one after the other in its columns."""
    machine.collect_example()
    database = sqlite3.connect(machine.inventory)
    texts = columns(database, "TEXT")
    for at, (table, column) in enumerate(texts):
        for number, text in enumerate(HOSTILE):
            database.execute(f'UPDATE "{table}" SET "{column}"=CAST(? AS TEXT) WHERE (_id+?)%{len(HOSTILE)}=?', (text, at, number))
    database.commit()
    database.close()
    assert len(texts) > 50, texts


def alike(machine):
    """Parts with the same texts, or none, in the same places, or none."""
    machine.collect_example()
    database = sqlite3.connect(machine.inventory)
    for number, (table, column) in enumerate(columns(database, "TEXT")):
        database.execute(f'UPDATE "{table}" SET "{column}"=?', (None if number % 2 else "same",))
    for table in ["Memory", "Processor", "PCIAdapter", "AimDisks"]:
        for _, column in [each for each in columns(database, "INTEGER") if each[0] == table and each[1] != "_id"]:
            database.execute(f'UPDATE "{table}" SET "{column}"=1')
    database.commit()
    database.close()


def recorded(folder):
    """Names of recorded machines, and what collects each."""
    for dump in sorted((folder / "pci").glob("*.lspci")):
        yield dump.name, lambda machine, dump=dump: machine.collect("--lspci", dump)
    for dump in sorted((folder / "dmi").glob("*.bin")):
        yield dump.name, lambda machine, dump=dump: machine.collect("--smbios", dump)
    for archive in sorted((folder / "sysfs").glob("*.tar*")):
        yield archive.name, lambda machine, archive=archive: collect_archive(machine, archive)


def collect_archive(machine, archive):
    run("tar", "-xf", archive, "--no-same-owner", "--delay-directory-restore", "-C", machine.folder)
    run("chmod", "-R", "u+rwX", machine.folder)
    roots = [path.parents[2] for path in machine.folder.rglob("bus/pci/devices")]
    # An archive of other parts of sysfs.
    if not roots:
        return machine.tool("init")
    return machine.collect("--sysfs", roots[0])


def machines():
    yield "empty", lambda machine: machine.tool("init")
    yield "example server", Machine.collect_example
    yield "hostile texts", hostile
    yield "parts alike", alike
    if folder := os.environ.get("ZYMDB_RECORDED_MACHINES"):
        yield from recorded(Path(folder))
