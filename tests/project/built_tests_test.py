#!/usr/bin/env python3
"""No test source that is not built, and none that is switched off."""
import re
import sys
from pathlib import Path


def main():
    tests = Path(sys.argv[1]) / "tests"
    wrong = []
    for source in sorted([*tests.rglob("*_test.cpp"), *tests.rglob("*_test.c"), *tests.rglob("*_test.py")]):
        lists = (source.parent / "CMakeLists.txt").read_text()
        if source.name not in lists and source.stem.removesuffix("_test") not in re.findall(r"\w+", lists):
            wrong.append(f"{source.relative_to(tests)} is not in its folder's CMakeLists.txt")
        if source.suffix != ".py" and re.search(r"\bDISABLED_|GTEST_SKIP", source.read_text()):
            wrong.append(f"{source.relative_to(tests)} switches a test off")
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
