"""What each peer does for a row of the benchmarks.

A `Work` is a peer's closest equivalent to the conversion of the row: from Arrow data to values that
a user can use without Arrow, or back. Its note says what it copies and what it leaves out.
"""

import dataclasses
import functools
import importlib
import os
import pathlib
import sys
from typing import Any, Callable

# One thread per package. The packages read these variables when they are loaded.
os.environ["POLARS_MAX_THREADS"] = "1"
for variable in ("OMP_NUM_THREADS", "OPENBLAS_NUM_THREADS", "MKL_NUM_THREADS"):
    os.environ[variable] = "1"

import numpy as np
import pyarrow as pa

import peer_data as data


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

EXAMPLES = pathlib.Path(__file__).resolve().parent.parent / "examples" / "data"
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


def _available(works):
    missing = [name for name, package in
               {"pandas": pandas, "Polars": polars, "nanoarrow": nanoarrow}.items()
               if package is None]
    return [work for work in works if work.peer not in missing]


def _count(elements, quick):
    return elements // 100 if quick else elements


def _works(column, pyarrow_work, *, pandas_dtype=None, polars_call=None, nanoarrow_work=None):
    """The usual export of one column from each library. Works that fail are left out later."""
    works = [pyarrow_work]
    if pandas is not None and pandas_dtype is not None:
        series = pandas.Series(pandas.arrays.ArrowExtensionArray(column))
        works.append(Work("pandas", f"Series.to_numpy(dtype={pandas_dtype.__name__}, copy=True)",
                          lambda: series.to_numpy(
                              dtype=pandas_dtype, copy=True,
                              **({"na_value": np.nan} if pandas_dtype is float else {}))))
    if polars is not None and polars_call is not None:
        frame = polars.from_arrow(column)
        call, function = polars_call
        works.append(Work("Polars", call, functools.partial(function, frame)))
    if duckdb is not None:
        connection = duckdb.connect(config={"threads": 1})
        connection.register("data", pa.table({"x": column}))
        works.append(Work("DuckDB", "select x: fetchnumpy()",
                          lambda: connection.execute("select x from data").fetchnumpy()))
    if nanoarrow is not None and nanoarrow_work is not None:
        array = nanoarrow.Array(column)
        call, function = nanoarrow_work
        works.append(Work("nanoarrow", call, functools.partial(function, array)))
    return works


def _chunked(array):
    return array if isinstance(array, pa.ChunkedArray) else pa.chunked_array([array])


POLARS_NUMPY = ("Series.to_numpy(writable=True)", lambda series: series.to_numpy(writable=True))
NANOARROW_LIST = ("Array.to_pylist()", lambda array: array.to_pylist())


def _numbers(quick):
    array = data.doubles(_count(10**7, quick))
    return _works(_chunked(array),
                  Work("pyarrow", "to_numpy().copy()", lambda: array.to_numpy().copy()),
                  pandas_dtype=float, polars_call=POLARS_NUMPY,
                  nanoarrow_work=("np.array(to_pysequence())",
                                  lambda values: np.array(values.to_pysequence())))


def _numbers_with_nulls(quick):
    array = data.doubles_with_nulls(_count(10**7, quick))
    return _works(_chunked(array),
                  Work("pyarrow", "to_numpy(zero_copy_only=False)",
                       lambda: array.to_numpy(zero_copy_only=False), "copies; nulls become NaN"),
                  pandas_dtype=float, polars_call=POLARS_NUMPY,
                  nanoarrow_work=("to_pysequence(handle_nulls=nulls_as_sentinel())",
                                  lambda values: values.to_pysequence(
                                      handle_nulls=nanoarrow.nulls_as_sentinel())))


def _numbers_in_chunks(quick):
    column = data.in_chunks(data.doubles(_count(10**7, quick)), 1000)
    return _works(column, Work("pyarrow", "ChunkedArray.to_numpy()", column.to_numpy),
                  pandas_dtype=float, polars_call=POLARS_NUMPY,
                  nanoarrow_work=("to_pysequence()", lambda values: values.to_pysequence()))


def _booleans(make):
    def works(quick):
        column = _chunked(make(_count(10**7, quick)))
        return _works(column, Work("pyarrow", "ChunkedArray.combine_chunks()",
                                   column.combine_chunks, "copies the bits; Arrow stays"),
                      polars_call=POLARS_NUMPY)
    return works


