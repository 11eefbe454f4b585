#!/usr/bin/env python3
"""One way to write a thing: integer types without "std::", and lines of the system log through the one helper."""
import re
import sys
from pathlib import Path

SOURCES = {".h", ".c", ".cpp", ".in"}
FOLDERS = ["include", "controller", "common", "records", "src", "collect", "tools", "platform", "python", "service",
           "tests", "bench", "fuzz"]

INTEGER = re.compile(r"\bstd::((?:u?int(?:_fast|_least)?(?:8|16|32|64|ptr|max)|s?size|ptrdiff)_t)\b")
SYSTEM_LOG = re.compile(r"(?<![\w.])syslog\(")
ITS_HELPER = "src/db/system_log.cpp"


def check(root, path):
    name, text = str(path.relative_to(root)), path.read_text(errors="replace")
    wrong = [f"{name} spells {each} with std::" for each in sorted(set(INTEGER.findall(text)))]
    if name.startswith("src/") and name != ITS_HELPER and SYSTEM_LOG.search(text):
        wrong.append(f"{name} writes to the system log without log_to_system")
    return wrong


def main():
    root = Path(sys.argv[1])
    sources = [path for folder in FOLDERS for path in sorted((root / folder).rglob("*")) if path.suffix in SOURCES]
    wrong = [each for path in sources for each in check(root, path)]
    if len(sources) < 300:
        wrong.append(f"only {len(sources)} sources were found")
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
