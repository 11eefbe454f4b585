"""The service as clients that others wrote see it: redfishtool by its words, sushy by its objects."""
import contextlib
import fcntl
import http.server
import json
import os
import queue
import shutil
import subprocess
import sys
import threading

import pytest
import sushy
from conftest import EXAMPLE, TOOL, collect, eventually, run
from sushy import auth, exceptions
from sushy.resources.registry import message_registry_file
from tls_test import make_certificate

SYSTEM, CHASSIS = "/redfish/v1/Systems/1", "/redfish/v1/Chassis/1"
SETTINGS = SYSTEM + "/Bios/Settings"


@contextlib.contextmanager
def turn():
    """The machine has one marker of settings that are parsed: tests that depend on it take turns."""
    with open("/tmp/zymdb-test-marker.lock", "a") as file:
        fcntl.flock(file, fcntl.LOCK_EX)
        yield


@pytest.fixture(autouse=True)
def own_turn(example):
    with turn():
        yield


@pytest.fixture(scope="module")
def example(tmp_path_factory):
    """The example server with its network and its settings."""
    folder = tmp_path_factory.mktemp("example")
    collect(folder / "inventory.db")
    run(sys.executable, EXAMPLE / "system_tree.py", folder / "tree")
    run(TOOL, "--inventory", folder / "inventory.db", "collect", "--quiet", "--lspci", EXAMPLE / "server.lspci", "--smbios",
        EXAMPLE / "server.smbios", "--sysfs", folder / "tree")
    with turn():
        run(TOOL, "--inventory", folder / "inventory.db", "settings", "import", EXAMPLE / "settings.json")
    return folder / "inventory.db"


@pytest.fixture
def inventory(example, tmp_path):
    for file in example.parent.glob("inventory*.db"):
        shutil.copy(file, tmp_path)
    return tmp_path / "inventory.db"


@pytest.fixture(autouse=True)
def nothing_between(monkeypatch):
    monkeypatch.setenv("NO_PROXY", "*")
    for name in ["REQUESTS_CA_BUNDLE", "CURL_CA_BUNDLE"]:
        monkeypatch.delenv(name, raising=False)


@pytest.fixture(params=["plain", "encrypted"])
def service(request, start, tmp_path):
    words = []
    if request.param == "encrypted":
        certificate, key = make_certificate(tmp_path, "localhost")
        words = ["--tls-certificate", certificate, "--tls-key", key]
    one = start(*words)
    one.certificate = str(certificate) if words else False
    return one


@pytest.fixture
def shown(inventory):
    """What the tool shows: shown("ports")."""
    def show(listing):
        told = json.loads(run(TOOL, "--inventory", inventory, "show", listing, "--json"))
        return told[listing]
    return show


def pending(inventory, setting):
    told = json.loads(run(TOOL, "--inventory", inventory, "show", "settings", "--json"))["settings"]
    return next(each["PendingValue"] for each in told if each["SettingID"] == setting)


@contextlib.contextmanager
def client(service, user="rhea", how=auth.SessionAuth, password="right"):
    """Of sushy; it logs out in the end."""
    with how(user, password) as login:
        yield sushy.Sushy(service.address.geturl(), auth=login, verify=service.certificate)


def registry_of(one):
    files = message_registry_file.MessageRegistryFileCollection(one._conn, "/redfish/v1/Registries").get_members()
    return next(each for each in files if each.registry.startswith("ZymdbBios")).get_attribute_registry("en", one._conn)


class Redfishtool:
    def __init__(self, service, user="rhea", how="Session", password="right"):
        secure = "Always" if service.address.scheme == "https" else "Never"
        self.words = ["redfishtool", "-r", service.address.netloc, "-S", secure, "-A", how, "-u", user, "-p", password]

    def run(self, *words):
        return subprocess.run([*self.words, *words], capture_output=True, text=True, timeout=60,
                              env={**os.environ, "PYTHONWARNINGS": "ignore"})

    def __call__(self, *words):
        result = self.run(*words)
        assert result.returncode == 0, result
        return json.loads(result.stdout)


# ---- Logins

@pytest.mark.parametrize("how", [auth.BasicAuth, auth.SessionAuth, auth.SessionOrBasicAuth])
def test_sushy_logs_in_and_out(service, how):
    with client(service, how=how) as one:
        assert one.get_system_collection().members_identities == (SYSTEM,)
        assert service.metric("zymdb_http_sessions") == (0 if how is auth.BasicAuth else 1)
    assert service.metric("zymdb_http_sessions") == 0


@pytest.mark.parametrize("how", ["Basic", "Session"])
def test_redfishtool_logs_in_and_out(service, how):
    assert Redfishtool(service, how=how)("Systems", "-F")["SerialNumber"] == "ES2240-000017"
    assert service.metric("zymdb_http_sessions") == 0
    assert ("login of 'rhea'" in service.complaints()) == (how == "Session")