def _plain(make):
    """Numbers with a NumPy type."""
    def works(quick):
        array = make(_count(10**7, quick))
        return _works(_chunked(array),
                      Work("pyarrow", "to_numpy(zero_copy_only=False).copy()",
                           lambda: array.to_numpy(zero_copy_only=False).copy()),
                      polars_call=POLARS_NUMPY)
    return works


def _texts(make, elements):
    def works(quick):
        array = make(_count(elements, quick))
        all_works = _works(
            _chunked(array),
            Work("pyarrow", "to_numpy(zero_copy_only=False)",
                 lambda: array.to_numpy(zero_copy_only=False), "copies into Python objects"),
            pandas_dtype=object, polars_call=POLARS_NUMPY, nanoarrow_work=NANOARROW_LIST)
        if polars is not None:
            all_works.append(Work("Polars (no transcoding)", "from_arrow()",
                                  lambda: polars.from_arrow(array),
                                  "makes views of 16 bytes; longer texts are not copied"))
        return all_works
    return works


def _bytes(quick):
    array = data.byte_strings(_count(10**6, quick))
    return _works(_chunked(array),
                  Work("pyarrow", "to_numpy(zero_copy_only=False)",
                       lambda: array.to_numpy(zero_copy_only=False), "copies into Python objects"),
                  pandas_dtype=object, polars_call=POLARS_NUMPY, nanoarrow_work=NANOARROW_LIST)


def _categories(chunks):
    def works(quick):
        column = data.categories(_count(5 * 10**6, quick), chunks)
        single = column.chunk(0) if chunks == 1 else column
        return _available([
            Work("pyarrow", "to_pandas()", lambda: single.to_pandas()),
            Work("Polars", "from_arrow()", lambda: polars.from_arrow(column)),
        ]) + _works(column, None)[1:]
    return works


def _lists(quick):
    array = data.lists(_count(10**6, quick))
    return _works(_chunked(array),
                  Work("pyarrow", "to_numpy(zero_copy_only=False)",
                       lambda: array.to_numpy(zero_copy_only=False),
                       "an object each; the values are not copied"),
                  polars_call=POLARS_NUMPY, nanoarrow_work=NANOARROW_LIST)


def _structs(quick):
    array = data.structs(_count(10**6, quick))
    numbers, texts = array.flatten()
    works = [Work("pyarrow", "to_numpy() by field",
                  lambda: (numbers.to_numpy().copy(), texts.to_numpy(zero_copy_only=False)),
                  "copies; texts into Python objects")]
    if polars is not None:
        fields = polars.from_arrow(array).struct.unnest()
        works.append(Work("Polars", "to_numpy() by field",
                          lambda: [field.to_numpy(writable=True) for field in fields]))
    if duckdb is not None:
        connection = duckdb.connect(config={"threads": 1})
        connection.register("data", pa.table({"x": array}))
        query = "select x.number, x.text from data"
        works.append(Work("DuckDB", "fetchnumpy() by field",
                          lambda: connection.execute(query).fetchnumpy()))
    if nanoarrow is not None:
        values = nanoarrow.Array(array)
        works.append(Work("nanoarrow", "Array.to_pylist()", values.to_pylist))
    return works


def _table_works(table):
    works = [Work("pyarrow", "Table.to_pandas()", lambda: table.to_pandas(use_threads=False),
                  "copies numbers; texts keep Arrow's memory")]
    if polars is not None:
        frame = polars.from_arrow(table)
        works.append(Work("Polars", "to_numpy() by column",
                          lambda: [series.to_numpy(writable=True) for series in frame]))
    if duckdb is not None:
        connection = duckdb.connect(config={"threads": 1})
        connection.register("data", table)
        works.append(Work("DuckDB", "select *: fetchnumpy()",
                          lambda: connection.execute("select * from data").fetchnumpy()))
    return works


def _one_call(quick):
    array = data.doubles(10)
    works = [Work("pyarrow", "to_numpy()", array.to_numpy, "does not copy")]
    works.append(Work("pyarrow (copy)", "to_numpy().copy()", lambda: array.to_numpy().copy()))
    if polars is not None:
        series = polars.from_arrow(array)
        works.append(Work("Polars", POLARS_NUMPY[0], lambda: series.to_numpy(writable=True)))
    if nanoarrow is not None:
        values = nanoarrow.Array(array)
        works.append(Work("nanoarrow", "to_pysequence()", values.to_pysequence, "does not copy"))
    return works


