#!/usr/bin/env python3
"""What is installed can be used.

Every file has its component. The tool starts, and its service. The README's program builds as it says there, and with what pkg-config and
find_package say, shared and static. Every header compiles alone as C11 against nothing but the others. A program with a
database client of its own, written against the headers alone, runs the library's operations without ours. The Python package
finds the libraries.
"""
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

LISTED_BY_OWN_CLIENT = """\
processors: status 0, count 0
processors: status 0, count 2
  CPU 0: 32 cores
  CPU 1: 28 cores
ports: status 0, count 2
link: status 0, state 0, speed 0
set link: status 0
link: status 0, state 1, speed 25000
keys: status 1
AMD: 0
"""
# What each component installs; LIB stands for the folder of libraries.
COMPONENTS = {
    "runtime": r"LIB/libzymdb_(pci|platform)\.so\.1(\.0\.0)?",
    "dev": r"LIB/libzymdb_(pci|platform)\.(so|a)|LIB/pkgconfig/zymdb_(pci|platform)\.pc|LIB/cmake/zymdb/zymdb\w+(-\w+)?\.cmake"
           r"|include/zymdb_\w+\.h|include/zymdb/controller/\w+\.h|share/zymdb/schema/(upgrades/)?[\w-]+\.sql"
           r"|share/man/man[37]/\w+\.[37]",
    "python": r"lib\d*/python[\d.]+/(dist|site)-packages/zymdb/(\w+\.pyi?|py\.typed|_zymdb\.abi3\.so)",
    "mariadb": r"LIB/zymdb/libzymdb_engine_mariadb\.so|share/zymdb/mariadb/account\.sql",
    "tool": r"bin/zymdb|libexec/zymdb/zymdb-serve|share/zymdb/inventory\.schema\.json|share/man/man[15]/\w+\.[15]"
            r"|share/bash-completion/completions/zymdb|share/zsh/site-functions/_zymdb"
            r"|share/fish/vendor_completions.d/zymdb.fish"
            r"|lib/systemd/system/zymdb-\w+\.\w+|lib/(tmpfiles|sysusers)\.d/zymdb(-serve)?\.conf"
            r"|etc/pam\.d/zymdb",
}
NEEDED = ["bin/zymdb", "libexec/zymdb/zymdb-serve", "share/man/man1/zymdb.1", "share/bash-completion/completions/zymdb",
          "share/zsh/site-functions/_zymdb", "share/fish/vendor_completions.d/zymdb.fish", "share/zymdb/schema/inventory.sql",
          "share/zymdb/inventory.schema.json",
          "share/man/man3/zymdb_get_pci_adapter_list.3", "share/man/man5/zymdb.5", "share/man/man7/zymdb.7",
          "lib/systemd/system/zymdb-collect.service", "lib/systemd/system/zymdb-collect.timer",
          "lib/systemd/system/zymdb-watch.service", "lib/tmpfiles.d/zymdb.conf",
          "lib/systemd/system/zymdb-serve.service", "lib/systemd/system/zymdb-serve.socket", "etc/pam.d/zymdb",
          "lib/sysusers.d/zymdb.conf", "lib/sysusers.d/zymdb-serve.conf"]
# What systemd makes of a unit's rights, from 0 (none) to 100; a unit without a word about them has 96.
MOST_EXPOSED = {"zymdb-serve.service": 20, "zymdb-watch.service": 30}


def run(*command, **options):
    result = subprocess.run([str(each) for each in command], capture_output=True, text=True, **options)
    assert result.returncode == 0, f"{command}: {result.stdout}{result.stderr}"
    return result.stdout


def files_below(folder):
    return {str(each.relative_to(folder)) for each in folder.rglob("*") if not each.is_dir()}


