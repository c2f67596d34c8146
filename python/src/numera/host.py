"""Host values made from NumPy arrays and Python objects, and counts of all host arrays.

An array with one dimension becomes a column, one without dimensions a 1-by-1 value. An array with
two or more dimensions keeps its shape. Everything is copied, except host values in cells and
structs: these share memory.

>>> import numpy
>>> from numera import host
>>> host.numeric(numpy.arange(6.0).reshape(2, 3))
double 2x3 [0 1 2; 3 4 5]
"""

import operator
from collections.abc import Iterable, Mapping, Sequence
from typing import Any

import numpy

from . import _core
from ._core import HostArray, first_difference, live_arrays, live_bytes

__all__ = [
    "cell",
    "char",
    "first_difference",
    "live_arrays",
    "live_bytes",
    "logical",
    "numeric",
    "string",
    "struct",
]

_LOGICAL = 3
_CLASSES = {
    "float64": (6, False),
    "float32": (7, False),
    "int8": (8, False),
    "uint8": (9, False),
    "int16": (10, False),
    "uint16": (11, False),
    "int32": (12, False),
    "uint32": (13, False),
    "int64": (14, False),
    "uint64": (15, False),
    "complex128": (6, True),
    "complex64": (7, True),
    "bool": (_LOGICAL, False),
}


def numeric(values: Any) -> HostArray:
    """A numeric array. The dtype of values determines its class; bool becomes logical.

    values is a NumPy array of any strides and byte order, or anything that numpy.asarray accepts.
    float64 becomes "double" and float32 "single"; integers keep their names; complex numbers become
    complex arrays.

    Raises TypeError for every other dtype (object, float16, datetime64, text), and ValueError for
    masked arrays, because masked elements would become values.

    >>> from numera import host
    >>> host.numeric([1, 2, 3]), host.numeric(2.5)
    (int64 3x1 [1 2 3], double 1x1 [2.5])
    """
    return _from_numpy(_array(values), "numbers")


def logical(values: Any) -> HostArray:
    """A logical array. Raises TypeError for any dtype except bool.

    >>> from numera import host
    >>> host.logical([True, False])
    logical 2x1 [true false]
    """
    array = _array(values)
    if array.size == 0 and not isinstance(values, numpy.ndarray):
        array = array.astype(bool)
    if array.dtype != numpy.bool_:
        raise TypeError(f"logical: found dtype {array.dtype}, expected bool.")
    return _from_numpy(array, "truth values")


