from __future__ import annotations


class Error(Exception):
    """The inventory could not be opened or read.

    Attributes:
        status: why, as a number: a status of the library or of its database client
        text: why, in one line
    """

    def __init__(self, status: int, text: str) -> None:
        super().__init__(status, text)
        self.status = status
        self.text = text

    def __str__(self) -> str:
        return self.text
