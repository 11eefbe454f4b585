#!/usr/bin/env python3
"""What a controller's flash has to hold: each library, stripped, in at most so many KiB.
small_footprint_test.py STRIP LIBRARY=KIB…"""
import os
import subprocess
import sys
import tempfile


def main():
    strip, wrong = sys.argv[1], 0
    with tempfile.TemporaryDirectory() as folder:
        for each in sys.argv[2:]:
            library, most = each.rsplit("=", 1)
            copy = os.path.join(folder, os.path.basename(library))
            subprocess.run([strip, "-o", copy, library], check=True)
            size = os.path.getsize(copy) / 1024
            print(f"{os.path.basename(library)}: {size:.1f} KiB of {most}")
            wrong += size > int(most)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
