"""Cases that only CSV has: empty lines, newlines in texts, long rows, types."""

import numera
import pyarrow as pa
import pytest
from table_files import columns


@pytest.mark.parametrize("values, expected", [
    ([1, None, 3], [1, None, 3]),
    ([None, 1, None, None], [None, 1, None, None]),
    ([None, None], [None, None]),
    (["x", None, "", "y"], ["x", None, "", "y"]),
    (["", None], [None, None]),  # the file does not show that these were texts
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


def scanned(path, **options):
    return pa.concat_tables(numera.to_arrow(numera.make_readable(table))
                            for table in numera.scan(path, **options))


def test_rows_of_a_csv_may_be_longer_than_a_megabyte(tmp_path):
    path = tmp_path / "long.csv"
    rows = {"n": [1, 2], "text": ["x" * 3_000_000, "y"]}
    numera.write(numera.to_host(pa.table(rows)), path)
    assert columns(numera.read(path)) == rows
    assert scanned(path).to_pydict() == rows


def test_nulls_and_empty_texts_of_a_csv_are_told_apart(tmp_path):
    path = tmp_path / "texts.csv"
    rows = {"n": [1, None, 3, 4], "text": ["", None, "NA", "text"], "flag": [None, True, None, False]}
    numera.write(numera.to_host(pa.table(rows)), path)
    assert columns(numera.read(path)) == rows
    [table] = numera.scan(path)
    assert columns(table) == rows


CALLS = pytest.mark.parametrize("call", [numera.read, scanned])


@CALLS
def test_a_row_of_a_csv_has_64_mebibytes_at_most(tmp_path, call):
    path = tmp_path / "long.csv"
    path.write_text("n,text\n1,short\n2," + "x" * (1 << 26) + "\n3,short\n")
    with pytest.raises(pa.ArrowInvalid) as caught:
        call(path)
    assert str(caught.value) == (f"{str(path)!r}: a row is longer than 64 MiB, or a quotation mark in "
                                 "it is not closed")


@CALLS
@pytest.mark.parametrize("text, reason", [
    ("n,n\n1,2,3\n", "CSV parse error: Row #2: Expected 2 columns, got 3: 1,2,3"),
    ('n,m\n1,"open\n', "a quotation mark after row 1 is not closed"),
    ("one line", "read as CSV, it has no heading: no line with text ends with a line break"),
])
def test_a_csv_that_is_no_table_is_refused(tmp_path, call, text, reason):
    path = tmp_path / "bad.csv"
    path.write_text(text)
    with pytest.raises(pa.ArrowInvalid) as caught:
        call(path)
    assert str(caught.value) == f"{str(path)!r}: {reason}"


def test_columns_of_a_csv_may_share_a_name(tmp_path):
    path = tmp_path / "names.csv"
    path.write_text("n,n\n" + "1,short\n" * 1_000 + "2," + "x" * 2_000_000 + "\n")
    assert len(numera.read(path)["Columns"][1]["Data"]) == 1_001
    assert sum(len(table["Columns"][1]["Data"]) for table in numera.scan(path, 700)) == 1_001
