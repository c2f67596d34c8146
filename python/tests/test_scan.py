"""Files read as tables of a given number of rows."""

import numera
import pyarrow as pa
import pytest
from numera import _files, host
from table_files import NESTED, ROWS, columns, file_of


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
