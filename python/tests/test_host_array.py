import copy
import gc
import pickle

import numera
import numpy as np
import pyarrow as pa
import pytest
from numera import host

NUMBERS = host.numeric([[1.0, 2.0, 3.0], [4.0, 5.0, 6.0]])
CELL = host.cell(["text", None, NUMBERS, host.cell([True])])
STRUCT = host.struct({"Name": "x", "Empty": None, "Inner": host.struct({"A": 1})})
STRUCTS = host.struct([{"A": 1, "B": "x"}, {"A": 2, "B": None}])


@pytest.mark.parametrize(
    "value, class_name, shape, fields",
    [
        (NUMBERS, "double", (2, 3), ()),
        (host.numeric(np.zeros((2, 3, 4), "i2")), "int16", (2, 3, 4), ()),
        (host.logical([True]), "logical", (1, 1), ()),
        (host.char("abc"), "char", (1, 3), ()),
        (host.string(["a", None]), "string", (2, 1), ()),
        (CELL, "cell", (4, 1), ()),
        (STRUCT, "struct", (1, 1), ("Name", "Empty", "Inner")),
        (STRUCTS, "struct", (2, 1), ("A", "B")),
    ],
    ids=lambda x: x.class_name if isinstance(x, numera.HostArray) else None,
)
def test_a_value_tells_its_class_shape_and_fields(value, class_name, shape, fields):
    assert (value.class_name, value.shape, value.fields) == (class_name, shape, fields)
    assert len(value) == np.prod(shape)


def test_fields_are_read_by_name():
    assert STRUCT["Name"].text == "x"
    assert STRUCT["Empty"] is None
    assert STRUCT["Inner"]["A"].to_python() == 1
    assert "Name" in STRUCT and "name" not in STRUCT and "Name" not in NUMBERS


@pytest.mark.parametrize("name", ["name", "", "Name\0", "Name ", "\ud800"])
def test_a_field_that_is_not_there_is_a_key_error(name):
    with pytest.raises(KeyError, match="Wrong field name.") as caught:
        STRUCT[name]
    assert caught.value.args == ("Wrong field name.",)
    assert caught.value.__notes__ == [f"found {name!r}, expected one of ('Name', 'Empty', 'Inner')"]


def test_fields_of_other_values_are_refused_in_the_words_of_the_host():
    with pytest.raises(ValueError, match="^Array is not struct array.$"):
        NUMBERS["Name"]
    with pytest.raises(ValueError, match="^HostArray: found a struct array of several elements"):
        STRUCTS["A"]
    with pytest.raises(IndexError, match="^Struct index is out of range.$"):
        host.struct([], fields=["A"])["A"]


def test_cells_and_elements_are_read_by_index():
    assert CELL[0].text == "text" and CELL[1] is None and CELL[-1][0].to_python() is True
    assert STRUCTS[1].to_python() == {"A": 2, "B": None}
    assert (NUMBERS[1], NUMBERS[-1]) == (4.0, 6.0)
    assert host.char("aж")[1] == "ж"
    assert list(host.string(["a", None, ""])) == ["a", None, ""]
    assert list(host.logical([True, False])) == [True, False]
    assert list(host.numeric([1 + 2j])) == [1 + 2j]
    assert [type(x) for x in host.numeric(np.array([1], "f4"))] == [float]


@pytest.mark.parametrize(
    "value, text",
    [(CELL, "Cell index is out of range."), (STRUCTS, "Struct index is out of range."),
     (NUMBERS, "Array index is out of range.")],
)
@pytest.mark.parametrize("beyond", [0, 1, 2**62])
def test_an_index_out_of_range_is_an_index_error(value, text, beyond):
    for index in (len(value) + beyond, -len(value) - 1 - beyond):
        with pytest.raises(IndexError) as caught:
            value[index]
        assert str(caught.value) == text


@pytest.mark.parametrize("key", [1.5, None, slice(0, 1), (0, 0)])
def test_other_indexes_are_refused(key):
    with pytest.raises(TypeError):
        CELL[key]


def test_iteration_gives_every_element():
    assert [None if x is None else x.class_name for x in CELL] == ["char", None, "double", "cell"]
    assert [x.to_python()["A"] for x in STRUCTS] == [1, 2]
    assert list(host.cell([])) == []


def test_text_is_that_of_char_arrays():
    assert host.char("").text == ""
    assert host.char("a\0\U0001f600").text == "a\0\U0001f600"
    assert host.char("\ud83d").text == "\ud83d"
    assert host.char(["ab", "cd"]).text == "acbd"
    for value in (NUMBERS, host.string("a"), CELL):
        with pytest.raises(ValueError, match="^Array is not char array.$"):
            value.text


@pytest.mark.parametrize(
    "dtype", ["f8", "f4", "i1", "u1", "i2", "u2", "i4", "u4", "i8", "u8", "c16", "c8", "?"]
)
def test_numpy_views_have_the_dtype_and_shape_of_what_was_given(dtype):
    given = np.arange(6).reshape(2, 3).astype(dtype)
    view = host.numeric(given).numpy()
    assert view.dtype == given.dtype
    np.testing.assert_array_equal(view, given, strict=True)


def test_numpy_views_share_memory_and_cannot_be_written():
    view = NUMBERS.numpy()
    assert view.ctypes.data == NUMBERS.numpy().ctypes.data
    assert not view.flags.writeable and not view.flags.owndata
    with pytest.raises(ValueError):
        view[0, 0] = 1
    with pytest.raises(ValueError):
        view.flags.writeable = True


def test_numpy_views_keep_their_array_alive():
    before = host.live_arrays()
    view = numera.to_host(pa.array(range(1000)))["Data"].numpy()[500:]
    gc.collect()
    assert host.live_arrays() > before
    assert view[:, 0].tolist() == list(range(500, 1000))
    del view
    gc.collect()
    assert host.live_arrays() == before


