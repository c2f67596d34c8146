"""The collapsible tree for notebooks."""

from html.parser import HTMLParser

import numera
import pyarrow as pa
import pytest
from numera import _html, host

VOID = {"br", "hr", "img"}


class Balanced(HTMLParser):
    """Fails on mismatched tags, and records the tags and the text outside the style element."""

    def __init__(self, html):
        super().__init__()
        self.open, self.tags, self.text = [], [], ""
        self.feed(html)
        assert self.open == []

    def handle_starttag(self, tag, attrs):
        self.tags.append((tag, dict(attrs)))
        self.open.append(tag)

    def handle_endtag(self, tag):
        assert self.open.pop() == tag

    def handle_data(self, data):
        if "style" not in self.open:
            self.text += data


def details(value):
    return [attrs for tag, attrs in Balanced(value._repr_html_()).tags if tag == "details"]


def text(value):
    return Balanced(value._repr_html_()).text


def test_every_part_is_a_line():
    value = host.struct({"Name": "x", "Empty": None, "Cell": host.cell([1.5, True])})
    assert text(value) == (
        'struct 1x1Name: char 1x1 "x"Empty: <empty>Cell: cell 2x1{0}: double 1x1 [1.5]'
        "{1}: logical 1x1 [true]"
    )


def test_containers_fold_and_the_outer_ones_are_open():
    value = host.cell([host.cell([host.cell([host.cell([1])])])])
    assert details(value) == [{"open": None}, {"open": None}, {}, {}]
    assert details(host.numeric([1, 2])) == []


@pytest.mark.parametrize("hostile", ["<script>alert(1)</script>", "</style>", "&amp;", '"><b>', "a'b"])
def test_what_values_hold_is_text_and_no_markup(hostile):
    values = [
        host.char(hostile),
        host.string([hostile]),
        host.struct({hostile: hostile}),
        numera.to_host(pa.table({hostile: [hostile]})),
    ]
    for value in values:
        parsed = Balanced(value._repr_html_())
        assert {tag for tag, _ in parsed.tags} <= {"div", "style", "details", "summary", "ul", "li", "span"}
        assert hostile in parsed.text.replace('\\"', '"')


def test_names_that_are_no_text_are_shown():
    assert r"\udcff: int64 1x1 [1]" in text(host.struct({"\udcff": 1}))


def test_large_values_are_cut():
    assert "... 80 more" in text(host.cell(range(100)))
    wide = host.cell([host.cell([host.cell(range(20))] * 20)] * 20)
    assert Balanced(wide._repr_html_()).text.count("int64") <= _html.MAX_NODES
    assert len(wide._repr_html_()) < 300_000
    deep = host.cell([1])
    for _ in range(1000):
        deep = host.cell([deep])
    assert text(deep).count("cell") == _html.MAX_DEPTH + 1


def test_light_and_dark_follow_the_reader():
    style = numera.host.numeric([1])._repr_html_()
    assert "prefers-color-scheme:dark" in style and "color:inherit" in style
    assert "http" not in style and "<script" not in style
