"""Parquet files whose pages and footer disagree about their rows, or whose pages have changed."""

import re

import numera
import pyarrow as pa
import pyarrow.parquet as pq
import pytest
from table_files import columns

ROWS = 1000
# The order of the counts in a footer: first the rows of the file, then the values of each column.
ROWS_OF_FILE, VALUES_OF_N = 0, 1


def counted(count):
    """A count as Parquet writes it: zigzag, seven bits per byte."""
    count, given = 2 * count, b""
    while count > 127:
        given += bytes([count & 127 | 128])
        count >>= 7
    return given + bytes([count])


def written(tmp_path, rows=ROWS):
    """A file with the columns n, l and s. Each row group has four pages: n, l, and two for s."""
    path = tmp_path / "rows.parquet"
    table = pa.table({"n": [7] * rows, "l": [[7]] * rows, "s": [{"x": 7, "y": "seven"}] * rows})
    pq.write_table(table, path, row_group_size=ROWS, write_page_checksum=True, compression="none")
    return path


def recount(path, kind, which, count):
    """Replaces one number `ROWS` in a page header or in the footer by `count`."""
    content = path.read_bytes()
    footer = len(content) - 8 - int.from_bytes(content[-8:-4], "little")
    begin, end, number = {"page": (0, footer, b"\x15"), "footer": (footer, len(content), b"\x16")}[kind]
    found = re.finditer(re.escape(number + counted(ROWS)), content[begin:end])
    place, new = begin + list(found)[which].start() + 1, counted(count)
    assert len(new) == len(counted(ROWS))
    path.write_bytes(content[:place] + new + content[place + len(new):])


def scan(path, columns=None, batch_rows=200):
    return list(numera.scan(path, batch_rows, columns))


CALLS = pytest.mark.parametrize("call", [numera.read, scan])


def refusal(call, *arguments):
    with pytest.raises(pa.ArrowInvalid) as caught:
        call(*arguments)
    return str(caught.value)


@CALLS
@pytest.mark.parametrize("page, name", [(0, "n"), (1, "l"), (2, "s")])
def test_a_column_with_fewer_rows_than_the_footer_is_named(tmp_path, call, page, name):
    path = written(tmp_path)
    recount(path, "page", page, 400)
    expected = (f"{str(path)!r}: row group 0, column {name!r}: found 400 rows, "
                "expected 1000, as the footer states")
    assert refusal(call, path) == expected
    assert refusal(call, path, [name]) == expected


@CALLS
def test_a_part_of_a_column_with_fewer_rows_than_others_is_named(tmp_path, call):
    path = written(tmp_path)
    recount(path, "page", 3, 500)
    expected = f"{str(path)!r}: row group 0, column 's': Struct child array #1 has length smaller "
    assert refusal(call, path).startswith(expected)
    assert refusal(call, path, ["s"]).startswith(expected)


@CALLS
def test_columns_that_all_have_fewer_rows_than_the_footer_are_refused(tmp_path, call):
    path = written(tmp_path)
    for page in (3, 2, 1, 0):
        recount(path, "page", page, 400)
    assert refusal(call, path) == (f"{str(path)!r}: row group 0, column 'n': found 400 rows, "
                                   "expected 1000, as the footer states")


@CALLS
def test_the_row_group_is_named(tmp_path, call):
    path = written(tmp_path, 2 * ROWS)
    recount(path, "page", 4, 400)
    assert refusal(call, path) == (f"{str(path)!r}: row group 1, column 'n': found 400 rows, "
                                   "expected 1000, as the footer states")


@CALLS
def test_a_column_of_more_values_than_rows_is_named(tmp_path, call):
    path = written(tmp_path)
    recount(path, "footer", VALUES_OF_N, 1400)
    expected = (f"{str(path)!r}: row group 0, column 'n': found 1400 values, "
                "expected 1000, as the footer states")
    assert refusal(call, path) == expected
    assert refusal(call, path, ["n"]) == expected


@CALLS
def test_lists_may_have_more_values_than_rows(tmp_path, call):
    path = tmp_path / "lists.parquet"
    pq.write_table(pa.table({"l": [[1, 2], [3, 4, 5]]}), path)
    got = call(path)
    assert columns(got[0] if call is scan else got) == {"l": [[1, 2], [3, 4, 5]]}


@CALLS
@pytest.mark.parametrize("rows", [400, 1400])
def test_row_groups_that_have_other_rows_than_the_file_are_refused(tmp_path, call, rows):
    path = written(tmp_path)
    recount(path, "footer", ROWS_OF_FILE, rows)
    assert refusal(call, path) == (f"{str(path)!r}: found 1000 rows in the row groups, "
                                   f"expected {rows}, as the footer states")


@pytest.mark.parametrize("kind, which, count", [("page", 0, 400), ("footer", VALUES_OF_N, 1400)])
def test_columns_that_are_not_asked_for_are_not_read(tmp_path, kind, which, count):
    path = written(tmp_path)
    recount(path, kind, which, count)
    assert columns(numera.read(path, ["l"])) == {"l": [[7]] * ROWS}
    [table] = scan(path, ["l"], ROWS)
    assert columns(table) == {"l": [[7]] * ROWS}


@CALLS
@pytest.mark.parametrize("names", [None, ["s"]])
def test_a_page_that_has_changed_is_noticed_by_its_checksum(tmp_path, call, names):
    path = written(tmp_path)
    path.write_bytes(path.read_bytes().replace(b"seven", b"sevem", 1))
    with pytest.raises(OSError) as caught:
        call(path, names)
    assert str(caught.value) == (
        f"{str(path)!r}: row group 0, column 's': could not verify page integrity, "
        "CRC checksum verification failed for page_ordinal 0")
    assert columns(numera.read(path, ["n"])) == {"n": [7] * ROWS}


def test_scanned_tables_reach_over_row_groups(tmp_path):
    path = written(tmp_path, 3 * ROWS)
    tables = [columns(table) for table in numera.scan(path, 1700, ["l"])]
    assert tables == [{"l": [[7]] * 1700}, {"l": [[7]] * 1300}]
