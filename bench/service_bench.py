#!/usr/bin/env python3
"""The HTTP service beside nginx on the same bytes, and what it takes by itself: bench/service_bench.py [BUILD]

Requests are counted by wrk, in turns, so that a slower or faster spell of the machine falls on both; a ratio is the median of
the turns' ratios. Without nginx or wrk (scripts/install-packages packages-test.txt) their figures are left out, and that is said.
"""
import http.client
import os
import re
import signal
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path
from urllib.parse import urlsplit

ROOT = Path(__file__).resolve().parents[1]
BUILD = Path(sys.argv[1] if len(sys.argv) > 1 else ROOT / "build/release").resolve()
TOOL, FIXED = BUILD / "tools/zymdb/zymdb", BUILD / "bench/fixed_answer"
NGINX, WRK = ROOT / "build/programs/nginx", ROOT / "build/programs/wrk"
EXPANDED = "/redfish/v1/Systems/1?$expand=."
TURNS, SECONDS, CONNECTIONS, SIZE = 7, 2, 32, 2048

CONFIGURATION = """
worker_processes 2; daemon off; pid {folder}/nginx.pid; error_log {folder}/error.log;
events {{ worker_connections 1024; }}
http {{
  access_log off; sendfile on; tcp_nopush on; keepalive_requests 1000000; open_file_cache max=10;
  client_body_temp_path {folder}/a; proxy_temp_path {folder}/b; fastcgi_temp_path {folder}/c; uwsgi_temp_path {folder}/d;
  scgi_temp_path {folder}/e; default_type application/json;
  server {{ listen 127.0.0.1:{port}; root {folder}; }}
}}
"""


class Server:
    def __init__(self, *command, port=None, environment=None):
        self.begun = time.perf_counter()
        self.process = subprocess.Popen([str(each) for each in command], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                        env={**os.environ, **(environment or {})})
        self.port = port or urlsplit(self.process.stdout.readline().decode().strip()).port

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.send_signal(signal.SIGTERM)
        self.process.wait(20)

    def ask(self, path, connection=None, **headers):
        connection = connection or http.client.HTTPConnection("127.0.0.1", self.port, timeout=10)
        connection.request("GET", path, headers=headers)
        response = connection.getresponse()
        return response.status, response.headers, response.read()

    def memory(self, what):
        status = Path(f"/proc/{self.process.pid}/status").read_text()
        return int(re.search(rf"^{what}:\s+(\d+) kB", status, re.MULTILINE)[1]) / 1024


def rate(server, tag=None, path="/resource"):
    header = ["-H", f"If-None-Match: {tag}"] if tag else []
    told = subprocess.run([WRK, "-t1", f"-c{CONNECTIONS}", f"-d{SECONDS}s", *header, f"http://127.0.0.1:{server.port}{path}"],
                          capture_output=True, text=True, check=True).stdout
    # wrk counts 304 as an answer like any other.
    assert "Non-2xx" not in told and "Socket errors" not in told, told
    return float(re.search(r"Requests/sec:\s+(\S+)", told)[1])


def files(folder):
    """A server of the files in a folder."""
    (folder / "nginx.conf").write_text(CONFIGURATION.format(folder=folder, port=18081))
    return Server(NGINX, "-e", folder / "error.log", "-c", folder / "nginx.conf", "-p", folder, port=18081)


def in_turns(what, one, other, least):
    turns = [(one(), other()) for _ in range(TURNS)]
    ratio = statistics.median(one / other for one, other in turns)
    one, other = (statistics.median(each) for each in zip(*turns))
    print(f"| {what} | {one:,.0f} /s | {other:,.0f} /s | {ratio:.2f} x | >= {least} {verdict(ratio >= least)} |", flush=True)


def compare(folder):
    content = (b'{"Name": "a resource of usual size"}' * 100)[:SIZE]
    (folder / "resource").write_bytes(content)
    with Server(FIXED, folder / "resource") as ours, files(folder) as nginx:
        time.sleep(0.5)
        tags = []
        for server in (ours, nginx):
            status, headers, body = server.ask("/resource")
            assert status == 200 and body == content
            tags.append(headers["ETag"])
            assert server.ask("/resource", **{"If-None-Match": tags[-1]})[0] == 304
        print(f"|                          | the service | nginx | to nginx | target |\n|---|--:|--:|--:|--:|")
        in_turns(f"unchanged resource, {SIZE:,} bytes", lambda: rate(ours), lambda: rate(nginx), 0.5)
        in_turns("the same, not sent again", lambda: rate(ours, tags[0]), lambda: rate(nginx, tags[1]), 0.7)


def compare_redfish(folder):
    """A resource with all that it leads to, as the service tells it, and the same bytes as a file."""
    with Server(*serve(folder)) as ours, files(folder) as nginx:
        time.sleep(0.5)
        status, _, body = ours.ask(EXPANDED)
        (folder / "resource").write_bytes(body)
        assert status == 200 and nginx.ask("/resource")[2] == body
        in_turns(f"a Redfish system and what it leads to, {len(body):,} bytes", lambda: rate(ours, path=EXPANDED),
                 lambda: rate(nginx), 0.2)
    print()


def verdict(is_reached):
    return "reached" if is_reached else "MISSED"


def collect(folder):
    example = ROOT / "data/example-server"
    subprocess.run([TOOL, "--inventory", folder / "inventory.db", "collect", "--quiet", "--lspci", example / "server.lspci",
                    "--smbios", example / "server.smbios"], check=True)


def serve(folder):
    return [TOOL, "--inventory", folder / "inventory.db", "serve", "--anonymous-reads", "--listen", "127.0.0.1:0"]


def own(folder):
    command = serve(folder)
    times = []
    for _ in range(15):
        with Server(*command) as server:
            assert server.ask("/metrics")[0] == 200
            times.append((time.perf_counter() - server.begun) * 1000)
    print("|                          | figure | of it its own | target |\n|---|--:|--:|--:|")
    start = statistics.median(times)
    print(f"| start to the first answer | {start:.0f} ms | | <= 50 ms {verdict(start <= 50)} |")
    with Server(*command) as server:
        time.sleep(0.5)
        report(server, "memory before the first request", 8)
        server.ask("/metrics")
        report(server, "after it", 8)
        connections = [http.client.HTTPConnection("127.0.0.1", server.port, timeout=10) for _ in range(100)]
        for each in connections:
            server.ask("/metrics", each)
        report(server, "with 100 connections that each asked", 16)


def report(server, what, most):
    whole, own_part = server.memory("VmRSS"), server.memory("RssAnon")
    print(f"| {what} | {whole:.1f} MiB | {own_part:.1f} MiB | <= {most} MiB {verdict(whole <= most)} |", flush=True)


def main():
    with tempfile.TemporaryDirectory() as folder:
        os.chmod(folder, 0o755)
        collect(Path(folder))
        missing = [program.name for program in [NGINX, WRK] if not program.exists()]
        if missing:
            print(f"no comparison without {' and '.join(missing)}\n")
        else:
            compare(Path(folder))
            compare_redfish(Path(folder))
        own(Path(folder))


if __name__ == "__main__":
    main()
