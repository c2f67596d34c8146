"""Two workers give the same result for partitioned data as one process."""

import contextlib
import os
import pathlib
import signal
import time

import cluster
import flights
import host_batches
import pyarrow.dataset
import pytest

BATCH_ROWS = 10_000
WORKERS = 2


class Noted:
    """A host function that writes one file per process it runs in to a folder.

    The first process waits for a second one. Otherwise it could finish all work before that starts.
    """

    def __init__(self, make_function, folder):
        self._function = make_function()
        self._folder = pathlib.Path(folder)

    def __call__(self, table):
        (self._folder / str(os.getpid())).touch()
        end = time.monotonic() + 30
        while len(list(self._folder.iterdir())) < 2 and time.monotonic() < end:
            time.sleep(0.05)
        return self._function(table)


class Killed:
    """A host function that kills its process at the second batch, but only once in all."""

    def __init__(self, make_function, marker):
        self._function = make_function()
        self._marker = marker
        self._batches = 0

    def __call__(self, table):
        self._batches += 1
        if self._batches == 2:
            kill_once(self._marker)
        return self._function(table)


def kill_once(marker):
    try:
        os.close(os.open(marker, os.O_CREAT | os.O_EXCL))
    except FileExistsError:
        return
    os.kill(os.getpid(), signal.SIGKILL)


@pytest.fixture(scope="module")
def folder(tmp_path_factory):
    result = tmp_path_factory.mktemp("flights")
    assert flights.write_partitions(result) == 336_776
    return str(result)


@pytest.fixture(scope="module")
def dataset(folder):
    with cluster.local_cluster(WORKERS):
        yield host_batches.read(folder, flights.COLUMNS)


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


def with_descendants(pid):
    """The ids of a process and of all its descendants."""
    children = pathlib.Path(f"/proc/{pid}/task").glob("*/children")
    started = " ".join(file.read_text() for file in children).split()
    return {pid}.union(*(with_descendants(int(child)) for child in started))


def listening_addresses(pids):
    """The addresses, in hexadecimal, at which the processes accept connections."""
    addresses = {}
    for table in ("tcp", "tcp6"):
        for line in pathlib.Path("/proc/net", table).read_text().splitlines()[1:]:
            _, local, _, state, *_, inode = line.split()[:10]
            if state == "0A":
                addresses[f"socket:[{inode}]"] = local.split(":")[0]
    found = []
    for pid in pids:
        with contextlib.suppress(FileNotFoundError):  # processes and files come and go
            for file in pathlib.Path(f"/proc/{pid}/fd").iterdir():
                found.append(addresses.get(os.readlink(file)))
    return [address for address in found if address is not None]


def carrier_delay():
    return flights.CarrierDelay()


def speed():
    return flights.ground_speed


def test_the_cluster_listens_to_this_machine_alone(dataset):
    found = listening_addresses(with_descendants(os.getpid()))
    assert len(found) >= 4  # driver, node, its store of state, workers
    assert set(found) <= {"0100007F", "0000000000000000FFFF00000100007F"}


def test_tasks_of_two_processes_give_what_one_process_gives(folder, dataset, tmp_path):
    result = collected(host_batches.map_tasks(
        dataset, Noted(speed, tmp_path), BATCH_ROWS, WORKERS))
    assert result["miles_an_hour"].null_count == 9430
    assert result["miles_an_hour"][0].as_py() == 1400 * 60 / 227
    assert len(list(tmp_path.iterdir())) >= 2
    assert_equal(result, in_one_process(folder, flights.ground_speed))


def test_two_actors_with_state_give_what_one_process_gives(folder, dataset, tmp_path):
    result = collected(host_batches.map_actors(
        dataset, lambda: Noted(carrier_delay, tmp_path), BATCH_ROWS, WORKERS))
    assert len(list(tmp_path.iterdir())) == 2
    assert_equal(result, in_one_process(folder, flights.CarrierDelay()))


def test_a_task_killed_in_the_middle_changes_nothing(folder, dataset, tmp_path):
    marker = tmp_path / "killed"
    result = collected(host_batches.map_tasks(
        dataset, Killed(speed, marker), BATCH_ROWS, WORKERS))
    assert marker.exists()
    assert_equal(result, in_one_process(folder, flights.ground_speed))


def test_an_actor_killed_in_the_middle_changes_nothing(folder, dataset, tmp_path):
    marker = tmp_path / "killed"
    result = collected(host_batches.map_actors(
        dataset, lambda: Killed(carrier_delay, marker), BATCH_ROWS, WORKERS))
    assert marker.exists()
    assert_equal(result, in_one_process(folder, flights.CarrierDelay()))
