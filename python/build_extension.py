#!/usr/bin/env python3
"""Writes the C source of the extension module: build_extension.py HEADER TARGET

The declarations are those of the header, so that they stand once.
"""
import re
import sys
from pathlib import Path

import cffi


def declarations(header):
    text = re.sub(r"^#ifdef __cplusplus$.*?^#endif$", "", header, flags=re.MULTILINE | re.DOTALL)
    return re.sub(r"^#.*$", "", text, flags=re.MULTILINE)


def main():
    header, target = Path(sys.argv[1]), Path(sys.argv[2])
    builder = cffi.FFI()
    builder.cdef(declarations(header.read_text()))
    builder.set_source("zymdb._zymdb", f'#include "{header.parent.name}/{header.name}"')
    builder.emit_c_code(str(target))


if __name__ == "__main__":
    main()
