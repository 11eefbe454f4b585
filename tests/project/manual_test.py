#!/usr/bin/env python3
"""The manual: every function of the headers and every exported name has a page with what its comment says, and neither
mandoc nor man has anything to remark on any page."""
import os
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(sys.argv[1])
sys.path.insert(0, str(ROOT / "docs/manual"))
from declarations import functions

SECTIONS = ["NAME", "LIBRARY", "SYNOPSIS", "DESCRIPTION", "SEE ALSO"]


def plain_name(symbol):
    mangled = re.match(r"_ZN?(?:8ruvo_log)?(\d+)(.*)", symbol)
    return mangled[2][:int(mangled[1])] if mangled else symbol


def exported_names():
    for listed in ["src/exports.txt", "platform/exports.txt"]:
        for line in (ROOT / listed).read_text().splitlines():
            if line and not line.startswith("#"):
                yield plain_name(line)


def declared():
    for pattern in ["include/*.h", "platform/zymdb_platform.h", "controller/*.h"]:
        for path in sorted(ROOT.glob(pattern)):
            yield from functions(path.read_text())


def said(text):
    """The words of a text alone."""
    return re.findall(r"[A-Za-z_]\w+", text)


def is_within(words, page):
    """Whether the page has these words, in their order."""
    rest = iter(page)
    return all(any(word == each for each in rest) for word in words)


def check_page(function, text):
    wrong = [f"{function.name}: no {section}" for section in SECTIONS if f".Sh {section}\n" not in text]
    wrong += [f"{function.name}: no parameter {name}" for name in function.described() if not re.search(rf"^\.It Fa .*\b{name}\b", text, re.MULTILINE)]
    for part in ["@param", "@return"]:
        words = said(function.part(part))
        body = text[text.index(".Sh DESCRIPTION" if part == "@param" else ".Sh"):]
        if not is_within([word.lower() for word in words], [word.lower() for word in said(body)]):
            wrong.append(f"{function.name}: the page lacks words of its {part}")
    if function.result != "void" and ".Sh RETURN VALUES" not in text:
        wrong.append(f"{function.name}: no return values")
    return wrong


def remarks(pages):
    environment = {**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "80"}
    lint = subprocess.run(["mandoc", "-Tlint", "-Wwarning", *pages], capture_output=True, text=True, env=environment)
    man = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", *pages], stdout=subprocess.DEVNULL,
                         stderr=subprocess.PIPE, text=True, env=environment)
    return (lint.stdout + lint.stderr + man.stderr).splitlines()


def main():
    made = Path(sys.argv[2])
    pages = [*sorted(made.rglob("*.[357]")), *sorted((ROOT / "tools/zymdb").glob("*.1"))]
    names = {page.name for page in pages}
    wrong = [f"no page of {name}" for name in sorted({*exported_names(), *(each.name for each in declared())})
             if f"{name}.3" not in names]
    wrong += [f"no {name}" for name in ["zymdb.1", "zymdb.5", "zymdb.7", "zymdb_client.7"] if name not in names]
    for function in declared():
        page = made / "man3" / f"{function.name}.3"
        if page.exists():
            wrong += check_page(function, page.read_text())
    wrong += remarks(pages)
    print("\n".join(wrong))
    return 1 if wrong or len(names) < 150 else 0


if __name__ == "__main__":
    sys.exit(main())
