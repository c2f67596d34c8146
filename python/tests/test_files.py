"""Every file format: what is read and what is refused."""

import os

import numera
import pyarrow as pa
import pyarrow.csv
import pyarrow.parquet as pq
import pytest
from table_files import NESTED, ROWS, columns, file_of

SUFFIXES = [".parquet", ".arrow", ".ipc", ".feather", ".arrows", ".csv", ".PARQUET"]


@pytest.mark.parametrize("suffix", SUFFIXES)
def test_what_is_written_is_read_again(tmp_path, suffix):
    path = tmp_path / f"rows{suffix}"
    rows = ROWS if suffix == ".csv" else ROWS | NESTED
    numera.write(numera.to_host(pa.table(rows)), path)
    assert columns(numera.read(path)) == rows
    assert os.listdir(tmp_path) == [path.name]


@pytest.mark.parametrize("suffix, reads", [(".parquet", pq.read_table), (".csv", pa.csv.read_csv),
                                           (".arrow", lambda path: pa.ipc.open_file(path).read_all()),
                                           (".arrows", lambda path: pa.ipc.open_stream(path).read_all())])
def test_others_read_what_is_written(tmp_path, suffix, reads):
    path = str(tmp_path / f"rows{suffix}")
    numera.write(numera.to_host(pa.table(ROWS)), path)
    assert reads(path).to_pydict() == ROWS


@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".arrows", ".csv"])
def test_columns_come_in_the_order_that_is_asked_for(tmp_path, suffix):
    path = file_of(tmp_path, pa.table(ROWS), suffix)
    expected = {"text": ROWS["text"], "n": ROWS["n"]}
    assert list(columns(numera.read(path, ["text", "n"])).items()) == list(expected.items())
    [table] = numera.scan(path, columns=("text", "n"))
    assert list(columns(table).items()) == list(expected.items())


def test_the_parts_of_a_parquet_file_with_dots_in_names_are_told_apart(tmp_path):
    path = file_of(tmp_path, pa.table({"a": [{"b": 1}], "a.b": [2]}), ".parquet")
    assert columns(numera.read(path, ["a.b"])) == {"a.b": [2]}
    assert columns(numera.read(path, ["a"])) == {"a": [{"b": 1}]}


@pytest.mark.parametrize("function", [numera.read, lambda path, names: numera.scan(path, 1, names)])
@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".arrows", ".csv"])
def test_unknown_columns_are_named(tmp_path, function, suffix):
    path = file_of(tmp_path, pa.table(ROWS), suffix)
    with pytest.raises(KeyError) as caught:
        function(path, ["x", "n", "y"])
    assert caught.value.args == (
        f"columns: found no 'x', 'y' in {str(path)!r}, expected some of 'n', 'text', 'flag'.",
    )


def test_a_text_is_no_list_of_columns(tmp_path):
    with pytest.raises(TypeError, match="^columns: found a text, expected a list of names.$"):
        numera.read(file_of(tmp_path, pa.table(ROWS), ".csv"), "n")


@pytest.mark.parametrize("function", [numera.read, lambda path, names: numera.scan(path, 1, names)])
@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".arrows", ".csv"])
def test_columns_are_asked_for_once_and_by_names_of_one_column(tmp_path, function, suffix):
    table = pa.table([[1], [2], [3]], names=["n", "n", "x"])
    path = file_of(tmp_path, table, suffix)
    with pytest.raises(ValueError, match="^columns: found 'x' twice or more, expected it once.$"):
        function(path, ["x", "x"])
    with pytest.raises(ValueError, match="^columns: found 2 columns 'n' in '.*', expected one.$"):
        function(path, ["x", "n"])


@pytest.mark.parametrize("name", ["rows", "rows.txt", "rows.csv.gz"])
def test_other_suffixes_are_refused(tmp_path, name):
    (tmp_path / name).touch()
    for call in (numera.read, numera.scan, lambda path: numera.write(numera.to_host(pa.table(ROWS)), path)):
        with pytest.raises(ValueError, match="^path: found the suffix '.*', expected one of .parquet, "):
            call(tmp_path / name)
    assert os.listdir(tmp_path) == [name] and (tmp_path / name).stat().st_size == 0


@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".arrows", ".csv"])
def test_files_that_are_missing_or_no_such_files_are_errors(tmp_path, suffix):
    for call in (numera.read, numera.scan):
        with pytest.raises(FileNotFoundError):
            call(tmp_path / f"missing{suffix}")
        (tmp_path / f"empty{suffix}").touch()
        with pytest.raises(pa.ArrowInvalid):
            call(tmp_path / f"empty{suffix}")


@pytest.mark.parametrize("suffix", [".arrow", ".arrows"])
def test_forms_of_ipc_are_told_apart_by_what_they_hold(tmp_path, suffix):
    path = file_of(tmp_path, pa.table(ROWS), suffix)
    other = path.rename(tmp_path / ("data.arrows" if suffix == ".arrow" else "data.arrow"))
    assert columns(numera.read(other)) == ROWS


def test_the_chunks_of_a_file_stay_in_what_is_read(tmp_path):
    path = file_of(tmp_path, pa.table(NESTED), ".arrow", rows=2)
    assert len(numera.read(path)["Columns"][0]["Data"]) == 2


@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".arrows", ".csv"])
def test_paths_may_be_bytes_that_are_no_utf8(tmp_path, suffix):
    path = os.fsencode(tmp_path) + b"/\xff" + suffix.encode()
    numera.write(numera.to_host(pa.table(ROWS)), path)
    for name in (path, os.fsdecode(path)):
        assert columns(numera.read(name)) == ROWS
        [table] = numera.scan(name)
        assert columns(table) == ROWS


def test_values_without_host_form_are_cast_on_request(tmp_path):
    path = file_of(tmp_path, pa.table({"d": pa.array([1], pa.decimal128(3, 1))}), ".parquet")
    for call in (numera.read, lambda *a, **k: next(numera.scan(*a, **k))):
        with pytest.raises(pa.ArrowTypeError) as caught:
            call(path)
        assert caught.value.column_name == "d"
        assert columns(call(path, cast=True)) == {"d": [1.0]}
