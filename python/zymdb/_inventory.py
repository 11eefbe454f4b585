"""The one inventory that a process reads at a time, as the database client has it."""
from __future__ import annotations

import atexit
import json
import os
import shutil
import tempfile
from collections.abc import Callable
from typing import Any, TypeVar

from zymdb._error import Error
from zymdb._record import Record
from zymdb._turns import Turns
from zymdb._zymdb import ffi, lib

_VARIABLE = "ZYMDB_INVENTORY"
_NO_MEMORY = 4

_Type = TypeVar("_Type", bound=Record)


def _ask(question: Callable[..., Any], *arguments: Any) -> str:
    """The text that the library answers."""
    status = ffi.new("int *")
    answer = question(*arguments, status)
    if answer == ffi.NULL:
        raise Error(_NO_MEMORY, "out of memory")
    try:
        text: str = ffi.string(answer).decode("utf-8", "replace")
    finally:
        lib.access_release(answer)
    if status[0] != 0:
        raise Error(status[0], text)
    return text


class _Snapshot:
    """The database of a snapshot, unpacked to where nobody else sees it."""

    def __init__(self, path: str) -> None:
        self.path = path
        self._process = os.getpid()
        self._folder = tempfile.mkdtemp(prefix="zymdb-")
        self.database = os.path.join(self._folder, "inventory.db")
        try:
            _ask(lib.access_unpack, os.fsencode(path), os.fsencode(self.database))
        except BaseException:
            self.remove()
            raise

    def remove(self) -> None:
        # The child of a fork uses its parent's.
        if os.getpid() == self._process:
            shutil.rmtree(self._folder, ignore_errors=True)


class _Inventory:
    """What ZYMDB_INVENTORY names, and what there is to release of it."""

    def __init__(self) -> None:
        self._turns = Turns()
        self._snapshot: _Snapshot | None = None
        os.register_at_fork(after_in_child=self._begin_anew)

    def _begin_anew(self) -> None:
        # Threads that had a turn are not in the child.
        self._turns = Turns()

    def _release(self) -> None:
        lib.access_close()
        if self._snapshot is not None:
            os.environ[_VARIABLE] = self._snapshot.path
            self._snapshot.remove()
            self._snapshot = None

    def _unpack(self) -> None:
        path = os.environ.get(_VARIABLE)
        if path and lib.access_is_snapshot(os.fsencode(path)):
            self._snapshot = _Snapshot(path)
            os.environ[_VARIABLE] = self._snapshot.database

    def open(self, path: str) -> None:
        with self._turns.changing():
            self._release()
            before = os.environ.get(_VARIABLE)
            os.environ[_VARIABLE] = path
            try:
                self._unpack()
                _ask(lib.access_open)
            except BaseException:
                self._release()
                if before is None:
                    del os.environ[_VARIABLE]
                else:
                    os.environ[_VARIABLE] = before
                raise

    def close(self) -> None:
        with self._turns.changing():
            self._release()

    def ask(self, question: Callable[..., Any], *arguments: Any) -> str:
        if not lib.access_is_open():
            with self._turns.changing():
                if self._snapshot is None:
                    self._unpack()
        with self._turns.reading():
            return _ask(question, *arguments)


_inventory = _Inventory()
atexit.register(_inventory.close)


def open(path: str | os.PathLike[str]) -> None:
    """Reads another inventory from now on: that of a file, of a snapshot, or of an address as ZYMDB_INVENTORY takes it.

    A process reads one inventory at a time. This waits for the reads of other threads, and chooses for all of them; the
    variable ZYMDB_INVENTORY says so to processes that are started. After a failure it is the former one as before.

    Raises:
        Error: there is no such inventory, or it cannot be read
        ValueError: for an empty path
    """
    chosen = os.fspath(path)
    if not isinstance(chosen, str):
        raise TypeError("the path of an inventory is a text")
    if not chosen:
        raise ValueError("an empty path names no inventory")
    if "\0" in chosen:
        raise ValueError("a path has no null character")
    _inventory.open(chosen)


def close() -> None:
    """Closes the inventory, once the reads of other threads are over, and releases what it took.

    The next read opens the one that ZYMDB_INVENTORY names then. At the end of the program this is done by itself.
    """
    _inventory.close()


def generation() -> int | None:
    """A number that grows with every change of the inventory; None for one that has none.

    Who finds the same number again need not read again.

    Raises:
        Error: the inventory cannot be opened or read
    """
    number = _inventory.ask(lib.access_generation)
    return int(number) if number else None


def read(record: type[_Type], slot: int = 0) -> list[_Type]:
    """All records of a type, or all of a slot."""
    text = _inventory.ask(lib.access_list, record.listing.encode(), slot)
    return [record(**row) for row in json.loads(text)[record.listing]]
