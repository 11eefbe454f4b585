#!/usr/bin/env python3
"""A MariaDB server for tests: unprivileged, on a socket and a port of this machine alone, in a folder in memory. A second start takes the place of
what an earlier run left.

    server.py start FOLDER [DATABASE ...]   waits until it answers, with these databases
    server.py stop FOLDER
"""
import os
import shutil
import signal
import socket
import subprocess
import sys
import time
from pathlib import Path

PASSWORD = "of the tests"
# Tests make their databases themselves; what an inventory's own account may do is tested apart.
ACCOUNTS = f"""
CREATE USER zymdb@localhost IDENTIFIED BY '{PASSWORD}';
GRANT ALL ON `test\\_%`.* TO zymdb@localhost;
CREATE USER encrypted@'127.0.0.1' IDENTIFIED BY '{PASSWORD}' REQUIRE SSL;
CREATE USER encrypted@localhost IDENTIFIED BY '{PASSWORD}' REQUIRE SSL;
GRANT ALL ON `test\\_%`.* TO encrypted@'127.0.0.1';
GRANT ALL ON `test\\_%`.* TO encrypted@localhost;
GRANT RELOAD, PROCESS, CONNECTION ADMIN ON *.* TO zymdb@localhost;
"""


def is_running(pid):
    try:
        return Path(f"/proc/{pid}/comm").read_text().strip().startswith("mariadbd")
    except OSError:
        return False


def stop(folder):
    try:
        pid = int((folder / "pid").read_text())
    except (OSError, ValueError):
        pid = 0
    if pid and is_running(pid):
        os.kill(pid, signal.SIGKILL)
        while is_running(pid):
            time.sleep(0.01)
    shutil.rmtree(folder, ignore_errors=True)


def install(data, folder):
    subprocess.run(["mariadb-install-db", "--no-defaults", f"--datadir={data}", "--auth-root-authentication-method=normal",
                    "--skip-test-db", "--innodb-log-file-size=8M"] + user(), check=True,
                   stdout=subprocess.DEVNULL, stderr=(folder / "install.log").open("w"))


def user():
    return ["--user=root"] if os.geteuid() == 0 else []


def query(folder, sql):
    return subprocess.run(["mariadb", "--no-defaults", "-uroot", f"--socket={folder}/socket", "-e", sql],
                          stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode == 0


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as taken:
        return taken.getsockname()[1]


# Of a server that calls itself localhost.
def make_certificate(folder):
    subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                    "-days", "2", "-subj", "/CN=localhost", "-addext", "subjectAltName=DNS:localhost",
                    "-keyout", folder / "key.pem", "-out", folder / "certificate.pem"], check=True,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def start(folder, *databases):
    stop(folder)
    data = folder / "data"
    data.mkdir(parents=True)
    install(data, folder)
    make_certificate(folder)
    port = free_port()
    with (folder / "log").open("w") as log:
        server = subprocess.Popen(
            ["mariadbd", "--no-defaults", f"--datadir={data}", f"--socket={folder}/socket", f"--pid-file={folder}/pid",
             f"--port={port}", "--bind-address=127.0.0.1", f"--ssl-cert={folder}/certificate.pem",
             f"--ssl-key={folder}/key.pem", "--skip-log-bin", "--innodb-buffer-pool-size=64M", "--innodb-log-file-size=8M",
             "--innodb-flush-log-at-trx-commit=0", "--max-connections=400", "--innodb-fast-shutdown=2"] + user(),
            stdin=subprocess.DEVNULL, stdout=log, stderr=log, start_new_session=True)
    deadline = time.monotonic() + 60
    while not query(folder, ACCOUNTS):
        if server.poll() is not None or time.monotonic() > deadline:
            sys.exit(f"the server does not start:\n{(folder / 'log').read_text()}")
        time.sleep(0.02)
    for database in databases:
        if not query(folder, f"CREATE DATABASE `{database}`; GRANT ALL ON `{database}`.* TO zymdb@localhost"):
            sys.exit(f"no database {database}")
    (folder / "port").write_text(str(port))
    (folder / "password").write_text(PASSWORD + "\n")


def main():
    command, folder = sys.argv[1], Path(sys.argv[2])
    {"start": start, "stop": stop}[command](folder, *sys.argv[3:])


if __name__ == "__main__":
    main()
