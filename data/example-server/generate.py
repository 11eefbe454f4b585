#!/usr/bin/env python3
"""Writes the example server: server.lspci (as `lspci -n -xxx` prints it) and server.smbios (as `dmidecode
--dump-bin` writes it). Usage: generate.py FOLDER

A two-socket server that does not exist, put together from parts that do: ids, names, sizes and speeds are
public facts (pci.ids, data sheets); serial numbers and the server's own names are made up. The same bytes come
out every time.
"""

import pathlib
import struct
import sys

# ---- PCI ---------------------------------------------------------------------------------------------------

# Port types of the PCI Express capability.
ENDPOINT, ROOT_PORT, UPSTREAM, DOWNSTREAM, TO_PCI_BRIDGE = 0, 4, 5, 6, 7

# Generation and lanes.
GEN1_X1, GEN2_X4, GEN3_X1, GEN3_X2, GEN3_X4, GEN3_X8, GEN3_X16 = (1, 1), (2, 4), (3, 1), (3, 2), (3, 4), (3, 8), (3, 16)
GEN4_X4, GEN4_X8, GEN4_X16 = (4, 4), (4, 8), (4, 16)

BOARD = (0x8086, 0x0000)  # subsystem of what the processors' maker put on the board
NONE = (0, 0)

EXPRESS_CAPABILITY = 0x40
SUBSYSTEM_CAPABILITY = 0x80


class Function:
    """One PCI function: an address and 256 bytes of configuration space."""

    def __init__(self, address, ids, class_code, revision=0, subsystem=NONE):
        self.bus, self.device, self.function = parse_address(address)
        self.class_code = class_code
        self.revision = revision
        self.ids = ids
        self.most = self.current = None  # of its link: generation and lanes
        self.config = bytearray(256)
        struct.pack_into("<HHHH", self.config, 0, *ids, 0x0006, 0)
        struct.pack_into("<I", self.config, 8, class_code << 8 | revision)
        struct.pack_into("<HH", self.config, 0x2C, *subsystem)

    def address(self):
        return "%02x:%02x.%x" % (self.bus, self.device, self.function)

    def multi_function(self):
        self.config[0x0E] |= 0x80
        return self

    def memory(self, address):
        """A 64-bit memory region at `address`."""
        struct.pack_into("<Q", self.config, 0x10, address | 0x4)
        return self

    def link(self, port_type, most, current, slot=0):
        """A PCI Express capability: link as it could be and as it is; a port with a slot tells its number."""
        self.most, self.current = most, current
        at = EXPRESS_CAPABILITY
        self._capability(at, 0x10)
        flags = 2 | port_type << 4 | (0x100 if slot else 0)
        struct.pack_into("<H", self.config, at + 2, flags)
        struct.pack_into("<I", self.config, at + 0x0C, most[0] | most[1] << 4)
        if current:
            struct.pack_into("<H", self.config, at + 0x12, current[0] | current[1] << 4 | 0x1000)
        if slot:
            struct.pack_into("<I", self.config, at + 0x14, slot << 19)
        return self

    def bridge(self, secondary, subordinate, subsystem=NONE):
        self.config[0x0E] = 0x01 | (self.config[0x0E] & 0x80)
        struct.pack_into("<BBB", self.config, 0x18, self.bus, secondary, subordinate)
        struct.pack_into("<BB", self.config, 0x1C, 0xF0, 0x00)  # base above limit: nothing is forwarded
        struct.pack_into("<HHHH", self.config, 0x20, 0xFFF0, 0x0000, 0xFFF1, 0x0001)
        if subsystem != NONE:
            self._capability(SUBSYSTEM_CAPABILITY, 0x0D)
            struct.pack_into("<HH", self.config, SUBSYSTEM_CAPABILITY + 4, *subsystem)
        return self

    def _capability(self, at, identifier):
        self.config[0x06] |= 0x10
        self.config[at] = identifier
        self.config[at + 1] = self.config[0x34]
        self.config[0x34] = at

    def dump(self):
        vendor, device = self.ids
        revision = " (rev %02x)" % self.revision if self.revision else ""
        line = "%02x:%02x.%x %04x: %04x:%04x%s\n"
        text = line % (self.bus, self.device, self.function, self.class_code >> 8, vendor, device, revision)
        for offset in range(0, 256, 16):
            text += "%02x: %s\n" % (offset, " ".join("%02x" % b for b in self.config[offset : offset + 16]))
        return text + "\n"


