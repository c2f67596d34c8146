"""A new file replaces the old one when it is complete, not before."""

import os

import numera
import pyarrow as pa
import pyarrow.parquet as pq
import pytest
from numera import host
from table_files import ROWS, columns


def test_encoded_values_and_those_of_builders_are_written(tmp_path):
    path = tmp_path / "rows.parquet"
    numera.write(numera.make_readable(numera.to_host(pa.table(ROWS))), path)
    assert pq.read_table(path).to_pydict() == ROWS


OLD = b"what was there before"
NO_CSV = {"list": [[1]]}


def test_a_failed_write_leaves_the_old_file_and_nothing_else(tmp_path):
    path = tmp_path / "rows.csv"
    path.write_bytes(OLD)
    with pytest.raises(pa.ArrowException):
        numera.write(numera.to_host(pa.table(NO_CSV)), path)
    assert path.read_bytes() == OLD and os.listdir(tmp_path) == ["rows.csv"]


LATE = pa.array([0] * 200_000 + [2**40], pa.timestamp("s"))  # the last one is after the year 32767


@pytest.mark.parametrize("suffix", [".csv", ".jsonl.gz"])
def test_a_value_that_cannot_be_written_leaves_the_old_file(tmp_path, suffix):
    path = tmp_path / f"rows{suffix}"
    path.write_bytes(OLD)
    with pytest.raises(pa.ArrowInvalid, match=f"^cannot write {path}: column 't': "):
        numera.write(numera.to_host(pa.table({"t": LATE})), path)
    assert path.read_bytes() == OLD and os.listdir(tmp_path) == [path.name]


@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".arrows", ".csv", ".jsonl", ".tsv.gz"])
def test_ctrl_c_leaves_the_old_file_and_nothing_else(tmp_path, monkeypatch, suffix):
    class Bar:
        def __enter__(self):
            return self

        def __exit__(self, *_):
            raise KeyboardInterrupt

        def update(self, rows):
            assert len(os.listdir(tmp_path)) == 2

    path = tmp_path / f"rows{suffix}"
    path.write_bytes(OLD)
    monkeypatch.setattr(numera.io, "_bar", lambda *_: Bar())
    with pytest.raises(KeyboardInterrupt) as kept:  # the traceback has every variable
        numera.write(numera.to_host(pa.table(ROWS)), path)
    assert path.read_bytes() == OLD and os.listdir(tmp_path) == [path.name]
    del kept


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
        with pytest.raises(OSError, match=f"^cannot write .*/{name}: it is not a regular file$"):
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


def test_a_folder_that_cannot_be_written_is_an_error_that_names_the_file():
    with pytest.raises(OSError) as caught:
        numera.write(numera.to_host(pa.table(ROWS)), "/proc/rows.csv")
    assert caught.value.errno and caught.value.filename == "/proc/rows.csv"


def test_tables_without_rows_are_written(tmp_path):
    path = tmp_path / "rows.arrow"
    empty = numera.to_host(pa.table(ROWS).slice(0, 0))
    numera.write(empty, path)
    assert columns(numera.read(path)) == {"n": [], "text": [], "flag": []}


def test_arrow_files_have_batches_of_65536_rows(tmp_path):
    path = tmp_path / "rows.arrow"
    rows = [[i] for i in range(140_000)]
    numera.write(numera.to_host(pa.table({"n": rows})), path)
    with pa.ipc.open_file(path) as file:
        batches = [file.get_batch(i) for i in range(file.num_record_batches)]
    assert [batch.num_rows for batch in batches] == [65_536, 65_536, 8_928]
    assert pa.Table.from_batches(batches).to_pydict() == {"n": rows}


def test_the_suffix_is_looked_at_first(tmp_path):
    with pytest.raises(ValueError, match="^cannot write .*/rows.txt: the name ends in none of "):
        numera.write(None, tmp_path / "missing" / "rows.txt")


@pytest.mark.parametrize("path, compression, codec", [
    ("rows.parquet", None, "ZSTD"), ("rows.parquet", "none", "UNCOMPRESSED"),
    ("rows.parquet", "snappy", "SNAPPY"), ("rows.parquet", "gzip:9", "GZIP"),
])
def test_parquet_is_compressed_as_it_is_asked_for(tmp_path, path, compression, codec):
    numera.write(numera.to_host(pa.table(ROWS)), tmp_path / path, compression=compression)
    assert pq.read_metadata(tmp_path / path).row_group(0).column(0).compression == codec
    assert columns(numera.read(tmp_path / path)) == ROWS


def test_a_compression_that_a_format_does_not_have_is_refused(tmp_path):
    path = tmp_path / "rows.arrow"
    with pytest.raises(ValueError) as caught:
        numera.write(numera.to_host(pa.table(ROWS)), path, compression="snappy")
    assert str(caught.value) == (f"cannot write {path}: compression: found 'snappy', "
                                 "expected one of none, zstd, lz4")
    assert os.listdir(tmp_path) == []


@pytest.mark.parametrize("name", ["rows", "rows.txt", "rows.PARQUET", "rows.arrow.gz", "-"])
def test_other_names_are_not_written(tmp_path, monkeypatch, name):
    monkeypatch.chdir(tmp_path)
    with pytest.raises(ValueError, match="^cannot write (.*: the name ends in none of .parquet, |"
                                         "standard output: its format is not given$)"):
        numera.write(numera.to_host(pa.table(ROWS)), name)
    assert os.listdir(tmp_path) == []


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