def test_redfishtool_keeps_a_session_over_several_calls(service):
    told = Redfishtool(service)("SessionService", "login")
    again = Redfishtool(service)
    again.words = again.words[:again.words.index("-A")] + ["-A", "Session", "-t", told["X-Auth-Token"]]
    assert again("Systems", "-F")["Id"] == "1"
    assert service.metric("zymdb_http_sessions") == 1
    assert again.run("SessionService", "logout", "-l", told["SessionLocation"]).returncode == 0
    assert service.metric("zymdb_http_sessions") == 0


@pytest.mark.parametrize("user,password", [("rhea", "wrong"), ("nora", "right"), ("unknown", "right")])
@pytest.mark.parametrize("how", [auth.BasicAuth, auth.SessionAuth])
def test_sushy_is_told_that_a_login_is_refused(service, how, user, password):
    with pytest.raises(exceptions.AccessError):
        with client(service, user, how, password) as one:
            one.get_system_collection()


def test_redfishtool_is_told_that_a_login_is_refused(service):
    for how in ["Basic", "Session"]:
        result = Redfishtool(service, how=how, password="wrong").run("Systems", "-F")
        assert result.returncode != 0 and "401" in result.stdout + result.stderr, result


# ---- What there is, as the tool shows it

# The attributes of sushy's objects, and the fields of the rows that they are.
SYSTEM_FIELDS = {"manufacturer": "Manufacturer", "sku": "SKU", "serial_number": "SerialNo", "uuid": "UUID"}
PROCESSOR_FIELDS = {"socket": "Socket", "manufacturer": "Manufacturer", "model": "Version", "max_speed_mhz": "MaxSpeed",
                    "total_cores": "CoreCount", "total_threads": "ThreadCount"}
DRIVE_FIELDS = {"manufacturer": "Manufacture", "model": "Model", "serial_number": "SerialNo", "part_number": "PartNo",
                "media_type": "MediaType"}
INTERFACE_FIELDS = {"identity": "InterfaceName", "permanent_mac_address": "PermanentAddress", "speed_mbps": "LinkSpeed"}
# Of functions; other firmware has listings of its own.
FIRMWARE_FIELDS = {"name": "FirmwareName", "version": "VersionString", "manufacturer": "Manufacture", "software_id": "SoftwareID"}


def is_of_function(related):
    return any("/PCIeFunctions/" in each["@odata.id"] for each in related)


def is_ethernet(port):
    return len(port["PermanentAddress"]) == 17


def values(things, names):
    """Of each thing, in an order that does not depend on theirs."""
    take = (lambda each, name: each[name]) if isinstance(things[0], dict) else getattr
    return sorted(([take(each, name) for name in names] for each in things), key=str)


# Which rows there are resources of, where not of all.
SOME = {"ports": is_ethernet}


def rows_of(shown, listing):
    rows = shown if isinstance(shown, list) else [shown]
    return [each for each in rows if SOME.get(listing, bool)(each)]


@pytest.mark.parametrize("listing,fields,ask", [
    ("system", SYSTEM_FIELDS, lambda one: [one.get_system(SYSTEM)]),
    ("system", SYSTEM_FIELDS, lambda one: [one.get_chassis(CHASSIS)]),
    ("processors", PROCESSOR_FIELDS,
     lambda one: [each for each in one.get_system(SYSTEM).processors.get_members() if each.socket]),
    ("drives", DRIVE_FIELDS, lambda one: [drive for each in one.get_system(SYSTEM).storage.get_members() for drive in each.drives]),
    ("ports", INTERFACE_FIELDS, lambda one: one.get_system(SYSTEM).ethernet_interfaces.get_members()),
    ("firmware", FIRMWARE_FIELDS,
     lambda one: [each for each in one.get_update_service().firmware_inventory.get_members() if is_of_function(each.related_item)]),
], ids=["system", "chassis", "processors", "drives", "interfaces", "firmware"])
def test_sushy_reads_what_the_tool_shows(service, shown, listing, fields, ask):
    with client(service) as one:
        found = ask(one)
        assert found and values(found, fields) == values(rows_of(shown(listing), listing), fields.values())


def test_sushy_finds_its_way_from_each_resource_to_the_others(service):
    with client(service) as one:
        system, chassis, manager = one.get_system(SYSTEM), one.get_chassis(CHASSIS), one.get_manager("/redfish/v1/Managers/1")
        for found in [chassis.systems, manager.systems]:
            assert [each.path for each in found] == [SYSTEM]
        for found in [system.chassis, manager.chassis]:
            assert [each.path for each in found] == [CHASSIS]
        for found in [system.managers, chassis.managers]:
            assert [each.path for each in found] == [manager.path]