def parse_address(address):
    bus, rest = address.split(":")
    device, function = rest.split(".")
    return int(bus, 16), int(device, 16), int(function, 16)


def root_port(address, device, secondary, subordinate, most, current, slot=0):
    """A root port of the processors."""
    ids = (0x8086, device)
    return Function(address, ids, 0x060400, 6).bridge(secondary, subordinate, BOARD).link(ROOT_PORT, most, current, slot)


def chipset_port(address, device, secondary, subordinate, current):
    """A root port of the chipset."""
    port = Function(address, (0x8086, device), 0x060400, 0xF9).bridge(secondary, subordinate, BOARD)
    return port.link(ROOT_PORT, (3, current[1]), current).multi_function()


def card(address, ids, class_code, revision, subsystem, most, current, functions=1):
    """The functions of a card, alike in everything but their number."""
    bus, device, first = parse_address(address)
    made = []
    for number in range(first, first + functions):
        function = Function("%02x:%02x.%x" % (bus, device, number), ids, class_code, revision, subsystem)
        function.memory(0x200000000000 + (bus << 32) + (number << 25)).link(ENDPOINT, most, current)
        made.append(function.multi_function() if functions > 1 else function)
    return made


def nvme(address, ids, subsystem, revision=0):
    return card(address, ids, 0x010802, revision, subsystem, GEN4_X4, GEN4_X4)


SAMSUNG_PM9A3 = ((0x144D, 0xA80A), (0x144D, 0xA813))
INTEL_P5510 = ((0x8086, 0x0B60), (0x8086, 0x8008))
INTEL_P4800X_CARD = ((0x8086, 0x2701), (0x8086, 0x3904))


def chipset():
    """Bus 0: the first processor's own functions, the chipset, and what hangs on it."""
    yield Function("00:00.0", (0x8086, 0x09A2), 0x088000, 4, BOARD)
    yield Function("00:14.0", (0x8086, 0xA1AF), 0x0C0330, 9, BOARD)
    yield Function("00:17.0", (0x8086, 0xA182), 0x010601, 9, BOARD)
    yield chipset_port("00:1c.0", 0xA190, 1, 2, GEN1_X1)
    yield chipset_port("00:1c.4", 0xA194, 3, 3, GEN3_X2)
    yield chipset_port("00:1d.0", 0xA198, 4, 4, GEN2_X4)
    yield Function("00:1f.0", (0x8086, 0xA1C1), 0x060100, 9, BOARD).multi_function()
    yield Function("00:1f.4", (0x8086, 0xA1A3), 0x0C0500, 9, BOARD)
    # The service processor's graphics, the boot controller, the management network.
    yield Function("01:00.0", (0x1A03, 0x1150), 0x060400, 4).bridge(2, 2).link(TO_PCI_BRIDGE, GEN1_X1, GEN1_X1)
    yield Function("02:00.0", (0x1A03, 0x2000), 0x030000, 0x41, (0x1A03, 0x2000))
    yield from card("03:00.0", (0x1B4B, 0x2241), 0x010802, 0x20, (0x1B4B, 0x2241), GEN3_X2, GEN3_X2)
    yield from card("04:00.0", (0x8086, 0x1521), 0x020000, 1, BOARD, GEN2_X4, GEN2_X4, functions=2)


