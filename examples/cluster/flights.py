"""Partitioned flight data, and host functions for it."""

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
    """Writes the flights by month as month=N/part-COPY.parquet. Returns the number of rows.

    The column "row" numbers the rows of all copies, because a cluster returns rows in any order.
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
    """Miles per hour in the air; null where the air time is null."""
    columns = columns_of(table)
    seconds = columns["air_time"]["Data"].numpy()
    miles = columns["distance_miles"]["Data"].numpy()
    # Under a null the air time may be any number, zero included.
    with numpy.errstate(divide="ignore", invalid="ignore"):
        speed = miles * 3600.0 / seconds
    return table_of({"row": columns["row"],
                     "miles_an_hour": _numbers(speed, columns["air_time"]["Valid"])})


class CarrierDelay:
    """The arrival delay of a flight minus the mean delay of its carrier, in minutes.

    The means are the state: each worker computes them once, from the whole file.
    """

    def __init__(self):
        flights = pyarrow.parquet.read_table(DATA, columns=["carrier", "arrival_delay"])
        text = flights["carrier"].cast(pyarrow.string())
        means = flights.set_column(0, "carrier", text).group_by("carrier").aggregate(
            [("arrival_delay", "mean")])
        self._means = dict(zip(means["carrier"].to_pylist(),
                               means["arrival_delay_mean"].to_pylist()))

    def __call__(self, table: numera.HostArray) -> numera.HostArray:
        columns = columns_of(table)
        carriers = columns["carrier"]["Data"]
        means = numpy.array([self._means[name] for name in carriers["Categories"].to_python()])
        delay = columns["arrival_delay"]
        later = delay["Data"].numpy() - means[carriers["Values"].numpy()]
        return table_of({"row": columns["row"],
                         "minutes_later": _numbers(later, delay["Valid"])})


def _numbers(values, valid):
    return {"ArrowType": "array", "Type": "double", "Data": host.numeric(values), "Valid": valid}
