#!/usr/bin/env python3
"""Includes point down: each folder includes only from the folders below it."""
import re
import sys
from pathlib import Path

# What the sources of a folder may include, by the path's beginning; "" stands for the exported headers.
LAYERS = {
    "include": [""],
    "src/db": ["", "db/", "platform/"],
    "src/platform": [""],
    "src/cpu_mem": ["", "db/", "platform/", "cpu_mem/"],
    "src/pci": ["", "db/", "platform/", "pci/"],
    "src/network": ["", "db/", "platform/", "network/"],
    "src/firmware": ["", "db/", "platform/", "firmware/"],
    "src/pci_settings": ["", "db/", "platform/", "pci_settings/"],
    "src/storage": ["", "db/", "platform/", "storage/"],
    # The collector writes through value sets, which are the client's.
    "collect": ["", "collect/", "db/database_client.h", "platform/zymdb_platform.h"],
    "tools": ["", "zymdb/", "collect/", "tools/", "db/database_client.h", "platform/zymdb_platform.h", "platform/ruvo_log.h"],
}
EXPORTED = re.compile(r"zymdb_\w+\.h$")


def main():
    root = Path(sys.argv[1])
    wrong = []
    for folder, allowed in LAYERS.items():
        for source in sorted((root / folder).rglob("*")):
            if source.suffix not in {".h", ".cpp"}:
                continue
            for include in re.findall(r'^#include "([^"]+)"', source.read_text(), re.MULTILINE):
                own = (source.parent / include).exists()
                exported = EXPORTED.match(include) and (root / "include" / include).exists()
                if not own and not exported and not any(a and include.startswith(a) for a in allowed):
                    wrong.append(f"{source.relative_to(root)} includes {include}")
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
