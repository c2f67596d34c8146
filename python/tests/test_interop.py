"""Objects of other libraries, in and out. What they hold is compared by value."""

import duckdb
import nanoarrow
import numera
import pandas as pd
import polars as pl
import pyarrow as pa
import pytest

ROWS = {"n": [1, 2, None], "x": [1.5, None, 2.5], "t": ["a", None, "ж"]}


def columns(host):
    return numera.to_arrow(numera.encode(host)).to_pydict()


@pytest.mark.parametrize(
    "make",
    [
        lambda: pl.DataFrame(ROWS),
        lambda: pd.DataFrame(ROWS, dtype=object).convert_dtypes(),
        lambda: duckdb.arrow(pa.table(ROWS)),
        lambda: duckdb.sql("select * from (values (1, 1.5::double, 'a'), (2, null, null), (null, 2.5, 'ж')) as v(n, x, t)"),
        lambda: nanoarrow.ArrayStream(pa.table(ROWS)),
    ],
    ids=["polars", "pandas", "duckdb relation", "duckdb query", "nanoarrow"],
)
def test_tables_of_others_are_read(make):
    assert columns(numera.to_host(make(), cast=True)) == ROWS


@pytest.mark.parametrize(
    "make",
    [
        lambda: pl.Series([1, None, 3]),
        lambda: pd.Series([1, None, 3], dtype="Int64"),
        lambda: nanoarrow.Array([1, None, 3], nanoarrow.int64()),
        lambda: nanoarrow.Array.from_chunks([[1, None], [3]], nanoarrow.int64()),
    ],
    ids=["polars", "pandas", "nanoarrow", "nanoarrow chunks"],
)
def test_columns_of_others_are_read(make):
    host = numera.to_host(make())
    assert host["Type"].text == "int64"
    assert numera.to_arrow(host).to_pylist() == [1, None, 3]


def test_text_of_polars_is_cast_from_views():
    with pytest.raises(pa.ArrowTypeError):
        numera.to_host(pl.Series(["a"]))
    host = numera.to_host(pl.Series(["a", None]), cast=True)
    assert numera.to_arrow(numera.encode(host)).to_pylist() == ["a", None]


def test_results_go_on_to_others():
    table = numera.to_arrow(numera.encode(numera.to_host(pa.table(ROWS))))
    assert pl.DataFrame(table).to_dict(as_series=False) == ROWS
    assert pd.DataFrame.from_arrow(table)["x"].sum() == 4.0 if hasattr(pd.DataFrame, "from_arrow") else table.to_pandas()["x"].sum() == 4.0
    assert duckdb.arrow(table).aggregate("sum(n), max(t)").fetchall() == [(3, "ж")]
    assert nanoarrow.Array(table["n"].chunk(0)).to_pylist() == [1, 2, None]
