"""What the page hears of, and what it says while there is nothing to hear."""
import os
import shutil

import machines
from conftest import ROOT, TOOL
from selenium.webdriver.common.keys import Keys

REFUSED = ["401", "503"]


def news(browser):
    return browser.run("return document.getElementById('news').textContent")


def test_a_change_is_shown_marked_and_announced(show, own_example):
    browser = show(own_example)
    machines.run_tool(TOOL, own_example, "settings", "set", "BootProtocol.4b0000=PXE")
    browser.wait(lambda: "BootProtocol.4b0000" in news(browser), "nothing is announced")
    assert news(browser) == "1 part changed: BootProtocol.4b0000."
    assert browser.run("return document.getElementById('news').getAttribute('aria-live')") == "polite"
    browser.wait(lambda: "BootProtocol.4b0000" in browser.text(".is-changes"), "the history does not follow")
    browser.wait(lambda: any("BootProtocol.4b0000" in each for each in browser.texts(".is-new")), "nothing is marked")


def test_a_change_leaves_people_where_they_are(show, own_example):
    browser = show(own_example, "#/settings")
    browser.one("#search").send_keys("boot")
    machines.run_tool(TOOL, own_example, "settings", "set", "BootProtocol.4b0000=PXE")
    browser.wait(lambda: browser.all("tbody tr.is-new"), "the table does not follow")
    assert "PXE" in browser.text("tbody tr.is-new")
    assert browser.one("#search").get_attribute("value") == "boot"
    assert browser.focused().get_attribute("id") == "search"
    assert len(browser.all("tbody tr")) == 3


def test_a_mark_goes_away(show, own_example):
    browser = show(own_example, "#/settings")
    machines.run_tool(TOOL, own_example, "settings", "set", "BootProtocol.4b0000=PXE")
    browser.wait(lambda: browser.all("tbody tr.is-new"), "nothing is marked")
    browser.wait(lambda: not browser.all("tbody tr.is-new"), "the mark stays")


def test_a_part_that_is_gone_is_told(show, tmp_path):
    inventory = machines.make_example(TOOL, ROOT, tmp_path)
    browser = show(inventory)
    functions = tmp_path / "example-system/bus/pci/devices"
    gone = next(each for each in functions.iterdir() if each.name == "0000:e5:00.0")
    (shutil.rmtree if gone.is_dir() and not gone.is_symlink() else os.remove)(gone)
    machines.run_tool(TOOL, inventory, "collect", "--quiet", "--sysfs", tmp_path / "example-system")
    browser.wait(lambda: "gone" in news(browser), "nothing is announced")
    browser.wait(lambda: "removed" in browser.text(".is-changes"), "the history does not follow")


def test_an_empty_inventory_is_told_and_filled(browser, serve, example, tmp_path):
    inventory = tmp_path / "empty.db"
    machines.run_tool(TOOL, inventory, "init")
    server = serve(inventory)
    browser.driver.get(server.address)
    browser.wait(lambda: browser.text("h1") == "Nothing has been collected yet", "not told")
    assert "zymdb collect" in browser.text()
    assert browser.violations() == []
    machines.run_tool(TOOL, inventory, "collect", "--quiet", "--sysfs", machines.make_tree(ROOT, tmp_path / "tree"))
    browser.wait(lambda: browser.text("h1") == "ES-2240 Two-Socket Server", "not shown")


def test_an_inventory_that_cannot_be_read_is_told_and_asked_for_again(browser, serve, example, tmp_path):
    browser.may_fail = REFUSED
    inventory = tmp_path / "later.db"
    server = serve(inventory)
    browser.driver.get(server.address)
    browser.wait(lambda: browser.text("h1") == "The inventory cannot be read now", "not told")
    assert "later.db" in browser.text() and "tries again every 5 seconds" in browser.text()
    assert browser.violations() == []
    with machines.Changed(example, inventory):
        pass
    browser.wait(lambda: browser.text("h1") == "ES-2240 Two-Socket Server", "not asked for again")


