"""Cases that only CSV has: empty lines, newlines in texts, long rows, types."""

import numera
import pyarrow as pa
import pytest
from numera import _files
from table_files import columns


@pytest.mark.parametrize("values, expected", [
    ([1, None, 3], [1, None, 3]),
    ([None, 1, None, None], [None, 1, None, None]),
    ([None, None], [None, None]),
    (["x", None, "", "y"], ["x", "", "", "y"]),  # a null text reads back as an empty one
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


@pytest.fixture
def small_blocks(monkeypatch):
    monkeypatch.setattr(_files, "_CSV_BLOCK_BYTES", 1 << 10)
    monkeypatch.setattr(_files, "_CSV_LONGEST_ROW_BYTES", 1 << 14)


@pytest.mark.parametrize("places", [[0], [1], [2_500], [4_999], [100, 101, 3_000], [0, 4_999]])
@pytest.mark.parametrize("text", ["x" * 9_000, "a\nlong, \"line\"\n" * 500], ids=["one line", "many"])
def test_scans_go_on_behind_the_rows_so_far_with_longer_blocks(tmp_path, small_blocks, places, text):
    path = tmp_path / "long.csv"
    rows = {"n": list(range(5_000)), "text": ["short"] * 5_000}
    for place in places:
        rows["text"][place] = text
    numera.write(numera.to_host(pa.table(rows)), path)
    assert scanned(path, batch_rows=700).to_pydict() == rows
    assert scanned(path, columns=["text"]).to_pydict() == {"text": rows["text"]}


def test_rows_of_a_csv_of_one_column_stay_where_blocks_get_longer(tmp_path, small_blocks):
    path = tmp_path / "one.csv"
    texts = ["", "short"] * 1_000 + ["x" * 9_000, ""]
    path.write_text("\n\ntext\n" + "\n".join(texts) + "\n")
    assert scanned(path).to_pydict() == {"text": texts}


def test_types_of_csv_stay_those_of_the_first_block_where_blocks_get_longer(tmp_path, small_blocks):
    path = tmp_path / "types.csv"
    row = "1,1.5,true,,2013-01-01,2013-01-01T12:00:00,2013-01-01T12:00:00Z,text\n"
    path.write_text("a,b,c,d,e,f,g,h\n" + row * 100 + row.replace("text", "x" * 9_000) + row)
    types = [[column["Type"].text for column in table["Columns"]]
             for table in numera.scan(path, batch_rows=1)]
    assert types[0] == ["int64", "double", "logical", "null", "datetime", "datetime", "datetime",
                        "string"]
    assert types == [types[0]] * 102
    assert scanned(path).equals(numera.to_arrow(numera.make_readable(numera.read(path))))
    with path.open("a") as file:
        file.write(row.replace("1.5", "late"))
    with pytest.raises(pa.ArrowInvalid, match="CSV conversion error to double"):
        scanned(path)


def test_rows_of_a_csv_that_are_too_long_are_refused(tmp_path, small_blocks):
    path = tmp_path / "long.csv"
    path.write_text("n,text\n1,short\n2," + "x" * 40_000 + "\n3,short\n")
    for call in (numera.read, scanned):
        with pytest.raises(pa.ArrowInvalid) as caught:
            call(path)
        assert str(caught.value) == (
            "CSV: found a row of more than 16,384 bytes, expected a shorter row.")


def test_where_columns_share_a_name_scans_have_blocks_of_one_length(tmp_path, small_blocks):
    path = tmp_path / "names.csv"
    path.write_text("n,n\n" + "1,short\n" * 1_000 + "2," + "x" * 9_000 + "\n")
    assert len(numera.read(path)["Columns"][1]["Data"]) == 1_001
    with pytest.raises(pa.ArrowInvalid, match="^CSV: found a row of more than 1,024 bytes, expected "):
        scanned(path)


def test_types_of_csv_come_from_the_whole_file_or_the_first_block(tmp_path):
    path = tmp_path / "late.csv"
    path.write_text("n\n" + "1\n" * 1_000_000 + "late\n")
    assert numera.read(path)["Columns"][0]["Type"].text == "string"
    with pytest.raises(pa.ArrowInvalid):
        list(numera.scan(path))
