import numera
import numpy as np
import pandas as pd
import pytest
from numera import host

CLASSES = {
    "f8": "double", "f4": "single", "i1": "int8", "u1": "uint8", "i2": "int16", "u2": "uint16",
    "i4": "int32", "u4": "uint32", "i8": "int64", "u8": "uint64", "c16": "double", "c8": "single",
    "?": "logical",
}


@pytest.mark.parametrize("dtype", CLASSES)
def test_the_class_is_that_of_the_dtype(dtype):
    value = host.numeric(np.ones((2, 3), dtype))
    assert (value.class_name, value.is_complex) == (CLASSES[dtype], dtype.startswith("c"))


@pytest.mark.parametrize(
    "array",
    [
        np.arange(6.0).reshape(2, 3),
        np.asfortranarray(np.arange(6.0).reshape(2, 3)),
        np.arange(24.0).reshape(2, 3, 4)[:, ::-1, ::2],
        np.arange(6, dtype=">i4").reshape(3, 2),
        np.arange(6, dtype=">c16").reshape(3, 2),
        np.broadcast_to(np.int8(7), (2, 2)),
        np.frombuffer(b"\0" + np.arange(4.0).tobytes(), "f8", offset=1).reshape(2, 2),
        np.zeros((0, 4)),
    ],
)
def test_values_stand_where_they_stood(array):
    np.testing.assert_array_equal(host.numeric(array).numpy(), array)


@pytest.mark.parametrize(
    "values, shape",
    [(1.5, (1, 1)), ([], (0, 1)), ([1, 2, 3], (3, 1)), ([[1, 2, 3]], (1, 3)),
     (np.ones((1, 2, 1)), (1, 2, 1)), (np.float32(2), (1, 1))],
)
def test_one_dimension_is_a_column(values, shape):
    assert host.numeric(values).shape == shape


def test_numbers_are_copied():
    given = np.array([1.0, 2.0])
    value = host.numeric(given)
    given[0] = 9
    assert value.to_python() == [1.0, 2.0]


@pytest.mark.parametrize(
    "values",
    [np.array([1, "a"], object), ["a"], np.array(["2020-01-01"], "M8[D]"), np.array([1], "m8[s]"),
     np.ones(1, "f2"), [2**70], np.zeros(1, [("a", "f8")])],
    ids=lambda x: str(np.asarray(x).dtype),
)
def test_other_dtypes_are_refused_by_name(values):
    with pytest.raises(TypeError, match="^values: found dtype .*, expected numbers: float64"):
        host.numeric(values)


def test_values_that_would_surprise_are_refused():
    with pytest.raises(ValueError, match="^values: found a masked array"):
        host.numeric(np.ma.array([1.0], mask=[True]))
    with pytest.raises(TypeError, match="^values: found a HostArray"):
        host.numeric(host.numeric([1]))
    with pytest.raises(TypeError, match="^logical: found dtype int64, expected bool.$"):
        host.logical([0, 1])


def test_logical_values_are_truth_values():
    assert host.logical([]).class_name == "logical"
    assert host.logical(np.array([[True, False]])).to_python() == [True, False]


@pytest.mark.parametrize("make", [host.logical, host.numeric])
def test_truth_values_are_ones_whatever_bytes_numpy_sees(make):
    bytes_of = np.array([0, 1, 2, 255], "u1")
    for array in (bytes_of.view("?"), np.repeat(bytes_of, 2).view("?")[::2]):
        assert make(array).numpy().view("u1").ravel().tolist() == [0, 1, 1, 1]


def test_texts_are_code_units():
    assert host.char("a\U0001f600").shape == (1, 3)
    assert host.char([]).shape == (0, 0)
    assert host.char(["", ""]).shape == (2, 0)
    with pytest.raises(ValueError, match="^char: found rows of 1 and 2 code units"):
        host.char(["a", "bc"])
    for text in (None, 1, [1], b"a"):
        with pytest.raises(TypeError):
            host.char(text)


