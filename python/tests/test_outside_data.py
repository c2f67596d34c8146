"""Data from other programs that pyarrow reads, to the host and back: nested tables without rows,
null categories, values under nulls."""

import datetime as dt
import decimal

import duckdb
import encoded
import numera
import polars as pl
import pyarrow as pa
import pyarrow.compute as pc
import pyarrow.dataset as ds
import pytest

DAY = dt.datetime(2020, 1, 2)

NESTED = pa.table({
    "n": [1, 2],
    "l": pa.array([["a"], None], pa.list_(pa.string())),
    "s": pa.array([{"x": 1.5, "t": [1]}, None], pa.struct([("x", pa.float64()), ("t", pa.list_(pa.int8()))])),
    "m": pa.array([[("k", 1)], None], pa.map_(pa.string(), pa.int16())),
    "c": pa.array(["a", None], pa.dictionary(pa.int8(), pa.string())),
})
RETURNED = pa.schema([
    ("n", pa.int64()),
    ("l", pa.large_list(pa.large_string())),
    ("s", pa.struct([("x", pa.float64()), ("t", pa.large_list(pa.int8()))])),
    ("m", pa.large_list(pa.struct([("key", pa.large_string()), ("value", pa.int16())]))),
    ("c", pa.dictionary(pa.int8(), pa.large_string())),
])


def there_and_back(x, cast=False):
    return numera.to_arrow(numera.make_readable(numera.to_host(x, cast=cast)))


class Stream:
    """A library that exports tables as streams."""

    def __init__(self, table):
        self.__arrow_c_stream__ = table.__arrow_c_stream__


@pytest.mark.parametrize("nothing", [
    NESTED.filter(pc.equal(NESTED["n"], 3)),
    NESTED.slice(2),
    NESTED.schema.empty_table(),
    pa.Table.from_batches([], NESTED.schema),
    pa.RecordBatchReader.from_batches(NESTED.schema, []),
    Stream(pa.Table.from_batches([], NESTED.schema)),
], ids=["filter", "slice", "empty table", "no batches", "reader", "stream"])
def test_a_table_without_rows_comes_back_with_its_types(nothing):
    back = there_and_back(nothing)
    assert back.schema == RETURNED and back.num_rows == 0


@pytest.mark.parametrize("name", NESTED.column_names)
def test_a_column_without_chunks_comes_back_with_its_type(name):
    back = there_and_back(pa.chunked_array([], NESTED[name].type))
    assert back.type == RETURNED.field(name).type and len(back) == 0


def test_a_query_of_duckdb_without_rows_comes_back_with_its_types():
    query = "select 1 as n, ['a'] as l, {'x': 1.5::double} as s, map(['k'], [1]) as m where false"
    back = there_and_back(duckdb.sql(query))
    assert back.schema == pa.schema([
        ("n", pa.int32()),
        ("l", pa.large_list(pa.large_string())),
        ("s", pa.struct([("x", pa.float64())])),
        ("m", pa.large_list(pa.struct([("key", pa.large_string()), ("value", pa.int32())]))),
    ])
    assert back.num_rows == 0


def test_a_frame_of_polars_without_rows_comes_back_with_its_types():
    frame = pl.DataFrame({"l": [["a"]], "s": [{"x": 1}]})
    back = there_and_back(frame.filter(pl.lit(False)))
    assert back.schema == pa.schema([("l", pa.large_list(pa.large_string())),
                                     ("s", pa.struct([("x", pa.int64())]))])


@pytest.mark.parametrize("type, returned", [
    (pa.list_(pa.decimal128(5, 2), 2), pa.large_list(pa.float64())),
    (pa.list_view(pa.string_view()), pa.large_list(pa.large_string())),
    (pa.struct([("u", pa.uuid())]), pa.struct([("u", pa.large_binary())])),
    (pa.dictionary(pa.int8(), pa.list_(pa.int8())), pa.large_list(pa.int8())),
])
def test_a_column_without_chunks_is_cast_and_comes_back(type, returned):
    back = there_and_back(pa.chunked_array([], type), cast=True)
    assert back.type == returned and len(back) == 0


def categories(codes, values, index=pa.int8(), ordered=False):
    return pa.DictionaryArray.from_arrays(pa.array(codes, index), pa.array(values), ordered=ordered)


NULLS = categories([0, 1, 2, None, 1], ["a", None, "b"])


