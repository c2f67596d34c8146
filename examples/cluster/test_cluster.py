"""What two workers make of partitioned data is what one process makes of it."""

import cluster
import flights
import host_batches
import pyarrow.dataset
import pytest

BATCH_ROWS = 10_000
WORKERS = 2


@pytest.fixture(scope="module")
def folder(tmp_path_factory):
    result = tmp_path_factory.mktemp("flights")
    assert flights.write_partitions(result) == 336_776
    return str(result)


@pytest.fixture(scope="module")
def dataset(folder):
    with cluster.local_cluster(WORKERS):
        yield host_batches.read(folder, flights.COLUMNS, blocks=12)


def in_one_process(folder, function):
    table = pyarrow.dataset.dataset(folder, partitioning="hive").to_table(flights.COLUMNS)
    return host_batches.call_on_host(function, table).sort_by("row")


def collected(dataset):
    tables = [pyarrow.table(batch)
              for batch in dataset.iter_batches(batch_format="pyarrow", batch_size=None)]
    return pyarrow.concat_tables(tables).sort_by("row").combine_chunks()


def assert_equal(actual, expected):
    expected = expected.combine_chunks()
    assert actual.num_rows == 336_776
    assert actual.schema.remove_metadata() == expected.schema.remove_metadata()
    assert actual.equals(expected)


def test_tasks_give_what_one_process_gives(folder, dataset):
    result = collected(
        host_batches.map_tasks(dataset, flights.ground_speed, BATCH_ROWS, WORKERS))
    assert result["miles_an_hour"].null_count == 9430
    assert result["miles_an_hour"][0].as_py() == 1400 * 60 / 227
    assert_equal(result, in_one_process(folder, flights.ground_speed))