@pytest.mark.parametrize(
    "texts, shape, expected",
    [
        ("a", (1, 1), "a"),
        (None, (1, 1), None),
        ([], (0, 1), []),
        (("a", None), (2, 1), ["a", None]),
        (np.array([["a", "b", "c"]]), (1, 3), ["a", "b", "c"]),
        (np.array([["a", "b"], ["c", "d"]], object), (2, 2), [["a", "b"], ["c", "d"]]),
        (pd.Series(["a", "b"], dtype=object), (2, 1), ["a", "b"]),
    ],
)
def test_string_arrays_hold_texts(texts, shape, expected):
    value = host.string(texts)
    assert (value.class_name, value.shape, value.to_python()) == ("string", shape, expected)


@pytest.mark.parametrize("texts", [[1], [b"a"], [float("nan")], [pd.NA], 5, np.array([1.0])])
def test_string_arrays_hold_nothing_else(texts):
    with pytest.raises(TypeError):
        host.string(texts)


def test_cells_take_what_numbers_and_texts_are_made_of():
    value = host.cell(["a", 1, 2.5, True, 1j, [1, 2], np.float32([3]), None, host.string("s")])
    assert [None if x is None else x.class_name for x in value] == [
        "char", "int64", "double", "logical", "double", "int64", "single", None, "string"
    ]


def test_cells_have_a_shape_in_storage_order():
    assert host.cell([1, 2, 3, 4], (2, 2)).to_python() == [[1, 3], [2, 4]]
    assert host.cell([], (0, 5)).shape == (0, 5)
    with pytest.raises(ValueError, match="^Shape: found 4 elements, expected 3, one for each value.$"):
        host.cell([1, 2, 3], (2, 2))
    for shape in [(1,), (-1, 1), (), (2**64, 1)]:
        with pytest.raises(ValueError, match="^shape: found .*, expected two or more dimensions"):
            host.cell([1], shape)
    for shape in [(1.5, 1), ("1", "1"), 5]:
        with pytest.raises(TypeError):
            host.cell([1], shape)


@pytest.mark.parametrize("value", [b"a", {"a": 1}, ["a"], object()])
def test_other_values_have_no_place_in_a_cell(value):
    with pytest.raises(TypeError, match="^0: found "):
        host.cell([value])
    with pytest.raises(TypeError, match="^'A': found "):
        host.struct({"A": value})


def test_values_in_cells_share_their_memory():
    numbers = host.numeric(np.arange(1000.0))
    assert host.cell([numbers])[0].numpy().ctypes.data == numbers.numpy().ctypes.data


def test_structs_keep_the_order_of_their_fields():
    assert host.struct({"b": 1, "a": 2}).fields == ("b", "a")
    assert host.struct({}).fields == ()
    assert host.struct([], fields=["x", "y"]).fields == ("x", "y")
    assert host.struct([{"a": i} for i in range(6)], (2, 3)).shape == (2, 3)


@pytest.mark.parametrize(
    "elements, error",
    [([{"a": 1}, {"b": 1}], ValueError), ([{"a": 1, "b": 2}, {"b": 1, "a": 2}], ValueError),
     ([{"a": 1}, {}], ValueError), ({1: 2}, TypeError), ({"a\0": 1}, ValueError), ([1], TypeError)],
)
def test_elements_without_the_same_fields_are_refused(elements, error):
    with pytest.raises(error):
        host.struct(elements)


@pytest.mark.parametrize("make, value, message", [
    (host.char, b"a", "char: found bytes, expected a text or an iterable of texts."),
    (host.char, 5, "char: found int, expected a text or an iterable of texts."),
    (host.string, 5, "string: found int, expected a text, None or an iterable of them."),
    (host.cell, 5, "cell: found int, expected an iterable of values."),
    (host.struct, 5, "struct: found int, expected a mapping or an iterable of mappings."),
    (host.struct, [{"a": 1}, 5], "struct: found int at index 1, expected a mapping."),
])
def test_what_is_no_value_of_a_builder_is_refused_by_its_type(make, value, message):
    with pytest.raises(TypeError) as caught:
        make(value)
    assert str(caught.value) == message


def test_more_elements_than_memory_holds_are_a_memory_error():
    with pytest.raises(MemoryError):
        host.cell([], (2**40, 2**40))
    with pytest.raises(MemoryError):
        numera.host._core._new_char(b"", (2**40, 2**40))
