from __future__ import annotations

import threading
from collections import deque
from collections.abc import Callable, Iterator
from contextlib import contextmanager


class Turns:
    """Any number of readers at once, or one who changes what they read; in the order in which they came."""

    def __init__(self) -> None:
        self._changed = threading.Condition()
        self._queue: deque[object] = deque()
        self._readers = 0
        self._is_taken = False

    def _wait(self, may_go: Callable[[], bool]) -> None:
        ticket = object()
        self._queue.append(ticket)
        try:
            self._changed.wait_for(lambda: self._queue[0] is ticket and may_go())
        finally:
            self._queue.remove(ticket)
            self._changed.notify_all()

    @contextmanager
    def reading(self) -> Iterator[None]:
        with self._changed:
            self._wait(lambda: not self._is_taken)
            self._readers += 1
        try:
            yield
        finally:
            with self._changed:
                self._readers -= 1
                self._changed.notify_all()

    @contextmanager
    def changing(self) -> Iterator[None]:
        with self._changed:
            self._wait(lambda: not self._is_taken and not self._readers)
            self._is_taken = True
        try:
            yield
        finally:
            with self._changed:
                self._is_taken = False
                self._changed.notify_all()
