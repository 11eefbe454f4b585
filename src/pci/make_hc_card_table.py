#!/usr/bin/env python3
"""Turns the data file of accelerator cards into the source of hc_card_table; refuses a row that does not fit."""
import csv
import sys
from collections import Counter

# How many cards the table has of each vendor.
VENDORS = {0x10DE: 27, 0x1002: 3, 0x10EE: 3, 0x1000: 2, 0xCABC: 2}
NAME_BYTES, MAKER_BYTES = 128, 64
UNKNOWN_POWERS, POWER_RANGE = 5, range(40, 501)


class Refused(Exception):
    pass


def number(row, column):
    try:
        value = int(row[column], 0)
    except (TypeError, ValueError):
        raise Refused(f"{column}: '{row[column]}' is not a number") from None
    if not 0 <= value <= 0xFFFF:
        raise Refused(f"{column}: {row[column]} does not fit 16 bits")
    return value


def text(row, column, size):
    value = row[column] or ""
    if not value or len(value.encode()) >= size:
        raise Refused(f"{column}: '{value}' does not fit {size - 1} bytes, or is empty")
    if not value.isascii() or not value.isprintable():
        raise Refused(f"{column}: '{value}' is not plain text")
    return '"' + value.replace("\\", "\\\\").replace('"', '\\"') + '"'


def card(row):
    ids = [number(row, column) for column in ("vendor_id", "device_id", "subvendor_id", "subdevice_id")]
    power = number(row, "board_power_w")
    if power != 0 and power not in POWER_RANGE:
        raise Refused(f"board_power_w: {power} is not 0 or {POWER_RANGE.start} to {POWER_RANGE.stop - 1}")
    name, maker = text(row, "card_name", NAME_BYTES), text(row, "manufacturer", MAKER_BYTES)
    fields = [*(f"0x{value:04X}" for value in ids), name, '"N/A"', maker, str(power)]
    return ids[0], power, "    {" + ", ".join(fields) + "},\n"


def main():
    source, target = sys.argv[1:]
    vendors, powers, lines = Counter(), Counter(), []
    with open(source, newline="") as file:
        reader = csv.DictReader(file)
        for row in reader:
            try:
                vendor, power, line = card(row)
            except Refused as reason:
                sys.exit(f"{source}:{reader.line_num}: {reason}")
            vendors[vendor] += 1
            powers[power] += 1
            lines.append(line)
    if vendors != VENDORS:
        found = ", ".join(f"{count} of 0x{vendor:04X}" for vendor, count in sorted(vendors.items()))
        sys.exit(f"{source}:{reader.line_num}: cards by vendor: {found}")
    if powers[0] != UNKNOWN_POWERS:
        sys.exit(f"{source}:{reader.line_num}: {powers[0]} cards of unknown power, not {UNKNOWN_POWERS}")
    with open(target, "w") as file:
        file.write('#include "zymdb_pci.h"\n\n')
        file.write(f"const _ZYMDB_HC_Card hc_card_table[{len(lines)}] = {{\n{''.join(lines)}}};\n\n")
        file.write(f"int zymdb_get_hc_card_count(void) {{ return {len(lines)}; }}\n")


if __name__ == "__main__":
    main()
