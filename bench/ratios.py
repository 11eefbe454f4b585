#!/usr/bin/env python3
"""Prints what the benchmarks measured as tables: the library's time, and its ratios to what was measured beside it in the
same run, each with its target. With --markdown, as docs/performance.md holds them; with --write, into that page."""
import contextlib
import io
import json
import os
import platform
import re
import statistics
import sys

LIBRARY = "library"
RAW = "limit"  # statements kept open
PER_CALL = "per call"
BUS = "bus"
WITHOUT_HISTORY = "without history"
TRIGGERS = "triggers"
SESSIONS = "sessions"
ROWS = "rows"  # compared by the database engine
SIDES = (LIBRARY, RAW, PER_CALL, BUS, WITHOUT_HISTORY, TRIGGERS, SESSIONS, ROWS)

# The program's title, and the largest ratio to the limit that is to be reached; 0: none.
SECTIONS = {
    "point_bench": ("One record by its key", lambda name, rows: 1.5),
    "point_bench-repeated": ("One record by its key, asked for again while nothing changed", lambda name, rows: 0.35),
    "list_bench": ("Lists", lambda name, rows: 1.3 if rows >= 1000 else 0),
    "list_bench-repeated": ("Lists, asked for again while nothing changed",
                            lambda name, rows: 0.5 if 100 <= rows <= 1000 else 0),
    "write_bench": ("Reports, settings and the merge",
                    lambda name, rows: 1.5 if name == "unchanged presence of a drive" else 0),
    "history_bench": ("Changes with and without history", lambda name, rows: 0),
    "difference_bench": ("What differs between two inventories", lambda name, rows: 0),
    "parser_bench": ("A drive's vital product data, beside copies from known places", lambda name, rows: 0),
    "start_bench": ("From the start of a process to its first answer", lambda name, rows: 0),
    "bus_bench": ("Beside an inventory daemon on the message bus", lambda name, rows: 0),
    "bus_bench-repeated": ("Beside an inventory daemon on the message bus, asked again while nothing changed",
                           lambda name, rows: 0),
    "flash_bench": ("Bytes written to flash", lambda name, rows: 0),
    "mariadb_bench": ("An inventory on a MariaDB server", lambda name, rows: 1.3 if name == "functions" else 1.2),
}
LEAST_PER_CALL = {"point_bench": 4}
LEAST_BUS = {"bus_bench": {"one adapter": 10, "adapter list": 5}, "bus_bench-repeated": {"one adapter": 100}}
MOST_GROWTH = 1.2
# Kilobytes that reach the device: of a change in a row of them, of a process by itself.
MOST_WRITTEN = {
    "full": {"link change": 6.6, "DPU event": 12, "settings save, two values": 20, "zymdb show": 4},
    "normal": {"link change": 1.2, "DPU event": 6, "settings save, two values": 10},
}
LEAST_SPEED_UP = 1.8
MOST_ROUND_TRIPS = 40
MOST_BYTES_OF_HISTORY = 1.5


class Table:
    def __init__(self, columns):
        self.rows = [columns]

    def add(self, *cells):
        self.rows.append(cells)

    def print(self, markdown):
        widths = [max(len(row[i]) for row in self.rows) for i in range(len(self.rows[0]))]
        for number, row in enumerate(self.rows):
            cells = [row[0].ljust(widths[0])] + [cell.rjust(width) for cell, width in zip(row[1:], widths[1:])]
            print("| " + " | ".join(cells) + " |" if markdown else "  ".join(cells))
            if markdown and number == 0:
                print("|" + "|".join(["---"] + ["--:"] * (len(row) - 1)) + "|")
        print()


def time_text(microseconds):
    for unit, size in (("ms", 1e3), ("us", 1), ("ns", 1e-3)):
        if microseconds >= size or unit == "ns":
            return f"{microseconds / size:.2f} {unit}"


def verdict(ratio, target, is_reached):
    return f"{target} {'reached' if is_reached else 'MISSED'}"


def at_most(ratio, most):
    return verdict(ratio, f"<= {most}", ratio <= most) if most else ""


def at_least(ratio, least):
    return verdict(ratio, f">= {least}", ratio >= least) if least else ""


class Sides:
    """What the repetitions took, in microseconds or bytes, by who did it. Ratios are taken within a repetition."""

    def __init__(self):
        self.samples = {}

    def __contains__(self, who):
        return who in self.samples

    def add(self, run, unit=1e3):
        for who in SIDES:
            if who in run:
                self.samples.setdefault(who, []).append(run[who] / unit)

    def time(self, who):
        return statistics.median(self.samples[who])

    def ratio(self, who, other):
        return statistics.median(a / b for a, b in zip(self.samples[who], self.samples[other]))


