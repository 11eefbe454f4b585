#!/usr/bin/env python3
"""Whatever the inventory, every resource that the service root leads to is one: each link resolves, each resource says what it
is, its headers say the same, and no two have one path. Each is valid by the published schemas in $ZYMDB_REDFISH_SCHEMAS, where that
is set.

usage: redfish_walk_test.py TOOL ROOT ASKER
"""
import fcntl
import http.server
import json
import os
import queue
import re
import subprocess
import sys
import tempfile
import threading
import xml.etree.ElementTree as ElementTree
from pathlib import Path

import jsonschema

sys.path.insert(0, str(Path(sys.argv[2]) / "tests/support"))
from inventories import EXAMPLE, Machine, machines  # noqa: E402

ASKER = sys.argv[3]
SCHEMAS = os.environ.get("ZYMDB_REDFISH_SCHEMAS")
PUBLISHED = "http://redfish.dmtf.org/schemas/v1/"
SAFE_PATH = re.compile(r"/redfish/v1(/[A-Za-z0-9._-]+)*/?")


class Asker:
    """Answers requests for one inventory."""

    def __init__(self, inventory):
        self.process = subprocess.Popen([ASKER], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                        env={**os.environ, "ZYMDB_INVENTORY": str(inventory), "ZYMDB_LOG": "stderr"})

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.wait(60)
        self.process.stdout.close()

    def __call__(self, path, **request):
        self.process.stdin.write(json.dumps({"path": path, **request}) + "\n")
        self.process.stdin.flush()
        return json.loads(self.process.stdout.readline())

    def json(self, path, **request):
        answer = self(path, **request)
        assert answer["status"] == 200, f"{path}: {answer}"
        return json.loads(answer["body"])


# ---- Published schemas

class Missing(dict):
    """A schema that is not at hand: an older version, that nothing of ours follows, or another body's, that may be linked to."""

    def __init__(self, uri):
        super().__init__()
        self.otherwise = {"$ref": PUBLISHED + "odata-v4.json#/definitions/idRef"} if "swordfish" in uri else False

    def __getitem__(self, name):
        return self if name == "definitions" else self.otherwise

    def get(self, name, default=None):
        return default


class Schemas:
    def __init__(self, folder):
        self.folder, self.validators = Path(folder), {}

    def load(self, uri):
        file = self.folder / "json-schema" / uri.split("#")[0].rsplit("/", 1)[-1]
        return json.loads(file.read_text()) if file.exists() and "/v1/" in uri and "swordfish" not in uri else Missing(uri)

    def validate(self, name, document):
        if name not in self.validators:
            file = self.folder / "json-schema" / f"{name}.json"
            assert file.exists(), f"no schema {name} is published"
            schema = json.loads(file.read_text())
            resolver = jsonschema.RefResolver(schema["$id"], schema, handlers={"http": self.load})
            self.validators[name] = jsonschema.Draft7Validator(schema, resolver=resolver,
                                                               format_checker=jsonschema.draft7_format_checker)
        errors = sorted(self.validators[name].iter_errors(document), key=lambda error: list(error.path))
        assert not errors, f"{document.get('@odata.id')}: {[(list(each.path), each.message[:300]) for each in errors[:5]]}"

    def is_valid(self, name, document):
        try:
            self.validate(name, document)
        except AssertionError:
            return False
        return True


# ---- The tree

def links_in(value):
    if isinstance(value, dict):
        if "@odata.id" in value:
            yield value["@odata.id"].rstrip("/") or "/"
        for key, each in value.items():
            if key in {"Uri", "target", "ServerSentEventUri"}:
                continue
            yield from links_in(each)
    elif isinstance(value, list):
        for each in value:
            yield from links_in(each)


def known_types(ask):
    """The types that the metadata document speaks of."""
    metadata = ElementTree.fromstring(ask("/redfish/v1/$metadata")["body"])
    return {each.attrib["Namespace"] for each in metadata.iter() if each.tag.endswith("}Include")}


def check_resource(path, answer, resource, types):
    assert SAFE_PATH.fullmatch(path), path
    assert resource["@odata.id"].rstrip("/") == path, resource["@odata.id"]
    name, member = re.fullmatch(r"#(\w+(?:\.v\d+_\d+_\d+)?)\.(\w+)", resource["@odata.type"]).groups()
    assert name in types, f"{name} is no part of the metadata"
    assert name.split(".")[0] == member, resource["@odata.type"]
    assert isinstance(resource["Name"], str) and resource["Name"], path
    headers = answer["headers"]
    assert headers["ETag"] == resource["@odata.etag"], path
    assert re.fullmatch(r'(W/)?"[^"]+"', headers["ETag"])
    assert headers["Link"] == f"<{PUBLISHED}{name}.json>; rel=describedby", headers["Link"]
    assert headers["OData-Version"] == "4.0" and headers["Allow"].startswith("GET, HEAD")
    if "Members" in resource:
        assert resource["Members@odata.count"] == len(resource["Members"]), path
        assert len({each["@odata.id"] for each in resource["Members"]}) == len(resource["Members"]), path
    elif name.split(".")[0] != "ServiceRoot":
        assert resource["Id"] == path.rsplit("/", 1)[-1], path
    for key, each in resource.items():
        if key.endswith("@odata.count") and key != "Members@odata.count":
            assert each == len(resource[key.split("@")[0]]), f"{path} {key}"
    return name