def test_a_server_that_went_away_is_told_and_what_was_known_stays(browser, serve, example):
    browser.may_fail = ["ERR_CONNECTION_REFUSED", "ERR_INCOMPLETE_CHUNKED", "ERR_EMPTY_RESPONSE"]
    server = serve(example)
    browser.driver.get(server.address)
    browser.wait(lambda: browser.text("#live") == "live", "not live")
    server.stop()
    browser.wait(lambda: "does not answer" in browser.text("#live"), "not told")
    assert browser.text("h1") == "ES-2240 Two-Socket Server"


def log_in(browser, password):
    browser.one("input[name=user]").send_keys("reader")
    browser.one("input[name=password]").send_keys(password, Keys.ENTER)


def test_who_may_not_read_logs_in(browser, serve, example):
    browser.may_fail = REFUSED
    server = serve(example, needs_login=True)
    browser.driver.get(server.address + "#/drives/bay-3")
    browser.wait(lambda: browser.text("h1") == "Log in", "no form")
    assert browser.violations() == []
    assert browser.focused().get_attribute("name") == "user"
    log_in(browser, "a guess")
    browser.wait(lambda: "do not belong to an account" in browser.text(".objection"), "no objection")
    browser.one("input[name=user]").clear()
    log_in(browser, "correct horse")
    browser.wait(lambda: browser.text("h1") == "Bay 3", "not let in")
    # Within the window the login holds; a page that is not logged in knows nothing.
    browser.driver.refresh()
    browser.wait(lambda: browser.text("h1") == "Bay 3", "not let in again")
    browser.one("#logout").click()
    browser.wait(lambda: browser.text("h1") == "Log in", "still logged in")
    browser.driver.refresh()
    browser.wait(lambda: browser.text("h1") == "Log in", "still logged in")


def test_a_session_that_ended_is_asked_for_again(browser, serve, own_example):
    browser.may_fail = REFUSED
    server = serve(own_example, needs_login=True)
    browser.driver.get(server.address)
    browser.wait(lambda: browser.text("h1") == "Log in", "no form")
    log_in(browser, "correct horse")
    browser.wait(lambda: browser.text("#live") == "live", "not live")
    server.tell("refuse")
    machines.run_tool(TOOL, own_example, "settings", "set", "BootProtocol.4b0000=PXE")
    browser.wait(lambda: browser.text("h1") == "Log in", "no form")
    assert "ES-2240" not in browser.text("body")


def test_every_request_says_where_it_comes_from(browser, serve, example):
    server = serve(example)
    browser.driver.get("about:blank")
    browser.command("Page.enable")
    browser.command("Page.addScriptToEvaluateOnNewDocument", source="""
        window.asked = [];
        const real = window.fetch;
        window.fetch = (path, options) => { asked.push([String(path), new Headers(options.headers).get('X-Requested-With')]); return real(path, options); };""")
    browser.driver.get(server.address)
    browser.wait(lambda: browser.text("#live") == "live", "not live")
    asked = browser.run("return asked")
    assert {path for path, _ in asked} == {"fields.json", "inventory.json", "parts.json", "history.json", "events"}
    assert {name for _, name in asked} == {"zymdb"}


def test_nothing_of_the_page_comes_from_elsewhere(show, example):
    browser = show(example)
    sources = browser.run("return performance.getEntriesByType('resource').map((each) => new URL(each.name).origin)")
    assert set(sources) == {browser.run("return location.origin")}


def test_a_policy_that_is_broken_would_be_seen(show, example):
    """The console tells of what the policy stops, so that the other tests see it."""
    browser = show(example)
    browser.run("document.head.append(Object.assign(document.createElement('script'), {textContent: 'window.hit = true'}))")
    assert browser.run("return window.hit") is None
    assert any("Content Security Policy" in each for each in browser.complaints())
