"""The guide: its examples print what it shows, and its table equals that of the tests."""

import doctest
import re
from pathlib import Path

import losses

ROOT = Path(__file__).parents[2]
GUIDE = (ROOT / "docs" / "python.md").read_text(encoding="utf-8")


def test_the_examples_of_the_guide_hold(monkeypatch):
    monkeypatch.chdir(ROOT)
    examples = "\n".join(re.findall(r"^```pycon\n(.*?)^```$", GUIDE, re.MULTILINE | re.DOTALL))
    parsed = doctest.DocTestParser().get_doctest(examples, {}, "python.md", None, 0)
    assert len(parsed.examples) > 30
    output = []
    doctest.DocTestRunner(optionflags=doctest.ELLIPSIS).run(parsed, out=output.append)
    assert "".join(output) == ""


def test_the_table_of_losses_is_that_of_the_tests():
    section = GUIDE[GUIDE.index("## What is lost"):]
    rows = [tuple(re.split(r" *\| *", line)[1:-1]) for line in section.splitlines() if line[:1] == "|"]
    assert rows[2:] == losses.TABLE
