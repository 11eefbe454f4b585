#!/usr/bin/env python3
"""Each check of this folder fails when what it checks is broken: every rule is broken once, in a copy of the project."""
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

PYTHON = sys.executable


class Copy:
    """A copy of the project's sources, broken in one place at a time."""

    def __init__(self, root, folder):
        self.root = Path(folder) / "project"
        shutil.copytree(root, self.root, ignore=shutil.ignore_patterns("build*", ".*", "corpus", "recorded*", "__pycache__"))
        self.unbroken = {}  # what each check says of the project as it is

    def said_of_the_project(self, check):
        if check not in self.unbroken:
            self.unbroken[check] = self.verdict(check).stdout.splitlines()
        return self.unbroken[check]

    def verdict(self, check):
        return subprocess.run([PYTHON, self.root / f"tests/project/{check}_test.py", self.root], capture_output=True, text=True)

    def noticed(self, check, path, change, told):
        """Whether the check fails on a changed file (or a new one), telling of it, and not on the file as it was."""
        file = self.root / path
        before = file.read_text() if file.exists() else None
        text = change(before or "")
        if text == before:
            return f"{check}: nothing changed in {path}"
        earlier = self.said_of_the_project(check)
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)
        result = self.verdict(check)
        if before is None:
            file.unlink()
        else:
            file.write_text(before)
        new = [line for line in result.stdout.splitlines() if line not in earlier]
        if result.returncode == 0 or not any(re.search(told, line) for line in new):
            return f"{check} does not notice {told} in {path}"
        return None


def without(text, more=1):
    return lambda before: before.replace(text, "", more)


def replaced(text, by):
    return lambda before: before.replace(text, by, 1)


def including(header):
    return lambda before: f'#include "{header}"\n' + before


def layers():
    """One include that points up, or aside, out of each room."""
    for room, header in [
            ("include/zymdb_pci.h", "controller/database_client.h"),
            ("controller/platform_tables.h", "common/text.h"),
            ("common/text.cpp", "collect/collector.h"),
            ("src/db/query.cpp", "pci/slot_type.h"),
            ("src/db/query.cpp", "common/text.h"),
            ("src/pci/gpu.cpp", "firmware/classification.h"),
            ("src/storage/u2_drives.cpp", "zymdb_platform.h"),
            ("collect/sources/pci/pci_vpd.cpp", "collect/model/machine.h"),
            ("collect/sources/smbios/smbios.cpp", "collect/sources/sysfs/ethtool.h"),
            ("collect/sources/sysfs/ethtool.cpp", "collect/sources/sources.h"),
            ("collect/model/machine.cpp", "collect/rows/memory_rows.h"),
            ("collect/rows/memory_rows.cpp", "collect/write/inventory_writer.h"),
            ("collect/write/inventory_writer.cpp", "terminal/table.h"),
            ("tools/zymdb/terminal/table.cpp", "files/settings_file.h"),
            ("tools/zymdb/show/show_memory.cpp", "files/settings_file.h"),
            ("tools/zymdb/files/settings_file.cpp", "commands/commands.h"),
            ("tools/zymdb/commands/serve_command.cpp", "service/service.h"),
            ("tools/serve/serve.cpp", "commands/commands.h"),
            ("python/inventory_access.cpp", "show/listing.h"),
            ("platform/client/status.h", "client/dialect/dialect.h"),
            ("platform/client/dialect/lexer.cpp", "client/result/result.h"),
            ("platform/client/result/result.cpp", "client/engine/engine.h"),
            ("platform/client/engine/writer_queue.cpp", "client/session/database.h"),
            ("platform/client/engine/sqlite/guard.cpp", "client/session/database.h"),
            ("platform/client/session/database.cpp", "client/api/local_database.h"),
            ("platform/client/api/client.cpp", "collect/collector.h"),
            ("platform/log/ruvo_log.cpp", "client/engine/engine.h"),
    ]:
        yield "layers", room, including(header), re.escape(header)
    yield "layers", "src/db/values.cpp", including("src/db/values.h"), "names no room"
    yield "layers", "src/db/values.cpp", including("db/nowhere.h"), "is nowhere"
    yield "layers", "collect/attic/attic.cpp", including("common/text.h"), "no rule names"
    yield "layers", "records/record.h", including("collect/rows/memory_rows.h"), "is not below it"


