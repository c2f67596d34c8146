"""Arrow values of exactly the type or the schema that is asked for, or an error that says why not."""

import datetime as dt
import gc

import numera
import pyarrow as pa
import pytest
from numera import host

DAY = dt.date(2024, 2, 29)


@pytest.mark.parametrize("type, values", [
    (pa.string(), ["a", None, "é"]),
    (pa.string(), []),
    (pa.large_string(), ["a", None]),
    (pa.binary(), [b"a", None]),
    (pa.binary(2), [b"ab", None]),
    (pa.date32(), [DAY, None]),
    (pa.date64(), [DAY, None]),
    (pa.duration("us"), [dt.timedelta(microseconds=5), None]),
    (pa.null(), [None, None]),
    (pa.timestamp("us", "UTC"), [dt.datetime(2024, 2, 29, tzinfo=dt.timezone.utc), None]),
    (pa.list_(pa.field("element", pa.string(), nullable=False)), [["a"], None, []]),
    (pa.large_list(pa.date32()), [[DAY, None], None]),
    (pa.map_(pa.string(), pa.int8()), [[("a", 1), ("b", None)], None, []]),
    (pa.map_(pa.int8(), pa.list_(pa.date32()), keys_sorted=True), [[(1, [DAY])]]),
    (pa.struct([pa.field("d", pa.date32(), nullable=False), ("t", pa.string())]),
     [{"d": DAY, "t": "a"}, {"d": DAY, "t": None}]),
    (pa.struct([pa.field("n", pa.int8(), metadata={"unit": "m"})]), [{"n": 1}, None]),
    (pa.dictionary(pa.int8(), pa.string(), ordered=True), ["a", None, "b", "a"]),
    (pa.dictionary(pa.uint16(), pa.large_string()), ["a"]),
], ids=str)
def test_an_array_returns_with_its_type(type, values):
    back = numera.to_arrow(numera.to_host(pa.array(values, type)), type)
    assert back.type.equals(type, check_metadata=True)
    assert back.to_pylist() == values
    back.validate(full=True)


@pytest.mark.parametrize("value, type, values", [
    (host.string(["a", None]), pa.string(), ["a", None]),
    (host.string(["a", None]), pa.string_view(), ["a", None]),
    (host.cell([host.numeric(memoryview(b"ab"))]), pa.binary(2), [b"ab"]),
    (host.cell([host.numeric(memoryview(b"ab"))]), pa.binary_view(), [b"ab"]),
    (host.numeric([1, 2]), pa.duration("s"), [dt.timedelta(seconds=1), dt.timedelta(seconds=2)]),
    (host.numeric([1.5]), pa.float64(), [1.5]),
    (numera.make_readable(host.char("a")), pa.string(), ["a"]),
], ids=["text", "view", "fixed width", "view of bytes", "durations", "no cast", "readable"])
def test_other_values_get_the_type_that_is_asked_for(value, type, values):
    back = numera.to_arrow(value, type)
    assert back.type == type
    assert back.to_pylist() == values


def test_several_chunks_of_categories_get_their_index_type():
    type = pa.dictionary(pa.int32(), pa.string())
    column = pa.chunked_array([pa.array(["a", "b"], type), pa.array(["c", "a"], type)])
    back = numera.to_arrow(numera.to_host(column), type)
    assert back.type == type
    assert back.indices.to_pylist() == [0, 1, 2, 0]
    assert back.dictionary.to_pylist() == ["a", "b", "c"]


ROWS = pa.table(
    {
        "day": pa.array([DAY, DAY], pa.date32()),
        "text": pa.array(["a", None]),
        "category": pa.array(["x", "y"], pa.dictionary(pa.int8(), pa.string())),
        "took": pa.array([dt.timedelta(seconds=1), None], pa.duration("s")),
    },
    pa.schema(
        [
            pa.field("day", pa.date32(), nullable=False, metadata={"unit": "day"}),
            pa.field("text", pa.string()),
            pa.field("category", pa.dictionary(pa.int8(), pa.string())),
            pa.field("took", pa.duration("s")),
        ],
        {"origin": "test"},
    ),
)