def walk(ask, schemas):
    # The property that leads to the slots is deprecated; they are where the schema says that they are.
    types, resources, pending = known_types(ask), {}, ["/redfish/v1", "/redfish/v1/Chassis/1/PCIeSlots"]
    while pending:
        path = pending.pop()
        if path in resources:
            continue
        answer = ask(path)
        assert answer["status"] == 200, f"{path}: {answer['status']} {answer['body'][:300]}"
        resource = json.loads(answer["body"])
        name = check_resource(path, answer, resource, types)
        if schemas:
            schemas.validate(name, resource)
        resources[path] = resource
        pending += links_in(resource)
        # What the files of registries of our own lead to is a resource too.
        pending += [each["Uri"] for each in resource.get("Location", []) if isinstance(resource.get("Location"), list) and "Uri" in each]
    return resources


def of_type(resources, name):
    return {path: each for path, each in resources.items() if each["@odata.type"].startswith(f"#{name}.v")}


# ---- What is known of an inventory

def check_counts(resources, document):
    """Every part is a resource, and no part is told of twice."""
    processors = of_type(resources, "Processor")
    assert len(processors) == len(document["processors"]) + len(document["gpus"])
    assert len(of_type(resources, "Memory")) == len(document["memory"])
    assert len(of_type(resources, "Drive")) == len(document["drives"])
    assert len(of_type(resources, "PCIeFunction")) == len(document["functions"])
    functions = {each["Address"] for each in document["functions"]}
    assert len(of_type(resources, "Port")) == sum(each["Function"] in functions for each in document["ports"])
    firmware = of_type(resources, "SoftwareInventory")
    staged = [each for each in firmware.values() if each.get("Staged")]
    assert len(staged) == sum(each["PendingVersionString"] is not None for each in document["pldm"])
    assert len(firmware) >= len(document["firmware"]) + len(document["pldm"]) + len(document["embedded"]) + len(staged)
    bios = of_type(resources, "Bios")
    assert len(bios) == (2 if document["settings"] else 0), bios.keys()
    for each in bios.values():
        assert len(each["Attributes"]) == len(document["settings"])


