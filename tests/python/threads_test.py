"""Several threads, many reads: every list is whole, and nothing is left behind."""
import ctypes
import gc
import os
import subprocess
import sys
import threading
from concurrent.futures import ThreadPoolExecutor

import pytest
import zymdb
from conftest import run

READS = [zymdb.adapters, zymdb.functions, zymdb.drives, zymdb.ports, zymdb.system, zymdb.generation]


def answer(read):
    try:
        return read()
    except zymdb.Error as error:
        return error.args


def test_two_threads_read_what_one_reads(example):
    zymdb.open(example)
    expected = [read() for read in READS]
    barrier = threading.Barrier(2)

    def read_all():
        barrier.wait()
        return [[read() for read in READS] for _ in range(20)]

    with ThreadPoolExecutor(2) as threads:
        for thread in [threads.submit(read_all) for _ in range(2)]:
            assert thread.result() == [expected] * 20


FIRST_READS = """
import threading
from concurrent.futures import ThreadPoolExecutor
import zymdb

barrier = threading.Barrier(8)

def read_functions():
    barrier.wait()
    return zymdb.functions()

with ThreadPoolExecutor(8) as threads:
    found = [thread.result() for thread in [threads.submit(read_functions) for _ in range(8)]]
assert found[0] and all(each == found[0] for each in found)
"""


# In a process of its own: the opening, and the reading of the names of PCI devices, happen once.
def test_threads_whose_first_reads_meet_read_the_same(example, monkeypatch):
    monkeypatch.setenv("ZYMDB_INVENTORY", str(example))
    for _ in range(5):
        subprocess.run([sys.executable, "-c", FIRST_READS], check=True)


# A list is made of several queries: none may go to the other inventory.
def test_a_list_is_of_one_inventory_while_another_is_chosen(example, tmp_path):
    empty = tmp_path / "empty.db"
    run("init", inventory=empty)
    allowed = []
    for inventory in [empty, example]:
        zymdb.open(inventory)
        allowed.append(zymdb.functions())
    stop = threading.Event()

    def read_on():
        found = []
        while not stop.is_set():
            found.append(zymdb.functions())
        return found

    with ThreadPoolExecutor(2) as threads:
        readers = [threads.submit(read_on) for _ in range(2)]
        for _ in range(40):
            zymdb.open(empty)
            zymdb.open(example)
        stop.set()
        lists = [each for reader in readers for each in reader.result()]
    assert lists and all(each in allowed for each in lists)


def test_closing_waits_for_the_reads_of_others(example):
    zymdb.open(example)
    expected = zymdb.functions()
    stop = threading.Event()

    def close_again_and_again():
        while not stop.is_set():
            zymdb.close()

    with ThreadPoolExecutor(1) as threads:
        closing = threads.submit(close_again_and_again)
        lists = [zymdb.functions() for _ in range(100)]
        stop.set()
        closing.result()
    assert lists == [expected] * 100


BLOCKED_READ = """
import os
import sys
import threading
from zymdb._zymdb import ffi, lib

status = ffi.new("int *")
reader = threading.Thread(target=lib.access_unpack, args=(sys.argv[1].encode(), b"/nowhere/inventory.db", status))
reader.start()
with open(sys.argv[1], "wb") as pipe:
    pipe.write(b"no snapshot")
reader.join()
assert status[0] == 1
"""


# The library waits for a pipe, which another thread of the interpreter fills.
def test_others_run_while_the_library_waits(tmp_path):
    os.mkfifo(tmp_path / "pipe")
    subprocess.run([sys.executable, "-c", BLOCKED_READ, tmp_path / "pipe"], check=True, timeout=60)


def allocated_bytes():
    """Of the C and C++ libraries, after what Python itself can give back."""
    gc.collect()
    library = ctypes.CDLL(None)
    if hasattr(library, "__sanitizer_get_current_allocated_bytes"):
        counter = library["__sanitizer_get_current_allocated_bytes"]
        counter.restype = ctypes.c_size_t
        return counter()

    class Mallinfo(ctypes.Structure):
        _fields_ = [(name, ctypes.c_size_t)
                    for name in ["arena", "ordblks", "smblks", "hblks", "hblkhd", "usmblks", "fsmblks", "uordblks",
                                 "fordblks", "keepcost"]]

    library.mallinfo2.restype = Mallinfo
    told = library.mallinfo2()
    return told.uordblks + told.hblkhd


def open_files():
    return sorted(os.readlink(f"/proc/self/fd/{each}") for each in os.listdir("/proc/self/fd")
                  if os.path.exists(f"/proc/self/fd/{each}"))


@pytest.mark.parametrize("again", [lambda: None, zymdb.close], ids=["open", "closed-each-time"])
def test_a_thousand_reads_leave_nothing_behind(again, example, tmp_path, monkeypatch):
    monkeypatch.setenv("ZYMDB_INVENTORY", str(example))

    def read_each(times):
        for _ in range(times):
            for read in READS:
                read()
            again()

    read_each(10)
    files, threads, memory = open_files(), threading.active_count(), allocated_bytes()
    read_each(1000 // len(READS) + 1)
    assert open_files() == files
    assert threading.active_count() == threads
    assert allocated_bytes() - memory < 64 * 1024


def test_failures_leave_nothing_behind(tmp_path, monkeypatch):
    monkeypatch.setenv("ZYMDB_INVENTORY", str(tmp_path / "missing.db"))

    def fail(times):
        for _ in range(times):
            assert answer(zymdb.adapters)[0] == 44

    fail(10)
    files, memory = open_files(), allocated_bytes()
    fail(1000)
    assert open_files() == files
    assert allocated_bytes() - memory < 64 * 1024


def test_threads_that_end_take_their_connections_along(example):
    zymdb.open(example)

    def in_a_thread(read):
        with ThreadPoolExecutor(1) as thread:
            return thread.submit(read).result()

    expected = in_a_thread(zymdb.adapters)
    files = len(open_files())
    for _ in range(40):
        assert in_a_thread(zymdb.adapters) == expected
    # SQLite keeps a few to take them again: it may close none while the file has locks.
    assert len(open_files()) < files + 10
