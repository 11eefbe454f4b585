from __future__ import annotations

from dataclasses import fields
from typing import ClassVar


class Record:
    """One part of the machine, as it was when it was read."""

    __slots__ = ()

    #: The listing that prints such records: `zymdb show LISTING`.
    listing: ClassVar[str]

    def to_dict(self) -> dict[str, int | str | None]:
        """The object that the tool prints for this record with --json."""
        return {field.name: getattr(self, field.name) for field in fields(self)}
