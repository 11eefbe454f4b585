#!/usr/bin/env python3
"""The libraries build with a C++ compiler and SQLite alone: nothing else is looked for, and nothing else is installed."""
import re
import subprocess
import sys
import tempfile
from pathlib import Path

OFF = ["COLLECTOR", "TOOL", "TESTS", "BENCHMARKS"]
ALLOWED = {"SQLite3", "Threads", "Python3"}


def run(*command):
    result = subprocess.run([str(each) for each in command], capture_output=True, text=True)
    assert result.returncode == 0, result.stdout + result.stderr
    return result.stdout


def main():
    root, cmake, generator, compiler = Path(sys.argv[1]), *sys.argv[2:5]
    with tempfile.TemporaryDirectory() as folder:
        build, prefix = Path(folder) / "build", Path(folder) / "usr"
        # What looks for something else finds nothing.
        closed = [f"-DCMAKE_DISABLE_FIND_PACKAGE_{name}=ON" for name in ["PkgConfig", "nlohmann_json", "CLI11", "GTest", "benchmark"]]
        run(cmake, "-S", root, "-B", build, "-G", generator, f"-DCMAKE_CXX_COMPILER={compiler}", "-DCMAKE_BUILD_TYPE=Debug",
            *(f"-DZYMDB_BUILD_{each}=OFF" for each in OFF), *closed)
        cache = (build / "CMakeCache.txt").read_text()
        looked_for = set(re.findall(r"^FIND_PACKAGE_MESSAGE_DETAILS_(\w+):", cache, re.MULTILINE))
        assert looked_for <= ALLOWED, looked_for - ALLOWED
        run(cmake, "--build", build, "-j", "2")
        run(cmake, "--install", build, "--prefix", prefix)
        names = {each.name for each in prefix.rglob("*.so.1")}
        assert names == {"libzymdb_pci.so.1", "libzymdb_platform.so.1"}, names
        assert not list(prefix.rglob("bin")) and not list(prefix.rglob("systemd"))


if __name__ == "__main__":
    main()
