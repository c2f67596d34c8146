"""Partitioned flights, and a host function over them."""

import pathlib

import numpy
import pyarrow
import pyarrow.compute
import pyarrow.parquet

import numera
from host_batches import columns_of, table_of
from numera import host

DATA = pathlib.Path(__file__).resolve().parent.parent / "data" / "flights.parquet"
COLUMNS = ["row", "carrier", "arrival_delay", "air_time", "distance_miles"]


def write_partitions(folder: pathlib.Path, copies: int = 1) -> int:
    """Writes the flights by month as month=N/part-COPY.parquet; returns how many rows these are.

    "row" numbers them through all copies, since a cluster returns rows in no order.
    """
    table = pyarrow.parquet.read_table(DATA)
    months = pyarrow.compute.month(table["date"])
    for copy in range(copies):
        rows = pyarrow.array(numpy.arange(len(table), dtype=numpy.int64) + copy * len(table))
        numbered = table.append_column("row", rows)
        for month in range(1, 13):
            path = folder / f"month={month}" / f"part-{copy}.parquet"
            path.parent.mkdir(parents=True, exist_ok=True)
            pyarrow.parquet.write_table(
                numbered.filter(pyarrow.compute.equal(months, month)), path)
    return copies * len(table)


def ground_speed(table: numera.HostArray) -> numera.HostArray:
    """Miles an hour in the air; null where the time in the air is null."""
    columns = columns_of(table)
    seconds = columns["air_time"]["Data"].numpy()
    miles = columns["distance_miles"]["Data"].numpy()
    # Under a null the time is any number, zero as well.
    with numpy.errstate(divide="ignore", invalid="ignore"):
        speed = miles * 3600.0 / seconds
    return table_of({"row": columns["row"],
                     "miles_an_hour": _numbers(speed, columns["air_time"]["Valid"])})


def _numbers(values, valid):
    return {"ArrowType": "array", "Type": "double", "Data": host.numeric(values), "Valid": valid}
