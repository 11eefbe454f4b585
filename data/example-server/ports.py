#!/usr/bin/env python3
"""Writes the network ports of the example server as its system would show them: a tree like /sys, with the folders
class/net, class/infiniband and class/fc_host. Usage: ports.py FOLDER

The same server as generate.py's, and the same rule: the parts exist, addresses are made up.
"""

import pathlib
import sys

# Folders of the functions, below the ports that lead to them.
FUNCTIONS = {
    "04:00.0": "pci0000:00/0000:00:1d.0",
    "04:00.1": "pci0000:00/0000:00:1d.0",
    "17:00.0": "pci0000:16/0000:16:02.0",
    "17:00.1": "pci0000:16/0000:16:02.0",
    "4b:00.0": "pci0000:4a/0000:4a:02.0",
    "4b:00.1": "pci0000:4a/0000:4a:02.0",
    "4b:00.2": "pci0000:4a/0000:4a:02.0",
    "4b:00.3": "pci0000:4a/0000:4a:02.0",
    "98:00.0": "pci0000:97/0000:97:02.0",
    "98:00.1": "pci0000:97/0000:97:02.0",
    "cb:00.0": "pci0000:c9/0000:c9:04.0",
    "cb:00.1": "pci0000:c9/0000:c9:04.0",
}

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

# Function, device, Gbit/s, and whether the port is active.
INFINIBAND_DEVICES = [("98:00.1", "mlx5_3", 100, True)]

# Function, host, port name, and whether it is online.
FIBRE_CHANNEL_HOSTS = [("cb:00.0", "host8", 0x21000024FF005000, True), ("cb:00.1", "host9", 0x21000024FF005001, False)]


class Tree:
    """Folders of a class below their functions, and links to them."""

    def __init__(self, folder):
        self.root = pathlib.Path(folder)

    def add(self, function, kind, name, attributes, below=""):
        device = self.root / "devices" / FUNCTIONS[function] / ("0000:" + function) / below / kind / name
        for attribute, content in attributes.items():
            file = device / attribute
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text("%s\n" % content)
        link = self.root / "class" / kind / name
        link.parent.mkdir(parents=True, exist_ok=True)
        link.symlink_to(pathlib.Path("../..") / device.relative_to(self.root))


def interface(address, port_name, frame_size, speed):
    attributes = {"type": 1, "addr_assign_type": 0, "address": address, "dev_port": 0, "mtu": frame_size}
    attributes.update({"carrier": 1 if speed else 0, "operstate": "up" if speed else "down", "speed": speed or -1})
    attributes.update({"statistics/tx_bytes": 0, "statistics/rx_bytes": 0})
    if port_name:
        attributes["phys_port_name"] = port_name
    return attributes


def infiniband_port(speed, active):
    attributes = {"link_layer": "InfiniBand", "state": "4: ACTIVE" if active else "1: DOWN"}
    attributes.update({"rate": "%d Gb/sec (4X EDR)" % speed, "gids/0": "fe80:0000:0000:0000:0c42:a103:0000:4001"})
    return {"ports/1/" + name: content for name, content in attributes.items()}


def fibre_channel_host(port_name, online):
    attributes = {"port_name": "0x%x" % port_name, "port_state": "Online" if online else "Linkdown"}
    attributes.update({"speed": "32 Gbit" if online else "unknown", "supported_speeds": "8 Gbit, 16 Gbit, 32 Gbit"})
    return attributes


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: ports.py FOLDER")
    tree = Tree(sys.argv[1])
    for function, name, *properties in INTERFACES:
        tree.add(function, "net", name, interface(*properties))
    for function, name, *properties in INFINIBAND_DEVICES:
        tree.add(function, "infiniband", name, infiniband_port(*properties))
    for function, name, *properties in FIBRE_CHANNEL_HOSTS:
        tree.add(function, "fc_host", name, fibre_channel_host(*properties), below=name)
        tree.add(function, "scsi_host", name, {"active_mode": "Initiator"}, below=name)


if __name__ == "__main__":
    main()
