"""The client on a cluster of three nodes: what becomes of its writes and reads while nodes are killed, restarted, cut off and gone."""
import collections
import os
import random
import re
import shutil
import signal
import subprocess
import tempfile
import threading
import time
from pathlib import Path

import pytest

from cluster import Cluster

BUSY = 40
FAILED = 44
NOT_KNOWN = "whether the change was written is not known"
# Of the first write after a node was killed.
LONGEST_SECONDS = 3
WRITERS = 8
# Writers use numbers of their own.
NUMBERS = 10_000_000

# The end is of the clock that nodes write their logs by.
Answer = collections.namedtuple("Answer", "status seconds words end")


def parse(line, end):
    status, milliseconds, words = line.rstrip("\n").split(" ", 2)
    return Answer(int(status), int(milliseconds) / 1000, words, end)


class Client:
    """A process of the client's, which begins with the first of these nodes."""

    def __init__(self, cluster, build, *nodes):
        environment = dict(os.environ, ZYMDB_INVENTORY=cluster.address(*nodes), ZYMDB_ENGINES=str(build / "engines"), ZYMDB_LOG="stderr")
        self.log = tempfile.TemporaryFile("w+")
        self.process = subprocess.Popen([build / "tests/mariadb/cluster_client"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=self.log, text=True, bufsize=1, env=environment)

    def tell(self, command):
        self.process.stdin.write(command + "\n")
        self.process.stdin.flush()

    def do(self, command):
        self.tell(command)
        return self.answer()

    def answer(self):
        line = self.process.stdout.readline()
        return parse(line, time.time())

    def log_text(self):
        self.log.seek(0)
        return self.log.read()

    def end(self):
        self.process.stdin.close()
        assert self.process.wait(60) == 0, self.log_text()[-4000:]
        self.process.stdout.close()
        self.log.close()


class Endless(threading.Thread):
    """A client that goes on until it is told to end; its answers are kept."""

    def __init__(self, client, command):
        super().__init__(daemon=True)
        self.client = client
        self.lines = []
        client.tell(command)
        self.start()

    def run(self):
        for line in self.client.process.stdout:
            if line == "end\n":
                return
            self.lines.append((line, time.time()))

    def answers(self):
        return [parse(line, end) for line, end in self.lines]

    def end(self):
        self.client.tell("end")
        self.join(60)
        assert not self.is_alive()
        assert self.client.process.stdout.readline() == "end\n"


class Writers:
    """Eight processes, each beginning with another node: what they were told of each number."""

    def __init__(self, make_client, first=0):
        self.writers = []
        for number in range(WRITERS):
            order = [(number + i) % 3 for i in range(3)]
            self.writers.append(Endless(make_client(*order), f"write {first + (number + 1) * NUMBERS}"))

    def count(self):
        return sum(len(writer.lines) for writer in self.writers)

    def end(self):
        """Of each write its numbers and the answer."""
        for writer in self.writers:
            writer.end()
        told = []
        for writer in self.writers:
            for line, end in writer.lines:
                count, first, answer = line.split(" ", 2)
                told.append(([int(first) + i for i in range(int(count))], parse(answer, end)))
        return told


class Majority:
    """On a busy machine nodes take each other for dead, now and then: then nobody answers, and only then."""

    def __init__(self, cluster):
        self.lonely_times = [node.lonely_times() for node in cluster.nodes]

    # One alone leaves a majority to ask.
    def was_lost(self, answer):
        begin = answer.end - answer.seconds - 1
        return sum(any(begin <= to and since <= answer.end for since, to in times) for times in self.lonely_times) >= 2

    def excuses(self, answer):
        return answer.status == FAILED and "cannot open the inventory" in answer.words and self.was_lost(answer)


def judge(told, rows, majority):
    """Every acknowledged write is there once; one that failed is not there; of one that nobody knows of, all or nothing."""
    found = collections.Counter(rows)
    for numbers, answer in told:
        times = {found[number] for number in numbers}
        if answer.status == 0:
            assert times == {1}, f"{numbers}: acknowledged, and there {times} times"
        elif NOT_KNOWN in answer.words:
            assert answer.status == FAILED, answer
            assert times in ({0}, {1}), f"{numbers}: not known, and there {times} times"
        else:
            assert times == {0}, f"{numbers}: {answer}, and there {times} times"
            assert answer.status == BUSY or majority.excuses(answer), answer
    return collections.Counter(answer.status for _, answer in told)


@pytest.fixture(scope="module", name="build")
def fixture_build(request):
    return Path(request.config.getoption("--build")).resolve()


@pytest.fixture(scope="module", name="nodes")
def fixture_nodes():
    folder = tempfile.mkdtemp(prefix="cluster-", dir="/dev/shm" if os.path.isdir("/dev/shm") else None)
    os.chmod(folder, 0o755)
    cluster = Cluster(folder)
    try:
        cluster.start()
        yield cluster
    finally:
        cluster.stop()
        shutil.rmtree(folder, ignore_errors=True)


@pytest.fixture(name="cluster")
def fixture_cluster(nodes):
    if any(node.process.poll() is not None for node in nodes.nodes):
        nodes.stop()
        nodes.bootstrap()
    nodes.wait()
    nodes.new_database()
    return nodes


@pytest.fixture(name="client")
def fixture_client(cluster, build):
    clients = []

    def make(*order):
        clients.append(Client(cluster, build, *order))
        return clients[-1]

    yield make
    for each in clients:
        if each.process.poll() is None:
            each.end()


def numbers_of(client):
    answer = client.do("numbers")
    assert answer.status == 0, answer
    return [int(word) for word in answer.words.split()]


def assert_no_gaps(client):
    """Ids follow each other, whichever node made them: none is the server's own, which would step by three."""
    ids = [int(word) for word in client.do("ids").words.split()]
    assert ids == list(range(1, len(ids) + 1))


def test_clients_that_start_at_once_on_all_nodes_make_the_tables_once(client):
    clients = [client(i % 3, (i + 1) % 3, (i + 2) % 3) for i in range(WRITERS)]
    for number, each in enumerate(clients):
        each.tell(f"add {number}")
    for each in clients:
        answer = each.answer()
        assert answer.status == 0, answer
    assert sorted(numbers_of(clients[0])) == list(range(WRITERS))
    assert_no_gaps(clients[0])


def test_what_was_written_through_one_node_is_read_through_any(cluster, client):
    here, there = client(0, 1, 2), client(1, 2, 0)
    # The other node is behind: it is to wait for what it has not applied yet.
    others = [client(2, 0, 1) for _ in range(2)]
    writing = [Endless(each, f"write {(i + 1) * NUMBERS}") for i, each in enumerate(others)]
    for number in range(150):
        assert here.do(f"add {number}").status == 0
        read = there.do(f"has {number}")
        assert (read.status, read.words) == (0, "1"), f"{number}: {read}"
    for each in writing:
        each.end()


def test_of_two_transactions_on_two_nodes_one_is_told_at_its_commit(client):
    here, there = client(0, 1, 2), client(1, 2, 0)
    assert here.do("add 1").status == 0
    assert here.do("begin").status == 0
    assert here.do("add 2").status == 0
    assert there.do("add 3").status == 0
    assert here.do("commit").status == BUSY
    assert sorted(numbers_of(here)) == [1, 3]
    assert here.do("add 4").status == 0
    assert sorted(numbers_of(there)) == [1, 3, 4]


def test_of_two_transactions_on_two_nodes_one_is_told_at_a_statement(cluster, client):
    here, there = client(0, 1, 2), client(1, 2, 0)
    assert here.do("add 1").status == 0
    assert here.do("begin").status == 0
    assert here.do("add 2").status == 0
    assert there.do("add 3").status == 0
    while cluster.nodes[0].ask("SET SESSION wsrep_sync_wait=15; SELECT COUNT(*) FROM PCIs", "test_cluster").stdout != "2\n":
        time.sleep(0.01)
    assert here.do("has 1").status == BUSY
    assert here.do("add 4").status == BUSY
    assert here.do("commit").status == BUSY
    assert sorted(numbers_of(here)) == [1, 3]


def until(is_so):
    deadline = time.monotonic() + 20
    while not is_so():
        assert time.monotonic() < deadline
        time.sleep(0.02)


def conflicts(cluster):
    return sum(int(node.status(name)) for node in cluster.nodes for name in ("local_bf_aborts", "local_cert_failures"))


def test_single_writes_that_conflict_on_three_nodes_are_made_once_each(cluster, client):
    before = conflicts(cluster)
    writers = Writers(client)
    time.sleep(5)
    told = writers.end()
    reader = client()
    statuses = judge(told, numbers_of(reader), Majority(cluster))
    assert statuses[0] > 100 and set(statuses) <= {0, BUSY}, statuses
    assert statuses[BUSY] <= statuses[0] / 100, statuses
    assert_no_gaps(reader)
    assert conflicts(cluster) > before, "nothing was in conflict"


def test_a_collection_that_another_node_overtakes_is_made_again(cluster, client, build):
    there = client(1, 2, 0)
    assert there.do("add 1").status == 0
    example = Path(__file__).resolve().parents[2] / "data/example-server"
    command = [build / "tools/zymdb/zymdb", "collect", "--lspci", example / "server.lspci", "--smbios", example / "server.smbios"]
    environment = dict(os.environ, ZYMDB_INVENTORY=cluster.address(), ZYMDB_ENGINES=str(build / "engines"))
    before = conflicts(cluster)
    # What holds the collection until another node's write has come.
    node = cluster.nodes[0]
    with subprocess.Popen(node.asking("BEGIN; SELECT * FROM Memory FOR UPDATE; DO SLEEP(3)", "test_cluster"), stdout=subprocess.DEVNULL) as lock:
        until(lambda: "User sleep" in node.ask("SHOW PROCESSLIST").stdout)
        with subprocess.Popen(command, env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True) as collection:
            until(lambda: "\t1\n" in node.ask("SHOW GLOBAL STATUS LIKE 'Innodb_row_lock_current_waits'").stdout)
            assert there.do("add 2").status == 0
            until(lambda: conflicts(cluster) > before)
            lock.kill()
            said = collection.stdout.read()
    assert collection.returncode == 0, said
    assert int(node.ask("SELECT COUNT(*) FROM Memory", "test_cluster").stdout) > 0


def test_a_node_cut_off_from_the_others_answers_nothing_and_is_passed_by(cluster, client):
    lonely, reader, writer = client(0), client(0, 1, 2), client(0, 1, 2)
    for each, number in ((lonely, 1), (reader, 2), (writer, 3)):
        assert each.do(f"add {number}").status == 0
    cluster.nodes[0].isolate(True)
    try:
        cluster.nodes[0].wait(lambda: cluster.nodes[0].status("cluster_status") != "Primary")
        for command in ("has 1", "add 4", "generation", "begin"):
            answer = lonely.do(command)
            assert answer.status == FAILED, f"{command}: {answer}"
            assert str(cluster.nodes[0].port) in answer.words
        new = client(0)
        assert new.do("has 1").status not in (0, BUSY)
        assert re.search(f"127.0.0.1:{cluster.nodes[0].port}: .*(WSREP|majority)", new.do("has 1").words)
        written = writer.do("add 5")
        assert written.status == 0 and written.seconds <= LONGEST_SECONDS, written
        read = reader.do("has 5")
        assert (read.status, read.words) == (0, "1"), read
    finally:
        cluster.nodes[0].isolate(False)
    cluster.wait()
    assert sorted(numbers_of(lonely)) == [1, 2, 3, 5]


def test_a_commit_that_the_majority_may_not_have_heard_is_told(cluster, client):
    here, there = client(0), client(1, 2)
    assert here.do("add 1").status == 0
    assert there.do("add 2").status == 0
    assert here.do("begin").status == 0
    assert here.do("add 3").status == 0
    for node in cluster.nodes[1:]:
        node.process.send_signal(signal.SIGSTOP)
    try:
        answer = here.do("commit")
        assert answer.status == FAILED and NOT_KNOWN in answer.words, answer
    finally:
        for node in cluster.nodes[1:]:
            node.process.send_signal(signal.SIGCONT)
    cluster.wait()
    assert sorted(numbers_of(there)) in ([1, 2], [1, 2, 3])


def test_without_a_majority_there_is_a_clear_failure_and_never_an_old_row(cluster, client):
    reader = client()
    assert reader.do("add 1").status == 0
    for node in cluster.nodes[1:]:
        node.kill()
    last = cluster.nodes[0]
    last.wait(lambda: last.status("cluster_status") != "Primary")
    for command in ("has 1", "numbers", "add 2"):
        answer = reader.do(command)
        assert answer.status == FAILED, answer
        assert all(str(node.port) in answer.words for node in cluster.nodes), answer
    for node in cluster.nodes[1:]:
        node.come_back()
    cluster.wait()
    assert numbers_of(reader) == [1]


def test_a_node_is_killed_under_eight_writers_and_no_write_is_lost(cluster, client, request):
    kills = request.config.getoption("--kills")
    random.seed(kills)
    witness = client(0, 1, 2)
    assert witness.do("add 1").status == 0
    witnessed = [1]
    writers = Writers(client)
    watching = Endless(client(1, 2, 0), "watch")
    firsts = []
    for kill in range(kills):
        # The witness begins with the node that goes: what it writes and reads next it does elsewhere.
        victim = kill % 3
        survivor = client(victim, (victim + 1) % 3, (victim + 2) % 3)
        assert survivor.do("has 1").words == "1"
        time.sleep(random.random() / 4)
        cluster.nodes[victim].kill()
        first = survivor.do(f"add {2 + kill}")
        firsts.append(([2 + kill], first))
        if first.status == 0:
            assert survivor.do(f"has {2 + kill}").words == "1"
            witnessed.append(2 + kill)
        survivor.end()
        cluster.nodes[victim].come_back()
        cluster.wait()
    told = writers.end()
    watching.end()
    rows = numbers_of(witness)
    majority = Majority(cluster)
    statuses = judge(told + firsts, rows, majority)
    assert collections.Counter(rows) & collections.Counter(witnessed) == collections.Counter(witnessed)
    known = {number for numbers, _ in told for number in numbers} | set(witnessed)
    assert set(rows) <= known
    assert_no_gaps(witness)
    failed = [answer for answer in watching.answers() if answer.status != 0]
    assert all(majority.excuses(answer) for answer in failed), failed[:5]
    seen = [int(answer.words) for answer in watching.answers() if answer.status == 0]
    assert seen == sorted(seen), "a read found fewer rows than one before"
    slowest = max(answer.seconds for _, answer in firsts if not majority.was_lost(answer))
    print(f"{kills} kills, {len(rows)} rows, statuses {dict(statuses)}, the slowest first write took {slowest:.1f} s, "
          f"the majority was lost {max(len(times) for times in majority.lonely_times)} times")
    assert slowest <= LONGEST_SECONDS
    assert sum(answer.status != 0 for _, answer in firsts) <= kills / 10
    assert statuses[0] > 20 * kills


def test_a_rolling_restart_loses_no_write_and_fails_no_read(cluster, client):
    assert client().do("add 1").status == 0
    writers = Writers(client)
    watchers = [Endless(client(i, (i + 1) % 3, (i + 2) % 3), "watch") for i in range(3)]
    for node in cluster.nodes:
        before = writers.count()
        node.kill(signal.SIGTERM)
        assert node.process.returncode == 0
        node.start()
        cluster.wait()
        assert writers.count() > before
    told = writers.end()
    reader = client()
    majority = Majority(cluster)
    statuses = judge(told, numbers_of(reader), majority)
    assert_no_gaps(reader)
    for each in watchers:
        each.end()
        failed = [answer for answer in each.answers() if answer.status != 0]
        assert all(majority.excuses(answer) for answer in failed), failed[:5]
        assert len(each.lines) > 100
    assert statuses[0] > 100


def test_what_was_acknowledged_is_there_after_all_nodes_were_gone(cluster, client):
    writers = Writers(client)
    time.sleep(3)
    for node in cluster.nodes:
        node.kill()
    told = writers.end()
    # Between the kills and the end nothing answers: those writes failed, and are not there.
    assert any(answer.status == 0 for _, answer in told)
    cluster.bootstrap()
    reader = client()
    rows = collections.Counter(numbers_of(reader))
    for numbers, answer in told:
        times = {rows[number] for number in numbers}
        assert times == {1} if answer.status == 0 else times in ({0}, {1}), f"{numbers}: {answer}, there {times} times"
        assert answer.status == 0 or NOT_KNOWN in answer.words or times == {0}, answer
    assert_no_gaps(reader)
