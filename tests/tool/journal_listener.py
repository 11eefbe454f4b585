#!/usr/bin/env python3
"""Takes the place of the system's journal: writes every entry that is sent to it to a file."""
import socket
import sys

with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as listener, open(sys.argv[1], "w", encoding="utf-8") as entries:
    listener.bind("/run/systemd/journal/socket")
    while True:
        entries.write(listener.recv(65536).decode() + "\n")
        entries.flush()
