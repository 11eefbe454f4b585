#!/usr/bin/env python3
"""Writes the example server as its running system would show it: a tree like /sys, with all PCI functions, the SMBIOS
tables, network ports, drives and firmware versions. Usage: system_tree.py FOLDER

The same server as generate.py's, and the same rule: the parts exist, serial numbers and addresses are made up. What
only drivers tell (connectors of Ethernet ports, health of drives) no such tree holds.
"""

import pathlib
import struct
import sys

sys.dont_write_bytecode = True  # no files beside the source
import generate  # noqa: E402

# Function, name, address, phys_port_name, frame size, Mbit/s of the link (none: no link).
INTERFACES = [
    ("04:00.0", "eno1", "b4:96:91:00:10:00", None, 1500, 1000),
    ("04:00.1", "eno2", "b4:96:91:00:10:01", None, 1500, None),
    ("17:00.0", "ens1f0np0", "b8:ce:f6:00:20:00", "p0", 9000, 100000),
    ("17:00.1", "ens1f1np1", "b8:ce:f6:00:20:01", "p1", 9000, 100000),
    ("4b:00.0", "ens4f0", "3c:fd:fe:00:30:00", None, 1500, 10000),
    ("4b:00.1", "ens4f1", "3c:fd:fe:00:30:01", None, 1500, 10000),
    ("4b:00.2", "ens4f2", "3c:fd:fe:00:30:02", None, 1500, None),
    ("4b:00.3", "ens4f3", "3c:fd:fe:00:30:03", None, 1500, None),
    ("98:00.0", "ens6f0np0", "0c:42:a1:00:40:00", "p0", 1500, 25000),
]

# Function, device, firmware, layer and Gbit/s with lanes of its port. Ethernet ports can do remote memory access, too.
RDMA_DEVICES = [
    ("17:00.0", "mlx5_0", "22.35.2000", "Ethernet", "100 Gb/sec (4X EDR)"),
    ("17:00.1", "mlx5_1", "22.35.2000", "Ethernet", "100 Gb/sec (4X EDR)"),
    ("98:00.0", "mlx5_2", "24.35.2000", "Ethernet", "25 Gb/sec (1X EDR)"),
    ("98:00.1", "mlx5_3", "24.35.2000", "InfiniBand", "100 Gb/sec (4X EDR)"),
]

# Function, host, port name, and whether it is online.
FIBRE_CHANNEL_HOSTS = [("cb:00.0", "host10", 0x21000024FF005000, True), ("cb:00.1", "host11", 0x21000024FF005001, False)]

# Function, drive, model, serial number, firmware, 512-byte sectors of its namespace.
NVME_DRIVES = [
    ("67:00.0", "nvme0", "SAMSUNG MZQL21T9HCJR-00A07", "S64GNE0R000101", "GDC5602Q", 3750748848),
    ("68:00.0", "nvme1", "SAMSUNG MZQL21T9HCJR-00A07", "S64GNE0R000102", "GDC5602Q", 3750748848),
    ("69:00.0", "nvme2", "SAMSUNG MZQL21T9HCJR-00A07", "S64GNE0R000103", "GDC5302Q", 3750748848),
    ("e3:00.0", "nvme3", "INTEL SSDPF2KX038TZ", "PHAC000000043P8AGN", "JCV10100", 7501476528),
    ("e5:00.0", "nvme4", "INTEL SSDPED1K375GA", "PHKS00000005375AGN", "E2010600", 732585168),
]

# Port of the SATA controller, disk, model, revision (both as long as the system shows them), serial number, world wide
# name, sectors, whether it rotates.
SATA_CONTROLLER = "00:17.0"
SATA_DISKS = [
    (7, "sda", "Micron_5300_MTFD", "U001", "20382C000007", "naa.500a07512c000007", 937703088, 0),
    (8, "sdb", "ST4000NM000A-2HZ", "SN01", "WS200008", "naa.5000c500c2000008", 7814037168, 1),
]