def test_a_table_returns_with_its_schema():
    back = numera.to_arrow(numera.to_host(ROWS), ROWS.schema)
    assert back.equals(ROWS, check_metadata=True)


def test_a_table_that_was_cast_returns_with_the_schema_of_the_casts():
    x = pa.table({"v": pa.array(["a", None], pa.string_view()),
                  "l": pa.array([[1], None], pa.list_(pa.int8(), 1))})
    schema = pa.schema({"v": pa.string_view(), "l": pa.list_(pa.int8())})
    back = numera.to_arrow(numera.to_host(x, cast=True), schema)
    assert back.schema == schema
    assert back.to_pydict() == {"v": ["a", None], "l": [[1], None]}


def test_the_type_may_be_given_by_name():
    assert numera.to_arrow(host=host.char("a"), type=pa.string()).type == pa.string()


def test_no_type_is_none():
    assert numera.to_arrow(host.char("a"), None).type == pa.large_string()


def test_tables_without_columns_have_a_schema():
    empty = pa.table({})
    assert numera.to_arrow(numera.to_host(empty), pa.schema([], {"a": "b"})).schema.metadata == {b"a": b"b"}


NO_TYPE = ("without a type, numera.to_arrow gives the type that the value has, or says what is wrong with "
           "the value.")


def no_cast(path, found, expected):
    return f"{path}: found type {found}, expected {expected} or a type that can be cast to it without loss."


@pytest.mark.parametrize("x, type, error, text", [
    (pa.array([1], pa.int8()), pa.int16(), pa.ArrowTypeError, no_cast("Column", "int8", "int16")),
    (pa.array(["a"]), pa.binary(), pa.ArrowTypeError, no_cast("Column", "large_string", "binary")),
    (pa.array([86401], pa.timestamp("s")), pa.date32(), pa.ArrowInvalid,
     "Column: found times of day, expected whole days for date32[day]."),
    (pa.array([86400], pa.timestamp("s", "UTC")), pa.date32(), pa.ArrowTypeError,
     no_cast("Column", "timestamp[s, tz=UTC]", "date32[day]")),
    (pa.array([1.5]), pa.null(), pa.ArrowInvalid,
     "Column: found values that are not null, expected only nulls for the null type."),
    (pa.array([[1]], pa.list_(pa.int8())), pa.list_(pa.int16()), pa.ArrowTypeError,
     no_cast("Column[]", "int8", "int16")),
    (pa.array([[None]], pa.list_(pa.int8())), pa.list_(pa.field("item", pa.int8(), nullable=False)),
     pa.ArrowInvalid, "Column[]: found 1 nulls, expected none in a field that is not nullable."),
    (pa.array([{"a": "x"}]), pa.struct({"a": pa.int8()}), pa.ArrowTypeError,
     no_cast("Column.a", "large_string", "int8")),
    (pa.array([{"a": 1}]), pa.struct({"b": pa.int64()}), pa.ArrowTypeError,
     no_cast("Column", "struct<a: int64>", "struct<b: int64>")),
    (pa.array(["a"]), pa.dictionary(pa.int8(), pa.string()), pa.ArrowTypeError,
     no_cast("Column", "large_string", "dictionary<values=string, indices=int8, ordered=0>")),
    (pa.array([b"abc"]), pa.binary(2), pa.ArrowInvalid,
     "Column: Failed casting from large_binary to fixed_size_binary[2]: widths must match"),
], ids=str)
def test_a_type_that_no_cast_leads_to_is_refused(x, type, error, text):
    with pytest.raises(error) as caught:
        numera.to_arrow(numera.to_host(x), type)
    assert str(caught.value) == text
    assert caught.value.__notes__ == [NO_TYPE]


@pytest.mark.parametrize("field, error, text, code", [
    (pa.field("text", pa.int8()), pa.ArrowTypeError,
     no_cast("Column 'text' (index 1)", "large_string", "int8"),
     numera.TableErrorCode.TypeError),
    (pa.field("text", pa.string(), nullable=False), pa.ArrowInvalid,
     "Column 'text' (index 1): found 1 nulls, expected none in a field that is not nullable.",
     numera.TableErrorCode.Internal),
], ids=["type", "nulls"])
def test_the_column_that_cannot_be_cast_is_named(field, error, text, code):
    with pytest.raises(error) as caught:
        numera.to_arrow(numera.to_host(ROWS), ROWS.schema.set(1, field))
    assert str(caught.value) == text
    assert (caught.value.column_name, caught.value.column_index) == ("text", 1)
    assert caught.value.error_code is code
    assert caught.value.__notes__ == [f"the type is 'string': {NO_TYPE}"]


