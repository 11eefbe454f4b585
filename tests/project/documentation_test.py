#!/usr/bin/env python3
"""The headers document what they declare.

Of the library's operations: each has a comment of its own, which names each parameter with @param, and with @return each
status that the operation's source answers, itself or by reference to another operation ("as zymdb_x"). Of the controller
interfaces and the client's extensions: a parameter that means the same everywhere may be described once, at the top of the
header, and so is what a status is. Every field of a record and every constant has a comment.
"""
import re
import sys
from pathlib import Path

from answered_statuses import definitions, statuses
sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "docs/manual"))
from declarations import described, functions, records, top_comment

OPERATIONS = "include"
INTERFACES = ["controller/*.h", "platform/zymdb_platform.h"]


def plain_name(symbol):
    """Without the argument types of a C++ name: _Z, the length of the plain name, that name, the types."""
    mangled = re.match(r"_Z(\d+)(.*)", symbol)
    return mangled[2][:int(mangled[1])] if mangled else symbol


def exported_names(root):
    lines = (root / "src/exports.txt").read_text().split("\n")
    return {plain_name(line) for line in lines if line and not line.startswith("#")}


def documented_statuses(name, operations, seen=()):
    """The statuses that an operation's comment names, or that of one which its @return refers to."""
    if name not in operations or name in seen:
        return set()
    text = operations[name].part("@return")
    found = set(re.findall(r"\b(?:ZYM_DB_STATUS|ZYMDB_PCI_SETTING)_\w+", text))
    for other in set(re.findall(r"\b\w+\b", text)) & set(operations):
        found |= documented_statuses(other, operations, (*seen, name))
    return found


def check_operation(operation, operations, answered):
    if not operation.comment:
        return [f"{operation.name}: no comment of its own"]
    wrong = [f"{operation.name}: no @param {name}" for name in operation.parameters if name not in operation.described()]
    wrong += [f"{operation.name}: @param {name}, which it does not have"
              for name in operation.described() - set(operation.parameters)]
    if operation.result != "void" and not operation.part("@return"):
        wrong.append(f"{operation.name}: no @return")
    missing = answered - documented_statuses(operation.name, operations)
    return wrong + [f"{operation.name}: answers {status}, which @return does not say" for status in sorted(missing)]


def whole_comment(function, others):
    """With the comment of the function that it is "As other_function"."""
    like = re.match(r"As (\w+)", function.comment)
    return function.comment + (others[like[1]].comment if like and like[1] in others else "")


def check_interface(function, others, top, path):
    if not function.comment:
        return [f"{path}: {function.name}: no comment"]
    comment = whole_comment(function, others)
    told = described(comment) | set(re.findall(r"`(\w+)`", comment + top))
    wrong = [f"{path}: {function.name}: {name} is not described" for name in function.parameters if name not in told]
    said_at_the_top = function.result == "int" and "Statuses." in top
    if function.result != "void" and "@return" not in comment and not said_at_the_top:
        wrong.append(f"{path}: {function.name}: no @return")
    return wrong


def check_values(text, values, path):
    """A status beside its number is that number."""
    return [f"{path}: {name} is not {number}" for name, number in re.findall(r"\b(ZYM\w+) \((\d+)\)", text)
            if values.get(name, number) != number]


def check_fields(text, path):
    return [f"{path}: {record.name}.{name} has no comment" for record in records(text)
            for name, has_comment in record.fields if not has_comment]


def main():
    root = Path(sys.argv[1])
    headers = {path.relative_to(root): path.read_text() for path in sorted((root / OPERATIONS).glob("*.h"))}
    operations = {each.name: each for text in headers.values() for each in functions(text)}
    bodies = definitions(path.read_text() for path in sorted((root / "src").rglob("*.*")) if path.suffix in (".h", ".cpp"))
    interfaces = {path.relative_to(root): path.read_text() for pattern in INTERFACES for path in sorted(root.glob(pattern))}
    values = dict(re.findall(r"\b(ZYM\w+) = (\d+)", "\n".join(headers.values())))

    data = set(re.findall(r"\*/\nextern const \w+ (\w+)\[", "\n".join(headers.values())))
    wrong = [f"{name}: not declared in include/" for name in sorted(exported_names(root) - set(operations) - data)]
    for name, operation in operations.items():
        if name not in bodies and name != "zymdb_get_hc_card_count":
            wrong.append(f"{name}: its source was not found")
        wrong += check_operation(operation, operations, statuses(name, bodies))
    for path, text in interfaces.items():
        declared = {each.name: each for each in functions(text)}
        for function in declared.values():
            wrong += check_interface(function, declared, top_comment(text), path)
    for path, text in {**headers, **interfaces}.items():
        wrong += check_fields(text, path) + check_values(text, values, path)
    if len(operations) < 100 or len(interfaces) < 6:
        wrong.append(f"the headers were not understood: {len(operations)} operations, {len(interfaces)} interfaces")
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
