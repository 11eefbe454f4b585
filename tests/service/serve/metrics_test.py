"""What the service says of itself, beside the inventory."""
import re
import subprocess

from conftest import PROMTOOL, TOOL, basic, eventually, run


def test_promtool_takes_them(start):
    service = start()
    service.ask("/metrics", headers=basic("ada", "wrong"))
    told = subprocess.run([PROMTOOL, "check", "metrics"], input=service.metrics().encode(), capture_output=True)
    assert told.returncode == 0 and not told.stdout + told.stderr, told.stdout + told.stderr


def test_they_have_the_inventory_as_an_export_has_it(start, inventory):
    exported = run(TOOL, "--inventory", inventory, "export", "--format", "prometheus")
    served = start().ask("/metrics", headers=basic("rhea"))
    assert served.text.startswith(exported)
    assert served.headers["Content-Type"] == "text/plain; version=0.0.4; charset=utf-8"


def test_each_answer_is_counted_by_handler_method_and_status(start):
    service = start()
    for _ in range(3):
        service.ask("/metrics", headers=basic("rhea"))
    service.ask("/metrics", "HEAD")
    service.ask("/nothing-there", "PUT", basic("rhea"))
    service.ask("/metrics", "BREW")
    text = service.metrics()
    for line in ['zymdb_http_requests_total{handler="metrics",method="GET",code="2xx"} 3',
                 'zymdb_http_requests_total{handler="metrics",method="HEAD",code="4xx"} 1',
                 'zymdb_http_requests_total{handler="page",method="PUT",code="4xx"} 1',
                 'zymdb_http_requests_total{handler="metrics",method="other",code="5xx"} 1',
                 "zymdb_http_failed_logins_total 0", "zymdb_http_sessions 0"]:
        assert line in text.split("\n"), line
    # Those that ended a moment ago are still being put away.
    eventually(lambda: service.metric("zymdb_http_connections") == 1)


def test_durations_add_up(start):
    service = start()
    for _ in range(5):
        service.metrics()
    text = service.metrics()
    buckets = [int(each) for each in re.findall(r'duration_seconds_bucket\{handler="metrics",le="[^"]+"\} (\d+)', text)]
    assert buckets == sorted(buckets) and buckets[-1] == 5
    assert 'zymdb_http_request_duration_seconds_count{handler="metrics"} 5\n' in text
    assert 0 < float(re.search(r'duration_seconds_sum\{handler="metrics"\} (\S+)', text)[1]) < 60
