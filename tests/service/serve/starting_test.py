"""How the service starts and ends, by hand and by a service manager, and why it does not start."""
import json
import os
import shutil
import signal
import socket
import subprocess
import time
from pathlib import Path

import pytest
from conftest import TOOL, basic, eventually, fails_to_start


def test_it_says_where_it_is(start):
    service = start()
    assert service.address.scheme == "http" and service.address.hostname == "127.0.0.1" and service.address.port > 0
    assert service.ask("/metrics", headers=basic("ada")).status == 200


def test_it_listens_on_ipv6(start):
    assert start(listen="[::1]:0").ask("/metrics", headers=basic("ada")).status == 200


@pytest.mark.parametrize("how", [signal.SIGTERM, signal.SIGINT])
def test_it_ends_orderly_and_soon(start, how):
    service = start()
    open_one = service.connect()
    open_one.request("GET", "/metrics")
    open_one.getresponse().read()
    begin = time.monotonic()
    assert service.end(how) == 0
    assert time.monotonic() - begin < 3


def test_a_hangup_without_tls_is_nothing(start):
    service = start()
    service.process.send_signal(signal.SIGHUP)
    assert service.ask("/metrics", headers=basic("ada")).status == 200


def test_it_leaves_nothing_behind(start):
    service = start()
    files = f"/proc/{service.process.pid}/fd"
    for _ in range(20):
        service.ask("/metrics", headers=basic("ada"))
    before = eventually(lambda: len(os.listdir(files)))
    for _ in range(300):
        service.ask("/metrics", headers=basic("ada"))
        service.ask("/metrics")
    eventually(lambda: len(os.listdir(files)) <= before + 1)


@pytest.mark.parametrize("words,status,reason", [
    (["--listen", "here"], 2, "--listen here is no ADDRESS:PORT"),
    (["--listen", "127.0.0.1:70000"], 2, "is no ADDRESS:PORT"),
    (["--listen", "0.0.0.0:0"], 2, "--tls-certificate and --tls-key are needed"),
    (["--listen", "[::]:0"], 2, "--tls-certificate and --tls-key are needed"),
    (["--listen", "0.0.0.0:0", "--anonymous-reads"], 2, "--anonymous-reads is for addresses of this machine alone"),
    (["--tls-key", "key"], 2, "given together"),
    (["--tls-certificate", "certificate"], 2, "given together"),
    (["--tls-certificate", "/nowhere/certificate", "--tls-key", "/nowhere/key"], 1, "cannot read /nowhere/certificate"),
    (["--listen", "192.0.2.1:0", "--tls-certificate", "c", "--tls-key", "k"], 1, "cannot listen at 192.0.2.1:0"),
])
def test_it_does_not_start_where_that_would_not_be_safe_or_cannot_be(words, status, reason):
    told, line = fails_to_start(*words)
    assert told == status and reason in line, line


def test_anonymous_reads_are_not_for_others_even_with_tls():
    assert fails_to_start("--listen", "[::]:0", "--anonymous-reads", "--tls-certificate", "c", "--tls-key", "k")[0] == 2


def test_a_port_that_is_taken_is_named(start):
    where = start().address.netloc
    assert fails_to_start("--listen", where) == (1, f"zymdb: cannot listen at {where}: Address already in use")


# ---- a service manager

def start_with_sockets(start, *sockets, words=(), environment=None):
    shell = {"LISTEN_FDS": str(len(sockets)), **(environment or {})}

    def prepare():
        for number, each in enumerate(sockets):
            os.dup2(each.fileno(), 3 + number)

    return start(*words, listen=None, environment=shell, pass_fds=[3 + number for number in range(len(sockets))],
                 preexec_fn=prepare)


@pytest.fixture
def listener():
    with socket.create_server(("127.0.0.1", 0)) as one:
        yield one


@pytest.fixture
def started_by_manager(tmp_path, monkeypatch):
    """A shell between, which knows the process's number as a manager does."""
    script = tmp_path / "tool"
    script.write_text(f'#!/bin/sh\nexport LISTEN_PID=$$ WATCHDOG_PID=$$\nexec {TOOL} "$@"\n')
    script.chmod(0o755)
    monkeypatch.setattr("conftest.TOOL", str(script))


def test_it_serves_a_socket_that_is_passed_on(start, started_by_manager, listener):
    service = start_with_sockets(start, listener)
    assert service.address.port == listener.getsockname()[1]
    assert service.ask("/metrics", headers=basic("ada")).status == 200


def refused_socket(tmp_path, *sockets, words=()):
    def prepare():
        for number, each in enumerate(sockets):
            os.dup2(each.fileno(), 3 + number)
    result = subprocess.run(["sh", "-c", f'export LISTEN_PID=$$; exec {TOOL} serve "$@"', "sh", *words], capture_output=True, text=True,
                            env={**os.environ, "LISTEN_FDS": str(len(sockets))}, preexec_fn=prepare, timeout=30,
                            pass_fds=[3 + number for number in range(len(sockets))])
    assert result.stderr.count("\n") == 1 and not result.stdout, result
    return result.returncode, result.stderr


