#!/usr/bin/env python3
"""Makes the manual from the headers and the schema: make_pages.py ROOT FOLDER

Section 3 has a page for every function of the headers, 5 one for the database, 7 the conventions of the library and of a database
client. What a page says is the comment of the header."""
import re
import sys
from pathlib import Path

from declarations import functions, text_of, top_comment

DATE = "November 22, 2026"
# A name and its first parameter, which the formatter never sets apart.
WIDEST_CALL = 68
HEADERS = ["include/*.h", "platform/zymdb_platform.h", "controller/*.h"]
LIBRARIES = {"include": "libzymdb_pci, -lzymdb_pci", "platform": "libzymdb_platform, -lzymdb_platform",
             "controller": "any implementation of the controller's interfaces: libzymdb_platform, -lzymdb_platform"}
TOP_PAGES = {"include/zymdb_db.h": ("zymdb", "the conventions of the inventory library"),
             "controller/database_client.h": ("zymdb_client", "the conventions of a database client")}


def escape(text):
    text = text.replace("\\", "\\e").replace("`", "")
    return "\n".join("\\&" + line if line[:1] in (".", "'") else line for line in text.split("\n"))


def sentences(text):
    """Each sentence begins on a line of its own, as mdoc wants it."""
    return re.sub(r"([a-zA-Z0-9)\"`\]][.!?]) +(?=\S)", r"\1\n", " ".join(text.split()))


def paragraph(text):
    return escape(sentences(text))


class Items:
    """A comment's paragraphs and lists, in order: texts, and lists of texts."""

    def __init__(self, text):
        self.parts = []
        for line in text.split("\n"):
            item = re.match(r"\s*(?:-|\d+\.) +(.*)", line)
            if not line.strip():
                self.parts.append("")
            elif item:
                self.begin_item(item[1])
            else:
                self.go_on(line.strip())

    def begin_item(self, text):
        if not self.parts or not isinstance(self.parts[-1], list):
            self.parts.append([])
        self.parts[-1].append(text)

    def go_on(self, text):
        if not self.parts:
            self.parts.append(text)
        elif isinstance(self.parts[-1], list):
            self.parts[-1][-1] += " " + text
        else:
            self.parts[-1] = (self.parts[-1] + " " + text).strip()

    def lines(self):
        begun = False
        for part in self.parts:
            if isinstance(part, list):
                yield from [".Bl -enum", *(f".It\n{paragraph(each)}" for each in part), ".El"]
            elif part:
                yield from [".Pp", paragraph(part)] if begun else [paragraph(part)]
            begun = begun or bool(part)


def page(name, section, brief, body):
    brief = escape(brief.strip().rstrip(".;:"))
    return "\n".join([f".Dd {DATE}", f".Dt {name.upper()} {section}", ".Os", ".Sh NAME", f".Nm {name}", f".Nd {brief}",
                      *body]) + "\n"


def brief_of(comment):
    """The first sentence of a comment."""
    text = " ".join(re.split(r"@\w+", comment)[0].split())
    first = re.split(r"(?<=[a-z0-9)\"])[.;:](?: |$)", text)[0]
    return first[:1].lower() + first[1:] if first else "described below"


def parameter_list(comment):
    found = re.findall(r"@param\s+(\w+(?:,\s*\w+)*)\s+(.*?)(?=@param|@return|\n\s*\n|\Z)", comment, re.DOTALL)
    if not found:
        return []
    lines = [".Pp", "The parameters:", ".Bl -tag -width Ds"]
    for names, text in found:
        lines += [".It Fa " + names.replace(", ", " , "), *Items(text).lines()]
    return [*lines, ".El"]


def synopsis(function, header):
    name = header.name if header.parts[0] != "controller" else f"controller/{header.name}"
    result, stars = re.match(r"(.*?)\s*(\**)$", function.result).groups()
    if len(function.name) + len(function.written[0]) > WIDEST_CALL:
        declared = ",\n    ".join(function.written)
        return [f".In {name}", ".Bd -literal", f"{function.result}\n{function.name}(\n    {declared});", ".Ed"]
    lines = [f".In {name}", f".Ft \"{result + (' ' + stars if stars else '')}\"", f".Fo {function.name}"]
    return [*lines, *(f".Fa \"{each}\"" for each in function.written if each), ".Fc"]


