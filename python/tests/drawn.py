"""Strategies that draw Arrow types and chunked arrays of them, nested, sliced and with nulls."""

import datetime as dt
import decimal

import pyarrow as pa
import pyarrow.compute as pc
from hypothesis import assume
from hypothesis import strategies as st

UNITS = {"s": 1, "ms": 10**3, "us": 10**6, "ns": 10**9}
ZONES = [None, "UTC", "Europe/Paris", "America/New_York", "+05:30"]
WORDS = st.text(st.characters(exclude_categories=["Cs"]), max_size=5)
DATES = st.dates(dt.date(2, 1, 1), dt.date(9998, 1, 1))
DAY = 86_400


def _integers(bits, signed):
    low = -(2 ** (bits - 1)) if signed else 0
    return st.integers(low, low + 2**bits - 1)


def _counts(unit, low, high):
    """Numbers of units between two seconds, limited to what Python's own times can express."""
    factor = UNITS[unit]
    step = 1000 if unit == "ns" else 1
    return st.integers(low * factor // step, (high * factor - 1) // step).map(lambda n: n * step)


def _instants(unit):
    low, high = (-9 * 10**9, 9 * 10**9) if unit == "ns" else (-62 * 10**9, 253 * 10**9)
    return _counts(unit, low, high)


# Pairs of a type and a strategy for its values without nulls.
NUMBERS = [(getattr(pa, f"{u}int{n}")(), _integers(n, u == "")) for u in ("", "u") for n in (8, 16, 32, 64)]
TEXTS = [(pa.string(), WORDS), (pa.large_string(), WORDS)]
KNOWN = NUMBERS + TEXTS + [
    (pa.null(), st.none()),
    (pa.bool_(), st.booleans()),
    (pa.float32(), st.floats(width=32)),
    (pa.float64(), st.floats()),
    (pa.date32(), DATES),
    (pa.date64(), DATES),
    (pa.binary(), st.binary(max_size=5)),
    (pa.large_binary(), st.binary(max_size=5)),
    (pa.binary(3), st.binary(min_size=3, max_size=3)),
    (pa.dictionary(pa.int8(), pa.string()), WORDS),
    (pa.dictionary(pa.uint32(), pa.large_string(), ordered=True), WORDS),
] + [
    (pa.time32(unit), _counts(unit, 0, DAY)) for unit in ("s", "ms")
] + [
    (pa.time64(unit), _counts(unit, 0, DAY)) for unit in ("us", "ns")
] + [
    (pa.timestamp(unit, zone), _instants(unit)) for unit in UNITS for zone in ZONES
] + [
    (pa.duration(unit), _counts(unit, -9 * 10**9, 9 * 10**9)) for unit in UNITS
]

_INTERVALS = st.tuples(_integers(32, True), _integers(32, True), _integers(64, True))
CAST = [
    (pa.float16(), st.floats(width=16)),
    (pa.decimal128(9, 2), st.decimals(-9_999_999, 9_999_999, places=2)),
    (pa.decimal256(40, 20), st.integers(-(10**40) + 1, 10**40 - 1).map(
        lambda n: decimal.Decimal(n).scaleb(-20, decimal.Context(prec=50)))),
    (pa.string_view(), st.text(st.characters(exclude_categories=["Cs"]), max_size=20)),
    (pa.binary_view(), st.binary(max_size=20)),
    (pa.month_day_nano_interval(), _INTERVALS),
    (pa.dictionary(pa.int16(), pa.int32()), _integers(32, True)),
]


def _lists(drawn, make, size=st.integers(0, 3)):
    type, values = drawn
    return make(type), size.flatmap(lambda n: st.lists(_or_null(type, values), min_size=n, max_size=n))


def _or_null(type, values):
    return st.none() | values


def _struct(fields):
    fields = [(f"f{i}" if i % 2 else f"поле {i}", *field) for i, field in enumerate(fields)]
    values = {name: _or_null(type, values) for name, type, values in fields}
    return pa.struct([(name, type) for name, type, _ in fields]), st.fixed_dictionaries(values)


def _map(key, item):
    pairs = st.tuples(key[1], _or_null(*item))
    return pa.map_(key[0], item[0]), st.lists(pairs, max_size=3)


def typed(leaves, extra_lists=()):
    """Pairs of a type and a strategy for its values: a leaf, or a nested type of leaves."""
    keys = st.sampled_from(TEXTS + NUMBERS)

    def nested(inner):
        makers = [pa.list_, pa.large_list, *extra_lists]
        lists = st.builds(_lists, inner, st.sampled_from(makers))
        structs = st.lists(inner, min_size=1, max_size=3).map(_struct)
        return lists | structs | st.builds(_map, keys, inner)

    return st.recursive(st.sampled_from(leaves), nested, max_leaves=4)


known = typed(KNOWN)
castable = typed(KNOWN + CAST, [pa.list_view, pa.large_list_view])


def _array(values, type):
    """The array. Draws again if pyarrow makes an array that it finds invalid itself: a null struct
    over a dictionary without values."""
    array = pa.array(values, type)
    try:
        array.validate(full=True)
    except pa.ArrowInvalid:
        assume(False)
    return array


@st.composite
def column(draw, types):
    """A chunked array whose chunks are slices of longer arrays."""
    type, values = draw(types)
    chunks = []
    for _ in range(draw(st.integers(0, 3))):
        whole = _array(draw(st.lists(_or_null(type, values), max_size=12)), type)
        start = draw(st.integers(0, len(whole)))
        chunks.append(whole.slice(start, draw(st.integers(0, len(whole) - start))))
    return pa.chunked_array(chunks, type)


@st.composite
def special(draw):
    """Columns that need special constructors: extensions, run-end encoded, fixed-size lists."""
    kind = draw(st.sampled_from(["extension", "runs", "lists"]))
    leaves = [(pa.binary(16), st.binary(min_size=16, max_size=16))]
    type, values = draw(st.sampled_from(leaves if kind == "extension" else NUMBERS + TEXTS))
    flat = pa.array(draw(st.lists(_or_null(type, values), max_size=12)), type)
    if kind == "extension":
        whole = pa.ExtensionArray.from_storage(pa.uuid(), flat)
    elif kind == "runs":
        whole = pc.run_end_encode(flat)
    else:
        size = draw(st.integers(1, 3))
        whole = pa.FixedSizeListArray.from_arrays(flat[: len(flat) // size * size], size)
    return pa.chunked_array([whole.slice(draw(st.integers(0, len(whole))))])


@st.composite
def table(draw, types):
    rows = draw(st.integers(0, 6))
    columns = {}
    for i in range(draw(st.integers(0, 4))):
        type, values = draw(types)
        whole = _array(draw(st.lists(_or_null(type, values), min_size=rows, max_size=rows)), type)
        cut = draw(st.integers(0, rows))
        columns[f"column {i}"] = pa.chunked_array([whole[:cut], whole[cut:]])
    start = draw(st.integers(0, rows))
    return pa.table(columns).slice(start)
