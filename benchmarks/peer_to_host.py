"""What each peer does for the rows towards the host."""

import functools

# First: it says how many threads NumPy may have, which is read when NumPy is loaded.
from peer_packages import Work, available, duckdb, nanoarrow, pandas, polars, scaled

import numpy as np
import peer_data as data
import pyarrow as pa


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


def numbers(quick):
    array = data.doubles(scaled(10**7, quick))
    return _works(_chunked(array),
                  Work("pyarrow", "to_numpy().copy()", lambda: array.to_numpy().copy()),
                  pandas_dtype=float, polars_call=POLARS_NUMPY,
                  nanoarrow_work=("np.array(to_pysequence())",
                                  lambda values: np.array(values.to_pysequence())))


def numbers_with_nulls(quick):
    array = data.doubles_with_nulls(scaled(10**7, quick))
    return _works(_chunked(array),
                  Work("pyarrow", "to_numpy(zero_copy_only=False)",
                       lambda: array.to_numpy(zero_copy_only=False), "copies; nulls become NaN"),
                  pandas_dtype=float, polars_call=POLARS_NUMPY,
                  nanoarrow_work=("to_pysequence(handle_nulls=nulls_as_sentinel())",
                                  lambda values: values.to_pysequence(
                                      handle_nulls=nanoarrow.nulls_as_sentinel())))


def numbers_in_chunks(quick):
    column = data.in_chunks(data.doubles(scaled(10**7, quick)), 1000)
    return _works(column, Work("pyarrow", "ChunkedArray.to_numpy()", column.to_numpy),
                  pandas_dtype=float, polars_call=POLARS_NUMPY,
                  nanoarrow_work=("to_pysequence()", lambda values: values.to_pysequence()))


def booleans(make):
    def works(quick):
        column = _chunked(make(scaled(10**7, quick)))
        return _works(column, Work("pyarrow", "ChunkedArray.combine_chunks()",
                                   column.combine_chunks, "copies the bits; Arrow stays"),
                      polars_call=POLARS_NUMPY)
    return works


def plain(make):
    """Numbers with a NumPy type."""
    def works(quick):
        array = make(scaled(10**7, quick))
        return _works(_chunked(array),
                      Work("pyarrow", "to_numpy(zero_copy_only=False).copy()",
                           lambda: array.to_numpy(zero_copy_only=False).copy()),
                      polars_call=POLARS_NUMPY)
    return works


def texts(make, elements):
    def works(quick):
        array = make(scaled(elements, quick))
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


def byte_strings(quick):
    array = data.byte_strings(scaled(10**6, quick))
    return _works(_chunked(array),
                  Work("pyarrow", "to_numpy(zero_copy_only=False)",
                       lambda: array.to_numpy(zero_copy_only=False), "copies into Python objects"),
                  pandas_dtype=object, polars_call=POLARS_NUMPY, nanoarrow_work=NANOARROW_LIST)


def categories(chunks):
    def works(quick):
        column = data.categories(scaled(5 * 10**6, quick), chunks)
        single = column.chunk(0) if chunks == 1 else column
        return available([
            Work("pyarrow", "to_pandas()", lambda: single.to_pandas()),
            Work("Polars", "from_arrow()", lambda: polars.from_arrow(column)),
        ]) + _works(column, None)[1:]
    return works


def lists(quick):
    array = data.lists(scaled(10**6, quick))
    return _works(_chunked(array),
                  Work("pyarrow", "to_numpy(zero_copy_only=False)",
                       lambda: array.to_numpy(zero_copy_only=False),
                       "an object each; the values are not copied"),
                  polars_call=POLARS_NUMPY, nanoarrow_work=NANOARROW_LIST)


def structs(quick):
    array = data.structs(scaled(10**6, quick))
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


def table_works(table):
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


def one_call(quick):
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
