"""Folders that are divided by the values of columns."""

import os

import numera
import pyarrow as pa
import pyarrow.dataset
import pytest
from table_files import columns

TABLE = {"n": [1, 2, 3, 4], "year": [2024, 2023, 2024, 2024],
         "place": ["here", None, "a/b", "here"]}


def files_in(folder):
    return sorted(os.path.relpath(os.path.join(parent, name), folder)
                  for parent, _, names in os.walk(folder) for name in names)


def write(folder, *keys, **options):
    numera.write(numera.to_host(pa.table(TABLE)), folder, partition_by=keys, **options)


def test_the_values_of_columns_name_folders(tmp_path):
    write(tmp_path / "rows", "year", "place")
    assert files_in(tmp_path) == [
        "rows/year=2023/place=__HIVE_DEFAULT_PARTITION__/part-0.parquet",
        "rows/year=2024/place=a%2Fb/part-0.parquet",
        "rows/year=2024/place=here/part-0.parquet",
    ]


def test_partitions_are_read_again(tmp_path):
    write(tmp_path / "rows", "year", "place")
    assert columns(numera.read(tmp_path / "rows")) == {
        "n": [2, 3, 1, 4], "year": [2023, 2024, 2024, 2024],
        "place": [None, "a/b", "here", "here"]}


def test_others_read_partitions(tmp_path):
    write(tmp_path / "rows", "year")
    table = pa.dataset.dataset(tmp_path / "rows", partitioning="hive").to_table()
    assert table.sort_by("n")["year"].to_pylist() == [2024, 2023, 2024, 2024]


def test_the_end_of_the_name_and_the_options_say_the_format(tmp_path):
    write(tmp_path / "rows.csv.gz", "year", "place", csv_delimiter=";")
    assert files_in(tmp_path / "rows.csv.gz")[0].endswith("/part-0.csv.gz")
    assert columns(numera.read(tmp_path / "rows.csv.gz", ["n"], csv_delimiter=";")) == {
        "n": [2, 3, 1, 4]}


@pytest.mark.parametrize("keys, error, message", [
    ("year", TypeError, "partition_by: found a text, expected a list of texts."),
    ([1], TypeError, "partition_by: found int, expected a text."),
    (["x"], pa.ArrowInvalid, "cannot write {}: there is no column 'x'"),
    (["year", "year"], pa.ArrowInvalid, "cannot write {}: column 'year' is asked for twice"),
    (["n", "year", "place"], pa.ArrowInvalid,
     "cannot write {}: no column is left beside the keys"),
])
def test_other_keys_are_refused_and_leave_nothing(tmp_path, keys, error, message):
    folder = tmp_path / "rows"
    with pytest.raises(error) as caught:
        numera.write(numera.to_host(pa.table(TABLE)), folder, partition_by=keys)
    assert str(caught.value) == message.format(folder)
    assert os.listdir(tmp_path) == []


def test_a_folder_with_files_is_not_replaced(tmp_path):
    (tmp_path / "rows").mkdir()
    (tmp_path / "rows" / "old").write_text("old")
    with pytest.raises(OSError) as caught:
        write(tmp_path / "rows", "year")
    assert str(caught.value) == f"cannot write {tmp_path}/rows: it exists and is no empty folder"
    assert files_in(tmp_path) == ["rows/old"]


def test_a_failure_in_the_middle_leaves_no_folder(tmp_path):
    late = pa.array([0] * 200_000 + [2**40], pa.timestamp("s"))  # after the year 32767
    table = pa.table({"year": pa.array([1] * 200_001), "t": late})
    with pytest.raises(pa.ArrowInvalid):
        numera.write(numera.to_host(table), tmp_path / "rows.csv", partition_by=["year"])
    assert os.listdir(tmp_path) == []
