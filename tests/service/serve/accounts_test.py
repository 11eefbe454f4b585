"""Who is answered what."""
import pytest
from conftest import basic

READ = [("GET", "/metrics"), ("HEAD", "/metrics")]


@pytest.mark.parametrize("method,path", READ + [("GET", "/nothing-there"), ("POST", "/metrics")])
def test_nobody_is_answered_without_a_login(start, method, path):
    answer = start().ask(path, method)
    assert answer.status == 401
    assert answer.headers["WWW-Authenticate"] == 'Basic realm="zymdb"'


def test_a_page_that_asks_itself_gets_no_dialog_of_the_browser(start):
    answer = start().ask("/metrics", headers={"X-Requested-With": "XMLHttpRequest"})
    assert answer.status == 401 and "WWW-Authenticate" not in answer.headers


@pytest.mark.parametrize("user", ["ada", "oscar", "rhea"])
@pytest.mark.parametrize("method,path", READ)
def test_members_of_each_group_read(start, user, method, path):
    assert start().ask(path, method, basic(user)).status == 200


def test_others_do_not(start):
    service = start()
    for headers, status in [(basic("nora"), 403), (basic("ada", "wrong"), 401), (basic("otto"), 401), (basic("unknown"), 401),
                            ({"Authorization": "Basic"}, 401), ({"Authorization": "Bearer abc"}, 401),
                            ({"X-Auth-Token": "0" * 64}, 401), ({"X-Auth-Token": ""}, 401),
                            ({"X-Auth-Token": "0", **basic("ada")}, 401)]:
        assert service.ask("/metrics", headers=headers).status == status, headers
    assert "login of 'ada' from 127.0.0.1 failed" in service.complaints()
    assert "login of 'nora' from 127.0.0.1 denied" in service.complaints()


def test_what_is_not_there_is_told_to_those_who_may_know(start):
    assert start().ask("/nothing-there", headers=basic("rhea")).status == 404


def test_a_method_that_is_not_there_is_named(start):
    answer = start().ask("/metrics", "DELETE", basic("ada"))
    assert answer.status == 405 and answer.headers["Allow"] == "GET, HEAD"


def test_who_guesses_has_to_wait_and_is_told_how_long(start):
    service = start()
    statuses = [service.ask("/metrics", headers=basic("ada", f"guess {i}")) for i in range(5)]
    assert [each.status for each in statuses] == [401, 401, 401, 429, 429]
    assert int(statuses[-1].headers["Retry-After"]) > 0
    assert service.ask("/metrics", headers=basic("ada")).status == 429
    assert service.ask("/metrics", headers=basic("rhea")).status == 200
    assert service.metric("zymdb_http_failed_logins_total") == 3


def test_a_name_cannot_begin_a_line_of_the_log(start):
    service = start()
    service.ask("/metrics", headers=basic("ada\nzymdb: login of 'root'", "x"))
    assert service.complaints().count("\n") == 1


def test_reads_need_no_login_where_that_was_asked_for(start):
    service = start("--anonymous-reads")
    assert service.ask("/metrics").status == 200
    assert service.ask("/metrics", "HEAD").status == 200
    assert service.ask("/metrics", "POST").status == 401
    # Who says who he is is held to it.
    assert service.ask("/metrics", headers=basic("ada", "wrong")).status == 401
    assert service.ask("/metrics", headers=basic("nora")).status == 403


@pytest.mark.parametrize("host,status", [("localhost", 200), ("127.0.0.1:80", 200), ("[::1]", 200), ("evil.example", 421),
                                         ("127.0.0.1.evil.example", 421)])
def test_reads_without_a_login_are_not_for_pages_of_others(start, host, status):
    assert start("--anonymous-reads").ask("/metrics", headers={"Host": host}).status == status


def test_every_answer_tells_browsers_to_be_careful(start):
    service = start()
    for headers in [{}, basic("ada")]:
        answer = service.ask("/metrics", headers=headers)
        assert answer.headers["X-Content-Type-Options"] == "nosniff"
        assert answer.headers["X-Frame-Options"] == "DENY"
        assert answer.headers["Cache-Control"] == "private, no-cache"
        assert answer.headers["Referrer-Policy"] == "no-referrer"
        assert "Strict-Transport-Security" not in answer.headers
        assert "Server" not in answer.headers
