#!/usr/bin/env python3
"""Every option of the build stands in docs/building.md with its default, and no other does."""
import re
import sys
from pathlib import Path


def built_options(root):
    text = (root / "CMakeLists.txt").read_text()
    found = dict(re.findall(r'^option\((\w+) "[^"]+" (ON|OFF)\)', text, re.MULTILINE))
    found |= dict(re.findall(r'^set\((\w+) "([^"]*)" CACHE', text, re.MULTILINE))
    other = [path for path in root.rglob("CMakeLists.txt") if path != root / "CMakeLists.txt" and "build" not in path.parts
             and re.search(r"^\s*option\(", path.read_text(), re.MULTILINE)]
    assert not other, f"options outside the top folder: {other}"
    return found


def documented_options(root):
    rows = re.findall(r"^\| `(\w+)` \| (?:`([^`]*)`)? ?\| .+ \|$", (root / "docs/building.md").read_text(), re.MULTILINE)
    return {name: default for name, default in rows if not name.startswith("lib")}


def main():
    root = Path(sys.argv[1])
    built, documented = built_options(root), documented_options(root)
    wrong = [f"{name} is '{built.get(name, 'no option')}', and '{documented.get(name, 'not there')}' in docs/building.md"
             for name in sorted({*built, *documented}) if built.get(name) != documented.get(name)]
    if len(built) < 10:
        wrong.append(f"only {len(built)} options were found")
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
