"""What is encrypted, with what, and what becomes of another certificate."""
import signal
import ssl
import subprocess

import pytest
from conftest import basic, eventually, fails_to_start, run


def make_certificate(folder, name, kind="ec"):
    key = ["-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256"] if kind == "ec" else ["-newkey", "rsa:2048"]
    run("openssl", "req", "-x509", *key, "-nodes", "-days", "2", "-subj", f"/CN={name}", "-addext",
        "subjectAltName=IP:127.0.0.1", "-out", folder / f"{name}.pem", "-keyout", folder / f"{name}.key")
    return folder / f"{name}.pem", folder / f"{name}.key"


@pytest.fixture
def encrypted(start, tmp_path):
    certificate, key = make_certificate(tmp_path, "first")
    return start("--tls-certificate", certificate, "--tls-key", key, listen="0.0.0.0:0")


def name_of(service):
    told = run("openssl", "s_client", "-connect", f"127.0.0.1:{service.address.port}", stdin=subprocess.DEVNULL)
    return told.split("subject=CN = ")[1].split("\n")[0]


def negotiated(service, *options):
    told = subprocess.run(["openssl", "s_client", "-connect", f"127.0.0.1:{service.address.port}", "-cipher",
                           "ALL:@SECLEVEL=0", *options], stdin=subprocess.DEVNULL, capture_output=True, text=True)
    return "Cipher is (NONE)" not in told.stdout and "New, TLS" in told.stdout


def test_other_machines_are_served_encrypted(encrypted):
    answer = encrypted.ask("/metrics", headers=basic("ada"))
    assert encrypted.address.scheme == "https" and answer.status == 200
    assert answer.headers["Strict-Transport-Security"].startswith("max-age=")


def test_an_rsa_key_serves_too(start, tmp_path):
    certificate, key = make_certificate(tmp_path, "rsa", "rsa")
    assert start("--tls-certificate", certificate, "--tls-key", key).ask("/metrics", headers=basic("ada")).status == 200


def test_old_versions_of_tls_are_refused(encrypted):
    for version, is_spoken in [("-tls1", False), ("-tls1_1", False), ("-tls1_2", True), ("-tls1_3", True)]:
        assert negotiated(encrypted, version) == is_spoken, version


def test_unsound_ciphers_are_refused(encrypted):
    assert negotiated(encrypted, "-tls1_2", "-cipher", "ECDHE-ECDSA-AES128-GCM-SHA256")
    for cipher in ["ECDHE-ECDSA-AES128-SHA", "AES128-SHA", "NULL:@SECLEVEL=0"]:
        assert not negotiated(encrypted, "-tls1_2", "-cipher", cipher), cipher


def test_who_does_not_encrypt_gets_no_answer(encrypted):
    import http.client
    connection = http.client.HTTPConnection("127.0.0.1", encrypted.address.port, timeout=30)
    with pytest.raises((http.client.HTTPException, OSError)):
        connection.request("GET", "/metrics", headers=basic("ada"))
        connection.getresponse()
    assert encrypted.ask("/metrics", headers=basic("ada")).status == 200


def test_a_renewed_certificate_is_taken_while_it_runs(encrypted, tmp_path):
    assert name_of(encrypted) == "first"
    connection = encrypted.connect()
    connection.request("GET", "/metrics", headers=basic("ada"))
    connection.getresponse().read()
    certificate, key = make_certificate(tmp_path, "second")
    certificate.rename(tmp_path / "first.pem")
    key.rename(tmp_path / "first.key")
    encrypted.process.send_signal(signal.SIGHUP)
    eventually(lambda: name_of(encrypted) == "second")
    connection.request("GET", "/metrics", headers=basic("ada"))
    assert connection.getresponse().status == 200


def test_a_renewed_certificate_that_is_none_is_not_taken(encrypted, tmp_path):
    (tmp_path / "first.pem").write_text("no certificate")
    encrypted.process.send_signal(signal.SIGHUP)
    eventually(lambda: "the certificate stays as it was" in encrypted.complaints())
    assert name_of(encrypted) == "first"


def test_what_is_no_certificate_or_another_ones_key_is_told_at_once(tmp_path):
    first, first_key = make_certificate(tmp_path, "first")
    _, second_key = make_certificate(tmp_path, "second")
    (tmp_path / "text").write_text("a text")
    for certificate, key, reason in [(first, second_key, f"{second_key} is not the key of {first}"),
                                     (tmp_path / "text", first_key, "is no certificate"), (first, tmp_path / "text", "is no key"),
                                     (first, tmp_path / "nowhere", f"cannot read {tmp_path}/nowhere")]:
        status, line = fails_to_start("--listen", "127.0.0.1:0", "--tls-certificate", certificate, "--tls-key", key)
        assert status == 1 and reason in line, line


def test_many_handshakes_leave_nothing_behind(encrypted):
    def memory():
        with open(f"/proc/{encrypted.process.pid}/status") as status:
            return int(next(line for line in status if line.startswith("RssAnon")).split()[1])

    for _ in range(100):
        encrypted.ask("/metrics")
    before = memory()
    for _ in range(300):
        encrypted.ask("/metrics")
    assert memory() < before + 2048
