"""Host functions over the batches of Ray Data: host table in, host table out."""

from collections.abc import Callable

import pyarrow
import ray.data

import numera
from numera import host

HostFunction = Callable[[numera.HostArray], numera.HostArray]

# A reader and a worker share a core, so that reading never waits for a core that no worker gives up.
READER_CORES = 0.25
WORKER_CORES = 0.75


def call_on_host(function: HostFunction, batch: pyarrow.Table) -> pyarrow.Table:
    """The Arrow table of what function makes of the host table of batch.

    The chunks of a batch are joined first: a host column of one chunk is one array.
    """
    result = function(numera.to_host(batch.combine_chunks()))
    return numera.to_arrow(numera.encode(result))


def columns_of(table: numera.HostArray) -> dict[str, numera.HostArray]:
    """The encoded columns of a host table by name."""
    return {name.text: column for name, column in zip(table["Names"], table["Columns"])}


def table_of(columns: dict[str, object]) -> numera.HostArray:
    """A host table of encoded columns by name, which share their memory with it."""
    return host.struct({
        "ArrowType": "table",
        "Columns": host.struct([_fields(column) for column in columns.values()]),
        "Names": host.cell(list(columns)),
    })


def _fields(column):
    return {name: column[name] for name in ("ArrowType", "Type", "Data", "Valid")}


def read(folder: str, columns: list[str], blocks: int) -> ray.data.Dataset:
    """The columns of the Parquet files of a folder, in so many blocks: what workers share out."""
    return ray.data.read_parquet(folder, override_num_blocks=blocks,
                                 num_cpus=READER_CORES).select_columns(columns)


def map_tasks(dataset: ray.data.Dataset, function: HostFunction, batch_rows: int,
              workers: int) -> ray.data.Dataset:
    """function, which keeps nothing between batches, in tasks of any worker process."""
    return dataset.map_batches(lambda batch: call_on_host(function, batch),
                               batch_format="pyarrow", batch_size=batch_rows,
                               num_cpus=WORKER_CORES,
                               compute=ray.data.TaskPoolStrategy(size=workers))
