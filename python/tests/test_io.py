"""Files: read, scan and write."""

import io
import os
import sys

import numera
import pyarrow as pa
import pyarrow.csv
import pyarrow.parquet as pq
import pytest
from numera import _files, host

ROWS = {"n": [1, None, 3], "text": ["a", "", "ж"], "flag": [True, None, False]}
NESTED = {"list": [[1], None, []], "place": [{"x": 1.5}, None, {"x": None}]}
SUFFIXES = [".parquet", ".arrow", ".ipc", ".feather", ".arrows", ".csv", ".PARQUET"]


def columns(value):
    return numera.to_arrow(numera.encode(value)).to_pydict()


def file_of(tmp_path, table, suffix, rows=None):
    """The file as pyarrow writes it, in groups or batches of so many rows."""
    path = tmp_path / f"data{suffix}"
    if suffix == ".parquet":
        pq.write_table(table, path, row_group_size=rows)
    elif suffix == ".csv":
        pa.csv.write_csv(table, path)
    else:
        make = pa.ipc.new_stream if suffix == ".arrows" else pa.ipc.new_file
        with make(path, table.schema) as writer:
            writer.write_table(table, max_chunksize=rows)
    return path


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


def test_encoded_values_and_those_of_builders_are_written(tmp_path):
    path = tmp_path / "rows.parquet"
    numera.write(numera.encode(numera.to_host(pa.table(ROWS))), path)
    assert pq.read_table(path).to_pydict() == ROWS


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
def test_scans_have_tables_of_the_rows_that_are_asked_for(tmp_path, suffix):
    path = file_of(tmp_path, pa.table({"n": list(range(10))}), suffix, rows=3)
    tables = [columns(table)["n"] for table in numera.scan(path, batch_rows=4)]
    assert tables == [[0, 1, 2, 3], [4, 5, 6, 7], [8, 9]]


def test_every_column_of_a_scanned_table_is_one_chunk(tmp_path):
    path = file_of(tmp_path, pa.table(NESTED), ".arrow", rows=1)
    [table] = numera.scan(path)
    assert len(table["Columns"][0]["Data"]) == 1
    assert columns(table) == NESTED


@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".arrows"])
def test_files_without_rows_have_columns_and_no_scanned_tables(tmp_path, suffix):
    path = file_of(tmp_path, pa.table(ROWS).slice(0, 0), suffix)
    assert columns(numera.read(path)) == {"n": [], "text": [], "flag": []}
    assert list(numera.scan(path)) == []


@pytest.mark.parametrize("rows", [0, -1, 2**63])
def test_scans_of_no_rows_are_refused_at_once(tmp_path, rows):
    with pytest.raises(ValueError, match=f"^batch_rows: found {rows}, expected a positive "):
        numera.scan(file_of(tmp_path, pa.table(ROWS), ".parquet"), rows)


@pytest.mark.parametrize("rows", [1.5, "2", None])
def test_numbers_of_rows_are_integers(tmp_path, rows):
    with pytest.raises(TypeError):
        numera.scan(file_of(tmp_path, pa.table(ROWS), ".parquet"), rows)


@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".arrows", ".csv"])
def test_scans_may_ask_for_more_rows_than_there_are(tmp_path, suffix):
    [table] = numera.scan(file_of(tmp_path, pa.table(ROWS), suffix), 2**63 - 1)
    assert columns(table) == ROWS


@pytest.mark.parametrize("function", [numera.read, lambda path, names: numera.scan(path, 1, names)])
@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".arrows", ".csv"])
def test_columns_are_asked_for_once_and_by_names_of_one_column(tmp_path, function, suffix):
    table = pa.table([[1], [2], [3]], names=["n", "n", "x"])
    path = file_of(tmp_path, table, suffix)
    with pytest.raises(ValueError, match="^columns: found 'x' twice or more, expected it once.$"):
        function(path, ["x", "x"])
    with pytest.raises(ValueError, match="^columns: found 2 columns 'n' in '.*', expected one.$"):
        function(path, ["x", "n"])


@pytest.mark.parametrize("values, expected", [
    ([1, None, 3], [1, None, 3]),
    ([None, 1, None, None], [None, 1, None, None]),
    ([None, None], [None, None]),
    (["x", None, "", "y"], ["x", "", "", "y"]),  # a null text reads back as an empty one
    (["", None], [None, None]),  # nothing says that these were texts
])
def test_a_csv_of_one_column_has_every_row(tmp_path, values, expected):
    path = tmp_path / "one.csv"
    numera.write(numera.to_host(pa.table({"n": values})), path)
    expected = {"n": expected}
    assert columns(numera.read(path)) == expected
    assert columns(numera.read(path, ["n"])) == expected
    [table] = numera.scan(path)
    assert columns(table) == expected


