"""The packages that the benchmarks compare with, and what a peer does for a row.

A `Work` is a peer's closest equivalent to the conversion of the row: from Arrow data to values that
a user can use without Arrow, or back. Its note says what it copies and what it leaves out. A package
that cannot be imported is None.
"""

import dataclasses
import importlib
import os
import sys
from typing import Any, Callable

# One thread per package. The packages read these variables when they are loaded.
os.environ["POLARS_MAX_THREADS"] = "1"
for variable in ("OMP_NUM_THREADS", "OPENBLAS_NUM_THREADS", "MKL_NUM_THREADS"):
    os.environ[variable] = "1"

import pyarrow as pa


def _optional(name):
    try:
        return importlib.import_module(name)
    except ImportError as error:
        print(f"peers: {name} cannot be imported ({error}); its figures are null", file=sys.stderr)
        return None


pandas = _optional("pandas")
polars = _optional("polars")
duckdb = _optional("duckdb")
nanoarrow = _optional("nanoarrow")

pa.set_cpu_count(1)
pa.set_io_thread_count(1)

COPIES = "copies"
MAKES_ARROW = "makes Arrow values"


@dataclasses.dataclass
class Work:
    peer: str
    call: str  # as a reader would write it
    run: Callable[[Any], Any]
    note: str = COPIES  # what is copied and what is not
    fresh: Callable[[], Any] | None = None  # the input, made anew before every measurement


@dataclasses.dataclass
class Row:
    name: str
    peer: str  # the peer that the performance targets name
    make: Callable[[bool], list[Work]]  # with `quick`, for a hundredth of the elements
    # Elements, bytes and our own work, for rows that Python runs instead of the C++ program.
    own: Callable[[bool], tuple[int, int, Work]] | None = None


def available(works):
    missing = [name for name, package in
               {"pandas": pandas, "Polars": polars, "nanoarrow": nanoarrow}.items()
               if package is None]
    return [work for work in works if work.peer not in missing]


def scaled(elements, quick):
    return elements // 100 if quick else elements
