"""The examples of docs/python.md, the README and the package itself do what they say."""
import contextlib
import doctest
import io
import re

import pytest
import zymdb
from conftest import ROOT

PAGE = ROOT / "docs/python.md"


@pytest.fixture(autouse=True)
def chosen(example, monkeypatch):
    monkeypatch.setenv("ZYMDB_INVENTORY", str(example))


def test_the_examples_of_the_page_print_what_they_show():
    result = doctest.testfile(str(PAGE), module_relative=False)
    assert result.attempted > 8
    assert result.failed == 0


def test_the_example_of_the_readme_prints_the_adapters():
    program, = re.findall(r"```python\n(.*?)```", (ROOT / "README.md").read_text(), re.DOTALL)
    printed = io.StringIO()
    with contextlib.redirect_stdout(printed):
        exec(program, {})
    assert printed.getvalue() == "".join(f"{each.Place}: {each.CardName}\n" for each in zymdb.adapters())


def test_the_example_of_the_package_prints_the_adapters():
    examples = doctest.DocTestParser().get_examples(zymdb.__doc__)
    printed = io.StringIO()
    with contextlib.redirect_stdout(printed):
        exec("".join(each.source for each in examples), {})
    assert len(printed.getvalue().splitlines()) == len(zymdb.adapters())


def test_the_page_names_every_function():
    page = PAGE.read_text()
    for name in zymdb.__all__:
        if name.islower() and not name.startswith("_"):
            assert re.search(rf"`(zymdb\.)?{name}\b", page), name


def test_everything_is_explained():
    for name in zymdb.__all__:
        if callable(getattr(zymdb, name)):
            assert getattr(zymdb, name).__doc__, name
