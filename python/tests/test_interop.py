"""Objects of other libraries, to the host and back, compared by value."""

import duckdb
import nanoarrow
import numera
import pandas as pd
import polars as pl
import pyarrow as pa
import pytest

ROWS = {"n": [1, 2, None], "x": [1.5, None, 2.5], "t": ["a", None, "ж"]}


def columns(host):
    return numera.to_arrow(numera.make_readable(host)).to_pydict()


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


LONG = "too long to stand within a view"


@pytest.mark.parametrize("values, dtype", [
    (["a", None, LONG], pl.String),
    ([b"a", None, LONG.encode()], pl.Binary),
    ([["a", LONG], None, []], pl.List(pl.String)),
    ([{"t": "a", "n": 1}, {"t": LONG, "n": None}], pl.Struct({"t": pl.String, "n": pl.Int64})),
    (["a", None, "a"], pl.Categorical),
    (["a", None, "a"], pl.Enum(["b", "a"])),
], ids=["text", "bytes", "lists", "structs", "categories", "enumeration"])
def test_views_of_polars_need_no_cast(values, dtype):
    frame = pl.DataFrame({"c": pl.Series(values, dtype=dtype)})
    for rows in (frame, frame[1:]):
        assert columns(numera.to_host(rows)) == {"c": rows["c"].to_list()}


class Views:
    """A library that exports lists as views."""

    def __init__(self, array):
        self.__arrow_c_array__ = array.__arrow_c_array__


@pytest.mark.parametrize("type", [pa.list_view(pa.int64()), pa.large_list_view(pa.int64()),
                                  pa.list_view(pa.string_view()), pa.list_(pa.binary_view())])
def test_views_of_others_need_no_cast_and_those_of_pyarrow_do(type):
    element = {"int64": 1, "string_view": "a", "binary_view": b"a"}[str(type.value_type)]
    array = pa.array([[element], None, [element, None]], type)
    back = numera.to_arrow(numera.make_readable(numera.to_host(Views(array))))
    assert back.to_pylist() == array.to_pylist()
    with pytest.raises(pa.ArrowTypeError):
        numera.to_host(array)


def test_other_values_of_others_are_cast_on_request_alone():
    frame = pl.DataFrame({"t": ["a"], "d": pl.Series([1], dtype=pl.Decimal(3, 1))})
    with pytest.raises(pa.ArrowTypeError) as caught:
        numera.to_host(frame)
    assert caught.value.column_name == "d"
    assert columns(numera.to_host(frame, cast=True)) == {"t": ["a"], "d": [1.0]}


def test_results_go_on_to_others():
    table = numera.to_arrow(numera.make_readable(numera.to_host(pa.table(ROWS))))
    assert pl.DataFrame(table).to_dict(as_series=False) == ROWS
    assert pd.DataFrame.from_arrow(table)["x"].sum() == 4.0 if hasattr(pd.DataFrame, "from_arrow") else table.to_pandas()["x"].sum() == 4.0
    assert duckdb.arrow(table).aggregate("sum(n), max(t)").fetchall() == [(3, "ж")]
    assert nanoarrow.Array(table["n"].chunk(0)).to_pylist() == [1, 2, None]
