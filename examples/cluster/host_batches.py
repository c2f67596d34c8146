"""Runs host functions on the batches of Ray Data: host table in, host table out."""

import pathlib
from collections.abc import Callable

import pyarrow
import pyarrow.parquet
import ray.data

import numera
from numera import host

HostFunction = Callable[[numera.HostArray], numera.HostArray]

def call_on_host(function: HostFunction, batch: pyarrow.Table) -> pyarrow.Table:
    """Converts batch to a host table, calls function on it, and converts the result to Arrow.

    The chunks of the batch are joined first, so that each host column is one array.
    """
    result = function(numera.to_host(batch.combine_chunks()))
    return numera.to_arrow(result)


class HostActor:
    """Makes a host function once per worker. Its state lives as long as the worker."""

    def __init__(self, make_function: Callable[[], HostFunction]):
        self._function = make_function()

    def __call__(self, batch: pyarrow.Table) -> pyarrow.Table:
        return call_on_host(self._function, batch)


def columns_of(table: numera.HostArray) -> dict[str, numera.HostArray]:
    """The encoded columns of a host table, by name."""
    return {name.text: column for name, column in zip(table["Names"], table["Columns"])}


def table_of(columns: dict[str, object]) -> numera.HostArray:
    """A host table of encoded columns, by name. The table shares their memory."""
    return host.struct({
        "ArrowType": "table",
        "Columns": host.struct([_fields(column) for column in columns.values()]),
        "Names": host.cell(list(columns)),
    })


def _fields(column):
    return {name: column[name] for name in ("ArrowType", "Type", "Data", "Valid")}


def read(folder: str, columns: list[str]) -> ray.data.Dataset:
    """Reads columns of the Parquet files of a folder, one block per file. Workers share the blocks.

    Ray's own reader joins small files into one block, which a single worker would process.
    """
    def read_file(paths: pyarrow.Table) -> pyarrow.Table:
        return pyarrow.parquet.ParquetFile(paths["path"][0].as_py()).read(columns)

    paths = sorted(map(str, pathlib.Path(folder).rglob("*.parquet")))
    files = ray.data.from_items([{"path": path} for path in paths],
                                override_num_blocks=len(paths))
    # A num_cpus other than the host function's keeps Ray from fusing the two steps. Fused, one task
    # would get as many paths as a batch has rows.
    return files.map_batches(read_file, batch_format="pyarrow", batch_size=1, num_cpus=0.5)


def map_tasks(dataset: ray.data.Dataset, function: HostFunction, batch_rows: int,
              workers: int) -> ray.data.Dataset:
    """Runs function in tasks of any worker process. function keeps no state between batches."""
    return dataset.map_batches(lambda batch: call_on_host(function, batch),
                               batch_format="pyarrow", batch_size=batch_rows,
                               num_cpus=1,
                               compute=ray.data.TaskPoolStrategy(size=workers))


def map_actors(dataset: ray.data.Dataset, make_function: Callable[[], HostFunction],
               batch_rows: int, workers: int) -> ray.data.Dataset:
    """Runs the function that make_function makes, in `workers` workers.

    Each worker makes it once when it starts, also after a restart.
    """
    return dataset.map_batches(HostActor, fn_constructor_args=(make_function,),
                               batch_format="pyarrow", batch_size=batch_rows,
                               num_cpus=1,
                               compute=ray.data.ActorPoolStrategy(size=workers),
                               max_restarts=-1, max_task_retries=-1)