def test_sushy_reads_the_sums_of_the_machine(service, shown):
    with client(service) as one:
        system = one.get_system(SYSTEM)
        assert system.processors.summary.count == sum(each["ThreadCount"] for each in shown("processors"))
        # Modules that keep their content have a capacity of their own.
        modules = [each for each in shown("memory") if not each["TypeDetail"] & 0x1000]
        assert system.memory_summary.size_gib == sum(each["MemSize"] or 0 for each in modules) / 1024


# What redfishtool reads, and the fields of the rows.
MEMORY = {"CapacityMiB": "MemSize", "Manufacturer": "Manufacturer", "SerialNumber": "SerialNo",
          "PartNumber": "PartNo", "OperatingSpeedMhz": "ClockSpeed"}
PROCESSORS = {"Socket": "Socket", "Model": "Version", "TotalCores": "CoreCount", "MaxSpeedMHz": "MaxSpeed"}
DRIVES = {"Model": "Model", "SerialNumber": "SerialNo", "PartNumber": "PartNo", "FirmwareVersion": "FwVersion"}
INTERFACES = {"Id": "InterfaceName", "PermanentMACAddress": "PermanentAddress", "SpeedMbps": "LinkSpeed"}
FIRMWARE = {"Name": "FirmwareName", "Version": "VersionString", "SoftwareId": "SoftwareID"}


@pytest.mark.parametrize("listing,fields,words", [
    ("memory", MEMORY, ["raw", "GET", SYSTEM + "/Memory?$expand=."]),
    ("processors", PROCESSORS, ["Systems", "-F", "Processors", "-a"]),
    ("drives", DRIVES, ["raw", "GET", CHASSIS + "/Drives?$expand=."]),
    ("ports", INTERFACES, ["Systems", "-F", "EthernetInterfaces", "-a"]),
    ("firmware", FIRMWARE, ["raw", "GET", "/redfish/v1/UpdateService/FirmwareInventory?$expand=."]),
], ids=["memory", "processors", "drives", "interfaces", "firmware"])
def test_redfishtool_reads_what_the_tool_shows(service, shown, listing, fields, words):
    found = [each for each in Redfishtool(service)(*words)["Members"] if listing != "firmware" or is_of_function(each["RelatedItem"])]
    # A property whose value nobody knows is left out.
    found = [each for each in found if fields.keys() <= each.keys()]
    rows = [each for each in rows_of(shown(listing), listing) if all(each[name] is not None for name in fields.values())]
    assert rows and values(found, fields) == values(rows, fields.values())


def test_redfishtool_finds_the_ports_of_the_adapters(service, shown):
    ask = Redfishtool(service)
    adapters = ask("raw", "GET", CHASSIS + "/NetworkAdapters?$expand=.($levels=2)")["Members"]
    ports = [port for each in adapters if "Ports" in each for port in ask("raw", "GET", each["Ports"]["@odata.id"] + "?$expand=.")["Members"]]
    named = [each for each in ports if "PortId" in each]
    assert values(named, ["PortId"]) == values(shown("ports"), ["InterfaceName"])
    for each in named:
        row = next(row for row in shown("ports") if row["InterfaceName"] == each["PortId"])
        assert each["LinkStatus"] == {"up": "LinkUp", "down": "LinkDown"}[row["Link"]]
        assert each.get("CurrentSpeedGbps") == (row["LinkSpeed"] and row["LinkSpeed"] / 1000)


@pytest.mark.parametrize("words", [["root"], ["versions"], ["odata"], ["Systems"], ["Systems", "list"], ["Chassis", "-F"],
                                   ["Chassis", "list"], ["Managers", "-F"], ["Managers", "list"], ["AccountService"],
                                   ["AccountService", "Roles", "-a"], ["SessionService"], ["SessionService", "Sessions", "-a"]], ids=" ".join)
def test_redfishtool_has_its_commands_answered(service, words):
    assert Redfishtool(service)(*words)


# ---- Settings

def test_sushy_changes_pending_settings_for_an_operator(service, inventory):
    with client(service, "oscar") as one:
        bios = one.get_system(SYSTEM).bios
        now = dict(bios.attributes)
        assert bios.pending_attributes["BootProtocol_4b0000"] == "None"
        bios.set_attributes({"BootProtocol_4b0000": "PXE", "BootVlan_4b0000": 40}, apply_time=sushy.APPLY_TIME_ON_RESET)
        assert bios.pending_attributes["BootProtocol_4b0000"] == "PXE" and bios.pending_attributes["BootVlan_4b0000"] == 40
        # What is in force stays until the reset.
        bios.refresh(force=True)
        assert bios.attributes == now
    assert (pending(inventory, "BootProtocol.4b0000"), pending(inventory, "BootVlan.4b0000")) == ("PXE", "40")


