"""Inventories of the tests: the example server, and what may become of one."""
import os
import shutil
import sqlite3
import subprocess
import sys

HOSTILE = "<script>document.title='hit'</script><img src=x onerror=\"document.title='hit'\">"


def run_tool(tool, inventory, *words):
    done = subprocess.run([tool, *map(str, words)], env={**os.environ, "ZYMDB_INVENTORY": str(inventory)},
                          capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    return done.stdout


def make_tree(source, folder):
    """A system as the example server's looks like from within."""
    subprocess.run([sys.executable, source / "data/example-server/system_tree.py", folder], check=True)
    return folder


def make_example(tool, source, folder):
    tree = make_tree(source, folder / "example-system")
    inventory = folder / "example.db"
    run_tool(tool, inventory, "collect", "--quiet", "--sysfs", tree)
    run_tool(tool, inventory, "settings", "import", source / "data/example-server/settings.json")
    return inventory


class Changed:
    """A copy of an inventory, to be changed row by row, behind the client's back."""

    def __init__(self, inventory, copy):
        # With what the client has not yet moved into the file.
        before = sqlite3.connect(inventory)
        self.database = sqlite3.connect(copy)
        before.backup(self.database)
        before.close()
        shutil.copymode(inventory, copy)

    def __enter__(self):
        return self.database

    def __exit__(self, *_):
        self.database.commit()
        self.database.close()


def make_troubled(inventory, copy):
    """With everything that deserves a look."""
    with Changed(inventory, copy) as database:
        database.executescript("""
            UPDATE Processor SET Status = 66 WHERE Socket = 'CPU2';
            UPDATE Memory SET MemSize = 0, MemType = 0, Manufacturer = '', PartNo = '', SerialNo = '' WHERE SlotNo IN (6, 22, 24);
            UPDATE Memory SET HealthStatus = 2, InfoMask = 65535, RemainingLife = 3 WHERE SlotNo = 8;
            UPDATE PCIs SET LanesInUse = 8, PCIeType = 3 WHERE BusNo IN (0x30, 0x31) AND MaxLanes = 16;
            UPDATE PCIs SET LanesInUse = 2 WHERE BusNo = 0x69 OR (BusNo = 0x66 AND DeviceNo = 2);
            UPDATE AimDisks SET Warning = 4, Temperature = 71, RemainLife = 8, InfoMask = 15, Presence = 1 WHERE BayNo = 3;
            UPDATE AimDisks SET Warning = 0, Temperature = 38, RemainLife = 93, InfoMask = 15, Presence = 1 WHERE BayNo = 5;
            INSERT INTO PldmDeviceFirmware (DeviceName, PCIKey, PCIFuncKey, Location, SlotNo, SoftwareID, VersionString,
                                            PendingVersionString, UpdateSupport, UpdateErrCode, UpdateErrString, Status, Updated)
              VALUES ('ConnectX-6 Dx', 65537, 1507328, 1, 1, 'PLDM:NIC', '22.35.2000', '22.39.1002', 1, 0, '', 2, 0),
                     ('A40', 65541, 11599872, 1, 5, 'PLDM:GPU', '94.02.5C', NULL, 1, 5, 'verification failed', 0, 1);
        """)
    return copy


def make_hostile(inventory, copy):
    """Whose devices call themselves what a page must not run, in every text that a device may choose."""
    with Changed(inventory, copy) as database:
        for table, column in [("System", "Model"), ("System", "Manufacturer"), ("System", "SerialNo"), ("System", "HostName"),
                              ("Processor", "Version"), ("Processor", "Socket"), ("Memory", "Manufacturer"),
                              ("Memory", "PartNo"), ("Memory", "DevLocator"), ("PCIAdapter", "CardName"), ("PCIs", "SlotDesignation"),
                              ("AimDisks", "Model"), ("AimDisks", "SerialNo"), ("AimDisks", "Location"), ("AimDisks", "Capacity"),
                              ("PCIPhysicalPort", "InterfaceName"), ("Firmwares", "FirmwareName"), ("Firmwares", "VersionString"),
                              ("PCISetting", "SettingName"), ("PCISetting", "PendingValue"), ("PCISetting", "ShortDesc")]:
            database.execute(f"UPDATE {table} SET {column} = ?", (HOSTILE,))
    return copy


def make_huge(inventory, copy):
    """4,000 functions more, and 192 modules."""
    with Changed(inventory, copy) as database:
        names = [row[1] for row in database.execute("PRAGMA table_info(PCIs)") if row[1] != "_id"]
        row = dict(zip(names, database.execute(f"SELECT {','.join(names)} FROM PCIs WHERE BusNo = 0x31").fetchone()))
        for i in range(4000):
            bus, device, function = 1 + i // 256, (i // 8) % 32, i % 8
            key = bus << 16 | device << 8 | function
            own = {**row, "SegNo": 1, "FunKey": 1 << 24 | key, "DevKey": 1 << 24 | key, "BusNo": bus, "DeviceNo": device,
                   "FunctionNo": function, "BridgeId": None, "HardwareId": 1 << 24 | key, "DeviceId": i // 16}
            database.execute(f"INSERT INTO PCIs ({','.join(own)}) VALUES ({','.join('?' * len(own))})", tuple(own.values()))
        names = [row[1] for row in database.execute("PRAGMA table_info(Memory)") if row[1] != "_id"]
        row = dict(zip(names, database.execute(f"SELECT {','.join(names)} FROM Memory WHERE SlotNo = 1").fetchone()))
        database.execute("DELETE FROM Memory")
        for i in range(192):
            own = {**row, "SlotNo": i + 1, "CPUIndex": 1 + i // 96, "ChannelNum": (i % 96) // 6, "DimmNum": i % 6,
                   "DevLocator": f"DIMM {i}", "SerialNo": f"S{i:06}"}
            database.execute(f"INSERT INTO Memory ({','.join(own)}) VALUES ({','.join('?' * len(own))})", tuple(own.values()))
    return copy