class Installed:
    """What `cmake --install` leaves, and the commands that use it."""

    def __init__(self, root, build, cmake, compiler, folder):
        self.root, self.build, self.cmake, self.compiler, self.folder = root, build, cmake, compiler, Path(folder)
        self.prefix = self.folder / "usr"
        # The one that the build was configured for.
        self.python = sys.executable
        run(cmake, "--install", build, "--prefix", self.prefix)
        self.libraries = next(self.prefix.rglob("libzymdb_pci.so")).parent
        self.environment = {**os.environ, "ZYMDB_INVENTORY": f"{folder}/inventory.db", "ZYMDB_LOG": "stderr",
                            "LD_LIBRARY_PATH": str(self.libraries), "PKG_CONFIG_PATH": str(self.libraries / "pkgconfig")}

    def check_components(self):
        found = set()
        for component, pattern in COMPONENTS.items():
            prefix = self.folder / component
            run(self.cmake, "--install", self.build, "--prefix", prefix, "--component", component)
            pattern = pattern.replace("LIB", re.escape(str(self.libraries.relative_to(self.prefix))))
            strange = [name for name in sorted(files_below(prefix)) if not re.fullmatch(pattern, name)]
            assert not strange, f"{component} has {strange}"
            found |= files_below(prefix)
        assert found == files_below(self.prefix), found ^ files_below(self.prefix)
        assert not set(NEEDED) - found, set(NEEDED) - found

    def check_headers(self):
        headers = self.prefix / "include"
        found = sorted(files_below(headers))
        expected = sorted([*(each.name for each in (self.root / "include").glob("*.h")), "zymdb_platform.h",
                           *(f"zymdb/controller/{each.name}" for each in (self.root / "controller").glob("*.h"))])
        assert found == expected, found
        for header in found:
            run(self.compiler, "-std=c11", "-Werror", "-Wpedantic", "-fsyntax-only", "-I", headers, "-x", "c", "-",
                input=f'#include "{header}"\nextern int compiled;\n')

    def build_project(self, source, name):
        build = self.folder / name
        run(self.cmake, "-G", "Ninja", "-S", source, "-B", build, f"-DCMAKE_PREFIX_PATH={self.prefix}", f"-DCMAKE_C_COMPILER={self.compiler}")
        run(self.cmake, "--build", build)
        return build

    def check_own_client(self):
        """Nothing of the platform library is there, not even to be loaded."""
        program = self.build_project(self.root / "examples/own-client", "own-client") / "own_client"
        loaded = run("readelf", "-d", program)
        assert "libzymdb_pci.so.1" in loaded and "libzymdb_platform" not in loaded, loaded
        printed = run(program, env=self.environment)
        assert printed == LISTED_BY_OWN_CLIENT, printed

    def collect_example(self):
        dumps = self.root / "data/example-server"
        tool = self.prefix / "bin/zymdb"
        environment = {name: value for name, value in self.environment.items() if name != "LD_LIBRARY_PATH"}
        run(tool, "collect", "--quiet", "--lspci", dumps / "server.lspci", "--smbios", dumps / "server.smbios",
            env=environment)
        return len(run(tool, "show", "adapters", "--no-headings", env=environment).splitlines())

    def check_programs(self):
        count = self.collect_example()
        readme = (self.root / "README.md").read_text()
        source = self.folder / "consumers"
        source.mkdir()
        (source / "adapters.c").write_text(re.search(r"```c\n(.*?)```", readme, re.DOTALL).group(1))
        for name in ["CMakeLists.txt", "records.cpp"]:
            (source / name).write_text((self.root / "tests/project/consumers" / name).read_text())

        command = re.search(r"^    cc (.*)$", readme, re.MULTILINE).group(1).split()
        told = run("pkg-config", "--cflags", "--libs", "zymdb_pci", "zymdb_platform", env=self.environment).split()
        for name, options in {"as_told": [*command, "-I", self.prefix / "include", "-L", self.libraries],
                              "by_pkg_config": ["adapters.c", *told]}.items():
            run(self.compiler, *options, "-std=c11", "-Wall", "-Werror", "-o", name, cwd=source)
            self.check_listing(source / name, count)
        build = self.build_project(source, "consumers-build")
        for kind in ["", "_static"]:
            self.check_listing(build / f"adapters{kind}", count)
            assert run(build / f"records{kind}", env=self.environment) == "found\n"
        assert "libzymdb" not in run("readelf", "-d", build / "adapters_static")

    def check_listing(self, program, count):
        printed = run(program, env=self.environment)
        assert re.fullmatch(r"(slot \d+: .*\n)+", printed) and len(printed.splitlines()) == count > 0, printed

    def check_python(self):
        """Where it was built: the package is imported as it is installed, with the libraries beside it."""
        for module in self.prefix.rglob("zymdb/__init__.py"):
            program = "import zymdb; print(zymdb.__file__, len(zymdb.adapters()))"
            environment = {name: value for name, value in self.environment.items() if name != "LD_LIBRARY_PATH"}
            printed = run(self.python, "-B", "-c", program, env={**environment, "PYTHONPATH": str(module.parents[1])})
            assert printed == f"{module} {self.collect_example()}\n", printed

    def check_service(self):
        """The tool finds the program of the service, and that the libraries."""
        environment = {name: value for name, value in self.environment.items() if name != "LD_LIBRARY_PATH"}
        told = subprocess.run([self.prefix / "bin/zymdb", "serve", "--listen", "nowhere"], capture_output=True, text=True,
                              env=environment)
        assert (told.returncode, told.stderr) == (2, "zymdb: --listen nowhere is no ADDRESS:PORT\n"), told

    def check_units(self):
        """What systemd itself says of them; the tool that they start stands where it was configured to."""
        for unit in sorted((self.prefix / "lib/systemd/system").iterdir()):
            unit.write_text(re.sub(r"^(ExecStart)=\S+", rf"\1={self.prefix}/bin/zymdb", unit.read_text(), flags=re.MULTILINE))
            run("systemd-analyze", "verify", "--man=no", "--recursive-errors=no", unit)
        for unit, most in MOST_EXPOSED.items():
            run("systemd-analyze", "security", "--offline=true", f"--threshold={most}", self.prefix / "lib/systemd/system" / unit)
        for groups in ["zymdb.conf", "zymdb-serve.conf"]:
            run("systemd-sysusers", "--dry-run", self.prefix / "lib/sysusers.d" / groups)
        lines = (self.prefix / "lib/tmpfiles.d/zymdb.conf").read_text().splitlines()
        rules = [line for line in lines if not line.startswith("#")]
        assert rules == ["d /var/lib/zymdb 2750 root zymdb -", "d /run/zymdb 0755 root root -"], rules


def main():
    root, build, cmake, compiler = Path(sys.argv[1]), sys.argv[2], sys.argv[3], sys.argv[4]
    with tempfile.TemporaryDirectory() as folder:
        installed = Installed(root, build, cmake, compiler, folder)
        installed.check_components()
        installed.check_headers()
        installed.check_own_client()
        installed.check_programs()
        installed.check_python()
        installed.check_service()
        installed.check_units()


if __name__ == "__main__":
    main()
