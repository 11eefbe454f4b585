"""What the page shows."""
import subprocess
import time

import machines
from conftest import ROOT, TOOL, WIDTHS, exported
from selenium.webdriver.common.keys import Keys

DRAWINGS = ["Processors and memory", "PCI Express", "Drives", "Network ports"]


def labels(browser, drawing):
    """The names of the links in a drawing."""
    return browser.run("""
        const found = [...document.querySelectorAll('machine-drawing')].find((each) => each.name === arguments[0]);
        return [...found.querySelectorAll('a.item')].map((item) => item.querySelector('title').textContent)""", drawing)


def test_the_machine_at_a_glance(show, example):
    browser = show(example)
    assert browser.text("h1") == "ES-2240 Two-Socket Server"
    tiles = [each.replace("\n", " ") for each in (tile.text for tile in browser.all(".tile"))]
    assert tiles[0].startswith("2 processors") and "64 cores" in tiles[0]
    assert tiles[1].startswith("1.5 TiB memory") and "32 of 32 modules" in tiles[1]
    assert tiles[5].startswith("12 ports") and "8 up, 4 not" in tiles[5]
    assert [each.split("\n")[0] for each in (heading.text for heading in browser.all("machine-drawing h2"))] == DRAWINGS


def test_every_part_is_in_its_drawing(show, example):
    browser, inventory = show(example), exported(example)
    board, tree = labels(browser, "Processors and memory"), " ".join(labels(browser, "PCI Express"))
    for module in inventory["memory"]:
        assert any(module["Locator"] in label and module["Size"] in label for label in board), module["Locator"]
    for processor in inventory["processors"]:
        assert any(label.startswith(processor["Socket"]) for label in board)
    for drive in inventory["drives"]:
        assert any(drive["Location"] in label and drive["Capacity"] in label for label in labels(browser, "Drives"))
    for port in inventory["ports"]:
        assert any(port["InterfaceName"] in label and port["Link"] in label for label in labels(browser, "Network ports"))
    for adapter in inventory["adapters"]:
        assert adapter["Place"] == "on board" or adapter["Place"] in tree, adapter


def test_links_are_as_thick_as_they_have_lanes(show, example):
    browser = show(example)
    widths = browser.run("""
        return [...document.querySelectorAll('machine-drawing .line.is-link')].map((each) => Number(each.getAttribute('stroke-width')))""")
    by_lanes = {16: 9, 8: 6, 4: 4, 2: 2.8, 1: 1.8}
    assert set(widths) == set(by_lanes.values())


def test_what_deserves_a_look_is_told_and_drawn(show, troubled):
    browser = show(troubled)
    looks = [each.text.split("\n") for each in browser.all(".look")]
    assert ["processors", "CPU2", "state disabled by user"] in looks
    assert ["memory", "8 CPU1_DIMM_D2", "health Critical"] in looks
    assert ["drives", "Bay 3", "warning 0x04"] in looks
    assert ["pldm", "slot 5", "update failed"] in looks
    assert ["pldm", "slot 1", "pending: 22.39.1002"] in looks
    assert ["settings", "VirtualFunctions.170000", "pending: 16"] in looks
    assert any("link x8 gen3 of x16 gen4" in label for label in labels(browser, "PCI Express"))
    # The possible link stands behind the one that runs.
    assert browser.run("return document.querySelectorAll('.line.is-possible').length") == 2
    for name in ["CPU2", "Bay 3"]:
        assert browser.run("""return [...document.querySelectorAll('a.item.is-warning')]
            .some((each) => each.querySelector('title').textContent.startsWith(arguments[0]))""", name), name
    assert any(label.startswith("6 CPU1_DIMM_B") or "empty" in label or label.startswith("6") for label in labels(browser, "Processors and memory"))
    assert browser.texts(".box.is-empty ~ .label")[:3] == ["empty"] * 3


def test_nothing_is_said_of_a_machine_that_is_well(show, own_example):
    with machines.Changed(own_example, own_example.with_name("well.db")) as database:
        database.execute("UPDATE PCISetting SET PendingValue = NULL")
        database.execute("UPDATE PCIPhysicalPortStat SET LinkStatus = 1")
    browser = show(own_example.with_name("well.db"))
    assert "Nothing: every part is as it should be." in browser.text(".is-look")
    assert browser.all(".item.is-warning, .item.is-pending") == []


def rows(browser):
    return [[cell.text for cell in row.find_elements("css selector", "th, td")][1:] for row in browser.all("tbody tr")]


