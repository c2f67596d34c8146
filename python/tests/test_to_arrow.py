import gc

import numera
import numpy as np
import pyarrow as pa
import pytest
from envelopes import encoded, numbers, table
from numera import host


def test_numbers_are_read_where_they_lie():
    value = numbers([1.5, 2.5])
    result = numera.to_arrow(value)
    assert result.equals(pa.array([1.5, 2.5]))
    assert result.buffers()[1].address == value["Data"].numpy().ctypes.data


def test_a_table_shares_the_memory_of_its_columns():
    value = numera.to_host(pa.table({"a": [1, 2], "b": [True, None]}))
    result = numera.to_arrow(numera.make_readable(value))
    assert result.to_pydict() == {"a": [1, 2], "b": [True, None]}
    assert result["a"].chunk(0).buffers()[1].address == value["Columns"][0]["Data"].numpy().ctypes.data


def test_a_buffer_shares_its_bytes():
    value = numera.to_host(b"abc")
    result = numera.to_arrow(value)
    assert isinstance(result, pa.Buffer)
    assert result.to_pybytes() == b"abc"
    assert result.address == value["Values"].numpy().ctypes.data


def test_arrow_values_keep_the_host_value_alive_until_the_last_buffer_goes():
    gc.collect()
    before = host.live_arrays()
    value = numera.make_readable(numera.to_host(pa.table({"t": ["one", None, "three"] * 1000})))
    column = numera.to_arrow(value)["t"].chunk(0)
    del value
    buffer = column.slice(1, 2).buffers()[2]
    del column
    gc.collect()
    assert host.live_arrays() > before
    assert buffer.to_pybytes()[:8] == b"onethree"
    del buffer
    gc.collect()
    assert host.live_arrays() == before


@pytest.mark.parametrize(
    "x, back",
    [
        (pa.array(["a", None, "ж"]), pa.array(["a", None, "ж"], pa.large_string())),
        (pa.array([b"a", None, b""]), pa.array([b"a", None, b""], pa.large_binary())),
        (pa.array([True, None]), pa.array([True, None])),
        (pa.array([None, None]), pa.array([None, None], pa.float64())),
        (pa.array([1, None], pa.date32()), pa.array([86400, None], pa.timestamp("s"))),
        (pa.array([1, None], pa.duration("s")), pa.array([1, None], pa.int64())),
        (pa.array([1, None], pa.timestamp("ms", "Köln")), pa.array([1, None], pa.timestamp("ms", "Köln"))),
        (pa.chunked_array([[[1], None], [[2, 3]]]),
         pa.array([[1], None, [2, 3]], pa.large_list(pa.int64()))),
        (pa.chunked_array([[{"a": 1}], [{"a": 2}, None]]), pa.array([{"a": 1}, {"a": 2}, None])),
        (pa.array([[("k", 1)], None], pa.map_(pa.string(), pa.int8())),
         pa.array([[{"key": "k", "value": 1}], None],
                  pa.large_list(pa.struct([("key", pa.large_string()), ("value", pa.int8())])))),
        (pa.chunked_array([], pa.int8()), pa.array([], pa.int8())),
    ],
    ids=lambda x: str(x.type),
)
def test_written_values_return_in_one_call(x, back):
    assert numera.to_arrow(numera.to_host(x)).equals(back)


def test_a_written_table_returns_in_one_call():
    x = pa.table({"n": [1, None], "t": pa.array(["a", None], pa.large_string())})
    assert numera.to_arrow(numera.to_host(x)) == x


@pytest.mark.parametrize(
    "value, back",
    [
        (host.numeric([[1, 3], [2, 4]]), pa.array([1, 2, 3, 4])),
        (host.logical([True, False]), pa.array([True, False])),
        (host.char(["ab", "cd"]), pa.array(["ab", "cd"], pa.large_string())),
        (host.string(["a", None]), pa.array(["a", None], pa.large_string())),
        (host.cell(["a", "bc"]), pa.array(["a", "bc"], pa.large_string())),
        (host.cell([host.numeric(memoryview(b"a"))]), pa.array([b"a"], pa.large_binary())),
    ],
    ids=["numeric", "logical", "char", "string", "cell of texts", "cell of bytes"],
)
def test_ordinary_values_are_taken_in_one_call(value, back):
    assert numera.to_arrow(value).equals(back)


def test_readable_text_is_read_where_it_lies():
    value = numera.make_readable(host.string(["a", None]))
    buffers = numera.to_arrow(value).buffers()
    parts = [value["Valid"]["Values"], value["Data"]["StartOffsets"], value["Data"]["Values"]]
    assert [b.address for b in buffers] == [part.numpy().ctypes.data for part in parts]


def test_a_readable_table_may_have_more_names_than_columns():
    value = table([encoded("array", "double", host.numeric([1.0]))], ["a", "b"])
    assert numera.to_arrow(value) == pa.table({"a": [1.0]})


def test_written_values_stay_as_they_are():
    x = pa.table({"t": ["a", None], "l": [[1], None]})
    value = numera.to_host(x)
    numera.to_arrow(value)
    assert value == numera.to_host(x)