def first_processor():
    """Slots 1 to 3, the mezzanine slot and a switch with four drive bays."""
    yield Function("16:00.0", (0x8086, 0x09A2), 0x088000, 4, BOARD)
    yield root_port("16:02.0", 0x347A, 0x17, 0x17, GEN4_X16, GEN4_X16, slot=1)
    yield from card("17:00.0", (0x15B3, 0x101D), 0x020000, 0, (0x15B3, 0x0043), GEN4_X16, GEN4_X16, functions=2)
    yield Function("30:00.0", (0x8086, 0x09A2), 0x088000, 4, BOARD)
    yield root_port("30:02.0", 0x347A, 0x31, 0x31, GEN4_X16, GEN4_X16, slot=2)
    yield from card("31:00.0", (0x10DE, 0x20B5), 0x030200, 0xA1, (0x10DE, 0x1533), GEN4_X16, GEN4_X16)
    yield root_port("30:04.0", 0x347C, 0x32, 0x32, GEN4_X8, None, slot=3)
    yield Function("4a:00.0", (0x8086, 0x09A2), 0x088000, 4, BOARD)
    yield root_port("4a:02.0", 0x347A, 0x4B, 0x4B, GEN4_X16, GEN3_X8, slot=10)
    yield from card("4b:00.0", (0x8086, 0x1572), 0x020000, 2, (0x8086, 0x0012), GEN3_X8, GEN3_X8, functions=4)
    yield Function("64:00.0", (0x8086, 0x09A2), 0x088000, 4, BOARD)
    yield root_port("64:02.0", 0x347A, 0x65, 0x6A, GEN4_X16, GEN4_X16)
    switch = (0x1000, 0xC010)
    subsystem = (0x1000, 0x100B)
    yield Function("65:00.0", switch, 0x060400, 0xB0).bridge(0x66, 0x6A, subsystem).link(UPSTREAM, GEN4_X16, GEN4_X16)
    for port in range(4):
        current = None if port == 3 else GEN4_X4
        downstream = Function("66:%02x.0" % port, switch, 0x060400, 0xB0).bridge(0x67 + port, 0x67 + port, subsystem)
        yield downstream.link(DOWNSTREAM, GEN4_X4, current, slot=100 + port)
    for bus in (0x67, 0x68, 0x69):
        yield from nvme("%02x:00.0" % bus, *SAMSUNG_PM9A3)


def second_processor():
    """Slots 4 to 8 and two drive bays of its own."""
    yield Function("80:00.0", (0x8086, 0x09A2), 0x088000, 4, BOARD)
    yield Function("97:00.0", (0x8086, 0x09A2), 0x088000, 4, BOARD)
    yield root_port("97:02.0", 0x347A, 0x98, 0x98, GEN4_X16, GEN4_X16, slot=4)
    yield from card("98:00.0", (0x15B3, 0xA2D6), 0x020000, 0, (0x15B3, 0x0051), GEN4_X16, GEN4_X16, functions=2)
    yield from card("98:00.2", (0x15B3, 0xC2D3), 0x080100, 0, (0x15B3, 0x0051), GEN4_X16, GEN4_X16)
    yield Function("b0:00.0", (0x8086, 0x09A2), 0x088000, 4, BOARD)
    yield root_port("b0:02.0", 0x347A, 0xB1, 0xB1, GEN4_X16, GEN4_X16, slot=5)
    yield from card("b1:00.0", (0x10DE, 0x2235), 0x030200, 0xA1, (0x10DE, 0x145A), GEN4_X16, GEN4_X16)
    yield Function("c9:00.0", (0x8086, 0x09A2), 0x088000, 4, BOARD)
    yield root_port("c9:02.0", 0x347A, 0xCA, 0xCA, GEN4_X8, GEN4_X8, slot=6)
    yield from card("ca:00.0", (0x1000, 0x10E2), 0x010400, 0, (0x1000, 0x4000), GEN4_X8, GEN4_X8)
    yield root_port("c9:04.0", 0x347C, 0xCB, 0xCB, GEN4_X8, GEN3_X8, slot=7)
    yield from card("cb:00.0", (0x1077, 0x2261), 0x0C0400, 1, (0x1077, 0x02AC), GEN3_X8, GEN3_X8, functions=2)
    yield Function("e2:00.0", (0x8086, 0x09A2), 0x088000, 4, BOARD)
    yield root_port("e2:02.0", 0x347A, 0xE3, 0xE3, GEN4_X4, GEN4_X4)
    yield from nvme("e3:00.0", *INTEL_P5510)
    yield root_port("e2:03.0", 0x347B, 0xE4, 0xE4, GEN4_X4, None)
    yield root_port("e2:04.0", 0x347C, 0xE5, 0xE5, GEN4_X8, GEN3_X4, slot=8)
    yield from card("e5:00.0", INTEL_P4800X_CARD[0], 0x010802, 0, INTEL_P4800X_CARD[1], GEN3_X4, GEN3_X4)


