#!/usr/bin/env python3
"""Prints benchmark results as a table: the library's time, and its ratio to each comparator of the same run."""
import json
import sys

LIMIT, LIBRARY, PER_CALL = "kept statement", "library", "prepared per call"


def medians(path):
    """Times by (what, size) and by who did it."""
    times = {}
    for run in json.load(open(path))["benchmarks"]:
        if run.get("error_occurred"):
            sys.exit(f"{run['name']}: {run['error_message']}")
        if run.get("aggregate_name") != "median":
            continue
        what, who, *size = run["run_name"].split("/")
        times.setdefault((what, *size), {})[who] = run["real_time"]
    return times


def main():
    print(f"{'':32} {'library':>12} {'limit':>12} {'to the limit':>14} {'than per call':>14}")
    for path in sys.argv[1:]:
        for name, time in medians(path).items():
            library = time[LIBRARY]
            print(f"{' '.join(name):32} {library / 1000:>9.2f} us {time[LIMIT] / 1000:>9.2f} us "
                  f"{library / time[LIMIT]:>12.2f} x {time[PER_CALL] / library:>7.1f} faster")


if __name__ == "__main__":
    main()