def check_example(ask, resources):
    """The example server's own values, where the schemas say that they belong."""
    system = resources["/redfish/v1/Systems/1"]
    assert (system["Manufacturer"], system["Model"], system["SerialNumber"]) == \
        ("Example Systems", "ES-2240 Two-Socket Server", "ES2240-000017")
    assert system["UUID"] == "00112233-4455-6677-8899-aabbccddeeff" and system["BiosVersion"] == "1.20"
    summary = system["ProcessorSummary"]
    assert (summary["Count"], summary["CoreCount"], summary["LogicalProcessorCount"]) == (2, 64, 128)
    processor = resources["/redfish/v1/Systems/1/Processors/CPU1"]
    assert (processor["ProcessorType"], processor["ProcessorArchitecture"], processor["MaxSpeedMHz"]) == ("CPU", "x86", 3400)
    assert resources["/redfish/v1/Systems/1/Processors/GPU-Slot-2"]["Model"] == "GA100 [A100 PCIe 80GB]"
    module = resources["/redfish/v1/Systems/1/Memory/CPU1_DIMM_A1"]
    assert (module["CapacityMiB"], module["MemoryDeviceType"], module["BaseModuleType"], module["RankCount"]) == \
        (65536, "DDR4", "RDIMM", 2)
    device = resources["/redfish/v1/Chassis/1/PCIeDevices/Slot-1"]
    assert (device["SerialNumber"], device["PartNumber"], device["DeviceType"]) == \
        ("MT2135X00017", "MCX623106AN-CDAT", "MultiFunction")
    assert device["PCIeInterface"] == {"LanesInUse": 16, "MaxLanes": 16, "PCIeType": "Gen4", "MaxPCIeType": "Gen4"}
    function = resources["/redfish/v1/Chassis/1/PCIeDevices/Slot-1/PCIeFunctions/0"]
    assert (function["ClassCode"], function["DeviceClass"], function["VendorId"]) == ("0x020000", "NetworkController", "0x15B3")
    port = resources["/redfish/v1/Chassis/1/NetworkAdapters/Slot-1/Ports/0-0"]
    assert (port["LinkStatus"], port["CurrentSpeedGbps"]) == ("LinkUp", 100)
    assert port["Ethernet"]["AssociatedMACAddresses"] == ["B8:CE:F6:00:20:00"]
    fibre = resources["/redfish/v1/Chassis/1/NetworkAdapters/Slot-7/NetworkDeviceFunctions/0-0"]
    assert fibre["FibreChannel"]["PermanentWWPN"] == "21:00:00:24:FF:00:50:00"
    interface = resources["/redfish/v1/Systems/1/EthernetInterfaces/ens1f0np0"]
    assert (interface["SpeedMbps"], interface["MTUSize"], interface["LinkStatus"]) == (100000, 9000, "LinkUp")
    drive = resources["/redfish/v1/Chassis/1/Drives/Bay-1"]
    assert (drive["CapacityBytes"], drive["Protocol"], drive["MediaType"]) == (1920000000000, "NVMe", "SSD")
    assert drive["Links"]["Storage"]["@odata.id"] == "/redfish/v1/Systems/1/Storage/Bay-1"
    firmware = resources["/redfish/v1/UpdateService/FirmwareInventory/Bay-1-0-OS-NVME"]
    assert (firmware["Version"], firmware["SoftwareId"]) == ("GDC5602Q", "OS:NVME")
    slots = {each["Location"]["PartLocation"]["LocationOrdinalValue"]: each
             for each in resources["/redfish/v1/Chassis/1/PCIeSlots"]["Slots"]}
    assert "PCIeSlots" not in resources["/redfish/v1/Chassis/1"]
    assert sorted(slots) == [1, 2, 4, 5, 6, 7, 8, 10]
    assert (slots[10]["SlotType"], slots[10]["Lanes"], slots[1]["PCIeType"]) == ("OCP3Small", 16, "Gen4")
    attributes = resources["/redfish/v1/Systems/1/Bios"]["Attributes"]
    assert (attributes["BootProtocol_4b0000"], attributes["BootVlan_4b0000"]) == ("None", 0)
    assert resources["/redfish/v1/Systems/1/Bios/Settings"]["Attributes"]["VirtualFunctions_170000"] == 16


def check_registry(resources):
    """Every attribute is described, and its values are of its type."""
    bios = resources.get("/redfish/v1/Systems/1/Bios")
    if not bios:
        return
    registry = next(each for each in resources.values() if each.get("Id") == bios["AttributeRegistry"])
    described = {each["AttributeName"]: each for each in registry["RegistryEntries"]["Attributes"]}
    assert set(described) == set(bios["Attributes"])
    kinds = {"Integer": int, "String": str, "Enumeration": str}
    for name, value in bios["Attributes"].items():
        assert value is None or type(value) is kinds[described[name]["Type"]], name


def check_expanded(ask, resources, schemas):
    """What is expanded is what would be found behind the links."""
    for path, levels in [("/redfish/v1/Systems/1/Memory", 1), ("/redfish/v1/Chassis/1/PCIeDevices", 2)]:
        expanded = ask.json(path, query=[["$expand", f".($levels={levels})"]])
        assert len(expanded["Members"]) == len(resources[path]["Members"])
        for member in expanded["Members"]:
            own = resources[member["@odata.id"]]
            if levels == 1:
                assert member == own, member["@odata.id"]
            else:
                functions = member["PCIeFunctions"]
                assert functions == resources[functions["@odata.id"]]
    everything = ask.json("/redfish/v1", query=[["$expand", ".($levels=6)"]])
    assert everything["Systems"]["Members"][0]["Memory"]["Members@odata.count"] == \
        resources["/redfish/v1/Systems/1/Memory"]["Members@odata.count"]


def check_mistakes(schemas, resources):
    """A schema that takes anything would prove nothing."""
    system = resources["/redfish/v1/Systems/1"]
    assert schemas.is_valid("ComputerSystem.v1_27_0", system)
    assert not schemas.is_valid("ComputerSystem.v1_27_0", {**system, "Wheels": 4})
    assert not schemas.is_valid("ComputerSystem.v1_27_0", {**system, "SystemType": "Wheeled"})
    assert not schemas.is_valid("ComputerSystem.v1_27_0", {**system, "Status": {"State": "Rolling"}})
    assert not schemas.is_valid("ComputerSystem.v1_27_0", {key: each for key, each in system.items() if key != "Name"})
    drive = resources["/redfish/v1/Chassis/1/Drives/Bay-1"]
    assert not schemas.is_valid("Drive.v1_22_0", {**drive, "CapacityBytes": "1.92TB"})