def read(path):
    """Sides by (what, rows), of times and of bytes; items per second by number of threads."""
    with open(path) as file:
        runs = json.load(file)["benchmarks"]
    times, bytes_written, rates = {}, {}, {}
    # They ran in a random order.
    for run in sorted(runs, key=lambda run: run["family_index"]):
        if run.get("error_occurred"):
            sys.exit(f"{run['name']}: {run['error_message']}")
        if run["run_type"] != "iteration":
            continue
        if by_threads := re.search(r"threads:(\d+)", run["run_name"]):
            rates.setdefault(int(by_threads[1]), []).append(run["items_per_second"])
        else:
            what, rows, kind = run["run_name"].split("/")[:3]
            if kind == "bytes":
                bytes_written.setdefault((what, int(rows)), Sides()).add(run, 1)
            else:
                times.setdefault((what, int(rows)), Sides()).add(run)
    return times, bytes_written, {threads: statistics.median(samples) for threads, samples in rates.items()}


def compare(times, most_of, least_per_call, size, markdown):
    columns = ("", size, "library", "limit", "to the limit", "target", "than per call")
    table = Table(columns + (("target", "the limit itself") if least_per_call else ()))
    for (what, rows), time in times.items():
        ratio = time.ratio(LIBRARY, RAW)
        per_call = time.ratio(PER_CALL, LIBRARY) if PER_CALL in time else 0
        cells = [what, f"{rows:,}", time_text(time.time(LIBRARY)), time_text(time.time(RAW)), f"{ratio:.2f} x",
                 at_most(ratio, most_of(what, rows)), f"{per_call:.1f} x faster" if per_call else ""]
        if least_per_call:
            cells += [at_least(per_call, least_per_call), f"{time.ratio(PER_CALL, RAW):.1f} x faster"]
        table.add(*cells)
    table.print(markdown)


def grow(times, markdown):
    table = Table(("", "a row of 100", "a row of 10,000", "growth", "target", "the limit's growth"))
    for what in dict.fromkeys(what for what, rows in times if rows == 10000):
        small, large = (times[what, rows].time(LIBRARY) / rows for rows in (100, 10000))
        raw_small, raw_large = (times[what, rows].time(RAW) / rows for rows in (100, 10000))
        table.add(what, time_text(small), time_text(large), f"{large / small:.2f} x",
                  at_most(large / small, MOST_GROWTH), f"{raw_large / raw_small:.2f} x")
    table.print(markdown)


def bus(times, least, markdown):
    table = Table(("", "rows", "library", "over the bus", "faster", "target"))
    for (what, rows), time in times.items():
        ratio = time.ratio(BUS, LIBRARY)
        table.add(what, f"{rows:,}", time_text(time.time(LIBRARY)), time_text(time.time(BUS)), f"{ratio:.1f} x",
                  at_least(ratio, least.get(what)))
    table.print(markdown)


def history(times, bytes_written, markdown):
    table = Table(("bytes written", "rows", "library", WITHOUT_HISTORY, "ratio", "target", "no account", TRIGGERS, SESSIONS))
    for (what, rows), written in bytes_written.items():
        cells = [f"{written.time(who):,.0f}" if who in written else ""
                 for who in (LIBRARY, WITHOUT_HISTORY, RAW, TRIGGERS, SESSIONS)]
        ratio = written.ratio(LIBRARY, WITHOUT_HISTORY) if WITHOUT_HISTORY in written else None
        judged = (f"{ratio:.2f} x", at_most(ratio, MOST_BYTES_OF_HISTORY)) if ratio else \
            ("", verdict(0, "0", written.time(LIBRARY) == 0))
        table.add(what, f"{rows:,}", *cells[:2], *judged, *cells[2:])
    table.print(markdown)
    table = Table(("time", "rows", "library", WITHOUT_HISTORY, "ratio", "no account", TRIGGERS, "ratio", SESSIONS, "ratio"))
    for (what, rows), time in times.items():
        shown = {who: time_text(time.time(who)) for who in (LIBRARY, WITHOUT_HISTORY, RAW, TRIGGERS, SESSIONS)}
        table.add(what, f"{rows:,}", shown[LIBRARY], shown[WITHOUT_HISTORY], f"{time.ratio(LIBRARY, WITHOUT_HISTORY):.2f} x",
                  shown[RAW], shown[TRIGGERS], f"{time.ratio(TRIGGERS, RAW):.2f} x", shown[SESSIONS],
                  f"{time.ratio(SESSIONS, RAW):.2f} x")
    table.print(markdown)


