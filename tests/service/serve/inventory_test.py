"""An inventory that changes, or is not what it should be, while it is served: the truth or 503, never an end."""
import os
import shutil
import sqlite3
import sys
import threading

import pytest
from conftest import EXAMPLE, TOOL, basic, collect, eventually, run


def status(service):
    answer = service.ask("/metrics", headers=basic("rhea"))
    if answer.status == 503:
        assert int(answer.headers["Retry-After"]) > 0
    return answer.status


def test_what_changes_is_served_at_once(start, inventory):
    run(sys.executable, EXAMPLE / "system_tree.py", inventory.parent / "tree")
    run(TOOL, "--inventory", inventory, "collect", "--quiet", "--sysfs", inventory.parent / "tree")
    service = start()
    before = service.metric("zymdb_inventory_generation")
    run(TOOL, "--inventory", inventory, "link", "0000:17:00.0", "--set", "status=down")
    assert service.metric("zymdb_inventory_generation") == before + 1


def test_an_inventory_that_comes_later_is_served_when_it_is_there(start, tmp_path):
    later = tmp_path / "later.db"
    service = start(inventory=later)
    assert status(service) == 503 and not later.exists()
    assert "later.db" in service.complaints()
    collect(later)
    eventually(lambda: status(service) == 200)


def test_an_empty_inventory_is_served_as_one(start, tmp_path):
    run(TOOL, "--inventory", tmp_path / "empty.db", "init")
    service = start(inventory=tmp_path / "empty.db")
    assert service.metric('zymdb_parts{class="memory"}') == 0


def test_a_snapshot_is_served_as_an_inventory(start, inventory, tmp_path):
    run(TOOL, "--inventory", inventory, "snapshot", tmp_path / "snapshot.zymdb")
    assert start(inventory=tmp_path / "snapshot.zymdb").metric('zymdb_parts{class="memory"}') == 32


def damage_header(inventory):
    with inventory.open("r+b") as file:
        file.write(b"\xff" * 4096)


DAMAGES = {
    "no longer there": lambda inventory: inventory.unlink(),
    "emptied": lambda inventory: inventory.write_bytes(b""),
    "overwritten": damage_header,
    "cut": lambda inventory: os.truncate(inventory, 5000),
    "a text": lambda inventory: inventory.write_text("no inventory"),
    "a folder": lambda inventory: (inventory.unlink(), inventory.mkdir()),
}


@pytest.mark.parametrize("damage", DAMAGES)
def test_an_inventory_that_is_damaged_is_not_served_and_one_in_its_place_is(start, inventory, tmp_path, damage):
    whole = tmp_path / "whole"
    whole.mkdir()
    collect(whole / "inventory.db")
    service = start()
    assert status(service) == 200
    for side in inventory.parent.glob("inventory.db-*"):
        side.unlink()
    DAMAGES[damage](inventory)
    for _ in range(5):
        assert status(service) in (200, 503)
    if inventory.is_dir():
        inventory.rmdir()
    for side in inventory.parent.glob("inventory.db-*"):
        side.unlink()
    shutil.copy(whole / "inventory.db", tmp_path / "new")
    os.replace(tmp_path / "new", inventory)
    eventually(lambda: status(service) == 200)
    assert service.process.poll() is None


def test_a_locked_inventory_is_served_again_when_it_is_free(start, inventory):
    service = start()
    database = sqlite3.connect(inventory, isolation_level=None)
    database.execute("BEGIN EXCLUSIVE")
    assert status(service) in (200, 503)
    database.execute("COMMIT")
    database.close()
    eventually(lambda: status(service) == 200)


def test_it_is_replaced_again_and_again_while_many_read(start, inventory, tmp_path):
    service = start()
    found, over = [], threading.Event()

    def read():
        while not over.is_set():
            found.append(status(service))

    readers = [threading.Thread(target=read) for _ in range(4)]
    for reader in readers:
        reader.start()
    for round in range(15):
        other = tmp_path / f"other-{round}.db"
        collect(other)
        os.replace(other, inventory)
    over.set()
    for reader in readers:
        reader.join()
    assert set(found) <= {200, 503} and 200 in found
    eventually(lambda: status(service) == 200)