def pci_functions():
    functions = [*chipset(), *first_processor(), *second_processor()]
    return sorted(functions, key=lambda f: (f.bus, f.device, f.function))


def lspci_dump():
    return "".join(function.dump() for function in pci_functions()).encode()


# ---- SMBIOS ------------------------------------------------------------------------------------------------

NO_HANDLE = 0xFFFF
NO_ADDRESS = (0xFFFF, 0xFF, 0xFF)

DRAM, PERSISTENT = "DRAM", "persistent"


class Table:
    """Structures, each a formatted area and its texts."""

    def __init__(self):
        self.bytes = bytearray()
        self.handles = 0
        self.texts = []

    def text(self, text):
        """The number of a text of the structure that is being made; 0 for none."""
        if text is None:
            return 0
        self.texts.append(text)
        return len(self.texts)

    def add(self, structure_type, formatted):
        handle = self.handles
        self.handles += 1
        self.bytes += struct.pack("<BBH", structure_type, len(formatted) + 4, handle) + formatted
        self.bytes += b"".join(text.encode() + b"\0" for text in self.texts) + (b"\0" if self.texts else b"\0\0")
        self.texts = []
        return handle


def bus_address(address):
    if address is None:
        return NO_ADDRESS
    bus, device, function = parse_address(address)
    return 0, bus, device << 3 | function


def add_system(table):
    t = table.text
    bios = (t("Example Firmware"), t("1.20"), 0xF000, t("03/14/2024"), 0xFF, 1 << 7 | 1 << 11 | 1 << 15)
    table.add(0, struct.pack("<BBHBBQBBBBBBH", *bios, 0x01, 0x0D, 1, 20, 0xFF, 0xFF, 32))
    uuid = bytes.fromhex("33221100554477668899aabbccddeeff")
    names = (t("Example Systems"), t("ES-2240 Two-Socket Server"), t("A1"), t("ES2240-000017"))
    table.add(1, struct.pack("<BBBB16sBBB", *names, uuid, 6, t("ES-2240-24"), t("ES")))
    names = (t("Example Systems"), t("ES-2240 System Board"), t("02"), t("ESB-000017"), t("To Be Filled By O.E.M."))
    board = table.add(2, struct.pack("<BBBBBBBHBB", *names, 0x09, t("Base"), 0xFFFF, 0x0A, 0))
    names = (t("Example Systems"), 0x17, t("A1"), t("ES2240-000017"), t("Default string"))
    table.add(3, struct.pack("<BBBBBBBBBIBBBB", *names, 3, 3, 3, 3, 0, 2, 2, 0, 0))
    return board


def add_cache(table, name, level, size, cache_type, associativity):
    """A cache of `size` KB; sizes from 32 MB on do not fit the 15 bits of the first field."""
    small = size if size < 0x8000 else 0x8000 | size // 64
    fields = (table.text(name), 0x0180 | level - 1, small, small, 0x0020, 0x0020, 0, 5, cache_type, associativity)
    return table.add(7, struct.pack("<BHHHHHBBBBII", *fields, size, size))


