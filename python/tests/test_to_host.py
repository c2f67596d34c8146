import array
import datetime

import encoded
import numera
import pyarrow as pa
import pytest


def data(value):
    return value["Data"].to_python()


def test_an_array_becomes_an_encoded_array():
    host = numera.to_host(pa.array([1, None, 3, 4, 5, 6, 7, 8], pa.int16()))
    assert host.to_python() == {
        "ArrowType": "array",
        "Type": "int16",
        "Valid": {"ArrowType": "buffer", "Values": 0b11111101, "Length": 8.0},
        "Data": [1, 0, 3, 4, 5, 6, 7, 8],
    }


CHUNKED = pa.chunked_array([["a", None], [], ["c"]])


@pytest.mark.parametrize("x", [CHUNKED, pa.array(["a", None, "c"])])
def test_chunks_and_arrays_become_the_same(x):
    host = numera.to_host(x)
    assert (host["Type"].text, data(host)) == ("string", ["a", "", "c"])


TABLE = pa.table({"n": pa.chunked_array([[1], [None, 3]]), "t": ["a", "b", None]})


@pytest.mark.parametrize(
    "x",
    [
        TABLE,
        TABLE.combine_chunks().to_batches()[0],
        pa.RecordBatchReader.from_batches(TABLE.schema, TABLE.to_batches()),
    ],
    ids=lambda x: type(x).__name__,
)
def test_everything_of_columns_becomes_a_table(x):
    host = numera.to_host(x)
    assert host["ArrowType"].text == "table"
    assert host["Names"].to_python() == ["n", "t"]
    assert [data(column) for column in host["Columns"]] == [[1, 0, 3], ["a", "b", ""]]


class Stream:
    """Data from another library."""

    def __init__(self, source):
        self.source = source

    def __arrow_c_stream__(self, requested_schema=None):
        return self.source.__arrow_c_stream__(requested_schema)


class OneArray:
    def __init__(self, source):
        self.source = source

    def __arrow_c_array__(self, requested_schema=None):
        return self.source.__arrow_c_array__(requested_schema)


@pytest.mark.parametrize(
    "x, same",
    [(Stream(TABLE), TABLE), (Stream(CHUNKED), CHUNKED), (OneArray(CHUNKED.chunk(0)), CHUNKED.chunk(0))],
    ids=["table", "chunks", "array"],
)
def test_capsules_give_what_pyarrow_gives(x, same):
    assert numera.to_host(x) == numera.to_host(same)


def test_a_stream_of_structs_is_a_table_and_an_array_of_structs_is_not():
    structs = pa.array([{"a": 1}, {"a": 2}])
    assert numera.to_host(Stream(pa.chunked_array([structs])))["ArrowType"].text == "table"
    assert numera.to_host(OneArray(structs))["ArrowType"].text == "struct"
    assert numera.to_host(pa.chunked_array([structs]))["ArrowType"].text == "struct"


def test_rows_of_a_stream_that_are_null_are_null_in_every_column():
    rows = pa.array([None, {"a": 1, "b": "x"}, {"a": None, "b": "y"}]).slice(0, 2)
    host = numera.to_host(Stream(pa.chunked_array([rows])))
    assert numera.to_arrow(numera.make_readable(host)).to_pydict() == {"a": [None, 1], "b": [None, "x"]}


def test_sliced_data_is_read_from_its_offset():
    table = pa.table({"n": list(range(20)), "v": [None, 1.5] * 10}).slice(7, 3)
    host = numera.to_host(table)
    back = numera.to_arrow(host)
    assert back.to_pydict() == {"n": [7, 8, 9], "v": [1.5, None, 1.5]}


@pytest.mark.parametrize(
    "x",
    [b"\x01\xff", bytearray(b"\x01\xff"), memoryview(b"\x01\xff"), array.array("B", b"\x01\xff"),
     pa.py_buffer(b"\x01\xff")],
    ids=lambda x: type(x).__name__,
)
def test_bytes_become_a_buffer(x):
    host = numera.to_host(x)
    assert host["ArrowType"].text == "buffer"
    assert (host["Values"].class_name, host["Values"].numpy().ravel().tolist()) == ("uint8", [1, 255])


