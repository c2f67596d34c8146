"""Reads encoded values by their documented format, without the library's conversion to Arrow.

`elements` returns plain Python objects: the same as pyarrow for the same data, except for what
`losses` lists.
"""

import datetime as dt

import numpy as np
import pandas as pd

EPOCH = dt.datetime(1970, 1, 1)
UTC_EPOCH = EPOCH.replace(tzinfo=dt.timezone.utc)
PER_SECOND = {"seconds": 1, "milliseconds": 10**3, "microseconds": 10**6, "nanoseconds": 10**9}
NUMBERS = {"double", "single"} | {f"{u}int{bits}" for u in ("", "u") for bits in (8, 16, 32, 64)}


def elements(envelope):
    kind, valid, data = envelope["Type"].text, envelope["Valid"], envelope["Data"]
    assert envelope["ArrowType"].text == ARROW_TYPES.get(kind, "array")
    if kind in CHUNKED:
        assert len(valid) == len(data)
        chunks = [_with_nulls(bits, CHUNKED[kind](chunk)) for bits, chunk in zip(valid, data)]
        return [element for chunk in chunks for element in chunk]
    if kind == "null":
        return [None] * data[0]
    return _with_nulls(valid, PLAIN[kind](data))


def columns(table):
    """The elements of the columns of a table, by name."""
    assert table["ArrowType"].text == "table"
    assert len(table["Names"]) == len(table["Columns"])
    return {name.text: elements(column) for name, column in zip(table["Names"], table["Columns"])}


def _vector(value):
    assert value.shape == (len(value), 1)
    return value.numpy().ravel()


def _bits(envelope):
    assert envelope["ArrowType"].text == "buffer"
    return np.unpackbits(_vector(envelope["Values"]), bitorder="little").astype(bool)


def _with_nulls(valid, values):
    if len(valid) == 0:  # no chunks
        assert values == []
        return []
    assert valid["Length"][0] == len(values)
    bits = _bits(valid)
    if len(bits) == 0:
        return values
    assert (len(values) + 7) // 8 * 8 == len(bits)
    return [value if bit else None for bit, value in zip(bits, values)]


def _logical(data):
    length = int(data["Length"][0])
    bits = _bits(data)
    assert (length + 7) // 8 * 8 == len(bits)
    return bits[:length].tolist()


def _instants(data):
    values = _vector(data["Values"]).tolist()
    if data["DateType"].text == "Date":
        milliseconds = 86_400_000 if data["Values"].class_name == "int32" else 1
        times = [_later(EPOCH, value * milliseconds, 1000) for value in values]
        return [time and time.date() for time in times]
    zone, per_second = data["TimeZone"].text, PER_SECOND[data["Units"].text]
    if per_second == 10**9:
        times = [pd.Timestamp(value, unit="ns", tz="UTC" if zone else None) for value in values]
    else:
        times = [_later(UTC_EPOCH if zone else EPOCH, value, per_second) for value in values]
    return [(time, zone) for time in times] if zone else times


def _later(start, value, per_second):
    """The time; None if Python cannot express it, which may happen under a null."""
    try:
        return start + dt.timedelta(microseconds=value * 10**6 // per_second)
    except OverflowError:
        return None


def _times_of_day(data):
    per_second = PER_SECOND[data["Units"].text]
    assert data["Values"].class_name == ("int32" if per_second <= 1000 else "int64")
    times = [_later(EPOCH, value, per_second) for value in _vector(data["Values"]).tolist()]
    return [time and time.time() for time in times]


def _bytes(data):
    assert data.class_name == "cell"
    return [_vector(element).tobytes() for element in data]


def _texts(data):
    assert data.class_name == "string" and data.shape == (len(data), 1)
    return list(data)


def _categories(data):
    categories = _texts(data["Categories"])
    assert data["Ordinal"].class_name == "logical"
    codes = _vector(data["Values"]).tolist()
    # Under a null the code may be any number.
    return [categories[code] if 0 <= code < len(categories) else None for code in codes]


def _lists(chunk):
    return _ranges(chunk["StartOffsets"], elements(chunk["Values"]))


def _ranges(offsets, values):
    starts = _vector(offsets).tolist()
    assert starts[0] == 0 and starts[-1] == len(values)
    return [values[start:end] for start, end in zip(starts, starts[1:])]


def _structs(chunk):
    names = [name.text for name in chunk["FieldName"]]
    fields = [elements(field) for field in chunk["FieldData"]]
    return [dict(zip(names, row)) for row in zip(*fields, strict=True)]


def _maps(chunk):
    pairs = list(zip(elements(chunk["Keys"]), elements(chunk["Values"]), strict=True))
    return _ranges(chunk["StartOffsets"], pairs)


PLAIN = {
    "logical": _logical,
    "datetime": _instants,
    "duration": _times_of_day,
    "string": _texts,
    "binary_array": _bytes,
    "fixed_binary_array": _bytes,
    "categorical": _categories,
} | dict.fromkeys(NUMBERS, lambda data: _vector(data).tolist())
CHUNKED = {"list_array": _lists, "large_list_array": _lists, "struct": _structs, "map": _maps}
ARROW_TYPES = dict.fromkeys(("list_array", "large_list_array"), "list_array") | {
    "struct": "struct", "map": "map"
}
