#!/usr/bin/env python3
"""What `zymdb export` writes is what its formats are, whatever the inventory: an empty one, the example server, one with
hostile texts and parts that resemble each other, and every recorded machine below $ZYMDB_RECORDED_MACHINES.

JSON validates against the schema that the tool prints, and does not once it is changed. The files of CSV read back as the
same values. Metrics are what promtool takes, each series once, each part in them. The bill of materials validates against the
schemas in the folder $ZYMDB_CYCLONEDX_SCHEMAS, where that is set, and has every part once, in its place.
"""
import copy
import csv
import io
import json
import os
import re
import subprocess
import sys
import tempfile
from collections import Counter
from pathlib import Path

import jsonschema

sys.path.insert(0, str(Path(sys.argv[2]) / "tests/support"))
from inventories import TOOL, Machine, machines, run  # noqa: E402

PROMTOOL = Path(sys.argv[3])
# Of each class whose parts are components: those whose address of a function says in which function they are.
WITHIN_FUNCTIONS = {"gpus", "ports", "firmware", "drives"}
NO_PARTS = {"settings", "logical-ports"}
SAMPLE = re.compile(r'([a-z_][a-z0-9_]*)(?:\{((?:[a-z_][a-z0-9_]*="(?:[^"\\\n]|\\["\\n])*",?)*)\})? (-?[0-9.e+-]+)')
LABEL = re.compile(r'([a-z_][a-z0-9_]*)="((?:[^"\\]|\\.)*)"')


# ---- JSON

def changed_documents(document):
    """The document with one thing in it that must not be."""
    def with_change(change):
        other = copy.deepcopy(document)
        change(other)
        return other

    yield "another member", with_change(lambda other: other.update(Wheels=[]))
    yield "another version", with_change(lambda other: other.update(format_version=document["format_version"] + 1))
    for name in document:
        yield f"without {name}", with_change(lambda other: other.pop(name))
    for name, parts in document.items():
        if not isinstance(parts, list) or not parts:
            continue
        yield f"another field of {name}", with_change(lambda other: other[name][0].update(Wheels=4))
        for key, value in parts[0].items():
            yield f"without {name}.{key}", with_change(lambda other: other[name][0].pop(key))
            yield f"{name}.{key} of no kind", with_change(lambda other: other[name][0].update({key: 1.5}))
            if value is not None:
                wrong = "4" if isinstance(value, int) else 4
                yield f"{name}.{key} of another kind", with_change(lambda other: other[name][0].update({key: wrong}))


def check_json(machine, schema):
    document = json.loads(machine.tool("export"))
    validator = jsonschema.Draft202012Validator(schema)
    validator.validate(document)
    # Only the first part of each class is changed: the others would be told the same of, at length.
    short = {name: parts[:1] if isinstance(parts, list) else parts for name, parts in document.items()}
    for what, changed in changed_documents(short):
        assert not validator.is_valid(changed), f"valid: {what}"
    return document


def check_schema(schema, document):
    """Of the example server, which has parts of nearly every class: what the document has is described, and all of it."""
    jsonschema.Draft202012Validator.check_schema(schema)
    assert schema["$id"] == f"urn:zymdb:inventory:{document['format_version']}" and schema["version"] == document["format_version"]
    described = {name: set(each["items"]["properties"]) for name, each in schema["properties"].items() if "items" in each}
    for name, parts in document.items():
        for part in parts if isinstance(parts, list) else []:
            assert set(part) == described[name], name
    for name, each in schema["properties"].items():
        assert each["description"], name
        for key, field in each.get("items", {}).get("properties", {}).items():
            assert field["description"], f"{name}.{key}"
    units = schema["properties"]["memory"]["items"]["properties"]["MemSize"]
    assert units["unit"] == "MiB" and units["type"] == ["integer", "null"], units


# ---- CSV

def check_csv(machine, document):
    folder = machine.folder / "csv"
    machine.tool("export", "--format", "csv", "--output", folder)
    assert sorted(path.name for path in folder.iterdir()) == sorted(f"{name}.csv" for name in classes(document))
    for name, parts in classes(document).items():
        content = (folder / f"{name}.csv").read_bytes().decode("utf-8")
        assert content.endswith("\r\n")
        rows = list(csv.reader(io.StringIO(content, newline=""), strict=True))
        keys = rows.pop(0)
        expected = [["" if value is None else str(value) for value in part.values()] for part in parts]
        assert not parts or keys == list(parts[0])
        assert rows == expected, f"{name}: {[pair for pair in zip(rows, expected) if pair[0] != pair[1]][:1]}"


def classes(document):
    return {name: parts for name, parts in document.items() if isinstance(parts, list)}