def test_empty_values_convert():
    assert numera.to_host(b"")["Values"].shape == (0, 1)
    assert data(numera.to_host(pa.array([], pa.string()))) == []
    assert numera.to_host(pa.table({}))["Columns"].shape == (0, 1)
    assert numera.to_host(pa.chunked_array([], pa.int8()))["Data"].shape == (0, 1)
    empty = pa.RecordBatchReader.from_batches(pa.schema({"a": pa.int8()}), [])
    assert numera.to_host(Stream(empty))["Columns"][0]["Data"].shape == (0, 1)


def test_values_without_host_form_are_cast_on_request_alone():
    table = pa.table({"d": pa.array([1], pa.decimal128(3, 1)), "t": pa.array(["x"], pa.string_view())})
    with pytest.raises(pa.ArrowTypeError) as caught:
        numera.to_host(table)
    assert (caught.value.column_name, caught.value.column_index) == ("d", 0)
    assert caught.value.__notes__ == [
        "numera.to_host(x, cast=True) casts values that have no host form, if there is a rule for "
        "their type."
    ]
    columns = numera.to_host(table, cast=True)["Columns"]
    assert [data(column) for column in columns] == [1.0, "x"]


@pytest.mark.parametrize("type, expected", [
    (pa.uuid(), "fixed_binary_array"),
    (pa.list_(pa.uuid()), "list_array"),
    (pa.list_(pa.uuid(), 2), "list_array"),
    (pa.struct([("id", pa.uuid())]), "struct"),
    (pa.map_(pa.string(), pa.bool8()), "map"),
    (pa.dictionary(pa.int8(), pa.bool8()), "int8"),
])
def test_extension_columns_without_chunks_have_the_type_of_their_storage(type, expected):
    column = pa.chunked_array([], type)
    assert numera.to_host(column, cast=True)["Type"].text == expected
    [held] = numera.to_host(pa.table({"id": column}), cast=True)["Columns"]
    assert held["Type"].text == expected and encoded.elements(held) == []


@pytest.mark.parametrize("x", [1, None, "text", [1, 2], {"a": 1}, datetime.date(2020, 1, 1)])
def test_other_objects_are_refused(x):
    with pytest.raises(TypeError, match="^x: found .*, expected an object with __arrow_c_stream__"):
        numera.to_host(x)


def test_a_host_array_is_not_converted_twice():
    with pytest.raises(TypeError, match="^x: found .*HostArray, expected"):
        numera.to_host(numera.host.numeric([1]))


@pytest.mark.parametrize("x", [array.array("d", [1.5]), memoryview(bytes(4)).cast("B", (2, 2))])
def test_buffers_of_other_than_bytes_are_refused(x):
    with pytest.raises(TypeError, match="^Buffer: found . dimensions of format"):
        numera.to_host(x)


def test_memory_that_is_not_contiguous_is_refused():
    with pytest.raises(BufferError):
        numera.to_host(memoryview(b"abcd")[::2])


class Broken:
    def __init__(self, answer):
        self.answer = answer

    def __arrow_c_array__(self, requested_schema=None):
        return self.answer


@pytest.mark.parametrize("answer", [None, (), (1, 2, 3), 5])
def test_a_protocol_that_gives_no_capsules_is_refused(answer):
    with pytest.raises(TypeError, match="^__arrow_c_array__: found"):
        numera.to_host(Broken(answer))


def test_capsules_of_another_kind_are_refused():
    schema, values = pa.array([1]).__arrow_c_array__()
    with pytest.raises(ValueError):
        numera.to_host(Broken((values, schema)))


def test_capsules_are_used_once():
    capsules = Broken(pa.array([1]).__arrow_c_array__())
    numera.to_host(capsules)
    with pytest.raises(pa.ArrowInvalid):
        numera.to_host(capsules)


@pytest.mark.parametrize(
    "type, expected",
    [
        (pa.int32(), "int32"),
        (pa.string(), "string"),
        (pa.date32(), "datetime"),
        (pa.list_(pa.int8()), "cell"),
        (pa.field("f", pa.bool_()), "logical"),
        (pa.schema({"a": pa.int8()}), "table"),
        (pa.decimal128(3, 1), None),
        (pa.list_(pa.decimal128(3, 1)), None),
    ],
    ids=str,
)
def test_datatype_names_the_class_of_the_host(type, expected):
    assert numera.datatype(type) == expected


def test_datatype_refuses_what_is_no_type():
    with pytest.raises(TypeError, match="^type: found str, expected"):
        numera.datatype("int32")