def test_numpy_views_of_text_are_code_units():
    assert host.char("aж").numpy().tolist() == [[0x61, 0x436]]
    assert host.char("").numpy().shape == (1, 0)


@pytest.mark.parametrize("value", [CELL, STRUCT, host.string("a")], ids=lambda x: x.class_name)
def test_numpy_refuses_what_has_no_block_of_elements(value):
    with pytest.raises(TypeError, match="^HostArray: found .*, expected a numeric, logical or"):
        value.numpy()


def test_memory_is_lent_column_major_and_read_only():
    view = memoryview(NUMBERS)
    assert (view.format, view.shape, view.strides, view.readonly) == ("d", (2, 3), (8, 16), True)
    column = memoryview(host.numeric([1.0, 2.0]))
    assert bytes(column) == np.array([1.0, 2.0]).tobytes()
    assert column.c_contiguous and not view.c_contiguous


@pytest.mark.parametrize(
    "value, expected",
    [
        (host.numeric(5), 5),
        (host.numeric([5, 6]), [5, 6]),
        (host.numeric([[5, 6]]), [5, 6]),
        (host.numeric([[5, 6], [7, 8]]), [[5, 6], [7, 8]]),
        (host.numeric(np.arange(4).reshape(2, 1, 2)), [[[0, 1]], [[2, 3]]]),
        (host.numeric([]), []),
        (host.numeric(np.zeros((0, 3))), []),
        (host.logical([[True, False], [False, True]]), [[True, False], [False, True]]),
        (host.char("text"), "text"),
        (host.char(""), ""),
        (host.char(["ab", "cd"]), ["ab", "cd"]),
        (host.string("a"), "a"),
        (host.string([None, "a"]), [None, "a"]),
        (host.string(np.array([["a", "b"], ["c", "d"]])), [["a", "b"], ["c", "d"]]),
        (host.cell([]), []),
        (host.cell([1]), [1]),
        (host.cell([1, "a", [2], None], (2, 2)), [[1, 2], ["a", None]]),
        (STRUCTS, [{"A": 1, "B": "x"}, {"A": 2, "B": None}]),
        (host.struct([], fields=["A"]), []),
        (host.struct({}), {}),
    ],
)
def test_values_become_plain_objects(value, expected):
    assert value.to_python() == expected


def test_deep_values_become_objects_or_a_recursion_error():
    value = host.cell([1])
    for _ in range(100_000):
        value = host.cell([value])
    with pytest.raises(RecursionError):
        value.to_python()
    assert value == value
    assert "cell" in repr(value) and "cell" in value._repr_html_()


def test_equality_is_that_of_every_bit():
    nan = host.numeric([np.nan, 0.0])
    assert nan == host.numeric([np.nan, 0.0])
    assert nan != host.numeric([np.nan, -0.0])
    assert host.numeric([1]) != host.numeric([1.0])
    assert host.numeric([1, 2]) != host.numeric([[1, 2]])
    assert host.string([None]) != host.string([""])
    assert CELL == host.cell(["text", None, NUMBERS, host.cell([True])])
    assert STRUCT != STRUCTS
    assert (NUMBERS == 1) is False and (NUMBERS != 1) is True
    with pytest.raises(TypeError):
        hash(NUMBERS)


PLAIN = [
    NUMBERS,
    host.numeric(np.zeros((2, 0, 3), "u2")),
    host.numeric([1 + 2j, np.nan]),
    host.logical([[True], [False]]),
    host.char("a\ud800\0"),
    host.char(["ab", "cd"]),
    host.string([["a"], [None]] and np.array([["a", None], ["\ud83d", "é"]], object)),
    CELL,
    host.cell([], (0, 3)),
    STRUCT,
    STRUCTS,
    host.struct([], (3, 0), fields=["A"]),
    numera.to_host(pa.table({"n": [1, None], "t": ["a", None], "l": [[1], None]})),
]


@pytest.mark.parametrize("protocol", range(2, pickle.HIGHEST_PROTOCOL + 1))
@pytest.mark.parametrize("value", PLAIN, ids=lambda x: x.class_name)
def test_plain_values_return_from_a_pickle(value, protocol):
    assert pickle.loads(pickle.dumps(value, protocol)) == value


@pytest.mark.parametrize("value", PLAIN, ids=lambda x: x.class_name)
def test_values_are_copied(value):
    assert copy.copy(value) == value and copy.deepcopy(value) == value


def test_numbers_leave_a_pickle_out_of_band():
    buffers = []
    value = host.numeric(np.arange(10_000.0))
    packed = pickle.dumps(value, 5, buffer_callback=buffers.append)
    assert len(packed) < 1000 and len(buffers) == 1
    assert pickle.loads(packed, buffers=buffers) == value


def test_the_printed_tree_is_the_repr():
    assert repr(STRUCT) == str(STRUCT) == (
        "struct 1x1\n"
        '  Name: char 1x1 "x"\n'
        "  Empty: <empty>\n"
        "  Inner: struct 1x1\n"
        "    A: int64 1x1 [1]"
    )


def test_the_tree_is_printed_within_limits():
    assert STRUCT.tree(max_depth=0) == "struct 1x1 ..."
    assert NUMBERS.tree(max_elements=2) == "double 2x3 [1 2 ... 4 more]"


def test_values_are_not_made_or_changed_by_hand():
    with pytest.raises(TypeError):
        numera.HostArray()
    with pytest.raises(TypeError):
        STRUCT["Name"] = NUMBERS
    with pytest.raises(AttributeError):
        NUMBERS.shape = (3, 2)
