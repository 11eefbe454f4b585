"""Takes the picture of the README: screenshot.py FILE"""
import subprocess
import sys
import tempfile
from pathlib import Path

import conftest
import machines

WIDTH, MOST_BYTES = 1600, 300 << 10


def main(picture):
    with tempfile.TemporaryDirectory() as folder, conftest.running_browser() as driver:
        server = conftest.PageServer(machines.make_example(conftest.TOOL, conftest.ROOT, Path(folder)))
        browser = conftest.Browser(driver)
        browser.resize(WIDTH)
        driver.get(server.address)
        browser.wait(lambda: browser.text("#live") == "live", "the page does not come")
        browser.run("document.documentElement.style.scrollbarWidth = 'none'")
        browser.resize(WIDTH, browser.run("return document.querySelector('.legend').getBoundingClientRect().bottom + 24 | 0"))
        browser.settle()
        browser.screenshot(picture)
        server.stop()
    # The page has few colours.
    subprocess.run(["pngquant", "--force", "--strip", "--output", picture, "256", picture], check=True)
    size = Path(picture).stat().st_size
    print(f"{picture}: {size} bytes")
    return 0 if size <= MOST_BYTES else f"more than {MOST_BYTES} bytes"


sys.exit(main(sys.argv[1]))
