"""Files of a server that speaks the protocol of S3."""

import io
import subprocess
import sys

import numera
import pyarrow as pa
import pyarrow.parquet as pq
import pytest
import s3_server
from table_files import columns


def parquet(table):
    file = io.BytesIO()
    pq.write_table(pa.table(table), file)
    return file.getvalue()


OBJECTS = {
    "rows.parquet": parquet({"n": [1, None]}),
    "years/year=2023/a.csv": b"n\n23\n",
    "years/year=2024/b c.csv": b"n\n24\n",
    "years/year=2024/_hidden": b"",
}


@pytest.fixture(scope="module")
def uri():
    with s3_server.serve(OBJECTS) as make_uri:
        yield make_uri


def scanned(path):
    [table] = numera.scan(path)
    return columns(table)


CALLS = pytest.mark.parametrize("call", [lambda path: columns(numera.read(path)), scanned],
                                ids=["read", "scan"])


@CALLS
def test_a_file_is_read(uri, call):
    assert call(uri("rows.parquet")) == {"n": [1, None]}


@CALLS
@pytest.mark.parametrize("folder", ["years", "years/"])
def test_a_folder_is_read_with_the_columns_that_its_names_add(uri, call, folder):
    assert call(uri(folder)) == {"n": [23, 24], "year": [2023, 2024]}


@CALLS
def test_the_files_of_a_pattern_are_read(uri, call):
    assert call(uri("years/*=2024/*.csv")) == {"n": [24], "year": [2024]}


@CALLS
def test_local_files_may_be_beside_remote_ones(uri, call, tmp_path):
    (tmp_path / "rows.csv").write_text("n\n7\n")
    assert call([uri("rows.parquet"), tmp_path / "rows.csv"]) == {"n": [1, None, 7]}


@CALLS
def test_a_missing_file_is_named_without_the_password(uri, call):
    with pytest.raises(OSError) as caught:
        call(uri("missing.csv"))
    shown = uri("missing.csv").replace("access:secret@", "")
    assert str(caught.value) == f"{shown!r}: there is no such file"


@pytest.mark.parametrize("before", ["", "import pyarrow.fs"])
@pytest.mark.parametrize("after", ["", "rest = numera.scan(uri, 1); next(rest)"])
def test_a_process_that_has_read_ends_well(uri, before, after):
    code = f"import numera, sys; {before}\nuri = sys.argv[1]; numera.read(uri)\n{after}"
    command = [sys.executable, "-c", code, uri("rows.parquet")]
    result = subprocess.run(command, capture_output=True)
    assert (result.returncode, result.stdout, result.stderr) == (0, b"", b"")


def run_program(*arguments):
    return subprocess.run([sys.executable, "-m", "numera", *arguments], capture_output=True,
                          text=True)


def test_the_program_reads_and_ends_well(uri):
    result = run_program("head", uri("rows.parquet"))
    assert (result.returncode, result.stderr) == (0, "")
    assert result.stdout == "    n\nint64\n    1\n null\n"


def test_the_program_names_a_missing_file_without_the_password_and_ends_well(uri):
    result = run_program("head", uri("missing.csv"))
    shown = uri("missing.csv").replace("access:secret@", "")
    assert (result.returncode, result.stdout) == (1, "")
    assert result.stderr == f"numera-arrow: {shown}: there is no such file\n"