def test_a_table_is_what_the_tool_lists(show, example):
    browser, inventory = show(example, "#/drives"), exported(example)
    assert [each.text for each in browser.all("thead th")][1:] == [
        "LOCATION", "TYPE", "MEDIA", "SERIAL", "MODEL", "FIRMWARE", "CAPACITY", "WARNING", "TEMP", "LIFE"]
    keys = ["Location", "DisplayType", "MediaType", "SerialNo", "Model", "FwVersion", "Capacity"]
    assert [row[:7] for row in rows(browser)] == [[drive[key] or "" for key in keys] for drive in inventory["drives"]]


def test_a_search_finds_every_field(show, example):
    browser = show(example, "#/memory")
    browser.one("#search").send_keys("cpu2 intel")
    found = rows(browser)
    assert len(found) == 4 and all(row[4].startswith("CPU2_") and row[5] == "Intel" for row in found)
    assert browser.text(".controls .count") == "4 of 32 parts"
    browser.one("#search").clear()
    # A serial number, which is no column.
    browser.one("#search").send_keys("4e000101")
    assert len(rows(browser)) == 1


def test_a_table_is_sorted_by_number_and_by_text(show, example):
    browser = show(example, "#/drives")
    def header(name):
        return next(each for each in browser.all("thead button") if each.text.startswith(name))
    header("CAPACITY").click()
    ascending = [row[6] for row in rows(browser)]
    assert ascending == sorted(ascending, key=lambda text: float(text[:-2]))
    assert [each.get_attribute("aria-sort") for each in browser.all("thead th") if each.get_attribute("aria-sort")] == ["ascending"]
    header("CAPACITY").click()
    assert [row[6] for row in rows(browser)] == ascending[::-1]
    header("CAPACITY").click()
    assert rows(browser)[0][0] == "Slot 8"


def test_chosen_columns_are_remembered(show, example):
    browser = show(example, "#/ports")
    browser.one(".chooser summary").click()
    box = next(each for each in browser.all(".popup label") if "LINKSTATUS" in each.text)
    box.click()
    assert "LINKSTATUS" in [each.text for each in browser.all("thead th")]
    browser.driver.refresh()
    browser.one("tbody tr")
    assert "LINKSTATUS" in [each.text for each in browser.all("thead th")]
    browser.one(".chooser summary").click()
    browser.one(".popup button").click()
    assert "LINKSTATUS" not in [each.text for each in browser.all("thead th")]


def test_only_what_deserves_a_look(show, example):
    browser = show(example, "#/ports")
    browser.one("#only").click()
    assert [row[2] for row in rows(browser)] == ["eno2", "ens4f2", "ens4f3", "host11"]


def test_a_click_leads_to_the_part(show, example):
    browser = show(example, "#/drives")
    browser.all("tbody tr")[1].find_elements("css selector", "td")[4].click()
    browser.wait(lambda: browser.text("h1") == "Bay 1", "no part")
    assert browser.run("return location.hash") == "#/drives/bay-1"
    browser.go("#/")
    link = next(each for each in browser.all("a.item") if each.accessible_name.startswith("CPU2"))
    browser.run("arguments[0].dispatchEvent(new MouseEvent('click', {bubbles: true, cancelable: true}))", link)
    browser.wait(lambda: browser.text("h1") == "CPU2", "no part")


def test_a_part_tells_all_its_fields(show, example):
    drive = next(each for each in exported(example)["drives"] if each["Location"] == "Bay 3")
    browser = show(example, "#/drives/bay-3")
    shown = {field.find_element("css selector", "dt").text.split("\n")[0]: field.find_element("css selector", "dd").text
             for field in browser.all(".field") if field.is_displayed()}
    assert shown["SERIAL"] == drive["SerialNo"] and shown["FIRMWARE"] == drive["FwVersion"]
    # An empty field is no news, but is there for those who look for it.
    assert "UUID" not in shown
    browser.one(".part > .check input").click()
    told = browser.texts(".field dt")
    assert len(told) == len(drive)
    assert "unique identifier" in " ".join(told)


def test_a_part_leads_to_what_belongs_to_it(show, example):
    browser = show(example, "#/drives/bay-3")
    related = [each.get_attribute("href").split("#")[1] for each in browser.all(".part .list a")]
    assert "/functions/0000-69-00-0-bay-3" in related and "/adapters/bay-3" in " ".join(related)
    assert any(each.startswith("/firmware/") for each in related)


def test_a_link_from_elsewhere_opens_the_part(show, example):
    browser = show(example, "#/memory/17-cpu2-dimm-a1")
    assert browser.text("h1") == "17 CPU2_DIMM_A1"
    browser.go("#/memory/99-nowhere")
    assert browser.text("h1") == "Not there"
    browser.go("#/nothing")
    assert browser.text("h1") == "Not there"
    browser.go("#/memory/%E0%A4%A")
    assert browser.text("h1") == "Not there"