def documentation():
    pci, client = "include/zymdb_pci.h", "controller/database_client.h"
    yield ("documentation", pci, without(" * @param location  kind of place, a _ZYMDB_Location.\n"), "no @param location")
    yield "documentation", pci, replaced("@param vpd ", "@param nothing "), "@param nothing, which it does not have"
    yield ("documentation", pci, without(" *         - ZYM_DB_STATUS_NO_MEMORY (4)\n", -1),
           "zymdb_get_pci_adapter_list: answers ZYM_DB_STATUS_NO_MEMORY")
    yield "documentation", pci, replaced("(6): no database", "(7): no database"), "ZYM_DB_STATUS_NO_DB is not 7"
    yield "documentation", pci, without("@return as zymdb_get_pci_keys."), "zymdb_get_dpu_keys: no @return"
    yield ("documentation", "include/zymdb_firmware.h", lambda text: re.sub(r"/\*\* *\n \* Deletes all components.*?\*/\n", "", text,
           flags=re.DOTALL), "zymdb_clear_pldm_firmware_by_type: no comment of its own")
    yield "documentation", "include/zymdb_storage.h", without(
        "/**< degrees Celsius */"), "_ZYMDB_AimDisk.Temperature has no comment"
    yield "documentation", "src/exports.txt", lambda text: text + "zymdb_get_nothing\n", "zymdb_get_nothing: not declared"
    yield ("documentation", "src/pci/gpu.cpp", replaced("return ZYM_DB_STATUS_NOT_FOUND;", "return ZYM_DB_STATUS_ERROR;"),
           "zymdb_update_nvidia_gpu_serial_number: answers ZYM_DB_STATUS_ERROR")
    yield "documentation", client, without("`nparams`"), "zym_db_query: nparams is not described"
    yield "documentation", client, without("/** Releases a result. */\n"), "zym_db_free_result: no comment"
    yield "documentation", "platform/zymdb_platform.h", without("Statuses."), "zym_db_commit: no @return"
    yield "documentation", "controller/bios_configuration.h", lambda text: re.sub(r"/\*\*< 0 on the way.*?\*/", "", text,
          count=1, flags=re.DOTALL), "has no comment"


def spelling():
    for folder in ["include/zymdb_pci.h", "src/db/query.h", "collect/collector.h", "tests/support/turn.h"]:
        yield "spelling", folder, lambda text: text + "static std::uint32_t number;\n", "uint32_t"
    yield "spelling", "src/pci/gpu.cpp", lambda text: text + 'void f() { syslog(1, "x"); }\n', "without log_to_system"


TOOL = """#!/bin/sh
echo "$1 of the tool"
"""


def documented_commands(copy):
    """The examples are compared with what the tool prints: with one that prints something else none is right."""
    tool = copy.root / "zymdb"
    tool.write_text(TOOL)
    tool.chmod(0o755)
    check = [PYTHON, copy.root / "tests/project/documented_commands_test.py", copy.root, tool]
    examples = {"as shown": ("$ zymdb same\n    same of the tool", 0), "another line": ("$ zymdb same\n    another", 1),
                "a line too few": ("$ zymdb same\n    ...\n    same of the tool\n    more", 1),
                "lines left out": ("$ zymdb same\n    ...", 0), "a failure": ("$ false", 1), "a success": ("$ true", 0)}
    for name, (text, status) in examples.items():
        (copy.root / "docs/example.md").write_text(f"# Example\n\n    {text}\n")
        result = subprocess.run([*check, "docs/example.md"], capture_output=True, text=True)
        if result.returncode != status:
            yield f"documented_commands: {name} has exit status {result.returncode}: {result.stdout}{result.stderr}"
    (copy.root / "docs/example.md").unlink()


def main():
    wrong = []
    with tempfile.TemporaryDirectory() as folder:
        copy = Copy(Path(sys.argv[1]), folder)
        for rule in [*layers(), *documentation(), *spelling()]:
            wrong.append(copy.noticed(*rule))
        wrong += documented_commands(copy)
    wrong = [each for each in wrong if each]
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
