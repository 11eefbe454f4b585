"""A browser, and the page as a service shows it."""
import base64
import contextlib
import json
import os
import subprocess
import tempfile
from pathlib import Path

import machines
import pytest
from selenium import webdriver
from selenium.common.exceptions import StaleElementReferenceException
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

ROOT = Path(os.environ["ZYMDB_SOURCE_DIR"])
TOOL = os.environ["ZYMDB_TOOL"]
SERVER = os.environ["ZYMDB_PAGE_SERVER"]
AXE = ROOT / "build/node/node_modules/axe-core/axe.min.js"
PATIENCE = 30
WIDTHS = {"phone": 320, "tablet": 800, "desktop": 1400, "wall": 3840}

OPTIONS = ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-dev-shm-usage",
           "--disable-background-networking", "--disable-component-update", "--disable-sync", "--disable-extensions"]


class Browser:
    """One window, asked in the words of the tests."""

    def __init__(self, driver):
        self.driver = driver
        # Of failed requests the console tells, too, where a test lets them fail on purpose.
        self.may_fail = []
        self.resize(WIDTHS["desktop"])
        self.colours("light")

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def command(self, name, **arguments):
        return self.driver.execute_cdp_cmd(name, arguments)

    def resize(self, width, height=900):
        self.command("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)

    def colours(self, scheme, motion="no-preference"):
        self.command("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme},
                                                             {"name": "prefers-reduced-motion", "value": motion}])

    def wait(self, condition, what):
        def holds(_):
            try:
                return condition()
            except StaleElementReferenceException:
                return False
        return WebDriverWait(self.driver, PATIENCE, 0.05).until(holds, what)

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def one(self, selector):
        return self.wait(lambda: (self.all(selector) or [None])[0], f"{selector} is not there")

    def texts(self, selector):
        return self.run("return [...document.querySelectorAll(arguments[0])].map((each) => each.textContent)", selector)

    def text(self, selector="main"):
        return self.one(selector).text

    def press(self, *keys):
        """Keys, as somebody without a mouse presses them."""
        actions = webdriver.ActionChains(self.driver)
        for key in keys:
            actions = actions.send_keys(key)
        actions.perform()

    def focused(self):
        return self.run("return document.activeElement")

    def go(self, location):
        """Another place of the page."""
        self.run("location.hash = arguments[0]", location)
        self.settle()

    def settle(self):
        self.run("return new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done)))")

    def complaints(self):
        """What the console tells but for requests that were meant to fail."""
        return [each["message"] for each in self.driver.get_log("browser")
                if not any(part in each["message"] for part in self.may_fail)]

    def violations(self):
        """What axe finds wrong."""
        if not self.run("return 'axe' in window"):
            self.driver.execute_script(AXE.read_text())
        found = self.driver.execute_async_script("""
            const done = arguments[0];
            axe.run(document, {runOnly: ['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'wcag22aa', 'best-practice']})
                .then((found) => done(found.violations), (error) => done([{id: String(error), nodes: []}]))""")
        return [f"{each['id']}: {node['html'][:200]} {node['failureSummary']}" for each in found for node in each["nodes"] or [{"html": "", "failureSummary": ""}]]

    def overflow(self):
        """By how much the page is wider than its window."""
        return self.run("return document.documentElement.scrollWidth - document.documentElement.clientWidth")

    def screenshot(self, path):
        picture = self.command("Page.captureScreenshot", format="png", captureBeyondViewport=True)
        Path(path).write_bytes(base64.b64decode(picture["data"]))


@contextlib.contextmanager
def running_browser():
    with tempfile.TemporaryDirectory() as profile:
        options = webdriver.ChromeOptions()
        options.binary_location = "/usr/bin/chromium"
        for option in [*OPTIONS, f"--user-data-dir={profile}"]:
            options.add_argument(option)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        driver.set_script_timeout(120)
        try:
            yield driver
        finally:
            driver.quit()


@pytest.fixture(scope="session")
def driver():
    assert AXE.exists(), "scripts/install-node-packages brings what this test needs"
    with running_browser() as running:
        yield running


@pytest.fixture
def browser(driver):
    """Ends with a look at the console: no test may leave a complaint there."""
    driver.get("about:blank")
    driver.get_log("browser")
    browser = Browser(driver)
    yield browser
    complaints = browser.complaints()
    with contextlib.suppress(Exception):
        browser.run("localStorage.clear(); sessionStorage.clear()")
    driver.get("about:blank")
    assert complaints == []


class PageServer:
    """The service as its users run it, or with a login that the tests know."""

    def __init__(self, inventory, needs_login=False):
        command = [SERVER] if needs_login else [TOOL, "serve", "--listen", "127.0.0.1:0", "--anonymous-reads"]
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                        stderr=subprocess.DEVNULL, env={**os.environ, "ZYMDB_INVENTORY": str(inventory)})
        self.address = self.process.stdout.readline().strip()
        self.needs_login = needs_login

    def tell(self, command):
        self.process.stdin.write(command + "\n")
        self.process.stdin.flush()

    def stop(self):
        if self.process.poll() is None and not self.needs_login:
            self.process.terminate()
        if not self.process.stdin.closed:
            self.process.stdin.close()
        assert self.process.wait(timeout=PATIENCE) == 0
        self.process.stdout.close()


@pytest.fixture
def serve():
    """Serves inventories until the test is over."""
    servers = []

    def start(inventory, needs_login=False):
        servers.append(PageServer(inventory, needs_login))
        return servers[-1]

    yield start
    for server in servers:
        if not server.process.stdin.closed:
            server.stop()


@pytest.fixture
def show(browser, serve):
    """Opens the page of an inventory."""
    def open_page(inventory, location="#/"):
        server = serve(inventory)
        browser.driver.get(server.address + location)
        browser.one("main h1")
        browser.wait(lambda: browser.text("#live") == "live" or browser.all(".live.is-live"), "the page does not listen")
        browser.settle()
        return browser

    return open_page


@pytest.fixture(scope="session")
def example(tmp_path_factory):
    return machines.make_example(TOOL, ROOT, tmp_path_factory.mktemp("example"))


@pytest.fixture
def own_example(example, tmp_path):
    """The example server's inventory, for a test that changes it."""
    with machines.Changed(example, tmp_path / "own.db"):
        pass
    return tmp_path / "own.db"


@pytest.fixture(scope="session")
def troubled(example):
    return machines.make_troubled(example, example.with_name("troubled.db"))


@pytest.fixture(scope="session")
def hostile(example):
    return machines.make_hostile(example, example.with_name("hostile.db"))


@pytest.fixture(scope="session")
def huge(example):
    return machines.make_huge(example, example.with_name("huge.db"))


@pytest.fixture(scope="session")
def recorded(tmp_path_factory):
    """Every recorded machine, where there are any."""
    root = os.environ.get("ZYMDB_RECORDED_MACHINES")
    found = {}
    folder = tmp_path_factory.mktemp("recorded")
    for kind, option, pattern in [("pci", "--lspci", "*.lspci"), ("dmi", "--smbios", "*.bin")]:
        for path in sorted(Path(root, kind).glob(pattern)) if root else []:
            inventory = folder / f"{path.stem}.db"
            machines.run_tool(TOOL, inventory, "collect", "--quiet", option, path)
            found[path.stem] = inventory
    return found


def exported(inventory):
    return json.loads(machines.run_tool(TOOL, inventory, "export", "--format", "json"))