@pytest.mark.parametrize("text, expected", [
    ("\n\nn\n1\n\n3", {"n": [1, None, 3]}),
    ("\r\nn\r\n1\r\n\r\n3\r\n", {"n": [1, None, 3]}),
    ("\ufeffn\n1\n", {"n": [1]}),
    ('"n\nm"\n1\n', {"n\nm": [1]}),
    ("\n\na,b\n1,2\n\n3,4\n", {"a": [1, 3], "b": [2, 4]}),
])
def test_empty_lines_of_a_csv_are_rows_within_one_column_alone(tmp_path, text, expected):
    path = tmp_path / "lines.csv"
    path.write_text(text, encoding="utf-8", newline="")
    assert columns(numera.read(path)) == expected
    [table] = numera.scan(path)
    assert columns(table) == expected


def test_texts_of_a_csv_may_have_newlines_wherever_a_block_ends(tmp_path):
    path = tmp_path / "lines.csv"
    rows = {"n": list(range(100_000)), "text": ["a\nlong, \"line\"\n"] * 100_000}
    numera.write(numera.to_host(pa.table(rows)), path)
    assert path.stat().st_size > 2 << 20
    assert columns(numera.read(path)) == rows
    assert sum(len(table["Columns"][0]["Data"]) for table in numera.scan(path)) == 100_000


def test_rows_of_a_csv_may_be_longer_than_a_megabyte(tmp_path):
    path = tmp_path / "long.csv"
    rows = {"n": [1, 2], "text": ["x" * 3_000_000, "y"]}
    numera.write(numera.to_host(pa.table(rows)), path)
    assert columns(numera.read(path)) == rows


@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".arrows", ".csv"])
def test_paths_may_be_bytes_that_are_no_utf8(tmp_path, suffix):
    path = os.fsencode(tmp_path) + b"/\xff" + suffix.encode()
    numera.write(numera.to_host(pa.table(ROWS)), path)
    for name in (path, os.fsdecode(path)):
        assert columns(numera.read(name)) == ROWS
        [table] = numera.scan(name)
        assert columns(table) == ROWS


@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".arrows", ".csv"])
def test_scans_take_the_memory_of_a_batch(tmp_path, suffix, monkeypatch):
    monkeypatch.setattr(_files, "_CSV_BLOCK_BYTES", 1 << 16)
    table = pa.table({"n": range(1_000_000), "x": pa.array(range(1_000_000), pa.float64())})
    path = file_of(tmp_path, table, suffix, rows=50_000 if suffix != ".parquet" else None)
    del table
    arrow, hosts, rows = pa.total_allocated_bytes(), host.live_bytes(), 0
    for part in numera.scan(path, batch_rows=10_000):
        rows += len(part["Columns"][0]["Data"])
        assert pa.total_allocated_bytes() - arrow < 7_000_000  # of 16 MB in all
        assert host.live_bytes() - hosts < 400_000
        del part
    assert rows == 1_000_000


def test_types_of_csv_come_from_the_whole_file_or_the_first_block(tmp_path):
    path = tmp_path / "late.csv"
    path.write_text("n\n" + "1\n" * 1_000_000 + "late\n")
    assert numera.read(path)["Columns"][0]["Type"].text == "string"
    with pytest.raises(pa.ArrowInvalid):
        list(numera.scan(path))


def test_values_without_host_form_are_cast_on_request(tmp_path):
    path = file_of(tmp_path, pa.table({"d": pa.array([1], pa.decimal128(3, 1))}), ".parquet")
    for call in (numera.read, lambda *a, **k: next(numera.scan(*a, **k))):
        with pytest.raises(pa.ArrowTypeError) as caught:
            call(path)
        assert caught.value.column_name == "d"
        assert columns(call(path, cast=True)) == {"d": [1.0]}


OLD = b"what was there before"
NO_CSV = {"list": [[1]]}


def test_a_failed_write_leaves_the_old_file_and_nothing_else(tmp_path):
    path = tmp_path / "rows.csv"
    path.write_bytes(OLD)
    with pytest.raises(pa.ArrowException):
        numera.write(numera.to_host(pa.table(NO_CSV)), path)
    assert path.read_bytes() == OLD and os.listdir(tmp_path) == ["rows.csv"]


@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".arrows", ".csv"])
@pytest.mark.parametrize("call, error", [("fsync", OSError(28, "No space left on device")),
                                         ("replace", KeyboardInterrupt())])
