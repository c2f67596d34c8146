"""Files read as tables of a given number of rows."""

import gc
import os
import signal
import threading
import time

import numera
import pyarrow as pa
import pytest
from numera import _source, host
from table_files import NESTED, ROWS, columns, file_of


@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".arrows", ".orc", ".csv", ".jsonl"])
def test_scans_have_tables_of_the_rows_that_are_asked_for(tmp_path, suffix):
    path = file_of(tmp_path, pa.table({"n": list(range(10))}), suffix, rows=3)
    tables = [columns(table)["n"] for table in numera.scan(path, batch_rows=4)]
    assert tables == [[0, 1, 2, 3], [4, 5, 6, 7], [8, 9]]


def test_every_column_of_a_scanned_table_is_one_chunk(tmp_path):
    path = file_of(tmp_path, pa.table(NESTED), ".arrow", rows=1)
    [table] = numera.scan(path)
    assert len(table["Columns"][0]["Data"]) == 1
    assert columns(table) == NESTED


def test_dictionaries_within_columns_become_one_chunk(tmp_path):
    path = tmp_path / "rows.arrows"
    batches = [pa.record_batch({"s": pa.StructArray.from_arrays([codes, [1, 2, 3]], ["text", "n"])})
               for codes in (pa.array(["a", None, "b"]).dictionary_encode(),
                             pa.array(["c", "b", None]).dictionary_encode())]
    with pa.ipc.new_stream(path, batches[0].schema) as writer:
        for batch in batches:
            writer.write_batch(batch)
    [table] = numera.scan(path)
    assert len(table["Columns"][0]["Data"]) == 1
    assert [row["text"] for row in columns(table)["s"]] == ["a", None, "b", "c", "b", None]


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


@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".arrows", ".orc", ".csv", ".jsonl"])
def test_scans_may_ask_for_more_rows_than_there_are(tmp_path, suffix):
    [table] = numera.scan(file_of(tmp_path, pa.table(ROWS), suffix), 2**63 - 1)
    assert columns(table) == ROWS


@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".arrows", ".orc", ".csv"])
def test_scans_take_the_memory_of_a_batch(tmp_path, suffix):
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


def open_files():
    return len(os.listdir("/proc/self/fd"))


def test_a_scan_that_is_closed_in_the_middle_leaves_nothing(tmp_path):
    path = file_of(tmp_path, pa.table(NESTED), ".arrow", rows=1)
    gc.collect()
    files, arrays, memory = open_files(), host.live_arrays(), pa.total_allocated_bytes()
    tables = numera.scan(path, 1)
    assert columns(next(tables)) == {"list": [[1]], "place": [{"x": 1.5}]}
    assert open_files() == files + 1
    tables.close()
    assert list(tables) == []
    # A thread of Arrow may hold its part of the reader for a moment longer.
    assert wait_for(lambda: (open_files(), pa.total_allocated_bytes()) == (files, memory))
    assert host.live_arrays() == arrays


def wait_for(condition, seconds=10):
    end = time.monotonic() + seconds
    while not condition() and time.monotonic() < end:
        time.sleep(0.01)
    return condition()


def test_a_scan_that_was_not_begun_holds_no_file_when_it_is_gone(tmp_path):
    path = file_of(tmp_path, pa.table(ROWS), ".parquet")
    files = open_files()
    numera.scan(path)
    assert open_files() == files


def test_a_file_that_was_read_is_closed(tmp_path):
    path = file_of(tmp_path, pa.table(ROWS), ".parquet")
    files = open_files()
    table = numera.read(path)
    path.unlink()
    assert columns(table) == ROWS and open_files() == files


def test_a_file_may_be_replaced_while_it_is_scanned(tmp_path):
    path = file_of(tmp_path, pa.table(ROWS), ".csv")
    tables = numera.scan(path, 1)
    first = next(tables)
    numera.write(numera.to_host(pa.table(NESTED)), path.with_suffix(".arrow"))
    path.with_suffix(".arrow").rename(path)
    rows = [columns(table) for table in (first, *tables)]
    assert [row["n"] for row in rows] == [[1], [None], [3]]


def test_each_table_of_a_scan_may_be_read_by_another_thread(tmp_path):
    path = file_of(tmp_path, pa.table({"n": list(range(10))}), ".parquet", rows=3)
    tables, found = numera.scan(path, 4), []
    for _ in range(3):
        thread = threading.Thread(target=lambda: found.append(columns(next(tables))["n"]))
        thread.start()
        thread.join()
    assert found == [[0, 1, 2, 3], [4, 5, 6, 7], [8, 9]]


@pytest.mark.parametrize("suffix", [".parquet", ".csv"])
def test_threads_that_share_a_scan_get_each_row_once_or_an_error(tmp_path, suffix):
    path = file_of(tmp_path, pa.table({"n": list(range(20_000))}), suffix)
    tables, rows, refusals = numera.scan(path, 10), [], set()

    def take_all():
        while True:
            try:
                table = next(tables, None)
            except ValueError as error:
                refusals.add(str(error))
                continue
            if table is None:
                return
            rows.extend(columns(table)["n"])

    threads = [threading.Thread(target=take_all) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert sorted(rows) == list(range(20_000))
    assert refusals <= {"generator already executing"}


def open_source(path, batch_rows):
    return _source.open_source(path, None, batch_rows, memory_limit=None, csv_delimiter=None,
                               csv_heading=True, csv_nulls=(), csv_encoding=None,
                               csv_types_of_all_rows=False)


def test_threads_that_share_an_open_file_get_each_row_once_or_an_error(tmp_path):
    path = file_of(tmp_path, pa.table({"n": list(range(100_000))}), ".csv")
    source = open_source(path, 10)
    collected, refusals = [], set()

    def collect_all():
        while True:
            try:
                rows = source.collect(10)
            except RuntimeError as error:
                refusals.add(str(error))
                continue
            if rows == 0:
                return
            collected.append(rows)

    threads = [threading.Thread(target=collect_all) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert sum(collected) == 100_000
    assert columns(source.take(False, True)) == {"n": list(range(100_000))}
    assert refusals <= {"File: found two threads that use it, expected one at a time."}


def test_an_open_file_is_not_used_when_it_is_closed(tmp_path):
    source = open_source(file_of(tmp_path, pa.table(ROWS), ".csv"), 10)
    assert source.collect(1) == 1
    source.close()
    source.close()
    with pytest.raises(pa.ArrowInvalid, match="^'.*/data.csv': it is closed$"):
        source.collect(1)
    assert columns(source.take(False, True)) == {"n": [], "text": [], "flag": []}


def test_ctrl_c_ends_reading(tmp_path, monkeypatch):
    path = file_of(tmp_path, pa.table({"n": list(range(100_000))}), ".arrow", rows=1_000)
    gc.collect()
    files, memory = open_files(), pa.total_allocated_bytes()

    class Bar:
        def __enter__(self):
            return self

        def __exit__(self, *_):
            pass

        def update(self, rows):
            signal.raise_signal(signal.SIGINT)  # in this thread

    monkeypatch.setattr(numera.io, "_bar", lambda *_: Bar())
    with pytest.raises(KeyboardInterrupt) as kept:  # the traceback has every variable
        numera.read(path)
    assert wait_for(lambda: (open_files(), pa.total_allocated_bytes()) == (files, memory))
    del kept
