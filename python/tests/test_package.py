"""The installed package: its version, its program, and the pyarrow it requires."""

import importlib.metadata
import os
import subprocess
import sys
from pathlib import Path

import numera
import pyarrow as pa
import pyarrow.parquet as pq
import pytest
from numera import _pyarrow


def test_the_version_is_that_of_the_distribution():
    assert numera.__version__ == importlib.metadata.version("numera-arrow")


def test_the_range_of_pyarrow_is_pinned_as_it_is_checked():
    assert f"pyarrow<26.1,>=26.0.1" in importlib.metadata.requires("numera-arrow")
    assert _pyarrow._expected() == ">=26.0.1,<26.1"


@pytest.mark.parametrize("found", ["25.0.0", "26.0.0", "26.1.0", "27.0.0.dev1", "100.0.0"])
def test_another_pyarrow_is_refused_with_what_to_do(monkeypatch, found):
    monkeypatch.setattr(pa, "__version__", found)
    with pytest.raises(ImportError) as caught:
        _pyarrow.check()
    assert str(caught.value) == (
        f"numera: found pyarrow {found}, expected >=26.0.1,<26.1: pip install 'pyarrow>=26.0.1,<26.1'"
    )


@pytest.mark.parametrize("found", ["26.0.1", "26.0.2", "26.0.10"])
def test_the_pyarrow_of_the_range_is_taken(monkeypatch, found):
    monkeypatch.setattr(pa, "__version__", found)
    _pyarrow.check()


def test_the_check_comes_before_what_is_compiled():
    code = "import pyarrow; pyarrow.__version__ = '1.0.0'; import numera"
    result = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True)
    assert result.stderr.splitlines()[-1].startswith("ImportError: numera: found pyarrow 1.0.0,")


def program(*arguments):
    command = [sys.executable, "-m", "numera", *arguments]
    return subprocess.run(command, capture_output=True, text=True)


def test_the_module_is_the_program(tmp_path):
    pq.write_table(pa.table({"n": [1, None], "t": ["a", "b"]}), tmp_path / "rows.parquet")
    result = program("convert", str(tmp_path / "rows.parquet"))
    assert result.returncode == 0, result.stderr
    assert "int64" in result.stdout and "string" in result.stdout


def test_the_program_reports_as_ever(tmp_path):
    assert program("--version").stdout == f"numera-arrow {numera.__version__}\n"
    missing = program("types", str(tmp_path / "missing.parquet"))
    assert missing.returncode == 1 and missing.stderr.startswith("numera-arrow: ")
    assert program().returncode == 2


def test_the_program_dies_of_a_closed_pipe_as_programs_do():
    code = "import os, signal, subprocess, sys; from numera.__main__ import main; main()"
    reader, writer = os.pipe()
    os.close(reader)
    result = subprocess.run([sys.executable, "-c", code, "--help"], stdout=writer)
    os.close(writer)
    assert result.returncode != 0


def test_libraries_lie_beside_the_module():
    folder = Path(numera.__file__).parent
    assert {path.name for path in folder.glob("libnumera_*")} == {
        "libnumera_arrow.so.0", "libnumera_extras.so.0", "libnumera_files.so.0",
        "libnumera_host.so.0"
    }
