"""The native types of pandas, polars, DuckDB and nanoarrow, to the host and back."""

import datetime as dt
from decimal import Decimal

import duckdb
import encoded
import nanoarrow
import numera
import numpy as np
import pandas as pd
import polars as pl
import pyarrow as pa
import pytest
from polars.testing import assert_frame_equal

NOON = dt.datetime(2013, 1, 1, 12, 0, 0, 250_000)
DAY = dt.date(2013, 1, 1)
UTC = dt.timezone.utc


def held(frame):
    return encoded.columns(numera.to_host(frame, cast=True))


def back(frame):
    return numera.to_arrow(numera.make_readable(numera.to_host(frame, cast=True)))


PANDAS = {
    "int": (pd.array([1, None], dtype="Int8"), [1, None]),
    "float": (np.array([1.5, -0.5]), [1.5, -0.5]),
    "bool": (pd.array([True, None], dtype="boolean"), [True, None]),
    "text": (pd.array(["a", None], dtype="string"), ["a", None]),
    "category": (pd.Categorical(["b", None], categories=["a", "b"], ordered=True), ["b", None]),
    "time": (pd.to_datetime([NOON, None]).as_unit("us"), [NOON, None]),
    "zoned": (
        pd.to_datetime([NOON, None]).as_unit("ms").tz_localize("UTC").tz_convert("Europe/Paris"),
        [(NOON.replace(tzinfo=UTC), "Europe/Paris"), None],
    ),
    "span": (pd.to_timedelta([1, None], unit="s").as_unit("ms"), [1000, None]),
    "day": ([DAY, None], [DAY, None]),
    "bytes": ([b"a\0", None], [b"a\0", None]),
    "list": ([[1, 2], None], [[1, 2], None]),
    "dict": ([{"a": 1}, None], [{"a": 1}, None]),
    "decimal": ([Decimal("1.25"), None], [1.25, None]),
}


@pytest.mark.parametrize("name", PANDAS)
def test_the_host_holds_columns_of_pandas(name):
    values, expected = PANDAS[name]
    assert held(pd.DataFrame({name: values})) == {name: expected}


@pytest.mark.parametrize("name", ["int", "float", "bool", "text", "category", "time", "zoned"])
def test_columns_of_pandas_come_back(name):
    frame = pd.DataFrame({name: PANDAS[name][0]})
    assert back(frame).to_pandas()[name].astype(frame[name].dtype).equals(frame[name])


POLARS = {
    "int": (pl.Series([1, None], dtype=pl.UInt16), [1, None]),
    "float": (pl.Series([1.5, None], dtype=pl.Float32), [1.5, None]),
    "bool": (pl.Series([True, None]), [True, None]),
    "text": (pl.Series(["жa long text that is no inline view", None]),
             ["жa long text that is no inline view", None]),
    "bytes": (pl.Series([b"\0\xff", None]), [b"\0\xff", None]),
    "category": (pl.Series(["b", None], dtype=pl.Categorical), ["b", None]),
    "enum": (pl.Series(["b", None], dtype=pl.Enum(["a", "b"])), ["b", None]),
    "date": (pl.Series([DAY, None]), [DAY, None]),
    "time of day": (pl.Series([dt.time(12, 30), None]), [dt.time(12, 30), None]),
    "time": (pl.Series([NOON, None], dtype=pl.Datetime("us")), [NOON, None]),
    "zoned": (pl.Series([NOON, None], dtype=pl.Datetime("ms", "UTC")),
              [(NOON.replace(tzinfo=UTC), "UTC"), None]),
    "span": (pl.Series([dt.timedelta(seconds=1), None], dtype=pl.Duration("ms")), [1000, None]),
    "decimal": (pl.Series([Decimal("1.25"), None]), [1.25, None]),
    "list": (pl.Series([["a", None], None]), [["a", None], None]),
    "array": (pl.Series([[1, 2], None], dtype=pl.Array(pl.Int8, 2)), [[1, 2], None]),
    "struct": (pl.Series([{"a": 1, "b": ["x"]}, {"a": None, "b": None}]),
               [{"a": 1, "b": ["x"]}, {"a": None, "b": None}]),
    "null": (pl.Series([None, None]), [None, None]),
}


@pytest.mark.parametrize("name", POLARS)
def test_the_host_holds_columns_of_polars(name):
    values, expected = POLARS[name]
    assert held(pl.DataFrame({name: values})) == {name: expected}


@pytest.mark.parametrize("name", ["int", "float", "bool", "text", "bytes", "time of day", "time",
                                  "zoned", "list", "struct"])
def test_columns_of_polars_come_back(name):
    frame = pl.DataFrame({name: POLARS[name][0]})
    assert_frame_equal(pl.DataFrame(back(frame)), frame)


def test_slices_and_chunks_of_polars_are_read():
    frame = pl.DataFrame({"n": [1, 2, 3], "t": ["a", None, "c"]})
    frame = pl.concat([frame, frame.slice(1)], rechunk=False).slice(2)
    assert held(frame) == {"n": [3, 2, 3], "t": ["c", None, "c"]}


DUCKDB = {
    "42::utinyint": 42,
    "1.5::float": 1.5,
    "true": True,
    "'ж'": "ж",
    "'\\x00\\xFF'::blob": b"\0\xff",
    "date '2013-01-01'": DAY,
    "time '12:30:00'": dt.time(12, 30),
    "timestamp '2013-01-01 12:00:00.25'": NOON,
    "1.25::decimal(9, 2)": 1.25,
    "['a', null]": ["a", None],
    "{'a': 1::tinyint, 'b': ['x']}": {"a": 1, "b": ["x"]},
    "map(['k'], [1::tinyint])": [("k", 1)],
    "'b'::enum('a', 'b')": "b",
    "interval '1 month 2 days'": "P1M2D",
    "null::integer": None,
}


@pytest.mark.parametrize("expression", DUCKDB)
def test_the_host_holds_what_duckdb_computes(expression):
    assert held(duckdb.sql(f"select {expression} as x")) == {"x": [DUCKDB[expression]]}


def test_duckdb_computes_on_what_comes_back():
    table = back(pa.table({"n": [1, 2, None], "t": ["a", "b", "b"], "l": [[1], [2, 3], None]}))
    query = "select t, sum(n), sum(len(l)) from data group by t order by t"
    rows = duckdb.arrow(table).query("data", query).fetchall()
    assert rows == [("a", 1, 1), ("b", 2, 2)]


NANOARROW = {
    "int64": (nanoarrow.int64(), [1, None]),
    "double": (nanoarrow.float64(), [1.5, None]),
    "bool": (nanoarrow.bool_(), [True, None]),
    "text": (nanoarrow.string(), ["ж", None]),
    "bytes": (nanoarrow.binary(), [b"\0", None]),
}


@pytest.mark.parametrize("name", NANOARROW)
def test_arrays_of_nanoarrow_go_there_and_back(name):
    schema, values = NANOARROW[name]
    host = numera.to_host(nanoarrow.Array(values, schema))
    assert encoded.elements(host) == values
    assert nanoarrow.Array(numera.to_arrow(numera.make_readable(host))).to_pylist() == values


def test_slices_of_nanoarrow_are_read():
    whole = nanoarrow.Array(pa.array([None, 1, None, 3]).slice(1))
    assert encoded.elements(numera.to_host(whole)) == [1, None, 3]