# ---- Prometheus

def check_prometheus(machine, document):
    text = machine.tool("export", "--format", "prometheus")
    told = subprocess.run([PROMTOOL, "check", "metrics"], input=text.encode(), capture_output=True)
    assert told.returncode == 0 and not told.stdout + told.stderr, told.stdout + told.stderr
    headers, series, family, families = Counter(), Counter(), None, []
    # An end of line is \n and nothing else.
    for line in text.split("\n")[:-1]:
        if header := re.fullmatch(r"# (HELP|TYPE) (\S+) (.+)", line):
            headers[header[1], header[2]] += 1
            family = header[2]
            families += [family] if header[1] == "HELP" else []
            continue
        sample = SAMPLE.fullmatch(line)
        assert sample, repr(line)
        assert sample[1] == family, line
        labels = LABEL.findall(sample[2] or "")
        assert len({name for name, _ in labels}) == len(labels), line
        series[sample[1], tuple(sorted(labels))] += 1
    assert set(headers.values()) == {1}, headers.most_common(1)
    assert set(series.values()) == {1}, series.most_common(1)
    assert len(set(families)) == len(families)
    for name, parts in classes(document).items():
        info = f"zymdb_{name.replace('-', '_')}_info"
        named = {dict(labels)["part"] for metric, labels in series if metric == info}
        assert len(named) == len(parts), f"{info} has {len(named)} of {len(parts)} parts"
    return text


def check_values(text):
    """Of the example server, whose values are known."""
    lines = text.split("\n")
    for expected in ['zymdb_memory_mem_size_bytes{part="1 CPU1_DIMM_A1"} 68719476736',
                     'zymdb_processors_cores{part="CPU1"} 32',
                     'zymdb_processors_max_speed_hertz{part="CPU1"} 3400000000',
                     'zymdb_ports_link_speed_bytes_per_second{part="0000:cb:00.0 0 host10"} 4000000000',
                     'zymdb_ports_link_info{part="0000:17:00.0 0 ens1f0np0",link="up"} 1',
                     'zymdb_functions_lanes_in_use{part="0000:17:00.0 slot 1"} 16',
                     'zymdb_functions_link_state_info{part="0000:17:00.0 slot 1",link_state="full"} 1',
                     'zymdb_parts{class="memory"} 32', "zymdb_inventory_generation 1"]:
        assert expected in lines, expected
    assert re.search(r"^zymdb_system_collected_at_seconds\{.*\} [0-9]{10}$", text, re.MULTILINE)


# ---- CycloneDX

def components(bill):
    """Every component, with the one that it is within."""
    pending = [(each, None) for each in [bill["metadata"].get("component", {}), *bill["components"]] if each]
    while pending:
        component, above = pending.pop()
        yield component, above
        pending += [(each, component) for each in component.get("components", [])]


def cyclonedx_validator():
    folder = os.environ.get("ZYMDB_CYCLONEDX_SCHEMAS")
    if not folder:
        return None
    schemas = {name: json.loads((Path(folder) / name).read_text())
               for name in ["bom-1.6.schema.json", "spdx.schema.json", "jsf-0.82.schema.json"]}
    store = {schema["$id"]: schema for schema in schemas.values()}
    main = schemas["bom-1.6.schema.json"]
    return jsonschema.Draft7Validator(main, resolver=jsonschema.RefResolver.from_schema(main, store=store),
                                      format_checker=jsonschema.draft7_format_checker)


def is_vacant(part):
    return "empty" in part.values()


def check_cyclonedx(machine, document, validator):
    text = machine.tool("export", "--format", "cyclonedx")
    bill = json.loads(text)
    if validator:
        validator.validate(bill)
        assert not validator.is_valid({**bill, "components": [{"type": "wheel", "name": "left"}]})
    assert (bill["bomFormat"], bill["specVersion"]) == ("CycloneDX", "1.6")
    assert re.fullmatch(r"urn:uuid:[0-9a-f]{8}-[0-9a-f]{4}-5[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}", bill["serialNumber"])
    assert bill["version"] == max(1, document["generation"])
    assert text == machine.tool("export", "--format", "cyclonedx")
    refs = Counter(component["bom-ref"] for component, _ in components(bill))
    assert not refs or set(refs.values()) == {1}, refs.most_common(1)
    for component, _ in components(bill):
        assert component["type"] in {"device", "firmware"} and component["name"], component
        for each in component.get("properties", []):
            name, key = re.fullmatch(r"zymdb:([a-z-]+):(\w+)", each["name"]).groups()
            assert component["bom-ref"].startswith(f"{name}:") and key in document[name][0], each
    check_parts(bill, document)
    return bill