def difference(times, markdown):
    table = Table(("", "parts", "library", "each value compared", "ratio", "rows compared by SQLite", "ratio"))
    for (what, parts), time in times.items():
        table.add(what, f"{parts:,}", time_text(time.time(LIBRARY)), time_text(time.time(RAW)),
                  f"{time.ratio(LIBRARY, RAW):.1f} x", time_text(time.time(ROWS)), f"{time.ratio(LIBRARY, ROWS):.1f} x")
    table.print(markdown)


def kilobytes(number):
    return f"{number / 1e3:.1f} KB"


def flash(path, markdown):
    with open(path) as file:
        runs = sorted(json.load(file)["benchmarks"], key=lambda run: run["family_index"])
    if "label" in runs[0]:
        print(f"Not measured: {runs[0]['label']}.\n")
        return
    table = Table(("", "synchronous", "history", "its files", "flushes", "device, in a row", "device, one by one", "target"))
    for run in runs:
        what, synchronous, history = run["name"].split("/")[:3]
        most = MOST_WRITTEN[synchronous].get(what, 0)
        if "device" in run:
            table.add(what, synchronous, history, kilobytes(run["file"]), f"{run['flushes']:.1f}", kilobytes(run["device"]),
                      kilobytes(run["alone"]), at_most(run["device"] / 1e3, most))
        else:
            table.add(what, synchronous, history, "", "", "", kilobytes(run["alone"]), at_most(run["alone"] / 1e3, most))
    table.print(markdown)


def mariadb(path, markdown):
    with open(path) as file:
        runs = json.load(file)["benchmarks"]
    if "label" in runs[0]:
        print(f"Not measured: {runs[0]['label']}.\n")
        return
    times, _, rates = read(path)
    table = Table(("", "rows", "library", "limit", "to the limit", "target"))
    for (what, rows), time in times.items():
        if LIBRARY not in time:
            continue
        ratio = time.ratio(LIBRARY, RAW)
        most = SECTIONS["mariadb_bench"][1](what, rows)
        table.add(what, f"{rows:,}", time_text(time.time(LIBRARY)), time_text(time.time(RAW)), f"{ratio:.2f} x", at_most(ratio, most))
    table.print(markdown)
    threads(rates, markdown)
    table = Table(("round trips of a collection", "rows", "first", "target", "unchanged"))
    for run in runs:
        if run["run_type"] == "iteration" and "first" in run:
            table.add("", f"{run['rows']:,.0f}", f"{run['first']:.0f}", at_most(run["first"], MOST_ROUND_TRIPS), f"{run['unchanged']:.0f}")
            break
    table.print(markdown)


def threads(rates, markdown):
    table = Table(("", "one thread", "two threads", "speed-up", "target"))
    ratio = rates[2] / rates[1]
    table.add("function, 26 columns", f"{rates[1]:,.0f} /s", f"{rates[2]:,.0f} /s", f"{ratio:.2f} x",
              at_least(ratio, LEAST_SPEED_UP))
    table.print(markdown)


def machine():
    with open("/proc/cpuinfo") as file:
        model = re.search(r"model name\s*:\s*(.*)", file.read())
    return (f"{model[1] if model else platform.processor()}, {os.cpu_count()} processors, "
            f"Linux {platform.release()} on {platform.machine()}")


def print_all(paths, markdown):
    print(("Taken on: " if markdown else "") + machine() + "\n")
    for path in paths:
        program = os.path.basename(path).removesuffix(".json")
        title, most_of = SECTIONS[program]
        print(f"### {title}\n" if markdown else title)
        if program == "flash_bench":
            flash(path, markdown)
            continue
        if program == "mariadb_bench":
            mariadb(path, markdown)
            continue
        times, bytes_written, rates = read(path)
        if program in LEAST_BUS:
            bus(times, LEAST_BUS[program], markdown)
            continue
        if program == "history_bench":
            history(times, bytes_written, markdown)
            continue
        if program == "difference_bench":
            difference(times, markdown)
            continue
        size = "bytes" if program == "parser_bench" else "rows"
        compare(times, most_of, LEAST_PER_CALL.get(program), size, markdown)
        if program == "list_bench":
            grow(times, markdown)
        if rates:
            threads(rates, markdown)


def write(page, paths):
    """Replaces what stands under the page's heading of figures."""
    figures = io.StringIO()
    with contextlib.redirect_stdout(figures):
        print_all(paths, markdown=True)
    with open(page) as file:
        text = file.read()
    head, rest = text.split("\n## Figures\n", 1)
    tail = rest[rest.index("\n## "):]
    with open(page, "w") as file:
        file.write(f"{head}\n## Figures\n\n{figures.getvalue().rstrip()}\n{tail}")


def main():
    form, *paths = sys.argv[1:]
    if form == "--write":
        write("docs/performance.md", paths)
    else:
        print_all(paths, markdown=form == "--markdown")


if __name__ == "__main__":
    main()