def test_what_changed_is_told_with_the_part(show, own_example):
    subprocess.run([TOOL, "settings", "set", "BootProtocol.4b0000=PXE"], check=True, env={"ZYMDB_INVENTORY": str(own_example)})
    browser = show(own_example, "#/changes")
    first = browser.text(".changes > li:first-child ul li:first-child")
    assert "changed settings BootProtocol.4b0000" in first.replace("\n", " ") and "PXE" in first
    browser.all(".changes a")[0].click()
    browser.wait(lambda: browser.text("h1") == "BootProtocol.4b0000", "no part")
    assert "PXE" in browser.text(".aside .changes")


def test_texts_of_devices_are_texts(show, hostile):
    browser = show(hostile)
    for location in ["#/", "#/changes", *(f"#/{name}" for name in ["system", "processors", "memory", "adapters", "functions", "ports",
                                                                   "firmware", "drives", "settings"])]:
        browser.go(location)
        assert machines.HOSTILE[:20] in browser.run("return document.body.textContent") or location == "#/changes", location
        for selector in ["main script", "main img", "nav script", "header .brand script"]:
            assert browser.all(selector) == [], location
        first = browser.all("tbody a")
        if first:
            first[0].click()
            browser.one("article.part")
            assert browser.all("main script, main img") == []
    assert browser.driver.title != "hit"


def test_thousands_of_parts_stay_fluent(show, huge):
    browser = show(huge)
    assert "4,058 functions" in browser.text()
    # The drawing stays one that can be looked at.
    assert browser.run("return document.querySelectorAll('machine-drawing a.item').length") < 1000
    begun = time.monotonic()
    browser.go("#/functions")
    browser.one("tbody tr")
    assert time.monotonic() - begun < 3
    assert len(browser.all("tbody tr")) <= 450
    assert browser.text(".controls .count") == "4,058 parts"
    taken = browser.run("""
        const begun = performance.now();
        const search = document.getElementById('search');
        for (const text of ['n', 'nv', 'nvidia', 'nvidia 0001:05', '']) { search.value = text; search.dispatchEvent(new Event('input')); }
        return (performance.now() - begun) / 5""")
    assert taken < 300, taken
    before = len(browser.all("tbody tr"))
    browser.run("const scroll = document.querySelector('.scroll'); scroll.scrollTop = scroll.scrollHeight")
    browser.wait(lambda: len(browser.all("tbody tr")) > before, "the rest does not follow")
    browser.go("#/memory")
    assert browser.text(".controls .count") == "192 parts"


def test_it_prints_every_row(show, huge):
    browser = show(huge, "#/functions")
    browser.run("dispatchEvent(new Event('beforeprint'))")
    assert len(browser.all("tbody tr")) == 4058


def test_printed_it_is_content_alone(show, example):
    browser = show(example, "#/drives")
    browser.command("Emulation.setEmulatedMedia", media="print")
    hidden = [each.is_displayed() for each in browser.all("nav, .controls, .tools, #live")]
    browser.command("Emulation.setEmulatedMedia", media="")
    assert hidden == [False] * 4


def test_labels_neither_overlap_nor_leave_their_drawing(show, troubled):
    browser = show(troubled)
    for width in WIDTHS.values():
        browser.resize(width)
        browser.settle()
        browser.settle()
        wrong = browser.run("""
            const wrong = [];
            for (const drawing of document.querySelectorAll('machine-drawing svg')) {
              const edge = drawing.getBoundingClientRect();
              const labels = [...drawing.querySelectorAll('text')].filter((each) => each.textContent).map((each) => [each.textContent, each.getBoundingClientRect()]);
              labels.forEach(([text, a], i) => {
                if (a.left < edge.left - 1 || a.right > edge.right + 1 || a.bottom > edge.bottom + 1) wrong.push(`${text} leaves the drawing`);
                for (const [other, b] of labels.slice(i + 1)) {
                  const across = Math.min(a.right, b.right) - Math.max(a.left, b.left);
                  const down = Math.min(a.bottom, b.bottom) - Math.max(a.top, b.top);
                  if (across > 0.5 && down > 4) wrong.push(`${text} / ${other}`);
                }
              });
            }
            return wrong""")
        assert wrong == [], width


def test_the_example_is_where_it_is_documented():
    assert (ROOT / "docs/page.md").read_text().count("#/drives/bay-3") >= 1


def test_a_key_leads_to_the_part(show, example):
    browser = show(example, "#/drives")
    link = browser.one("tbody th a")
    browser.run("arguments[0].focus()", link)
    browser.press(Keys.ENTER)
    browser.wait(lambda: browser.text("h1") == "Slot 8", "no part")