# Function, product, part number, serial number, in the card's own words.
VITAL_PRODUCT_DATA = [
    ("17:00.0", "ConnectX-6 Dx EN adapter card", "MCX623106AN-CDAT", "MT2135X00017"),
    ("17:00.1", "ConnectX-6 Dx EN adapter card", "MCX623106AN-CDAT", "MT2135X00017"),
    ("98:00.0", "BlueField-2 DPU 100GbE/EDR VPI Dual-Port", "MBF2M516A-EEEOT", "MT2135X00098"),
    ("98:00.1", "BlueField-2 DPU 100GbE/EDR VPI Dual-Port", "MBF2M516A-EEEOT", "MT2135X00098"),
]

# The kernel's drivers, by vendor and class; None: of any vendor.
DRIVERS = [
    (None, 0x0604, "pcieport"),
    (None, 0x0106, "ahci"),
    (None, 0x0108, "nvme"),
    (None, 0x0C03, "xhci_hcd"),
    (0x1000, 0x0104, "megaraid_sas"),
    (0x10DE, 0x0302, "nvidia"),
    (0x1077, 0x0C04, "qla2xxx"),
    (0x15B3, 0x0200, "mlx5_core"),
    (0x1A03, 0x0300, "ast"),
]

TRANSFER_RATES = {1: "2.5 GT/s PCIe", 2: "5.0 GT/s PCIe", 3: "8.0 GT/s PCIe", 4: "16.0 GT/s PCIe"}


def folders_of(functions):
    """The folder of each function, below those of the bridges that lead to it."""
    bridges = {function.config[0x19]: function for function in functions if function.config[0x0E] & 0x7F == 1}
    folders = {}
    for function in sorted(functions, key=lambda each: each.bus):
        bridge = bridges.get(function.bus)
        above = folders[bridge.address()] if bridge else pathlib.Path("pci0000:%02x" % function.bus)
        folders[function.address()] = above / ("0000:" + function.address())
    return folders


class Tree:
    """Folders of devices, and links to them from the folders of their classes."""

    def __init__(self, root, functions):
        self.root = pathlib.Path(root)
        self.folders = {address: self.root / "devices" / path for address, path in folders_of(functions).items()}

    def write(self, folder, attributes):
        for attribute, content in attributes.items():
            file = folder / attribute
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_bytes(content if isinstance(content, bytes) else b"%s\n" % str(content).encode())

    def link(self, path, target):
        link = self.root / path
        link.parent.mkdir(parents=True, exist_ok=True)
        link.symlink_to(pathlib.Path(*[".."] * (len(link.relative_to(self.root).parts) - 1), target.relative_to(self.root)))

    def add(self, function, kind, name, attributes, below=""):
        device = self.folders[function] / below / kind / name
        self.write(device, attributes)
        self.link("class/%s/%s" % (kind, name), device)


def link_attributes(name, link):
    generation, lanes = link or (0, 0)
    return {name + "_link_speed": TRANSFER_RATES.get(generation, "Unknown"), name + "_link_width": lanes}


def function_attributes(function):
    vendor, device, subvendor, subdevice = (
        struct.unpack_from("<H", function.config, offset)[0] for offset in (0x00, 0x02, 0x2C, 0x2E)
    )
    attributes = {"config": bytes(function.config), "vendor": "0x%04x" % vendor, "device": "0x%04x" % device}
    attributes.update({"class": "0x%06x" % function.class_code, "revision": "0x%02x" % function.revision})
    attributes.update({"numa_node": 0 if function.bus < 0x80 else 1})
    if function.config[0x0E] & 0x7F == 0:
        attributes.update({"subsystem_vendor": "0x%04x" % subvendor, "subsystem_device": "0x%04x" % subdevice})
    if function.most:
        attributes.update(link_attributes("max", function.most))
        attributes.update(link_attributes("current", function.current))
    return attributes


def driver_of(function):
    vendor = struct.unpack_from("<H", function.config, 0)[0]
    for of_vendor, of_class, driver in DRIVERS:
        if of_vendor in (None, vendor) and of_class == function.class_code >> 8:
            return driver
    return None


