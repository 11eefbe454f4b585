"""A Galera cluster for tests: three MariaDB servers of this machine, unprivileged, in a folder in memory, set up as docs/operations.md
says."""
import contextlib
import os
import random
import re
import shutil
import signal
import socket
import subprocess
import time
from pathlib import Path

import server

OPERATIONS = Path(__file__).resolve().parents[2] / "docs/operations.md"
# Beside what is documented: little memory, and no long waits for what a test has killed.
PROVIDER_OPTIONS = "gmcast.peer_timeout=PT1S;pc.announce_timeout=PT1S;pc.wait_prim_timeout=PT20S;gcache.size=16M;gcache.page_size=4M"
DATABASE = "test_cluster"
# What carries a whole state to a node gives up root's rights, and then could not write a folder of root's.
SOMEBODY = {"user": "nobody", "group": "nogroup", "extra_groups": []} if os.geteuid() == 0 else {}
ACCOUNT = f"""
CREATE USER zymdb@'127.0.0.1' IDENTIFIED BY '{server.PASSWORD}';
GRANT ALL ON `test\\_%`.* TO zymdb@'127.0.0.1';
"""


def documented_options():
    """What an operator is told to write into the option file of a node."""
    block = re.search(r"\n    \[mariadb\]\n((?:    .*\n)+)", OPERATIONS.read_text())[1]
    return {key.strip(): value.strip().strip('"') for key, value in (line.split("=", 1) for line in block.splitlines())}


class Node:
    def __init__(self, cluster, number):
        self.cluster = cluster
        self.environment = dict(os.environ, PATH=f"{cluster.programs}:{os.environ['PATH']}")
        self.number = number
        self.folder = cluster.folder / f"node{number}"
        self.data = self.folder / "data"
        self.data.mkdir(parents=True)
        if SOMEBODY:
            for folder in (self.folder, self.data):
                shutil.chown(folder, SOMEBODY["user"], SOMEBODY["group"])
        self.port, self.group_port, self.transfer_port, self.state_port = (cluster.new_port() for _ in range(4))
        self.process = None

    def command(self, *options):
        told = documented_options()
        told |= {
            "wsrep_cluster_address": "gcomm://" + ",".join(f"127.0.0.1:{node.group_port}" for node in self.cluster.nodes),
            "wsrep_node_name": f"node{self.number}",
            "wsrep_node_address": f"127.0.0.1:{self.group_port}",
            "wsrep_provider_options": f"{told['wsrep_provider_options']};{PROVIDER_OPTIONS};ist.recv_addr=127.0.0.1:{self.transfer_port};"
                                      f"gmcast.listen_addr=tcp://127.0.0.1:{self.group_port}",
        }
        return ["mariadbd", "--no-defaults", f"--datadir={self.data}", f"--socket={self.folder}/socket",
                f"--pid-file={self.folder}/pid", f"--port={self.port}", "--bind-address=127.0.0.1", "--skip-name-resolve",
                "--innodb-buffer-pool-size=32M", "--innodb-log-file-size=8M", "--innodb-flush-log-at-trx-commit=2",
                "--max-connections=100", "--performance-schema=OFF", "--wsrep-slave-threads=2",
                f"--wsrep-node-incoming-address=127.0.0.1:{self.port}",
                f"--wsrep-sst-receive-address=127.0.0.1:{self.state_port}",
                *(f"--{key.replace('_', '-')}={value}" for key, value in told.items()), *options]

    def start(self, *options):
        with (self.folder / "log").open("a") as log:
            self.process = subprocess.Popen(self.command(*options), stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                                            start_new_session=True, env=self.environment, **SOMEBODY)

    # How far its own files go: a node that was killed has not written that down.
    def position(self):
        told = subprocess.run(self.command("--wsrep-recover"), stdin=subprocess.DEVNULL, timeout=60, check=False,
                              capture_output=True, text=True, **SOMEBODY).stderr
        found = re.findall(r"Recovered position: (\S+):(-?\d+)", told)
        if not found:
            raise RuntimeError(f"node {self.number} has no position:\n{told}")
        return found[-1][0], int(found[-1][1])

    def come_back(self):
        group, number = self.position()
        self.start(f"--wsrep-start-position={group}:{number}")

    def bootstrap(self):
        state = self.data / "grastate.dat"
        if state.exists():
            # Nobody else decides that no other node knows more.
            state.write_text(state.read_text().replace("safe_to_bootstrap: 0", "safe_to_bootstrap: 1"))
            group, number = self.position()
            return self.start("--wsrep-new-cluster", f"--wsrep-start-position={group}:{number}")
        return self.start("--wsrep-new-cluster")

    def asking(self, sql, database=""):
        return ["mariadb", "--no-defaults", "-uroot", f"--socket={self.folder}/socket", "--batch", "--skip-column-names", "-e", sql,
                database]

    def ask(self, sql, database=""):
        return subprocess.run(self.asking(sql, database), capture_output=True, text=True, timeout=30, check=False)

    def statuses(self):
        return dict(line.split("\t") for line in self.ask("SHOW GLOBAL STATUS LIKE 'wsrep_%'").stdout.splitlines())

    def status(self, name):
        return self.statuses().get("wsrep_" + name, "")

    def is_synced(self, size=1):
        told = self.statuses()
        return (told.get("wsrep_local_state_comment"), told.get("wsrep_cluster_status")) == ("Synced", "Primary") \
            and int(told["wsrep_cluster_size"]) >= size

    def wait(self, is_there=None):
        deadline = time.monotonic() + 60
        while not (is_there or self.is_synced)():
            if self.process.poll() is not None or time.monotonic() > deadline:
                raise RuntimeError(f"node {self.number}:\n" + "\n".join((self.folder / "log").read_text().splitlines()[-150:]))
            time.sleep(0.05)

    # When it belonged to no majority, by its own account, to the second.
    def lonely_times(self):
        times, began = [], None
        for moment, kind in re.findall(r"^(\S+ +\S+) .* view\(view_id\((NON_PRIM|PRIM),", (self.folder / "log").read_text(), re.MULTILINE):
            seconds = time.mktime(time.strptime(moment, "%Y-%m-%d %H:%M:%S"))
            if kind == "NON_PRIM":
                began = seconds if began is None else began
            elif began is not None:
                times.append((began, seconds + 1))
                began = None
        return times if began is None else [*times, (began, time.time())]

    def isolate(self, alone):
        self.ask(f"SET GLOBAL wsrep_provider_options='gmcast.isolate={int(alone)}'")

    def kill(self, signal_number=signal.SIGKILL):
        if self.process is not None and self.process.poll() is None:
            self.process.send_signal(signal_number)
            self.process.wait(60)