@pytest.mark.parametrize("schema, found", [
    (pa.schema({"b": pa.int64(), "a": pa.int64()}), "b, a"),
    (pa.schema({"a": pa.int64()}), "a"),
    (pa.schema({"a": pa.int64(), "B": pa.int64()}), "a, B"),
], ids=["order", "number", "case"])
def test_a_schema_of_other_columns_is_refused(schema, found):
    with pytest.raises(pa.ArrowInvalid) as caught:
        numera.to_arrow(numera.to_host(pa.table({"a": [1], "b": [2]})), schema)
    assert str(caught.value) == f"Table: found the columns a, b, expected {found}."


TABLE, BUFFER = numera.to_host(ROWS), numera.to_host(b"a")


@pytest.mark.parametrize("value, type, text", [
    (TABLE, pa.int8(), "type: found pyarrow.lib.DataType, expected a pyarrow.Schema for a table."),
    (TABLE, "int8", "type: found str, expected a pyarrow.Schema for a table."),
    (numera.to_host(pa.array([1])), ROWS.schema,
     "type: found pyarrow.lib.Schema, expected a pyarrow.DataType for an array."),
    (host.numeric([1]), ROWS.schema,
     "type: found pyarrow.lib.Schema, expected a pyarrow.DataType for an array."),
    (host.numeric([1]), ROWS.schema.field(0),
     "type: found pyarrow.lib.Field, expected a pyarrow.DataType for an array."),
    (host.numeric([1]), False, "type: found bool, expected a pyarrow.DataType for an array."),
    (BUFFER, pa.uint8(), "type: found pyarrow.lib.DataType, expected None for a buffer."),
    (BUFFER, ROWS.schema, "type: found pyarrow.lib.Schema, expected None for a buffer."),
], ids=["type for a table", "text", "schema for an array", "schema for numbers", "field", "bool",
        "type for a buffer", "schema for a buffer"])
def test_only_a_type_that_fits_the_value_is_taken(value, type, text):
    with pytest.raises(TypeError) as caught:
        numera.to_arrow(value, type)
    assert str(caught.value) == text


def test_values_are_checked_before_they_are_cast():
    with pytest.raises(ValueError, match="^validate: found False beside a type, expected True.$"):
        numera.to_arrow(host.numeric([1]), pa.int64(), validate=False)


def test_a_value_that_cannot_be_made_readable_is_refused_with_its_place():
    with pytest.raises(pa.ArrowTypeError, match="^Value: found a complex 1-by-1 double array, expected"):
        numera.to_arrow(host.numeric([1j]), pa.float64())


def test_the_result_outlives_the_host_value():
    gc.collect()
    before = host.live_arrays()
    value = numera.to_host(ROWS)
    back = numera.to_arrow(value, ROWS.schema)
    del value
    gc.collect()
    assert back.equals(ROWS, check_metadata=True)
    del back
    gc.collect()
    assert host.live_arrays() == before


def test_a_refused_value_is_not_kept():
    gc.collect()
    before = host.live_arrays()
    with pytest.raises(pa.ArrowTypeError):
        numera.to_arrow(numera.to_host(ROWS), ROWS.schema.set(1, pa.field("text", pa.int8())))
    gc.collect()
    assert host.live_arrays() == before


def test_the_host_value_stays_as_it_is():
    value = numera.to_host(ROWS)
    numera.to_arrow(value, ROWS.schema)
    assert value == numera.to_host(ROWS)


def test_numbers_of_the_right_type_are_not_copied():
    value = numera.to_host(pa.table({"n": [1, None], "t": ["a", "b"]}))
    back = numera.to_arrow(value, pa.schema({"n": pa.int64(), "t": pa.string()}))
    numbers = value["Columns"][0]["Data"].numpy()
    assert back["n"].chunk(0).buffers()[1].address == numbers.ctypes.data