def check_published_messages(ask, schemas):
    """Errors have the published form, and the published words."""
    published = json.loads((schemas.folder / "registries/Base.1.22.1.json").read_text())["Messages"]
    requests = [{"path": "/redfish/v1/nothing"}, {"path": "/redfish/v1/Systems", "method": "PATCH"},
                {"path": "/redfish/v1/Systems", "query": [["$filter", "x"]]}, {"path": "/redfish/v1/Systems", "role": 0},
                {"path": "/redfish/v1/SessionService/Sessions", "method": "POST", "body": "{",
                 "headers": [["Content-Type", "application/json"]]}]
    subscriptions = [{}, {"Destination": "http://user@x/", "Protocol": "FTP"}, {"Destination": "h" * 2000},
                     {"HttpHeaders": [{"A": "b"}] * 20}, {"EventFormatType": 4}]
    requests += [{"path": "/redfish/v1/EventService/Subscriptions", "method": "POST", "body": json.dumps(each),
                  "headers": [["Content-Type", "application/json"]]} for each in subscriptions]
    for request in requests:
        answer = ask(request.pop("path"), **request)
        assert answer["status"] >= 400
        body = json.loads(answer["body"])
        schemas.validate("redfish-error.v1_0_2", {"error": {**body["error"], "@Message.ExtendedInfo": []}})
        for each in body["error"]["@Message.ExtendedInfo"]:
            message = published[each["MessageId"].rsplit(".", 1)[-1]]
            words = message["Message"]
            for number, argument in enumerate(each["MessageArgs"], 1):
                words = words.replace(f"%{number}", argument)
            assert (each["Message"], each["MessageSeverity"], each["Resolution"]) == \
                (words, message["MessageSeverity"], message["Resolution"])
            assert len(each["MessageArgs"]) == message["NumberOfArgs"]


class Receiver(http.server.BaseHTTPRequestHandler):
    """Whom events are posted to."""
    events = queue.Queue()

    def do_POST(self):
        self.events.put(json.loads(self.rfile.read(int(self.headers["Content-Length"]))))
        self.send_response(204)
        self.end_headers()

    def log_message(self, *_):
        pass


def check_deliveries(ask, schemas):
    """A subscription is a resource, and what is posted is an event, by the published schemas."""
    with http.server.ThreadingHTTPServer(("127.0.0.1", 0), Receiver) as server:
        threading.Thread(target=server.serve_forever, daemon=True).start()
        subscriptions = "/redfish/v1/EventService/Subscriptions"
        wanted = {"Destination": f"http://127.0.0.1:{server.server_port}/", "Protocol": "Redfish", "Context": "here"}
        made = ask(subscriptions, method="POST", body=json.dumps(wanted), headers=[["Content-Type", "application/json"]])
        assert made["status"] == 201, made
        path = made["headers"]["Location"]
        answer = ask(path)
        schemas.validate("EventDestination.v1_16_0", json.loads(answer["body"]))
        schemas.validate("EventDestination.v1_16_0", json.loads(made["body"]))
        schemas.validate("EventDestinationCollection", ask.json(subscriptions))
        assert ask("/redfish/v1/EventService/Actions/EventService.SubmitTestEvent", method="POST")["status"] == 204
        event = Receiver.events.get(timeout=20)
        schemas.validate("Event.v1_13_0", event)
        assert event["Context"] == "here"
        assert ask(path, method="DELETE")["status"] == 204
        server.shutdown()


def check(name, fill, schemas):
    # The machine has one marker of settings that are parsed: tests that depend on it take turns.
    with tempfile.TemporaryDirectory() as folder, open("/tmp/zymdb-test-marker.lock", "a") as turn:
        fcntl.flock(turn, fcntl.LOCK_EX)
        machine = Machine(name, folder)
        fill(machine)
        if name == "example server":
            machine.tool("settings", "import", EXAMPLE / "settings.json")
        with Asker(machine.inventory) as ask:
            resources = walk(ask, schemas)
            check_counts(resources, json.loads(machine.tool("export")))
            check_registry(resources)
            check_expanded(ask, resources, schemas)
            if name == "example server":
                check_example(ask, resources)
            if name == "example server" and schemas:
                check_mistakes(schemas, resources)
                check_published_messages(ask, schemas)
                check_deliveries(ask, schemas)
        return len(resources)


def main():
    schemas = Schemas(SCHEMAS) if SCHEMAS else None
    count = 0
    for name, fill in machines():
        try:
            count += check(name, fill, schemas)
        except Exception:
            print(f"{name}:", file=sys.stderr)
            raise
    print(f"{count} resources, {'validated' if schemas else 'without schemas'}")


if __name__ == "__main__":
    main()