def vital_product_data(product, part_number, serial_number):
    """An identifier string and read-only fields, the last of which makes the sum of all bytes zero."""
    fields = b"".join(key + bytes([len(text)]) + text.encode() for key, text in [(b"PN", part_number), (b"SN", serial_number)])
    fields += b"RV\x01"
    data = b"\x82" + struct.pack("<H", len(product)) + product.encode() + b"\x90" + struct.pack("<H", len(fields) + 1) + fields
    return data + bytes([-sum(data) & 0xFF]) + b"\x78"


def interface(address, port_name, frame_size, speed):
    attributes = {"type": 1, "addr_assign_type": 0, "address": address, "dev_port": 0, "mtu": frame_size}
    attributes.update({"carrier": 1 if speed else 0, "operstate": "up" if speed else "down", "speed": speed or -1})
    attributes.update({"statistics/tx_bytes": 0, "statistics/rx_bytes": 0})
    if port_name:
        attributes["phys_port_name"] = port_name
    return attributes


def rdma_device(firmware, layer, rate):
    port = {"link_layer": layer, "state": "4: ACTIVE", "rate": rate, "gids/0": "fe80:0000:0000:0000:0c42:a103:0000:4001"}
    return {"fw_ver": firmware, **{"ports/1/" + name: content for name, content in port.items()}}


def fibre_channel_host(port_name, online):
    attributes = {"port_name": "0x%x" % port_name, "port_state": "Online" if online else "Linkdown"}
    attributes.update({"speed": "32 Gbit" if online else "unknown", "supported_speeds": "8 Gbit, 16 Gbit, 32 Gbit"})
    return attributes


def nvme_drive(name, model, serial, firmware, sectors):
    # The fields of the identification are padded with blanks.
    identity = {"model": "%-40s" % model, "serial": "%-20s" % serial, "firmware_rev": "%-8s" % firmware}
    return {**identity, "transport": "pcie", name + "n1/size": sectors}


def add_sata_disk(tree, port, name, model, revision, serial, wwid, sectors, rotates):
    device = tree.folders[SATA_CONTROLLER] / ("ata%d/host%d/target%d:0:0/%d:0:0:0" % (port, port, port, port))
    page = b"\0\x80\0\x14" + serial.rjust(20).encode()
    tree.write(device, {"vendor": "ATA     ", "model": model, "rev": revision, "wwid": wwid, "vpd_pg80": page})
    disk = device / "block" / name
    tree.write(disk, {"size": sectors, "removable": 0, "queue/rotational": rotates})
    (disk / "device").symlink_to("../..")
    tree.link("block/" + name, disk)


def add_functions(tree, functions):
    for function in functions:
        folder = tree.folders[function.address()]
        tree.write(folder, function_attributes(function))
        tree.link("bus/pci/devices/0000:" + function.address(), folder)
        driver = driver_of(function)
        if driver:
            tree.link((folder / "driver").relative_to(tree.root), tree.root / "bus/pci/drivers" / driver)
    for function, *texts in VITAL_PRODUCT_DATA:
        tree.write(tree.folders[function], {"vpd": vital_product_data(*texts)})


def add_smbios(tree):
    dump = generate.smbios_dump()
    tree.write(tree.root / "firmware/dmi/tables", {"smbios_entry_point": dump[:24], "DMI": dump[32:]})


def add_ports(tree):
    for function, name, *properties in INTERFACES:
        tree.add(function, "net", name, interface(*properties))
    for function, name, *properties in RDMA_DEVICES:
        tree.add(function, "infiniband", name, rdma_device(*properties))
    for function, name, *properties in FIBRE_CHANNEL_HOSTS:
        tree.add(function, "fc_host", name, fibre_channel_host(*properties), below=name)
        tree.add(function, "scsi_host", name, {"active_mode": "Initiator", "fw_version": "9.08.02 (d0d5)"}, below=name)


def add_drives(tree):
    for function, name, *properties in NVME_DRIVES:
        tree.add(function, "nvme", name, nvme_drive(name, *properties))
    for disk in SATA_DISKS:
        add_sata_disk(tree, *disk)


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: system_tree.py FOLDER")
    functions = generate.pci_functions()
    tree = Tree(sys.argv[1], functions)
    add_functions(tree, functions)
    add_smbios(tree)
    add_ports(tree)
    add_drives(tree)


if __name__ == "__main__":
    main()
