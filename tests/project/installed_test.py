#!/usr/bin/env python3
"""What is installed can be used: the tool starts, the README's program builds as it says there, and every header that was
installed compiles alone as C11 against nothing but the others."""
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path


def run(*command, **options):
    return subprocess.run([str(each) for each in command], check=True, capture_output=True, text=True, **options).stdout


def library_folder(prefix):
    return next(prefix.rglob("libzymdb_pci.so")).parent


def readme_example(root):
    readme = (root / "README.md").read_text()
    source = re.search(r"```c\n(.*?)```", readme, re.DOTALL).group(1)
    command = re.search(r"^    cc (.*)$", readme, re.MULTILINE).group(1).split()
    return source, command


def installed_headers(root):
    """The headers that have to be there, by the names that they are included by."""
    return sorted([*(each.name for each in (root / "include").glob("*.h")), "zymdb_platform.h",
                   *(f"controller/{each.name}" for each in (root / "controller").glob("*.h"))])


def main():
    root, build, cmake, compiler = Path(sys.argv[1]), sys.argv[2], sys.argv[3], sys.argv[4]
    with tempfile.TemporaryDirectory() as folder:
        prefix = Path(folder) / "usr"
        run(cmake, "--install", build, "--prefix", prefix)
        headers = prefix / "include"
        found = sorted(str(each.relative_to(headers)) for each in headers.rglob("*") if each.is_file())
        assert found == installed_headers(root), found

        for header in found:
            run(compiler, "-std=c11", "-Werror", "-Wpedantic", "-fsyntax-only", "-I", headers, "-x", "c", "-",
                input=f'#include "{header}"\nextern int compiled;\n')

        environment = {**os.environ, "ZYMDB_INVENTORY": f"{folder}/inventory.db", "ZYMDB_LOG": "stderr"}
        tool = prefix / "bin/zymdb"
        dumps = root / "data/example-server"
        run(tool, "collect", "--quiet", "--lspci", dumps / "server.lspci", "--smbios", dumps / "server.smbios",
            env=environment)

        source, command = readme_example(root)
        (Path(folder) / command[0]).write_text(source)
        libraries = library_folder(prefix)
        run(compiler, *command, "-std=c11", "-Wall", "-Werror", "-I", headers, "-L", libraries, cwd=folder)
        printed = run(f"{folder}/a.out", env={**environment, "LD_LIBRARY_PATH": str(libraries)})
        shown = run(tool, "show", "adapters", "--no-headings", env=environment)
        assert len(printed.splitlines()) == len(shown.splitlines()) > 0, printed
        assert re.fullmatch(r"(slot \d+: .*\n)+", printed), printed


if __name__ == "__main__":
    main()
