"""Which inventory is read, for how long, and what is left of it afterwards."""
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import pytest
import zymdb
from conftest import collect_example, run


NOBODY = 65534


def in_a_child(action):
    """Whether the action holds in a forked child, which has half a minute for it."""
    child = os.fork()
    if child == 0:
        try:
            signal.alarm(30)
            os._exit(0 if action() else 1)
        finally:
            os._exit(2)
    return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 0


@pytest.fixture
def empty(tmp_path):
    inventory = tmp_path / "empty.db"
    run("init", inventory=inventory)
    return inventory


@pytest.fixture
def scratch(tmp_path, monkeypatch):
    """Where files that nobody else sees are put."""
    folder = tmp_path / "scratch"
    folder.mkdir()
    monkeypatch.setenv("TMPDIR", str(folder))
    monkeypatch.setattr(tempfile, "tempdir", None)
    return folder


@pytest.fixture
def snapshot(example, tmp_path):
    file = tmp_path / "machine.snapshot"
    run("snapshot", file, inventory=example)
    return file


@pytest.mark.parametrize("kind", [str, Path, "sqlite:{}".format], ids=["text", "path", "address"])
def test_an_inventory_is_opened_by_its_path(kind, example):
    zymdb.open(kind(example))
    assert zymdb.adapters()


def test_without_a_choice_the_environment_names_the_inventory(example, monkeypatch):
    monkeypatch.setenv("ZYMDB_INVENTORY", str(example))
    assert zymdb.adapters()


def test_another_inventory_takes_the_place_of_the_first(example, empty):
    zymdb.open(example)
    assert zymdb.adapters()
    zymdb.open(empty)
    assert zymdb.adapters() == []
    assert os.environ["ZYMDB_INVENTORY"] == str(empty)
    zymdb.open(example)
    assert zymdb.adapters()


def test_after_closing_the_environment_is_asked_anew(example, empty, monkeypatch):
    monkeypatch.setenv("ZYMDB_INVENTORY", str(empty))
    assert zymdb.adapters() == []
    monkeypatch.setenv("ZYMDB_INVENTORY", str(example))
    assert zymdb.adapters() == []
    zymdb.close()
    zymdb.close()
    assert zymdb.adapters()


def test_what_changes_between_two_reads_is_read(copied):
    zymdb.open(copied)
    events, generation = zymdb.dpu_events(3), zymdb.generation()
    assert zymdb.generation() == generation
    run("dpu", "append", 3, "--message", "one more", inventory=copied)
    assert [each.Message for each in zymdb.dpu_events(3)] == [*(each.Message for each in events), "one more"]
    assert zymdb.generation() == generation + 1
    assert zymdb.dpu_events(4) == []


def test_an_inventory_that_is_replaced_is_read_anew(copied, empty):
    zymdb.open(copied)
    assert zymdb.adapters()
    zymdb.close()
    os.replace(empty, copied)
    assert zymdb.adapters() == []


def test_an_empty_inventory_has_the_first_generation(empty):
    zymdb.open(empty)
    assert zymdb.generation() == 0


def test_a_snapshot_is_read_as_an_inventory(example, snapshot, scratch):
    zymdb.open(example)
    adapters = zymdb.adapters()
    zymdb.open(snapshot)
    assert zymdb.adapters() == adapters
    assert len(list(scratch.iterdir())) == 1
    zymdb.close()
    assert os.environ["ZYMDB_INVENTORY"] == str(snapshot)
    assert not list(scratch.iterdir())


def test_a_snapshot_that_the_environment_names_is_read(example, snapshot, scratch, monkeypatch):
    monkeypatch.setenv("ZYMDB_INVENTORY", str(snapshot))
    assert zymdb.adapters()
    zymdb.open(example)
    assert not list(scratch.iterdir())


def test_a_snapshot_that_is_damaged_leaves_nothing(snapshot, scratch):
    snapshot.write_bytes(snapshot.read_bytes()[:-10])
    with pytest.raises(zymdb.Error):
        zymdb.open(snapshot)
    assert not list(scratch.iterdir())


# Nobody has to close anything: the end of the program does.
@pytest.mark.parametrize("ending", ["", "raise SystemExit(3)", "raise KeyError",
                                    "import os\nif os.fork() == 0: raise SystemExit"])
def test_a_program_that_ends_leaves_nothing(ending, snapshot, scratch):
    program = f"import zymdb\nzymdb.open({str(snapshot)!r})\nassert zymdb.adapters()\n{ending}"
    subprocess.run([sys.executable, "-c", program], stderr=subprocess.DEVNULL)
    assert not list(scratch.iterdir())


def test_a_forked_child_reads_and_leaves_its_parent_what_it_reads(snapshot, scratch):
    zymdb.open(snapshot)
    before = zymdb.adapters()

    def read_and_close():
        same = zymdb.adapters() == before
        zymdb.close()
        return same

    assert in_a_child(read_and_close)
    assert len(list(scratch.iterdir())) == 1
    assert zymdb.adapters() == before


def test_a_child_that_is_forked_while_a_thread_chooses_reads_on(example):
    zymdb.open(example)
    is_choosing, may_go_on = threading.Event(), threading.Event()

    def choose():
        with zymdb._inventory._inventory._turns.changing():
            is_choosing.set()
            may_go_on.wait()

    with ThreadPoolExecutor(1) as threads:
        choosing = threads.submit(choose)
        is_choosing.wait()
        reads_on = in_a_child(zymdb.adapters)
        may_go_on.set()
        choosing.result()
    assert reads_on


def test_an_inventory_in_a_folder_that_may_not_be_written_is_read_with_its_generation(example):
    with tempfile.TemporaryDirectory() as folder:
        inventory = Path(folder) / "inventory.db"
        run("snapshot", Path(folder) / "snapshot", inventory=example)
        zymdb.open(Path(folder) / "snapshot")
        generation = zymdb.generation()
        shutil.copy(os.environ["ZYMDB_INVENTORY"], inventory)
        zymdb.close()
        inventory.chmod(0o644)
        os.chmod(folder, 0o555)

        def is_read():
            if os.geteuid() == 0:
                os.seteuid(NOBODY)
            zymdb.open(inventory)
            return zymdb.generation() == generation and zymdb.adapters()

        assert generation
        assert in_a_child(is_read)
        os.chmod(folder, 0o755)


def test_a_collection_meanwhile_is_seen_at_the_next_read(empty, tmp_path):
    zymdb.open(empty)
    assert zymdb.processors() == []
    example = collect_example(tmp_path)
    os.environ["ZYMDB_INVENTORY"] = str(empty)
    run("collect", "--quiet", "--smbios", Path(os.environ["ZYMDB_SOURCE_DIR"]) / "data/example-server/server.smbios",
        inventory=empty)
    read = zymdb.processors()
    zymdb.open(example)
    assert [each.Socket for each in read] == [each.Socket for each in zymdb.processors()]