@pytest.mark.parametrize("column, expected", [
    (NULLS, ["a", None, "b", None, None]),
    (NULLS.slice(1, 3), [None, "b", None]),
    (categories([3, 2, 1, 0], [None, "a", None, "a"], pa.int32(), True), ["a", None, "a", None]),
    (categories([0, None], [None], pa.uint16()).cast(pa.dictionary(pa.uint16(), pa.string())), [None, None]),
    (pa.chunked_array([NULLS, NULLS]), ["a", None, "b", None, None] * 2),
    (pa.chunked_array([NULLS, categories([1, 0], [None, "c"])]), ["a", None, "b", None, None, "c", None]),
    (pa.array([["a", None], None], pa.list_(pa.string())), [["a", None], None]),
    (pa.ListArray.from_arrays([0, 2, 5], NULLS), [["a", None], ["b", None, None]]),
    (pa.StructArray.from_arrays([NULLS], ["c"]).slice(1, 2), [{"c": None}, {"c": "b"}]),
], ids=["array", "slice", "repeated values", "nothing else", "chunks", "chunks of their own", "plain", "lists", "structs"])
def test_nulls_among_categories_are_nulls(column, expected):
    host = numera.to_host(column)
    assert encoded.elements(host) == expected
    assert numera.to_arrow(numera.make_readable(host)).to_pylist() == expected


def test_null_categories_are_none_of_the_host():
    assert list(numera.to_host(NULLS)["Data"]["Categories"]) == ["a", "b"]


def test_partitions_with_a_null_are_read(tmp_path):
    table = pa.table({"n": [1, 2, 3], "part": ["x", None, "y"]})
    ds.write_dataset(table, tmp_path, format="parquet", partitioning=["part"],
                     partitioning_flavor="hive")
    hive = ds.HivePartitioning.discover(infer_dictionary=True)
    partitioned = ds.dataset(tmp_path, partitioning=hive).to_table()
    assert any(chunk.dictionary.null_count for chunk in partitioned["part"].chunks)
    back = there_and_back(partitioned).to_pydict()
    assert dict(zip(back["n"], back["part"])) == {1: "x", 2: None, 3: "y"}


def days(*values):
    """Dates of the given milliseconds, whole days or not."""
    return pa.Array.from_buffers(pa.date64(), len(values),
                                 [None, pa.array(values, pa.int64()).buffers()[1]])


MILLISECONDS = 1_577_923_200_000
BAD = days(MILLISECONDS, 1, MILLISECONDS)


def in_null_struct(values):
    return pa.StructArray.from_arrays([values], ["v"], mask=pa.array([False, True, False]))


def in_null_list(values):
    return pa.ListArray.from_arrays(pa.array([0, 1, 2, 3], pa.int32()), values,
                                    mask=pa.array([False, True, False]))


def in_null_map(values):
    return pa.MapArray.from_arrays(pa.array([0, 1, 2, 3], pa.int32()), pa.array([1, 1, 1]), values,
                                   mask=pa.array([False, True, False]))


@pytest.mark.parametrize("put, present", [
    (in_null_struct, {"v": DAY}),
    (in_null_list, [DAY]),
    (in_null_map, [{"key": 1, "value": DAY}]),
    (lambda values: in_null_struct(in_null_struct(values)), {"v": {"v": DAY}}),
    (lambda values: in_null_list(in_null_struct(values)), [{"v": DAY}]),
], ids=["struct", "list", "map", "struct in a struct", "struct in a list"])
def test_dates_behind_nulls_sink_no_column(put, present):
    column = put(BAD)
    with pytest.raises(pa.ArrowInvalid):
        column.validate(full=True)
    assert there_and_back(column).to_pylist() == [present, None, present]


def test_decimals_behind_nulls_sink_no_column():
    wide = pa.array([decimal.Decimal("1.5"), decimal.Decimal("123456.5"), None], pa.decimal128(9, 1))
    narrow = pa.Array.from_buffers(pa.decimal128(3, 1), 3, wide.buffers())
    assert there_and_back(in_null_struct(narrow), cast=True).to_pylist() == [{"v": 1.5}, None, {"v": None}]


def test_dates_behind_nulls_become_zero_in_the_host():
    [chunk] = numera.to_host(in_null_struct(BAD))["Data"]
    [field] = chunk["FieldData"]
    assert field["Data"]["Values"].numpy().ravel().tolist() == [MILLISECONDS, 0, MILLISECONDS]
    assert None not in encoded.elements(field)


def test_dates_that_are_shown_are_refused():
    with pytest.raises(pa.ArrowInvalid, match="does not represent a whole number of days"):
        numera.to_host(pa.StructArray.from_arrays([BAD], ["v"]))