def test_what_is_made_of_a_written_value_outlives_it():
    gc.collect()
    before = host.live_arrays()
    result = numera.to_arrow(numera.to_host(pa.array(["one", None])))
    gc.collect()
    assert host.live_arrays() > before
    assert result.to_pylist() == ["one", None]
    del result
    gc.collect()
    assert host.live_arrays() == before


UNCHECKED = ("with validate=False, numera.to_arrow reads values in readable form alone; "
             "numera.make_readable(value) makes one of an ordinary value and of what numera.to_host gave.")


@pytest.mark.parametrize("value, error, text, note", [
    (numera.to_host(pa.array(["a"])), ValueError, "Wrong field name.", UNCHECKED),
    (numera.to_host(pa.table({"t": ["a"]})), pa.ArrowInvalid, "Column 't' (index 0): Wrong field name.",
     f"the type is 'string': {UNCHECKED}"),
    (host.numeric([1.0]), pa.ArrowTypeError, "Struct array required for input", UNCHECKED),
], ids=["array", "table", "ordinary"])
def test_what_is_not_readable_is_refused_without_a_check(value, error, text, note):
    with pytest.raises(error) as caught:
        numera.to_arrow(value, validate=False)
    assert str(caught.value) == text
    assert caught.value.__notes__ == [note]


@pytest.mark.parametrize("value, error, text", [
    (host.numeric([1j]), pa.ArrowTypeError,
     "Value: found a complex 1-by-1 double array, expected real numbers that are not sparse."),
    (host.struct(encoded("array", "string", host.string(["\udc00"]))), pa.ArrowInvalid,
     ".Data: found text that is not UTF-16 in element 0 (Unpaired low surrogate at code unit 0.), "
     "expected paired surrogates."),
    (table([encoded("array", "string", host.string(["\udc00"]))]), pa.ArrowInvalid,
     "Column 'c0' (index 0).Data: found text that is not UTF-16 in element 0 (Unpaired low surrogate "
     "at code unit 0.), expected paired surrogates."),
], ids=["ordinary", "array", "table"])
def test_what_cannot_be_made_readable_is_refused_with_its_place(value, error, text):
    with pytest.raises(error) as caught:
        numera.to_arrow(value)
    assert str(caught.value) == text


def test_readable_text_that_is_not_valid_is_refused_in_the_words_of_arrow():
    text = host.struct({"Values": host.numeric(memoryview(b"a\xff")),
                        "StartOffsets": host.numeric(np.array([0, 2], "u8"))})
    value = host.struct(encoded("array", "string", text))
    with pytest.raises(pa.ArrowInvalid, match="^Invalid UTF8 sequence at string index 0$"):
        numera.to_arrow(value)


def test_a_failing_column_is_named():
    value = table([encoded("array", "double", host.numeric([1.0])),
                   encoded("array", "nothing", host.struct({"A": 1}))], ["good", "bad"])
    with pytest.raises(pa.ArrowInvalid) as caught:
        numera.to_arrow(value)
    assert str(caught.value) == (
        "Column 'bad' (index 1).Type: found 'nothing', expected the name of a type whose 'Data' is a "
        "struct."
    )
    assert (caught.value.column_name, caught.value.column_index) == ("bad", 1)
    assert caught.value.error_code is numera.TableErrorCode.Internal
    assert caught.value.__notes__ == [
        "the type is 'nothing': change the value at that place to what was expected there, or leave "
        "the column out of the table."
    ]


def test_a_type_error_of_a_column_has_its_code():
    value = table([{**encoded("array", "double", host.numeric([1.0])), "Data": host.numeric([1j])}])
    with pytest.raises(pa.ArrowTypeError) as caught:
        numera.to_arrow(value)
    assert (caught.value.column_name, caught.value.column_index) == ("c0", 0)
    assert caught.value.error_code is numera.TableErrorCode.TypeError


def test_a_column_without_name_is_counted():
    value = host.struct({
        "ArrowType": "table",
        "Columns": host.struct([encoded("array", "double", host.numeric([1.0]))] * 2),
        "Names": host.cell(["only"]),
    })
    with pytest.raises(pa.ArrowInvalid, match=r"^Column '' \(index 1\): Cell index is out of range.") as caught:
        numera.to_arrow(value)
    assert (caught.value.column_name, caught.value.column_index) == ("", 1)


def test_columns_of_different_lengths_are_refused_by_name():
    value = table([encoded("array", "double", host.numeric([1.0])),
                   encoded("array", "double", host.numeric([1.0, 2.0]))])
    with pytest.raises(pa.ArrowInvalid, match="found 2 elements, expected 1") as caught:
        numera.to_arrow(value)
    assert (caught.value.column_name, caught.value.column_index) == ("c1", 1)
    assert numera.to_arrow(value, validate=False).num_columns == 2


def test_a_struct_without_the_fields_is_refused_in_the_words_of_the_host():
    with pytest.raises(ValueError, match="^Wrong field name."):
        numera.to_arrow(host.struct({"A": 1}))
    with pytest.raises(IndexError, match="^Struct index is out of range.$"):
        numera.to_arrow(host.struct([], fields=["ArrowType", "Type", "Valid", "Data"]))