def char(text: str | Sequence[str]) -> HostArray:
    """A char row of the UTF-16 code units of a text, or a char matrix with one text per row.

    Keeps lone surrogates. Raises TypeError for anything except texts, and ValueError for texts of
    different lengths.

    >>> from numera import host
    >>> host.char("abc"), host.char(["ab", "cd"])
    (char 1x3 "abc", char 2x2 ["ab" "cd"])
    """
    if isinstance(text, str):
        units = _units(text)
        return _core._new_char(units, (1, len(units) // 2))
    texts = _iterated(text, "char", "a text or an iterable of texts")
    rows = [_units(_text(row, i, "char")) for i, row in enumerate(texts)]
    lengths = {len(row) // 2 for row in rows}
    if len(lengths) > 1:
        raise ValueError(f"char: found rows of {min(lengths)} and {max(lengths)} code units, "
                         "expected rows of the same length.")
    length = lengths.pop() if lengths else 0
    matrix = numpy.frombuffer(b"".join(rows), dtype="<u2").reshape(len(rows), length)
    return _char_of_units(matrix)


def string(texts: Any) -> HostArray:
    """A string array; None is a missing text.

    texts is one text or None, an iterable of them, or a NumPy array of texts of any shape.
    Raises TypeError for anything else, including NaN and pandas.NA.

    >>> from numera import host
    >>> host.string(["a", None, "c"])
    string 3x1 ["a" <missing> "c"]
    """
    if texts is None or isinstance(texts, str):
        return _core._new_string([texts], (1, 1))
    if isinstance(texts, numpy.ndarray):
        elements, shape = texts.reshape(-1, order="F").tolist(), _shape(texts)
    else:
        elements = list(_iterated(texts, "string", "a text, None or an iterable of them"))
        shape = (len(elements), 1)
    checked = [None if text is None else _text(text, i, "string") for i, text in enumerate(elements)]
    return _core._new_string(checked, shape)


def cell(values: Iterable[Any], shape: Sequence[int] | None = None) -> HostArray:
    """A cell array of values in storage order, as a column or with the given shape.

    A value is a HostArray, None (an empty slot), a str (a char row), or numbers for `numeric`.
    Raises TypeError for other values, and ValueError if the number of values does not fit shape.

    >>> from numera import host
    >>> host.cell(["a", 1.5, None]).shape, host.cell(["a", "b"], shape=(1, 2)).shape
    ((3, 1), (1, 2))
    """
    iterated = _iterated(values, "cell", "an iterable of values")
    slots = [_value(value, i) for i, value in enumerate(iterated)]
    return _core._new_cell(slots, _given(shape, len(slots)))


def struct(
    elements: Mapping[str, Any] | Iterable[Mapping[str, Any]],
    shape: Sequence[int] | None = None,
    fields: Sequence[str] | None = None,
) -> HostArray:
    """A struct of one element from a mapping, or a struct array from several mappings.

    Field values are the same as in `cell`. All mappings have the same fields in the same order.
    `fields` names the fields if there is no element.

    Raises TypeError for other values, and ValueError if the fields differ or if the number of
    elements does not fit shape.

    >>> from numera import host
    >>> host.struct({"Name": "x", "Sizes": [1, 2]})
    struct 1x1
      Name: char 1x1 "x"
      Sizes: int64 2x1 [1 2]
    >>> host.struct([{"A": 1}, {"A": 2}])[1]["A"]
    int64 1x1 [2]
    """
    rows = [elements]
    if not isinstance(elements, Mapping):
        rows = list(_iterated(elements, "struct", "a mapping or an iterable of mappings"))
    for i, row in enumerate(rows):
        if not isinstance(row, Mapping):
            raise TypeError(f"struct: found {type(row).__name__} at index {i}, expected a mapping.")
    names = list(fields) if fields is not None else list(rows[0]) if rows else []
    slots = []
    for i, row in enumerate(rows):
        if list(row) != names:
            raise ValueError(f"struct: found the fields {list(row)} at index {i}, "
                             f"expected {names}.")
        slots.extend(_value(row[name], name) for name in names)
    for name in names:
        if not isinstance(name, str):
            raise TypeError(f"struct: found a field name {name!r}, expected a text.")
    return _core._new_struct(names, slots, _given(shape, len(rows)))


def _array(values):
    if isinstance(values, HostArray):
        raise TypeError("values: found a HostArray, expected a NumPy array or a sequence.")
    if isinstance(values, numpy.ma.MaskedArray):
        raise ValueError("values: found a masked array, expected one without a mask.")
    return numpy.asarray(values)


def _shape(array):
    if array.ndim == 0:
        return (1, 1)
    return (array.shape[0], 1) if array.ndim == 1 else array.shape


def _from_numpy(array, expected):
    if array.dtype == numpy.bool_:
        array = array.view("u1") != 0  # views of other memory may hold bytes other than 0 and 1
    dtype = array.dtype.newbyteorder("=")
    if dtype.name not in _CLASSES:
        raise TypeError(
            f"values: found dtype {array.dtype}, expected {expected}: float64, float32, int8 to "
            "uint64, complex128, complex64 or bool."
        )
    class_id, is_complex = _CLASSES[dtype.name]
    shape = _shape(array)
    value = _core._new_numeric(class_id, is_complex, shape)
    numpy.asarray(memoryview(value))[...] = array.reshape(shape)
    _core._seal(value)
    return value


def _char_of_units(units):
    return _core._new_char(units.astype("<u2", copy=False).tobytes(order="F"), _shape(units))


def _text(text, i, function):
    if not isinstance(text, str):
        raise TypeError(f"{function}: found {type(text).__name__} at index {i}, "
                        "expected a text.")
    return text


def _iterated(values, function, expected):
    if isinstance(values, Iterable) and not isinstance(values, bytes | bytearray | memoryview):
        return values
    raise TypeError(f"{function}: found {type(values).__name__}, expected {expected}.")


def _units(text):
    return text.encode("utf-16-le", "surrogatepass")


def _given(shape, count):
    if shape is None:
        return (count, 1)
    extents = tuple(operator.index(extent) for extent in shape)
    if len(extents) < 2 or not all(0 <= extent < 2**63 for extent in extents):
        raise ValueError(f"shape: found {extents}, expected two or more dimensions, "
                         "each from 0 to 2**63 - 1.")
    return extents


def _value(value, place):
    if value is None or isinstance(value, HostArray):
        return value
    if isinstance(value, str):
        return char(value)
    try:
        return numeric(value)
    except (TypeError, ValueError) as error:
        raise TypeError(
            f"{place!r}: found {type(value).__name__}, expected a HostArray, None, a text or "
            f"numbers ({error})"
        ) from None
