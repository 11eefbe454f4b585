"""Whom the page reaches: by keyboard, by screen reader, in the dark, on a phone and on a wall."""
import pytest
from conftest import WIDTHS
from selenium.webdriver.common.keys import Keys

VIEWS = ["#/", "#/memory", "#/functions", "#/ports", "#/settings", "#/drives/bay-3", "#/processors/cpu2", "#/changes", "#/nowhere"]


@pytest.mark.parametrize("colours", ["light", "dark"])
def test_every_view_is_accessible(show, troubled, colours):
    browser = show(troubled)
    browser.colours(colours)
    for location in VIEWS:
        browser.go(location)
        assert browser.violations() == [], location
    browser.go("#/drives")
    browser.one(".chooser summary").click()
    assert browser.violations() == []


@pytest.mark.parametrize("width", WIDTHS)
def test_every_width_is_accessible_and_needs_no_scrolling_aside(show, troubled, width):
    browser = show(troubled)
    browser.resize(WIDTHS[width])
    for location in VIEWS:
        browser.go(location)
        assert browser.overflow() <= 0, location
        if width != "desktop":
            assert browser.violations() == [], location


def test_hostile_texts_need_no_scrolling_aside(show, hostile):
    browser = show(hostile)
    for width in WIDTHS.values():
        browser.resize(width)
        for location in ["#/", "#/system", "#/drives", "#/changes", "#/settings"]:
            browser.go(location)
            assert browser.overflow() <= 0, (width, location)
            if location != "#/changes" and browser.all("tbody a"):
                browser.run("arguments[0].click()", browser.all("tbody a")[0])
                browser.one("article.part")
                assert browser.overflow() <= 0, (width, location)


def test_recorded_machines_are_drawn(show, recorded):
    for name, inventory in recorded.items():
        browser = show(inventory)
        assert browser.all("machine-drawing a.item"), name
        for width in WIDTHS.values():
            browser.resize(width)
            browser.settle()
            assert browser.overflow() <= 0, (name, width)
        browser.resize(WIDTHS["desktop"])
        assert browser.violations() == [], name


def test_letters_may_be_larger(show, example):
    browser = show(example)
    browser.resize(WIDTHS["phone"])
    browser.run("document.documentElement.style.fontSize = '175%'")
    browser.settle()
    for location in ["#/", "#/drives/bay-3", "#/memory"]:
        browser.go(location)
        assert browser.overflow() <= 0, location


def test_the_colours_can_be_chosen_and_are_remembered(show, example):
    browser = show(example)
    ground = "return getComputedStyle(document.body).backgroundColor"
    light = browser.run(ground)
    browser.colours("dark")
    dark = browser.run(ground)
    assert light != dark
    browser.one("#theme").send_keys("Light")
    assert browser.run(ground) == light
    browser.driver.refresh()
    browser.one("main h1")
    assert browser.run(ground) == light
    browser.one("#theme").send_keys("Auto")
    assert browser.run(ground) == dark


def test_who_asks_for_stillness_has_it(show, example):
    browser = show(example)
    browser.colours("light", motion="reduce")
    moving = browser.run("""
        return [...document.querySelectorAll('*')].filter((each) => parseFloat(getComputedStyle(each).transitionDuration) > 0
            || getComputedStyle(each).animationName !== 'none').length""")
    assert moving == 0


def test_who_listens_hears_all_of_a_part_once(show, example):
    browser = show(example)
    drive = next(each for each in browser.all("a.item") if each.accessible_name.startswith("Bay 3"))
    assert drive.accessible_name == "Bay 3, 1.92TB, NVMe SSD, SAMSUNG MZQL21T9HCJR-00A07"
    assert drive.aria_role == "link"


def test_a_keyboard_is_enough(show, example):
    browser = show(example)
    browser.press(Keys.TAB)
    assert browser.focused().text == "Skip to the content"
    browser.press(Keys.ENTER)
    assert browser.focused().get_attribute("id") == "main"
    # From tile to tile, and past what deserves a look into the drawing: one stop.
    for _ in range(60):
        browser.press(Keys.TAB)
        if browser.focused().tag_name == "a" and "item" in (browser.focused().get_attribute("class") or ""):
            break
    first = browser.focused()
    assert first.accessible_name.startswith("1 CPU1_DIMM_A1") or "CPU1" in first.accessible_name
    seen = {first.accessible_name}
    for key in [Keys.ARROW_RIGHT] * 3 + [Keys.ARROW_DOWN] * 3 + [Keys.ARROW_LEFT, Keys.ARROW_UP]:
        browser.press(key)
        seen.add(browser.focused().accessible_name)
    assert len(seen) >= 6
    browser.press(Keys.END)
    last = browser.focused()
    assert last.accessible_name != first.accessible_name
    browser.press(Keys.HOME)
    assert browser.focused().accessible_name == first.accessible_name
    # The next stop is in the next drawing.
    browser.press(Keys.TAB)
    assert browser.run("return arguments[0].closest('machine-drawing') !== arguments[1].closest('machine-drawing')", first, browser.focused())
    browser.press(Keys.SHIFT + Keys.TAB)
    browser.press(Keys.ENTER)
    browser.wait(lambda: browser.run("return location.hash").count("/") == 2, "Enter leads nowhere")
    assert browser.focused().get_attribute("id") == "main"


def test_where_the_focus_is_can_be_seen(show, example):
    browser = show(example, "#/drives")
    for _ in range(20):
        browser.press(Keys.TAB)
        seen = browser.run("""
            const style = getComputedStyle(document.activeElement);
            return document.activeElement === document.body || style.outlineStyle !== 'none' || document.activeElement.closest('.item') !== null""")
        assert seen, browser.focused().get_attribute("outerHTML")


def test_a_table_is_used_without_a_mouse(show, example):
    browser = show(example, "#/drives")
    button = next(each for each in browser.all("thead button") if each.text == "MODEL")
    browser.run("arguments[0].focus()", button)
    browser.press(Keys.ENTER)
    assert browser.run("return document.activeElement.closest('th').getAttribute('aria-sort')") == "ascending"
    summary = browser.one(".chooser summary")
    browser.run("arguments[0].focus()", summary)
    browser.press(Keys.ENTER)
    assert browser.run("return document.querySelector('.chooser').open")
    browser.press(Keys.ESCAPE)
    assert not browser.run("return document.querySelector('.chooser').open")


def test_another_view_is_announced(show, example):
    browser = show(example)
    browser.go("#/drives")
    assert browser.run("return document.getElementById('news').textContent") == "drives"
    assert browser.driver.title.startswith("drives")
