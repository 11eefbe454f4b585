#!/usr/bin/env python3
"""What the documentation shows is what the tool does.

Every line "$ command" of a code block is run, in the order of the document, in a folder of its own that holds the project's
data; what follows it is compared with what it prints. A line of "..." alone stands for any lines, or none. Of a command
with nothing below it only the success counts. With the name of a document as third argument only that one is run.
"""
import difflib
import fcntl
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

# What a document takes to be done.
PREPARED = {
    "README.md": ["zymdb collect --lspci data/example-server/server.lspci --smbios data/example-server/server.smbios"],
}
# Imports use the one marker that the machine has: they take turns with other tests.
MARKER_TURN = "/tmp/zymdb-test-marker.lock"


def blocks(text):
    """The code blocks of a document, indented ones and fenced ones, as lists of lines."""
    fenced, lines = False, []
    for line in [*text.split("\n"), ""]:
        if line.startswith("```"):
            fenced = not fenced
        elif fenced or line.startswith("    "):
            lines.append(line if fenced else line[4:])
            continue
        if lines:
            yield lines
        lines = []


def examples(text):
    """(command, the output shown) of every example."""
    for lines in blocks(text):
        found = []
        for line in lines:
            if line.startswith("$ "):
                found.append((line[2:], []))
            elif found:
                found[-1][1].append(line.rstrip())
        yield from found


def matches(shown, printed):
    """Whether the lines are the same, where a line of "..." matches any number of them."""
    pattern = "".join(r"(?:.*\n)*?" if line.strip() == "..." else re.escape(line) + r"\n" for line in shown)
    return re.fullmatch(pattern, "".join(line + "\n" for line in printed)) is not None


class Folder:
    """Where the examples of one document run."""

    def __init__(self, path, root, tool):
        self.path = Path(path)
        for each in ["data", "tests"]:
            (self.path / each).symlink_to(root / each)
        self.environment = {"PATH": f"{tool.parent}:{os.environ['PATH']}", "HOME": str(path), "LANG": "C.UTF-8",
                            "TZ": "UTC", "ZYMDB_INVENTORY": str(self.path / "inventory.db")}

    def run(self, command):
        result = subprocess.run(["bash", "-c", command], cwd=self.path, env=self.environment, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=60)
        return result.returncode, [line.rstrip() for line in result.stdout.splitlines()]


def difference(document, command, shown, folder):
    """What is wrong with an example; nothing when it is as shown."""
    status, printed = folder.run(command)
    if shown and not matches(shown, printed):
        return [f"{document}: $ {command}", *difflib.unified_diff(shown, printed, "shown", "printed", lineterm="", n=1)]
    if not shown and status != 0:
        return [f"{document}: $ {command}", f"exit status {status}", *printed]
    return []


def check(document, root, tool):
    with tempfile.TemporaryDirectory() as path:
        folder = Folder(path, root, tool)
        for command in PREPARED.get(document, []):
            folder.run(command)
        found = list(examples((root / document).read_text()))
        return len(found), [line for command, shown in found for line in difference(document, command, shown, folder)]


def main():
    root, tool = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
    documents = sys.argv[3:] or ["README.md", *(str(path.relative_to(root)) for path in sorted((root / "docs").glob("*.md")))]
    wrong, count = [], 0
    with open(MARKER_TURN, "a") as turn:
        fcntl.flock(turn, fcntl.LOCK_EX)
        for document in documents:
            found, differences = check(document, root, tool)
            count += found
            wrong += differences
    if not sys.argv[3:] and count < 20:
        wrong.append(f"the documents were not understood: {count} examples")
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
