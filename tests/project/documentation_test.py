#!/usr/bin/env python3
"""Every exported name is declared in an exported header, under a comment of its own."""
import re
import subprocess
import sys
from pathlib import Path


def main():
    root = Path(sys.argv[1])
    names = [line for line in (root / "src/exports.txt").read_text().split("\n") if line and not line.startswith("#")]
    plain = subprocess.run(["c++filt", *names], check=True, capture_output=True, text=True).stdout.split("\n")
    headers = {path: path.read_text() for path in sorted((root / "include").glob("*.h"))}
    wrong = []
    for name in filter(None, plain):
        name = re.sub(r"\[abi:cxx11\]", "", name).split("(")[0].split()[-1]
        declaration = re.compile(r"\*/\n(?:extern )?[\w: *]*\b" + re.escape(name) + r"[(\[]")
        if not any(declaration.search(text) for text in headers.values()):
            wrong.append(f"{name}: no declaration with a comment in include/")
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