def check_parts(bill, document):
    """Each part is there once, and what belongs to a function is in it."""
    found = Counter(component["bom-ref"].split(":")[0] for component, _ in components(bill)
                    if component.get("properties") is not None)
    for name, parts in classes(document).items():
        expected = 0 if name in NO_PARTS else sum(not is_vacant(part) for part in parts)
        assert found[name] == expected, f"{found[name]} of {expected} {name}"
    functions = {part["Address"] for part in document["functions"]}
    for component, above in components(bill):
        values = {each["name"].split(":")[-1]: each["value"] for each in component.get("properties", [])}
        if component["bom-ref"].split(":")[0] in WITHIN_FUNCTIONS and values.get("Function") in functions:
            assert {"name": "zymdb:functions:Address", "value": values["Function"]} in above["properties"], component["bom-ref"]


def check_example_bill(bill):
    within = {component["bom-ref"]: above and above["bom-ref"] for component, above in components(bill)}
    by_ref = {component["bom-ref"]: component for component, _ in components(bill)}
    assert within["ports:0000:17:00.1 0 ens1f1np1"] == "functions:0000:17:00.1 slot 1", within
    assert within["functions:0000:17:00.1 slot 1"] == "adapters:slot 1 0x00010001"
    assert within["adapters:slot 1 0x00010001"] is None
    # Of several on-board devices each function is its own one's.
    assert within["functions:0000:04:00.1 on board"] == "adapters:on board 0x00040000"
    assert within["functions:0000:00:00.0 on board"] is None
    drive = by_ref["drives:Bay 1"]
    assert drive["manufacturer"] == {"name": "Samsung"} and drive["name"] == "SAMSUNG MZQL21T9HCJR-00A07"
    assert {"name": "zymdb:drives:SerialNo", "value": "S64GNE0R000101"} in drive["properties"]
    assert by_ref["drives:Bay 1/firmware"]["version"] == "GDC5602Q" and by_ref["drives:Bay 1/firmware"]["type"] == "firmware"
    machine = bill["metadata"]["component"]
    assert (machine["manufacturer"]["name"], machine["name"]) == ("Example Systems", "ES-2240 Two-Socket Server")
    assert bill["metadata"]["tools"]["components"][0]["name"] == "zymdb"
    assert re.fullmatch(r"20\d\d-\d\d-\d\dT\d\d:\d\d:\d\dZ", bill["metadata"]["timestamp"])
    # What changes from one moment to the next is no part of the bill.
    assert not [each for component in by_ref.values() for each in component.get("properties", [])
                if each["name"].split(":")[-1] in {"Temperature", "LinkStatus", "CollectedAt", "_id"}]


def check_serial_numbers(machine, bill):
    """One machine has one serial number, whatever becomes of it, and its next generation the next version."""
    machine.tool("link", "0000:17:00.0", "--set", "status=down")
    later = json.loads(machine.tool("export", "--format", "cyclonedx"))
    assert later["serialNumber"] == bill["serialNumber"] and later["version"] == bill["version"] + 1
    machine.change([("UPDATE System SET SerialNo='another'",)])
    other = json.loads(machine.tool("export", "--format", "cyclonedx"))
    assert other["serialNumber"] != bill["serialNumber"]


def check_hostile(metrics, bill):
    """The texts are there, in each format's own way."""
    assert metrics.count('="<script>\\"\\\\"') > 20 and "\\nlines\r\\n" in metrics and "\ufffd\ufffd broken" in metrics
    values = [each["value"] for component, _ in components(bill) for each in component.get("properties", [])]
    assert values.count('<script>"\\') > 20 and values.count("two\nlines\r\n") > 20


def check(name, fill, schema, validator):
    with tempfile.TemporaryDirectory() as folder:
        machine = Machine(name, folder)
        fill(machine)
        document = check_json(machine, schema)
        check_csv(machine, document)
        metrics = check_prometheus(machine, document)
        bill = check_cyclonedx(machine, document, validator)
        if name == "hostile texts":
            check_hostile(metrics, bill)
        if name == "example server":
            check_schema(schema, document)
            check_values(metrics)
            check_example_bill(bill)
            check_serial_numbers(machine, bill)


def main():
    assert PROMTOOL.exists(), f"{PROMTOOL} is missing: scripts/install-packages packages-test.txt"
    schema, validator = json.loads(run(TOOL, "export", "--schema")), cyclonedx_validator()
    count = 0
    for name, fill in machines():
        try:
            check(name, fill, schema, validator)
        except Exception:
            print(f"{name}:", file=sys.stderr)
            raise
        count += 1
    print(f"{count} inventories")


if __name__ == "__main__":
    main()