def function_page(function, header, like):
    comment = function.comment
    described = re.split(r"@(?:param|return)", comment)[0]
    lines = [".Sh LIBRARY", LIBRARIES[header.parts[0]], ".Sh SYNOPSIS", *synopsis(function, header),
             ".Sh DESCRIPTION", *(list(Items(described).lines()) or [paragraph(brief_of(like.comment if like else "") + ".")]),
             *parameter_list(comment)]
    returned = re.search(r"@return\s+(.*?)(?=@param|\Z)", comment, re.DOTALL)
    if function.result != "void":
        said = returned[1] if returned else "A status, as every operation of its header."
        lines += [".Sh RETURN VALUES", *Items(said[:1].upper() + said[1:]).lines()]
    see = {".Xr zymdb 7"} if header.parts[0] == "include" else {".Xr zymdb_client 7"}
    names = sorted(set(re.findall(r"\b(?:zymdb|zym_db)_\w+(?=\b)", comment)) & ALL - {function.name})
    references = [*(f".Xr {each} 3 ," for each in names), *see]
    return page(function.name, 3, brief_of(comment or (like.comment if like else "")), [*lines, ".Sh SEE ALSO", *references])


def top_page(root, header):
    name, brief = TOP_PAGES[header]
    text = top_comment((root / header).read_text())
    return name, page(name, 7, brief, [".Sh DESCRIPTION", *Items(text).lines(), ".Sh SEE ALSO", ".Xr zymdb 1 ,",
                                       ".Xr zymdb 5"])


def tables(text):
    """Each table of a schema and what stands above it."""
    return re.findall(r"((?:^-- .*\n)*)^CREATE TABLE \"(\w+)\"", text, re.MULTILINE)


def columns(text, table):
    body = re.search(rf'CREATE TABLE "{table}" \((.*?)^\);', text, re.DOTALL | re.MULTILINE)[1]
    for name, kind, meaning in re.findall(r'^\s*"(\w+)"\s+(\w+)[^-\n]*(?:-- (.*))?$', body, re.MULTILINE):
        yield name, kind, meaning


def table_lines(text):
    for comment, table in tables(text):
        yield f".Ss {table}"
        yield paragraph(" ".join(line.removeprefix("-- ") for line in comment.splitlines())) or "One row each."
        yield ".Bl -column LongestNameOfAColumnXXXX INTEGER"
        for name, kind, meaning in columns(text, table):
            yield f".It {name} Ta {kind} Ta {escape(meaning)}" if meaning else f".It {name} Ta {kind}"
        yield ".El"


def database_page(root):
    body = (root / "docs/manual/zymdb.5.in").read_text().splitlines()
    lines = []
    for line in body:
        named = re.fullmatch(r"@(.*)@", line)
        lines += table_lines((root / named[1]).read_text()) if named else [line]
    return "zymdb", page("zymdb", 5, "the inventory database", lines)


def write(folder, section, name, text):
    path = Path(folder) / f"man{section}" / f"{name}.{section}"
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text)


def data_page(name, comment, declaration, header):
    return page(name, 3, brief_of(comment), [".Sh LIBRARY", LIBRARIES["include"], ".Sh SYNOPSIS", f".In {header}",
                                            f".Vt \"{declaration}\"", ".Sh DESCRIPTION", *Items(comment).lines(),
                                            ".Sh SEE ALSO", ".Xr zymdb 7"])


ALL = set()


def main():
    root, folder = Path(sys.argv[1]), sys.argv[2]
    headers = {path.relative_to(root): path.read_text() for pattern in HEADERS for path in sorted(root.glob(pattern))}
    found = [(function, header) for header, text in headers.items() for function in functions(text)]
    by_name = {function.name: function for function, _ in found}
    ALL.update(by_name)
    for function, header in found:
        alike = re.match(r"As (\w+)", function.comment)
        write(folder, 3, function.name, function_page(function, header, by_name.get(alike[1]) if alike else None))
    for header, text in headers.items():
        for comment, declaration, name in re.findall(r"(/\*\*(?:(?!\*/).)*\*/)\n(extern const \w+ (\w+)\[\w*\];)", text, re.DOTALL):
            write(folder, 3, name, data_page(name, text_of(comment), declaration, header.name))
    for header in TOP_PAGES:
        write(folder, 7, *top_page(root, header))
    write(folder, 5, *database_page(root))


if __name__ == "__main__":
    main()