def _wrapped(values):
    return pa.Array.from_buffers(pa.float64(), len(values), [None, pa.py_buffer(values)])


def _wrap_one(elements):
    def works(quick):
        values = np.arange(_count(elements, quick and elements > 10)) / 2
        all_works = [Work("pyarrow", "Array.from_buffers(py_buffer())", lambda: _wrapped(values),
                          "does not copy, as we do not")]
        if nanoarrow is not None:
            all_works.append(Work("nanoarrow", "c_array_from_buffers()",
                                  lambda: nanoarrow.c_array_from_buffers(
                                      nanoarrow.float64(), len(values), [None, values]),
                                  "does not copy, as we do not"))
        return all_works
    return works


def _wrap_table(quick):
    values = [np.arange(1000) / 2 + i for i in range(1000)]
    names = [f"column {i}" for i in range(1000)]
    works = [Work("pyarrow", "Table.from_arrays(Array.from_buffers() each)",
                  lambda: pa.Table.from_arrays([_wrapped(column) for column in values], names),
                  "does not copy, as we do not")]
    if polars is not None:
        works.append(Work("Polars", "DataFrame(dict)",
                          lambda: polars.DataFrame(dict(zip(names, values)))))
    return works


def _gateway(text, elements):
    """Texts from Python objects. Python caches the UTF-8 of a text, so each measurement gets new
    texts."""
    def works(quick):
        count = _count(elements, quick)

        def texts():
            return [text.format(i) for i in range(count)]

        def objects():
            return np.array(texts(), dtype=object)

        return _available([
            Work("nanoarrow", "c_array(list)",
                 lambda values: nanoarrow.c_array(values, nanoarrow.string()), MAKES_ARROW, texts),
            Work("pyarrow", "array(objects)", lambda values: pa.array(values, pa.string()),
                 MAKES_ARROW, objects),
            Work("Polars", "Series(list)", lambda values: polars.Series(values), MAKES_ARROW,
                 texts),
            Work("pandas", "array(objects, dtype=str)",
                 lambda values: pandas.array(values, dtype="str"), MAKES_ARROW, objects),
        ])
    return works


def _file(name):
    return Row(f"files/{name}", "pyarrow", lambda quick: _table_works(data.example(EXAMPLES / name)))


ROWS = [
    Row("to_host/float64", "pyarrow", _numbers),
    Row("to_host/float64_nulls", "pyarrow", _numbers_with_nulls),
    Row("to_host/float64_1000_chunks", "pyarrow", _numbers_in_chunks),
    Row("to_host/bool_aligned", "pyarrow", _booleans(data.booleans)),
    Row("to_host/bool_unaligned", "pyarrow", _booleans(data.odd_chunks_of_booleans)),
    Row("to_host/date", "pyarrow", _plain(data.dates)),
    Row("to_host/timestamp", "pyarrow", _plain(data.timestamps)),
    Row("to_host/duration", "pyarrow", _plain(data.durations)),
    Row("to_host/text_ascii", "pyarrow", _texts(data.ascii_texts, 5 * 10**6)),
    Row("to_host/text_mixed", "pyarrow", _texts(data.mixed_texts, 10**6)),
    Row("to_host/binary", "pyarrow", _bytes),
    Row("to_host/dictionary", "pyarrow", _categories(1)),
    Row("to_host/dictionary_20_chunks", "pyarrow", _categories(20)),
    Row("to_host/list", "pyarrow", _lists),
    Row("to_host/struct", "pyarrow", _structs),
    Row("to_host/table_1000_columns", "pyarrow", lambda quick: _table_works(data.table(1000))),
    Row("to_host/one_call", "pyarrow", _one_call),
    Row("to_arrow/one_call", "pyarrow", _wrap_one(10)),
    Row("to_arrow/one_call_1e7", "pyarrow", _wrap_one(10**7)),
    Row("to_arrow/table_1000_columns", "pyarrow", _wrap_table),
    Row("gateway/text_ascii", "nanoarrow", _gateway("item {:07d}", 2 * 10**6)),
    Row("gateway/text_mixed", "pyarrow", _gateway("Zürich 東京 Αθήνα {:03d}", 5 * 10**5)),
    _file("penguins.parquet"),
    _file("flights.parquet"),
    _file("cities.parquet"),
    _file("countries.arrow"),
]