def test_a_socket_that_others_reach_needs_tls_too(tmp_path):
    with socket.create_server(("0.0.0.0", 0)) as open_to_all:
        status, line = refused_socket(tmp_path, open_to_all)
        assert status == 2 and "--tls-certificate and --tls-key are needed" in line
        status, line = refused_socket(tmp_path, open_to_all, words=["--anonymous-reads"])
        assert status == 2 and "--anonymous-reads" in line


def test_what_is_no_socket_to_serve_is_refused(tmp_path, listener):
    with socket.socket() as silent, socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as other:
        for wrong in [silent, other]:
            status, line = refused_socket(tmp_path, wrong)
            assert status == 1 and "no socket that listens" in line
        status, line = refused_socket(tmp_path, listener, silent)
        assert status == 2 and "2 sockets" in line


def test_it_tells_the_manager_that_it_is_ready_alive_and_ending(start, started_by_manager, tmp_path):
    with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as manager:
        manager.bind(str(tmp_path / "notify"))
        manager.settimeout(20)
        service = start(environment={"NOTIFY_SOCKET": str(tmp_path / "notify"), "WATCHDOG_USEC": "200000"})
        assert manager.recv(100) == b"READY=1"
        begin = time.monotonic()
        assert [manager.recv(100) for _ in range(5)] == [b"WATCHDOG=1"] * 5
        assert time.monotonic() - begin < 2
        assert service.end() == 0
        told = []
        while not told or told[-1] != b"STOPPING=1":
            told.append(manager.recv(100))
        assert set(told[:-1]) <= {b"WATCHDOG=1"}


# ---- The program that it becomes

def test_it_is_one_process_from_the_command_to_the_service(start):
    service = start()
    assert os.readlink(f"/proc/{service.process.pid}/exe").endswith("/zymdb-serve")


def test_the_service_opens_no_libraries_of_other_commands_nor_those_of_deliveries(start):
    service = start()
    opened = Path(f"/proc/{service.process.pid}/maps").read_text()
    assert "libmicrohttpd" in opened
    for name in ["libcurl", "libnvme", "libcrypto", "libsmartcols"]:
        assert name not in opened, name


def test_other_commands_open_no_libraries_of_the_service():
    needed = subprocess.run(["ldd", TOOL], capture_output=True, text=True, check=True).stdout
    assert "libzymdb_pci" in needed
    for name in ["libmicrohttpd", "libgnutls", "libpam", "libcurl"]:
        assert name not in needed, name


def test_the_program_alone_is_not_for_people(tmp_path):
    program = Path(TOOL).parent / "../libexec/zymdb/zymdb-serve"
    for words in [[], ["--listen", "127.0.0.1:0", "more"], ["--wheels"], ["--help"]]:
        told = subprocess.run([program, *words], capture_output=True, text=True, timeout=30)
        assert (told.returncode, told.stderr) == (2, "zymdb: this program is started by `zymdb serve`\n"), words


def test_a_tool_without_the_program_says_so(tmp_path):
    shutil.copy(TOOL, tmp_path / "zymdb")
    told = subprocess.run([tmp_path / "zymdb", "serve"], capture_output=True, text=True, timeout=30,
                          env={**os.environ, "LD_LIBRARY_PATH": ":".join(library_folders())})
    assert told.returncode == 1 and told.stderr.endswith("/libexec/zymdb/zymdb-serve: No such file or directory\n"), told


def test_both_are_found_where_they_were_moved_together(tmp_path, start, monkeypatch):
    (tmp_path / "there/bin").mkdir(parents=True)
    (tmp_path / "there/libexec/zymdb").mkdir(parents=True)
    shutil.copy(TOOL, tmp_path / "there/bin/zymdb")
    shutil.copy(Path(TOOL).parent / "../libexec/zymdb/zymdb-serve", tmp_path / "there/libexec/zymdb")
    (tmp_path / "linked").symlink_to(tmp_path / "there/bin/zymdb")
    monkeypatch.setattr("conftest.TOOL", str(tmp_path / "linked"))
    service = start(environment={"LD_LIBRARY_PATH": ":".join(library_folders())})
    assert os.readlink(f"/proc/{service.process.pid}/exe") == str(tmp_path / "there/libexec/zymdb/zymdb-serve")


def library_folders():
    """Where the build keeps our own."""
    needed = subprocess.run(["ldd", TOOL], capture_output=True, text=True, check=True).stdout
    return {os.path.dirname(line.split()[2]) for line in needed.splitlines() if "libzymdb" in line}


def test_without_libcurl_a_subscription_fails_and_nothing_else(start, tmp_path):
    (tmp_path / "no-libraries").mkdir()
    for name in ["libcurl-gnutls.so.4", "libcurl.so.4"]:
        (tmp_path / "no-libraries" / name).write_bytes(b"")
    service = start(environment={"LD_LIBRARY_PATH": str(tmp_path / "no-libraries")})
    body = json.dumps({"Destination": "http://127.0.0.1:9/", "Protocol": "Redfish"})
    headers = {"Content-Type": "application/json", **basic("ada")}
    assert service.ask("/redfish/v1/EventService/Subscriptions", "POST", headers, body).status == 500
    assert "cannot answer: " in service.complaints() and "libcurl" in service.complaints()
    assert service.ask("/redfish/v1/Systems/1", headers=basic("ada")).status == 200
