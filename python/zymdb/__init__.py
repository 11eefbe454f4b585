"""The hardware inventory of a server.

    >>> import zymdb
    >>> for adapter in zymdb.adapters():
    ...     print(adapter.Place, adapter.CardName)

Each listing is a function that reads the inventory and returns a list of records: what `zymdb show` prints with --json,
as objects whose attributes have the names of its keys. What nobody knows is None.

The inventory is the one that `zymdb.open` names, else that of the environment variable ZYMDB_INVENTORY, else the
system's. Any thread may call any function.
"""
from zymdb import records as _records
from zymdb._error import Error
from zymdb._inventory import close, generation, open
from zymdb._record import Record
from zymdb._version import __version__
from zymdb.records import *

# Tracebacks name it as whoever catches it does.
Error.__module__ = "zymdb"

__all__ = ["Error", "Record", "__version__", "close", "generation", "open", *_records.__all__]
