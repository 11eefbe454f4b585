"""A service of the example server, with accounts of the tests' own, and clients for it."""
import base64
import http.client
import os
import re
import signal
import ssl
import subprocess
import time
from pathlib import Path
from urllib.parse import urlsplit

import pytest

TOOL = os.environ["ZYMDB_TOOL"]
EXAMPLE = Path(os.environ["ZYMDB_SOURCE_DIR"]) / "data/example-server"
ACCOUNTS = dict(each.split("=", 1) for each in os.environ["ZYMDB_ACCOUNTS"].split())
PROMTOOL = os.environ["ZYMDB_PROMTOOL"]


def run(*command, **options):
    result = subprocess.run([str(each) for each in command], capture_output=True, text=True, **options)
    assert result.returncode == 0, f"{command}: {result.stdout}{result.stderr}"
    return result.stdout


def collect(inventory):
    run(TOOL, "--inventory", inventory, "collect", "--quiet", "--lspci", EXAMPLE / "server.lspci", "--smbios",
        EXAMPLE / "server.smbios")


def basic(user, password="right"):
    return {"Authorization": "Basic " + base64.b64encode(f"{user}:{password}".encode()).decode()}


def eventually(condition, seconds=20):
    deadline = time.monotonic() + seconds
    while not (result := condition()) and time.monotonic() < deadline:
        time.sleep(0.02)
    assert result
    return result


class Answer:
    def __init__(self, response):
        self.status, self.headers = response.status, response.headers
        self.body = response.read()

    @property
    def text(self):
        return self.body.decode()


class Service:
    """A running service. Ends orderly, or the test fails."""

    def __init__(self, folder, *words, inventory, environment=None, **options):
        self.errors = folder / f"errors-{time.monotonic_ns()}"
        self.process = subprocess.Popen(
            [TOOL, "--inventory", inventory, "serve", *map(str, words)], stdout=subprocess.PIPE, stderr=self.errors.open("w"),
            env={"PATH": os.environ["PATH"], **ACCOUNTS, **(environment or {})}, **options)
        line = self.process.stdout.readline().decode()
        assert re.fullmatch(r"https?://[^/]+/\n", line), line + self.complaints()
        self.address = urlsplit(line.strip())

    def complaints(self):
        return "".join(line for line in self.errors.read_text().splitlines(True) if line.startswith("zymdb: "))

    def connect(self):
        if self.address.scheme == "https":
            context = ssl._create_unverified_context()
            return http.client.HTTPSConnection(self.address.hostname, self.address.port, timeout=30, context=context)
        return http.client.HTTPConnection(self.address.hostname, self.address.port, timeout=30)

    def ask(self, path, method="GET", headers=None, body=None):
        connection = self.connect()
        try:
            connection.request(method, path, body, headers or {})
            return Answer(connection.getresponse())
        finally:
            connection.close()

    def metrics(self):
        return self.ask("/metrics", headers=basic("rhea")).text

    def metric(self, name):
        found = re.search(rf"^{re.escape(name)} (\S+)$", self.metrics(), re.MULTILINE)
        return float(found[1]) if found else None

    def end(self, how=signal.SIGTERM):
        self.process.send_signal(how)
        status = self.process.wait(30)
        self.process.stdout.close()
        return status


@pytest.fixture
def inventory(tmp_path):
    collect(tmp_path / "inventory.db")
    return tmp_path / "inventory.db"


@pytest.fixture
def start(tmp_path, inventory):
    """Starts a service on a free port; all of them end with the test."""
    running = []

    def start_one(*words, listen="127.0.0.1:0", inventory=inventory, **options):
        where = ["--listen", listen] if listen else []
        running.append(Service(tmp_path, *where, *words, inventory=inventory, **options))
        return running[-1]

    yield start_one
    for service in running:
        if service.process.poll() is None:
            assert service.end() == 0, service.complaints()


def fails_to_start(*words):
    """The one line that it says, and its exit status."""
    result = subprocess.run([TOOL, "serve", *map(str, words)], capture_output=True, text=True, timeout=30)
    lines = [line for line in result.stderr.splitlines() if not line.startswith("PWRAP")]
    assert len(lines) == 1 and lines[0].startswith("zymdb: ") and not result.stdout, result
    return result.returncode, lines[0]