def test_sushy_reads_what_the_settings_may_be(service):
    with client(service) as one:
        entries = {each.name: each for each in registry_of(one).registry_entries.attributes}
        assert [each["ValueName"] for each in entries["BootProtocol_4b0000"].allowable_values] == ["None", "PXE", "iSCSI"]
        assert (entries["BootVlan_4b0000"].lower_bound, entries["BootVlan_4b0000"].upper_bound) == (0, 4094)
        assert set(entries) == set(one.get_system(SYSTEM).bios.attributes)


@pytest.mark.parametrize("user,value,refusal", [("rhea", "PXE", exceptions.AccessError), ("oscar", "Wheels", exceptions.BadRequestError),
                                                ("oscar", 7, exceptions.BadRequestError)])
def test_sushy_is_told_that_a_setting_is_refused(service, inventory, user, value, refusal):
    # With a session, sushy logs in once more after a 403, and says nothing of the second one.
    with client(service, user, auth.BasicAuth) as one, pytest.raises(refusal):
        one.get_system(SYSTEM).bios.set_attribute("BootProtocol_4b0000", value)
    assert pending(inventory, "BootProtocol.4b0000") == "None"


def test_sushy_is_told_that_a_snapshot_keeps_no_settings(start, inventory, tmp_path):
    run(TOOL, "--inventory", inventory, "snapshot", tmp_path / "snapshot.zymdb")
    one = start(inventory=tmp_path / "snapshot.zymdb")
    one.certificate = False
    with client(one, "oscar") as asking, pytest.raises(exceptions.HTTPError) as refusal:
        asking.get_system(SYSTEM).bios.set_attribute("BootProtocol_4b0000", "PXE")
    assert refusal.value.status_code == 405
    with client(one, "oscar") as asking:
        assert asking.get_system(SYSTEM).bios.pending_attributes["BootProtocol_4b0000"] == "None"


def test_redfishtool_changes_pending_settings_for_an_operator(service, inventory):
    words = ["-d", '{"Attributes": {"BootProtocol_4b0000": "iSCSI"}}', "raw", "PATCH", SETTINGS]
    refused = Redfishtool(service).run(*words)
    assert refused.returncode != 0 and "403" in refused.stdout + refused.stderr, refused
    assert pending(inventory, "BootProtocol.4b0000") == "None"
    changed = Redfishtool(service, "oscar").run(*words)
    assert changed.returncode == 0, changed
    assert pending(inventory, "BootProtocol.4b0000") == "iSCSI"


# ---- Events

@pytest.fixture
def receiver():
    """The URL of a server, and what is posted to it."""
    posts = queue.Queue()

    class Handler(http.server.BaseHTTPRequestHandler):
        def do_POST(self):
            posts.put(json.loads(self.rfile.read(int(self.headers["Content-Length"]))))
            self.send_response(204)
            self.end_headers()

        def log_message(self, *_):
            pass

    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    thread = threading.Thread(target=server.serve_forever)
    thread.start()
    yield f"http://127.0.0.1:{server.server_port}/events", posts
    server.shutdown()
    thread.join()
    server.server_close()


def test_sushy_subscribes_to_events_and_ends_that(service, inventory, receiver):
    url, posts = receiver
    with client(service, "oscar") as one:
        subscriptions = one.get_event_service().subscriptions
        made = subscriptions.create({"Destination": url, "Protocol": "Redfish", "Context": "rack 4"})
        assert [each.path for each in subscriptions.get_members()] == [made.path]
        assert (made.destination, made.context) == (url, "rack 4")
        run(TOOL, "--inventory", inventory, "link", "0000:17:00.0", "--set", "status=down")
        event = posts.get(timeout=30)
        told = [each["OriginOfCondition"]["@odata.id"] for each in event["Events"]]
        assert event["Context"] == "rack 4" and told == [CHASSIS + "/NetworkAdapters/Slot-1/Ports/0-0"], event
        made.delete()
        eventually(lambda: not one._conn.get("/redfish/v1/EventService/Subscriptions").json()["Members"])


def test_redfishtool_subscribes_to_events_and_tries_them(service, receiver):
    url, posts = receiver
    ask = Redfishtool(service, "ada")
    body = json.dumps({"Destination": url, "Protocol": "Redfish", "Context": "rack 5"})
    assert ask.run("-d", body, "raw", "POST", "/redfish/v1/EventService/Subscriptions").returncode == 0
    target = ask("raw", "GET", "/redfish/v1/EventService")["Actions"]["#EventService.SubmitTestEvent"]["target"]
    assert ask.run("-d", "{}", "raw", "POST", target).returncode == 0
    assert posts.get(timeout=30)["Context"] == "rack 5"
