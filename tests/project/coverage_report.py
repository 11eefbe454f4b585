#!/usr/bin/env python3
"""What the tests reach of each library: its lines and branches, and the lines that are left.

Every line of src/ must be reached, or stand in the table of docs/testing.md beside the reason why it cannot be seen to
be. What is not reached in platform/ should stand there too; some of it depends on how threads and processes meet, so that
it is only shown.
"""
import json
import re
import sys
from pathlib import Path

LISTED = re.compile(r"^\| `([^`]+)` \| `(.+?)` \|", re.MULTILINE)


def percent(part, whole):
    return f"{part:6} of {whole:6} ({100 * part / whole:5.1f} %)"


def main():
    root, report = Path(sys.argv[1]), sys.argv[2]
    listed = set(LISTED.findall((root / "docs/testing.md").read_text()))
    good = True
    for folder in ("src", "platform"):
        lines = branches = reached_lines = reached_branches = 0
        left = []
        for file in json.load(open(report))["files"]:
            name = file["file"]
            if not name.startswith(folder + "/"):
                continue
            text = (root / name).read_text().split("\n")
            for line in file["lines"]:
                if line.get("gcovr/noncode"):
                    continue
                lines += 1
                reached_lines += line["count"] > 0
                branches += len(line["branches"])
                reached_branches += sum(branch["count"] > 0 for branch in line["branches"])
                if line["count"] == 0:
                    left.append((name, line["line_number"], text[line["line_number"] - 1].strip()))
        print(f"coverage: {folder:9} lines {percent(reached_lines, lines)}   "
              f"branches {percent(reached_branches, branches)}")
        for name, number, content in left:
            known = (name, content) in listed
            good = good and (known or folder != "src")
            print(f"{name}:{number}: {'not reached, as stated' if known else 'NOT REACHED'}: {content}")
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