def test_what_fails_at_the_end_leaves_the_old_file_too(tmp_path, monkeypatch, suffix, call, error):
    def fail(*_):
        raise error

    path = tmp_path / f"rows{suffix}"
    path.write_bytes(OLD)
    with monkeypatch.context() as patch:
        patch.setattr(os, call, fail)
        with pytest.raises(type(error)):
            numera.write(numera.to_host(pa.table(ROWS)), path)
    assert path.read_bytes() == OLD and os.listdir(tmp_path) == [path.name]


def test_files_keep_their_permissions_and_new_ones_follow_the_mask(tmp_path):
    value = numera.to_host(pa.table(ROWS))
    path = tmp_path / "rows.csv"
    before = os.umask(0o027)
    try:
        numera.write(value, path)
        assert path.stat().st_mode & 0o777 == 0o640
        path.chmod(0o604)
        numera.write(value, path)
        assert path.stat().st_mode & 0o777 == 0o604
    finally:
        os.umask(before)


def test_links_stay_and_what_they_name_is_replaced(tmp_path):
    (tmp_path / "link.csv").symlink_to("file.csv")
    numera.write(numera.to_host(pa.table(ROWS)), tmp_path / "link.csv")
    assert (tmp_path / "link.csv").is_symlink()
    assert columns(numera.read(tmp_path / "file.csv")) == ROWS


def test_what_is_no_regular_file_is_not_replaced(tmp_path):
    (tmp_path / "folder.csv").mkdir()
    os.mkfifo(tmp_path / "pipe.csv")
    for name in ("folder.csv", "pipe.csv"):
        with pytest.raises(ValueError, match="^path: found '.*', expected a regular file.$"):
            numera.write(numera.to_host(pa.table(ROWS)), tmp_path / name)


def test_names_may_be_as_long_as_the_file_system_allows(tmp_path):
    path = tmp_path / ("ж" * 125 + ".csv")
    numera.write(numera.to_host(pa.table(ROWS)), path)
    assert columns(numera.read(path)) == ROWS


def test_a_folder_that_is_missing_is_an_error(tmp_path):
    path = tmp_path / "missing" / "rows.csv"
    with pytest.raises(FileNotFoundError) as caught:
        numera.write(numera.to_host(pa.table(ROWS)), path)
    assert caught.value.filename == str(path)


def test_a_file_that_cannot_be_replaced_is_named_without_the_hidden_one(tmp_path, monkeypatch):
    def fail(new, target):
        raise PermissionError(1, "Operation not permitted", new, None, target)

    monkeypatch.setattr(os, "replace", fail)
    path = tmp_path / "rows.csv"
    with pytest.raises(PermissionError) as caught:
        numera.write(numera.to_host(pa.table(ROWS)), path)
    assert str(caught.value) == f"[Errno 1] Operation not permitted: {str(path)!r}"


def test_the_suffix_is_looked_at_first(tmp_path):
    with pytest.raises(ValueError, match="^path: found the suffix '.txt', expected"):
        numera.write(None, tmp_path / "missing" / "rows.txt")


@pytest.mark.parametrize("value, found", [
    (numera.to_host(pa.array([1])), "struct 1x1"),
    (host.numeric([1.5]), "double 1x1"),
    (numera.to_host(b"bytes"), "struct 1x1"),
    (pa.table(ROWS), "Table"),
])
def test_only_tables_are_written(tmp_path, value, found):
    with pytest.raises(TypeError, match=f"^host: found {found}, expected"):
        numera.write(value, tmp_path / "rows.csv")
    assert os.listdir(tmp_path) == []


class Terminal(io.StringIO):
    def isatty(self):
        return True


def test_long_work_shows_a_bar_on_a_terminal_alone(tmp_path, monkeypatch):
    monkeypatch.setattr(numera.io, "_SECONDS_BEFORE_BAR", 0)
    path = tmp_path / "rows.parquet"

    def everything():
        numera.write(numera.to_host(pa.table(ROWS)), path)
        numera.read(path)
        list(numera.scan(path))

    monkeypatch.setattr(sys, "stderr", Terminal())
    everything()
    for doing in ("writing", "reading", "scanning"):
        assert doing in sys.stderr.getvalue()
    monkeypatch.setattr(sys, "stderr", io.StringIO())
    everything()
    assert sys.stderr.getvalue() == ""


def test_short_work_shows_no_bar(tmp_path, monkeypatch):
    monkeypatch.setattr(sys, "stderr", Terminal())
    numera.read(file_of(tmp_path, pa.table(ROWS), ".parquet"))
    assert sys.stderr.getvalue() == ""