class Cluster:
    def __init__(self, folder):
        self.folder = Path(folder)
        self.ports = iter(random.sample(range(20000, 32000), 100))
        # Where somebody else finds them too.
        self.programs = self.folder / "programs"
        self.programs.mkdir()
        for program in ("wsrep_sst_rsync", "wsrep_sst_common"):
            shutil.copy(shutil.which(program), self.programs)
        self.nodes = []
        for number in range(3):
            self.nodes.append(Node(self, number))
        (self.folder / "password").write_text(server.PASSWORD + "\n")

    # Below those that the system gives to connections: a node that is gone finds its own free when it comes back.
    def new_port(self):
        for port in self.ports:
            with contextlib.suppress(OSError), socket.create_server(("127.0.0.1", port)):
                return port
        raise RuntimeError("no port is free")

    # The others get all of it from the first one.
    def install(self):
        first = self.nodes[0]
        subprocess.run(["mariadb-install-db", "--no-defaults", f"--datadir={first.data}", "--skip-test-db",
                        "--auth-root-authentication-method=normal", "--innodb-log-file-size=8M"], check=True,
                       stdout=subprocess.DEVNULL, stderr=(self.folder / "install.log").open("w"), **SOMEBODY)

    def start(self):
        self.install()
        first = self.nodes[0]
        first.bootstrap()
        first.wait()
        made = first.ask(ACCOUNT)
        if made.returncode != 0:
            raise RuntimeError(made.stderr)
        # One after the other, each a member before the next one asks.
        for node in self.nodes[1:]:
            node.start()
            node.wait()
        self.wait()

    def wait(self):
        for node in self.nodes:
            node.wait(lambda node=node: node.is_synced(3))

    # Where none is left: first the one that knows most.
    def bootstrap(self):
        positions = [node.position() for node in self.nodes]
        if len({group for group, _ in positions}) != 1:
            raise RuntimeError(f"they are of several clusters: {positions}")
        first = max(self.nodes, key=lambda node: positions[node.number][1])
        first.bootstrap()
        first.wait()
        for node in self.nodes:
            if node is not first:
                node.come_back()
        self.wait()

    # With the hosts in this order, which is that in which they are tried.
    def address(self, *numbers):
        hosts = ",".join(f"127.0.0.1:{self.nodes[number].port}" for number in numbers or (0, 1, 2))
        return f"mariadb://zymdb@{hosts}/{DATABASE}?password-file={self.folder}/password"

    def new_database(self):
        made = self.nodes[0].ask(f"CREATE OR REPLACE DATABASE {DATABASE}")
        if made.returncode != 0:
            raise RuntimeError(made.stderr)

    def stop(self):
        for node in self.nodes:
            node.kill()
