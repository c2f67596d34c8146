"""Every public name has a docstring, and its examples are correct."""

import ast
import doctest
import importlib.resources
import inspect
import pathlib
import re
import types

import numera
import pytest
from numera import host

FUNCTIONS = ["to_host", "to_arrow", "make_readable", "datatype", "utf16_to_utf8"]
FILES = ["read", "scan", "write"]
BUILDERS = ["numeric", "logical", "char", "string", "cell", "struct"]
# Special methods, which need no example.
WITHOUT_EXAMPLE = {"__len__", "__iter__", "__contains__", "__getitem__", "__eq__", "__reduce__",
                   "__repr__", "_repr_html_"}


def documented():
    yield "numera", numera.__doc__
    yield "numera.host", host.__doc__
    for name in FUNCTIONS + FILES:
        yield f"numera.{name}", getattr(numera, name).__doc__
    for name in host.__all__:
        yield f"numera.host.{name}", getattr(host, name).__doc__
    yield "HostArray", numera.HostArray.__doc__
    for name, member in vars(numera.HostArray).items():
        if not name.startswith("_") or name in WITHOUT_EXAMPLE:
            yield f"HostArray.{name}", member.__doc__


DOCUMENTED = dict(documented())


@pytest.mark.parametrize("name", DOCUMENTED)
def test_public_names_are_documented(name):
    assert DOCUMENTED[name]


@pytest.mark.parametrize("name", DOCUMENTED)
def test_examples_hold(name):
    runner = doctest.DocTestRunner(optionflags=doctest.NORMALIZE_WHITESPACE)
    parsed = doctest.DocTestParser().get_doctest(DOCUMENTED[name], {}, name, None, 0)
    output = []
    runner.run(parsed, out=output.append)
    assert "".join(output) == ""
    if name.removeprefix("HostArray.") not in WITHOUT_EXAMPLE:
        assert parsed.examples


def stub():
    return ast.parse(importlib.resources.files("numera").joinpath("_core.pyi").read_text())


def test_stubs_are_shipped_with_the_marker():
    assert importlib.resources.files("numera").joinpath("py.typed").is_file()
    names = {node.name for node in stub().body if isinstance(node, (ast.FunctionDef, ast.ClassDef))}
    assert names >= {"HostArray", "TableErrorCode", *FUNCTIONS}


def test_stubs_name_every_member_of_a_host_array():
    [array] = [node for node in stub().body if getattr(node, "name", "") == "HostArray"]
    stubbed = {node.name for node in array.body if isinstance(node, ast.FunctionDef)}
    members = {name for name in vars(numera.HostArray) if not name.startswith("_")}
    assert stubbed >= members


def test_stubs_have_no_type_left_open():
    for node in ast.walk(stub()):
        if isinstance(node, ast.FunctionDef) and not node.name.startswith("_"):
            assert node.returns is not None, node.name


def test_only_public_names_are_listed():
    for module in (numera, host):
        for name in module.__all__:
            assert not isinstance(getattr(module, name), types.ModuleType) or name == "host"
    assert [name for name in host.__all__ if inspect.getdoc(getattr(host, name)) is None] == []


def test_the_readme_holds():
    readme = pathlib.Path(__file__).parents[1].joinpath("README.md").read_text()
    [code] = re.findall(r"```python\n(.*?)```", readme, re.DOTALL)
    names = {}
    exec(code, names)
    assert names["numera"].to_arrow(names["host"]).num_rows == 2