def add_processor(table, number):
    """An Intel Xeon Platinum 8358: 32 cores, 2.6 to 3.4 GHz."""
    caches = [
        add_cache(table, "L1 Cache", 1, 80 * 32, 5, 7),
        add_cache(table, "L2 Cache", 2, 1280 * 32, 5, 8),
        add_cache(table, "L3 Cache", 3, 49152, 5, 9),
    ]
    t = table.text
    cpuid = 0xBFEBFBFF000606A6
    fields = (t("CPU%d" % (number + 1)), 3, 0xB3, t("Intel(R) Corporation"), cpuid)
    version = t("Intel(R) Xeon(R) Platinum 8358 CPU @ 2.60GHz")
    speeds = (0x80 | 18, 100, 3400, 2600, 0x41, 0x3D)
    names = (t("Not Specified"), t("UNKNOWN"), t("Not Specified"))
    counts = (32, 32, 64, 0x00FC, 0xB3, 32, 32, 64)
    layout = "<BBBBQBBHHHBBHHHBBBBBBHHHHH"
    table.add(4, struct.pack(layout, *fields, version, *speeds, *caches, *names, *counts))


GEN4_SLOT_X8, GEN4_SLOT_X16, GEN4_U2, OCP_SMALL = 0xBC, 0xBD, 0x24, 0x26
WIDTH_X4, WIDTH_X8, WIDTH_X16 = 0x0A, 0x0B, 0x0D
AVAILABLE, IN_USE = 3, 4

# Designation, type, width, use, id, bus address: of the port above a slot, of the drive in a bay.
SLOTS = [
    ("PCIe Slot 1", GEN4_SLOT_X16, WIDTH_X16, IN_USE, 1, "16:02.0"),
    ("PCIe Slot 2", GEN4_SLOT_X16, WIDTH_X16, IN_USE, 2, "30:02.0"),
    ("PCIe Slot 3", GEN4_SLOT_X8, WIDTH_X8, AVAILABLE, 3, "30:04.0"),
    ("PCIe Slot 4", GEN4_SLOT_X16, WIDTH_X16, IN_USE, 4, "97:02.0"),
    ("PCIe Slot 5", GEN4_SLOT_X16, WIDTH_X16, IN_USE, 5, "b0:02.0"),
    ("PCIe Slot 6", GEN4_SLOT_X8, WIDTH_X8, IN_USE, 6, "c9:02.0"),
    ("PCIe Slot 7", GEN4_SLOT_X8, WIDTH_X8, IN_USE, 7, "c9:04.0"),
    ("PCIe Slot 8", GEN4_SLOT_X8, WIDTH_X8, IN_USE, 8, "e2:04.0"),
    ("OCP NIC 3.0", OCP_SMALL, WIDTH_X16, IN_USE, 10, "4a:02.0"),
    ("NVMe Bay 1", GEN4_U2, WIDTH_X4, IN_USE, 0, "67:00.0"),
    ("NVMe Bay 2", GEN4_U2, WIDTH_X4, IN_USE, 0, "68:00.0"),
    ("NVMe Bay 3", GEN4_U2, WIDTH_X4, IN_USE, 0, "69:00.0"),
    ("NVMe Bay 4", GEN4_U2, WIDTH_X4, AVAILABLE, 0, None),
    ("NVMe Bay 5", GEN4_U2, WIDTH_X4, IN_USE, 0, "e2:02.0"),
    ("NVMe Bay 6", GEN4_U2, WIDTH_X4, AVAILABLE, 0, "e2:03.0"),
]

