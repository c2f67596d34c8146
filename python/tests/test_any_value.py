"""Values of any type, in the host and after the way back, compared with what pyarrow reads."""

import struct

import drawn
import encoded
import losses
import numera
import pyarrow as pa
import pytest
from hypothesis import given


def same(a, b):
    """Equality of class and value at every depth. NaN equals NaN, and -0.0 differs from 0.0."""
    if isinstance(a, float) and isinstance(b, float):
        return a != a and b != b or struct.pack("d", a) == struct.pack("d", b)
    if isinstance(a, (list, tuple)):
        return type(a) is type(b) and len(a) == len(b) and all(map(same, a, b))
    if isinstance(a, dict):
        return list(a) == list(b) and all(same(a[name], b[name]) for name in a)
    return (isinstance(a, bool) == isinstance(b, bool)) and a == b


def check(found, expected):
    assert len(found) == len(expected)
    for i, (a, b) in enumerate(zip(found, expected)):
        assert same(a, b), (i, a, b)


def held(column):
    """What the host must hold for a column: what pyarrow reads, without what is lost."""
    return [losses.in_host(column.type, value) for value in column.to_pylist()]


def addresses(array):
    return [buffer and buffer.address for buffer in array.buffers()]


@given(drawn.column(drawn.known))
def test_the_host_holds_what_pyarrow_reads(column):
    check(encoded.elements(numera.to_host(column)), held(column))


@given(drawn.column(drawn.castable) | drawn.special())
def test_the_host_holds_what_pyarrow_reads_of_what_is_cast(column):
    check(encoded.elements(numera.to_host(column, cast=True)), held(column))


@given(drawn.table(drawn.known))
def test_tables_hold_what_pyarrow_reads(table):
    found = encoded.columns(numera.to_host(table))
    assert list(found) == table.column_names
    for name in found:
        check(found[name], held(table[name]))


@given(drawn.column(drawn.known))
def test_what_comes_back_is_what_pyarrow_reads(column):
    back = numera.to_arrow(numera.make_readable(numera.to_host(column)))
    expected = [losses.back_in_arrow(column.type, value) for value in column.to_pylist()]
    check(back.to_pylist(), expected)


@given(drawn.column(drawn.known))
def test_written_and_readable_values_come_back_alike(column):
    written = numera.to_host(column)
    back = numera.to_arrow(written)
    readable = numera.to_arrow(numera.make_readable(written))
    assert back.type == readable.type
    check(back.to_pylist(), readable.to_pylist())


@given(drawn.column(drawn.known))
def test_readable_values_are_wrapped_alike_with_and_without_a_check(column):
    value = numera.make_readable(numera.to_host(column))
    checked, unchecked = numera.to_arrow(value), numera.to_arrow(value, validate=False)
    assert checked.type == unchecked.type
    assert addresses(checked) == addresses(unchecked)


@given(drawn.column(drawn.known))
def test_the_type_that_is_asked_for_brings_back_what_was_there(column):
    back = numera.to_arrow(numera.to_host(column), column.type)
    assert back.type.equals(column.type, check_metadata=True)
    back.validate(full=True)
    check(back.to_pylist(), column.to_pylist())


@given(drawn.table(drawn.known))
def test_the_schema_that_is_asked_for_brings_back_what_was_there(table):
    back = numera.to_arrow(numera.to_host(table), table.schema)
    assert back.schema.equals(table.schema, check_metadata=True)
    for name in table.column_names:
        check(back[name].to_pylist(), table[name].to_pylist())


@given(drawn.column(drawn.known))
def test_values_are_independent_of_chunks(column):
    whole = pa.chunked_array([column.combine_chunks()], column.type)
    check(encoded.elements(numera.to_host(column)), encoded.elements(numera.to_host(whole)))


@given(drawn.column(drawn.known))
def test_nothing_of_a_column_is_left_in_memory(column):
    before = numera.host.live_arrays()
    host = numera.to_host(column)
    assert numera.host.live_arrays() > before
    del host
    assert numera.host.live_arrays() == before


@pytest.mark.parametrize("a, b", [(1, True), (0.0, -0.0), ([1], (1,)), ([1], [1, 2]), ("a", b"a"),
                                  ({"a": 1}, {"b": 1}), (None, 0), ([float("nan")], [0.0])])
def test_different_values_are_told_apart(a, b):
    assert same(a, a) and not same(a, b)
