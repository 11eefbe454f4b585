#!/usr/bin/env python3
"""The libraries stay small: on the disk as they are shipped, and in a process that lists 256 adapters, beside one that does
so with SQLite alone."""
import os
import re
import sqlite3
import subprocess
import sys
import tempfile

KIB = 1024
ADAPTERS = 256


def stripped_size(library, folder):
    copy = os.path.join(folder, os.path.basename(library))
    subprocess.run(["strip", "-o", copy, library], check=True)
    return os.path.getsize(copy)


def peak_memory(program, adapters):
    output = subprocess.run([program, str(adapters)], check=True, capture_output=True, text=True).stdout
    return int(re.search(r"VmHWM:\s+(\d+) kB", output)[1]) * KIB


def fill(inventory):
    with sqlite3.connect(inventory) as database:
        database.execute("INSERT INTO NCSIPackageID (Location, SlotNo, PackageID1, PackageID2) VALUES (1, 1, 0, 255)")
        database.executemany(
            "INSERT INTO PCIAdapter (PCIKey, PCIFuncKey, NodeNo, SlotNo, Location, CardName, ConnectorType, AIMSupported,"
            " HealthStatus) VALUES (?, ?, 0, ?, 1, 'a dual-port network adapter with a name of usual length', '0xB6', 0, 1)",
            [(65536 + adapter, adapter << 8 | function, adapter) for adapter in range(ADAPTERS) for function in range(4)])


def added_memory(with_library, with_sqlite, folder):
    os.environ["ZYMDB_INVENTORY"] = inventory = os.path.join(folder, "inventory.db")
    peak_memory(with_library, 0)  # makes the inventory
    fill(inventory)
    return peak_memory(with_library, ADAPTERS) - peak_memory(with_sqlite, ADAPTERS)


def main():
    library, platform_library, with_library, with_sqlite = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        sizes = {"size of the library": (stripped_size(library, folder), 200 * KIB),
                 "size of the platform library": (stripped_size(platform_library, folder), 280 * KIB),
                 "memory beyond SQLite's": (added_memory(with_library, with_sqlite, folder), 3072 * KIB)}
    for what, (size, most) in sizes.items():
        print(f"{what}: {size // KIB} KiB of {most // KIB}")
    return 0 if all(size <= most for size, most in sizes.values()) else 1


if __name__ == "__main__":
    sys.exit(main())
