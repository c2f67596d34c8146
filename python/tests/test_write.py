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
