#!/usr/bin/env python3
"""The names that the built libraries export and import, compared with the project's lists in both directions, and their
versions: what is exported bears one, what is imported from the controller none, since any client is to be found."""
import re
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "docs/manual"))
from declarations import functions


def symbols(library, *flags):
    """Dynamic symbols of a library, without versions."""
    lines = subprocess.run(["nm", "-D", "-P", *flags, library], check=True, capture_output=True, text=True).stdout
    return {line.split()[0].split("@")[0] for line in lines.splitlines()}


def versions(library, *flags):
    """Each dynamic symbol and its version; "" for one that has none."""
    lines = subprocess.run(["nm", "-D", "-P", "--with-symbol-versions", *flags, library], check=True, capture_output=True,
                           text=True).stdout
    return dict(re.fullmatch(r"([^@]+)@*(.*)", line.split()[0]).groups() for line in lines.splitlines())


def wrong_versions(library, exports, node):
    found = versions(library, "--defined-only")
    return {f"{name}: '{found.get(name, '')}'" for name in exports if found.get(name, "") != node}


def packaged(path, node):
    """The names that a Debian package's symbols file has in a version."""
    return {line.split("@")[0].strip() for line in path.read_text().splitlines() if f"@{node} " in line} - {node}


def listed(path):
    return {line for line in path.read_text().split("\n") if line and not line.startswith("#")}


def declared(root):
    """Plain names of the controller interfaces, as the declarations that the library compiles against give them."""
    headers = sorted((root / "controller").glob("*.h"))
    return {function.name for header in headers for function in functions(header.read_text())}


def check(title, unexpected):
    for name in sorted(unexpected):
        print(f"{title}: {name}")
    return not unexpected


def main():
    root, library, platform = Path(sys.argv[1]), sys.argv[2], sys.argv[3]
    exported = symbols(library, "--defined-only")
    imported = symbols(library, "--undefined-only")
    expected = listed(root / "src/exports.txt")
    expected_of_platform = listed(root / "platform/exports.txt")
    interfaces = declared(root)
    if len(interfaces) < 45:
        print(f"the headers were not understood: {len(interfaces)} interfaces")
        return 1
    provided = symbols(platform, "--defined-only")
    required = versions(library, "--undefined-only")
    needed = subprocess.run(["readelf", "-d", library], check=True, capture_output=True, text=True).stdout

    log = {name for name in imported if "ruvo_log" in name}
    good = all([
        check("listed but not exported", expected - exported),
        check("exported but not listed", exported - expected - {"ZYMDB_PCI_1"}),
        check("listed for the platform library but not exported", expected_of_platform - provided),
        check("exported by the platform library but not listed", provided - expected_of_platform - {"ZYMDB_PLATFORM_1"}),
        check("in debian/ or exported, not both", packaged(root / "debian/libzymdb-pci1.symbols", "ZYMDB_PCI_1") ^ expected),
        check("in debian/ or exported, not both",
              packaged(root / "debian/libzymdb-platform1.symbols", "ZYMDB_PLATFORM_1") ^ expected_of_platform),
        check("exported in another version", wrong_versions(library, expected, "ZYMDB_PCI_1")),
        check("exported in another version", wrong_versions(platform, expected_of_platform, "ZYMDB_PLATFORM_1")),
        check("imported in the version of one client", {name for name in imported & interfaces if required[name]}),
        check("a controller interface that the library contains", exported & interfaces),
        check("imported by the library but not provided by the platform library",
              (imported & interfaces | log) - provided),
        check("declared but not provided by the platform library",
              interfaces - provided - {"logErr", "logInfo", "logWarn"}),
    ])
    if "get_dmdb_handle" not in imported or "zym_db_query" not in imported:
        print("the library does not import the database client")
        good = False
    if "libzymdb_platform" in needed:
        print("the library needs the platform library; whoever links a process is to choose the client")
        good = False
    if "Library soname: [libzymdb_pci.so.1]" not in needed:
        print("the library's name is not libzymdb_pci.so.1")
        good = False
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