# Name, kind (video, Ethernet, SATA, other), instance, bus address.
ONBOARD_DEVICES = [
    ("Service processor graphics", 3, 1, "02:00.0"),
    ("Management network port 1", 5, 1, "04:00.0"),
    ("Management network port 2", 5, 2, "04:00.1"),
    ("SATA controller", 9, 1, "00:17.0"),
    ("Boot controller", 1, 1, "03:00.0"),
]


def add_slot(table, designation, slot_type, width, use, number, address):
    segment, bus, position = bus_address(address)
    fields = (table.text(designation), slot_type, width, use, 4, number, 0x04, 0x01, segment, bus, position)
    table.add(9, struct.pack("<BBBBBHBBHBBBB", *fields, width, 0))


def add_onboard_device(table, name, kind, instance, address):
    table.add(41, struct.pack("<BBBHBB", table.text(name), 0x80 | kind, instance, *bus_address(address)))


def add_memory_device(table, array, socket, channel, position):
    """64 GB DDR4 modules; the second position of every other channel takes a 128 GB persistent module."""
    kind = PERSISTENT if position == 2 and channel % 2 == 1 else DRAM
    t = table.text
    locator = t("CPU%d_DIMM_%s%d" % (socket + 1, "ABCDEFGH"[channel], position))
    bank = t("CPU%d Channel %d" % (socket + 1, channel))
    serial = t("%08X" % (0x4E000000 + socket * 0x100 + channel * 0x10 + position))
    size = 64 << 10 if kind is DRAM else 129408  # MB
    memory_type, detail = (0x1A, 0x2080) if kind is DRAM else (0x1F, 0x1080)
    maker, part = ("Samsung", "M393A8G40AB2-CWE") if kind is DRAM else ("Intel", "NMB1XXD128GPS")
    names = (t(maker), serial, t("Not Specified"), t(part))
    fields = (array, 0xFFFE, 72, 64, 0x7FFF, 9, 0, locator, bank, memory_type, detail, 3200, *names, 2)
    speeds = (size, 3200, 1200, 1200, 1200)
    megabyte = 1 << 20
    technology, modes = (3, 0x0008) if kind is DRAM else (7, 0x0018)
    ids = (0xCE80, 0, 0, 0) if kind is DRAM else (0x8900, 0x5605, 0x8900, 0x7A09)
    firmware = 0 if kind is DRAM else t("2.2.0.1553")
    volatile, persistent = (size * megabyte, 0) if kind is DRAM else (0, size * megabyte)
    sizes = (persistent, volatile, 0, 0)
    layout = "<HHHHHBBBBBHHBBBBBIHHHHBHBHHHHQQQQ"
    table.add(17, struct.pack(layout, *fields, *speeds, technology, modes, firmware, *ids, *sizes))


def add_memory(table, board):
    for socket in range(2):
        extended = 4 << 40  # bytes; too large for the field in KB
        array = table.add(16, struct.pack("<BBBIHHQ", 3, 3, 6, 0x80000000, 0xFFFE, 16, extended))
        for channel in range(8):
            for position in (1, 2):
                add_memory_device(table, array, socket, channel, position)


def smbios_dump():
    table = Table()
    board = add_system(table)
    for socket in range(2):
        add_processor(table, socket)
    for slot in SLOTS:
        add_slot(table, *slot)
    for device in ONBOARD_DEVICES:
        add_onboard_device(table, *device)
    add_memory(table, board)
    table.add(127, b"")
    entry = bytearray(struct.pack("<5sBBBBBBBIQ", b"_SM3_", 0, 24, 3, 3, 0, 1, 0, len(table.bytes), 32))
    entry[5] = -sum(entry) & 0xFF
    return bytes(entry).ljust(32, b"\0") + bytes(table.bytes)


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: generate.py FOLDER")
    folder = pathlib.Path(sys.argv[1])
    (folder / "server.lspci").write_bytes(lspci_dump())
    (folder / "server.smbios").write_bytes(smbios_dump())


if __name__ == "__main__":
    main()
