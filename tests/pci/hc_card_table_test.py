#!/usr/bin/env python3
"""The accelerator cards' data file: what its generator refuses, and its ids beside those of pci.ids."""
import csv
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(sys.argv.pop(1))
DATA = ROOT / "data/hc_cards.csv"
GENERATOR = ROOT / "src/pci/make_hc_card_table.py"


def generate(lines):
    """Runs the generator on these lines; its exit code, its message and what it made."""
    with tempfile.TemporaryDirectory() as folder:
        source, target = Path(folder) / "cards.csv", Path(folder) / "table.cpp"
        source.write_text("\n".join(lines) + "\n")
        done = subprocess.run([sys.executable, GENERATOR, source, target], capture_output=True, text=True)
        return done.returncode, done.stderr, target.read_text() if target.exists() else ""


class Generator(unittest.TestCase):
    def setUp(self):
        self.lines = DATA.read_text().splitlines()

    def refuses(self, lines, line, reason):
        code, message, made = generate(lines)
        self.assertNotEqual(code, 0)
        self.assertIn(f"cards.csv:{line}: ", message)
        self.assertIn(reason, message)
        self.assertEqual(made, "")

    def changed(self, column, value, line=2):
        rows = [next(csv.reader([text])) for text in self.lines]
        rows[line - 1][rows[0].index(column)] = value
        return [",".join('"' + field.replace('"', '""') + '"' for field in row) for row in rows]

    def test_makes_the_table_of_the_data_file(self):
        code, message, made = generate(self.lines)
        self.assertEqual((code, message), (0, ""))
        self.assertEqual(made.count("    {0x"), 37)

    def test_refuses_a_row_that_does_not_fit_and_names_its_line(self):
        for column, value, reason in [
            ("vendor_id", "0x10000", "does not fit 16 bits"), ("device_id", "-1", "does not fit 16 bits"),
            ("subvendor_id", "NVIDIA", "is not a number"), ("subdevice_id", "", "is not a number"),
            ("card_name", "x" * 128, "does not fit 127 bytes"), ("card_name", "", "does not fit"),
            ("manufacturer", "x" * 64, "does not fit 63 bytes"), ("card_name", "a\tb", "is not plain text"),
            ("board_power_w", "39", "is not 0 or 40 to 500"), ("board_power_w", "501", "is not 0 or 40 to 500"),
        ]:
            with self.subTest(column=column, value=value[:20]):
                self.refuses(self.changed(column, value, 5), 5, reason)

    def test_refuses_a_vendors_count_that_is_off(self):
        self.refuses(self.lines[:-1], 37, "cards by vendor")
        self.refuses(self.lines + [self.lines[1]], 39, "cards by vendor")
        self.refuses(self.changed("vendor_id", "0x1002"), 38, "cards by vendor")

    def test_refuses_another_number_of_unknown_powers(self):
        self.refuses(self.changed("board_power_w", "0"), 38, "6 cards of unknown power")

    def test_keeps_quotes_and_backslashes(self):
        code, _, made = generate(self.changed("card_name", 'a "b" \\c'))
        self.assertEqual(code, 0)
        self.assertIn('"a \\"b\\" \\\\c"', made)


class Identifiers(unittest.TestCase):
    """Every card whose ids pci.ids has bears the same name there; a list older than a card lacks it."""

    def setUp(self):
        self.devices, self.subsystems = {}, set()
        vendor = device = None
        for line in Path("/usr/share/misc/pci.ids").read_text(errors="replace").splitlines():
            if match := re.match(r"([0-9a-f]{4})  ", line):
                vendor = int(match[1], 16)
            elif match := re.match(r"\t([0-9a-f]{4})  (.*)", line):
                device = int(match[1], 16)
                self.devices[vendor, device] = match[2]
            elif match := re.match(r"\t\t([0-9a-f]{4}) ([0-9a-f]{4})  ", line):
                self.subsystems.add((vendor, device, int(match[1], 16), int(match[2], 16)))
            elif line.startswith("C "):
                break

    def test_are_those_of_pci_ids(self):
        known = 0
        with DATA.open(newline="") as file:
            cards = list(csv.DictReader(file))
        for row in cards:
            vendor, device = int(row["vendor_id"], 16), int(row["device_id"], 16)
            if (vendor, device) not in self.devices:
                continue
            known += 1
            # One word at least of the card's name is one of the device's there.
            words = set(re.findall(r"[A-Za-z]*\d+\w*", row["card_name"].upper()))
            there = self.devices[vendor, device].upper()
            named = any(word in there for word in words) or \
                (vendor, device, int(row["subvendor_id"], 16), int(row["subdevice_id"], 16)) in self.subsystems
            self.assertTrue(named, f"{row['card_name']}: pci.ids calls it {there}")
        self.assertGreater(known, 25)


if __name__ == "__main__":
    unittest.main()
