#!/usr/bin/env python3
"""Every exported operation that takes or gives a text, in an argument or in a record, is fuzzed."""
import re
import sys
from pathlib import Path

# Texts whose targets call the operation themselves.
OTHER_TARGETS = ["drive_text_fuzzer.cpp", "vpd_fuzzer.cpp"]

# Texts that the operation makes of a number.
FROM_NUMBERS = {"bps_format_hstate_str", "bps_format_security_str"}

TEXT = re.compile(r"\b(?:unsigned )?char\s*\*|std::string\b")
# What is one number, or an array of them, for all that C calls it a character.
NUMBER = re.compile(r"\bunsigned char\s*\*\s*(?!text\b|value\b)\w+")


def without_comments(text):
    return re.sub(r"/\*.*?\*/", "", text, flags=re.DOTALL)


def records_with_texts(headers):
    """Names of the records that hold a text, themselves or in records that they point to."""
    bodies = dict(re.findall(r"^struct (\w+) \{(.*?)^\};", headers, re.DOTALL | re.MULTILINE))
    found = {name for name, body in bodies.items() if re.search(r"\bchar \w+\[", body)}
    while True:
        more = {name for name, body in bodies.items() if any(re.search(rf"\b{each}\*", body) for each in found)}
        if more <= found:
            return found
        found |= more


def operations(headers):
    """(name, parameters) of every function that the headers declare."""
    return re.findall(r"^[\w:][\w:\s*]*?\b(\w+)\(([^()]*)\);", headers, re.MULTILINE)


def main():
    root = Path(sys.argv[1])
    headers = "\n".join(without_comments(path.read_text()) for path in sorted((root / "include").glob("*.h")))
    records = records_with_texts(headers)
    known = operations(headers)

    table = (root / "fuzz/operations.cpp").read_text()
    fuzzed = set(re.findall(r'^    \{"(\w+)", Kind::', table, re.MULTILINE))
    called = "\n".join((root / "fuzz" / name).read_text() for name in OTHER_TARGETS)
    seeds = {path.read_text(errors="replace").split("\n")[0]
             for path in (root / "tests/project/corpus/operations").iterdir()}
    exports = (root / "src/exports.txt").read_text()

    wrong = [f"{name} is in a header and not exported" for name, _ in known if name not in exports]
    if len(known) < 100 or len(records) < 20:
        wrong.append(f"the headers were not understood: {len(known)} operations, {len(records)} records with texts")
    for name, parameters in known:
        given = [p for p in parameters.split(",")
                 if TEXT.search(p) and not NUMBER.search(p) or records & set(re.findall(r"\w+", p))]
        if given and name not in fuzzed | FROM_NUMBERS and f"{name}(" not in called:
            wrong.append(f"{name} takes or gives a text and is not fuzzed")
    names = {name for name, _ in known}
    wrong += [f"{name} is fuzzed and in no header" for name in sorted(fuzzed - names)]
    wrong += [f"{name} is fuzzed without a seed" for name in sorted(fuzzed - seeds)]
    wrong += [f"the seed of {name} is of no operation" for name in sorted(seeds - fuzzed)]
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
