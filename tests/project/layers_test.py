#!/usr/bin/env python3
"""Includes point down: the sources of each room include only from the rooms that are named beside it."""
import re
import sys
from pathlib import Path

SOURCES = {".h", ".c", ".cpp", ".in"}
# What has rooms of its own; tests, benchmarks and fuzzers may look into all of them.
HOUSE = ["include", "controller", "common", "records", "documents", "src", "collect", "tools", "platform", "python", "service"]
# From where an include names its file.
ROOTS = ["", "include", "src", "platform", "tools/zymdb"]

PUBLIC = ["include", "controller"]
BELOW_AREAS = [*PUBLIC, "src/db"]
PCI, SMBIOS, SYSFS = "collect/sources/pci", "collect/sources/smbios", "collect/sources/sysfs"
SHARED = [*PUBLIC, "common", "records", "documents", PCI]
CLIENT = "platform/client"

# Each room, and those below that it may include from; it may always include from itself.
ROOMS = {
    "include": [],
    "controller": ["include"],
    # A transaction is an extension of our own client, which the header of the platform declares.
    "common": [*PUBLIC, "platform"],
    "records": [*PUBLIC, "common", PCI],
    "documents": [*PUBLIC, "common", "records"],
    "src/db": PUBLIC,
    **{f"src/{area}": BELOW_AREAS for area in ["cpu_mem", "pci", "network", "firmware", "pci_settings", "storage"]},

    "collect/sources": [],
    PCI: ["common"],
    SMBIOS: ["common", PCI],
    # What SMBIOS tells of a machine, its system may tell, too.
    SYSFS: ["common", PCI, SMBIOS],
    "collect/model": [*PUBLIC, "common", PCI, SMBIOS, SYSFS],
    "collect/rows": [*PUBLIC, "common", "collect/model", PCI, SMBIOS, SYSFS],
    "collect/write": [*PUBLIC, "common", "collect/model", "collect/rows", PCI, SMBIOS, SYSFS, "platform"],
    "collect/steps": [*PUBLIC, "common", "collect/sources", "collect/model", "collect/rows", "collect/write", PCI,
                      SMBIOS, SYSFS],
    # What is recorded of a machine is what its steps read.
    "collect/record": ["common", "collect/sources", "collect/rows", "collect/steps", PCI, SMBIOS, SYSFS],
    "collect": [*PUBLIC, "common", "collect/sources", "collect/model", "collect/rows", "collect/steps", "collect/write",
                PCI, SMBIOS, SYSFS, "platform"],

    "tools/zymdb/terminal": SHARED,
    "tools/zymdb/show": [*SHARED, "tools/zymdb/terminal"],
    "tools/zymdb/files": [*SHARED, "tools/zymdb/terminal", "tools/zymdb/show"],
    "tools/zymdb/commands": [*SHARED, "tools/zymdb/terminal", "tools/zymdb/show", "tools/zymdb/files", "collect",
                             "collect/record", "platform"],
    "tools/zymdb": ["tools/zymdb/commands", "tools/zymdb/terminal"],
    # What `zymdb serve` becomes; the tool itself knows nothing of the service.
    "tools/serve": [*SHARED, "tools/zymdb/terminal", "tools/zymdb/show", "service", "service/http", "service/accounts",
                    "service/inventory"],
    "python": [*PUBLIC, "common", "records", "documents"],
    "service": [*SHARED, "platform", "service/http", "service/accounts", "service/inventory", "service/metrics",
                "service/page", "service/redfish"],
    "service/http": ["common"],
    "service/accounts": ["service/http"],
    "service/inventory": [*PUBLIC, "common", "records", "documents"],
    "service/metrics": ["documents", "service/http", "service/inventory"],
    "service/page": [*PUBLIC, "common", "records", "documents", "service/http", "service/inventory"],
    "service/redfish/model": [*SHARED, "service/http"],
    "service/redfish/resources": [*SHARED, "service/redfish/model"],
    "service/redfish": [*SHARED, "service/http", "service/accounts", "service/inventory", "service/redfish/model",
                        "service/redfish/resources"],

    # The header of the client's extensions.
    "platform": ["include"],
    CLIENT: [*PUBLIC, "common", "platform"],
    f"{CLIENT}/dialect": [*PUBLIC, CLIENT],
    f"{CLIENT}/result": [*PUBLIC, CLIENT, f"{CLIENT}/dialect"],
    f"{CLIENT}/engine": [*PUBLIC, CLIENT, f"{CLIENT}/dialect", f"{CLIENT}/result"],
    **{f"{CLIENT}/engine/{engine}": [*PUBLIC, CLIENT, f"{CLIENT}/dialect", f"{CLIENT}/result", f"{CLIENT}/engine"]
       for engine in ["sqlite", "mariadb"]},
    f"{CLIENT}/session": [*PUBLIC, CLIENT, f"{CLIENT}/dialect", f"{CLIENT}/result", f"{CLIENT}/engine"],
    f"{CLIENT}/api": [*PUBLIC, "common", "platform", CLIENT, f"{CLIENT}/dialect", f"{CLIENT}/result",
                      f"{CLIENT}/engine", f"{CLIENT}/session"],
    **{f"platform/{room}": [*PUBLIC, "common", "platform", CLIENT, f"{CLIENT}/api"]
       for room in ["bios", "log", "properties", "tables"]},
}

# The one place where the engines are named.
TABLE_OF_ENGINES = [f"{CLIENT}/engine/data_source.cpp", f"{CLIENT}/engine/engines.cpp"]
ENGINES = [f"{CLIENT}/engine/sqlite", f"{CLIENT}/engine/mariadb"]


def room_of_include(root, source, include):
    """The folder that an include's file is in, beside its source or below one of the roots; None when there is none."""
    for base in [source.parent, *(root / each for each in ROOTS)]:
        if (base / include).exists():
            return str((base / include).resolve().parent.relative_to(root))
    return None


def allowed(source, room):
    return [room, *ROOMS[room], *(ENGINES if str(source) in TABLE_OF_ENGINES else [])]


def check(root, source):
    room = str(source.parent.relative_to(root))
    name = source.relative_to(root)
    if room not in ROOMS:
        return [f"{name} is in a room that no rule names"]
    wrong = []
    for include in re.findall(r'^\s*#\s*include "([^"]+)"', source.read_text(), re.MULTILINE):
        found = room_of_include(root, source, include)
        if include.startswith("src/"):
            wrong.append(f"{name} includes {include}, which names no room")
        elif found is None:
            wrong.append(f"{name} includes {include}, which is nowhere")
        elif found not in allowed(name, room):
            wrong.append(f"{name} includes {include}, which is not below it")
    return wrong


def main():
    root = Path(sys.argv[1]).resolve()
    sources = [path for folder in HOUSE for path in sorted((root / folder).rglob("*")) if path.suffix in SOURCES]
    wrong = [each for source in sources for each in check(root, source)]
    if len(sources) < 200:
        wrong.append(f"only {len(sources)} sources were found")
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
