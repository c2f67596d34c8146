"""Failures while data comes in: their classes, texts and columns."""

import numera
import pyarrow as pa
import pytest
from numera import host


def invalid_text(length=2):
    offsets = pa.py_buffer(b"\0\0\0\0\1\0\0\0\2\0\0\0")
    return pa.Array.from_buffers(pa.string(), length, [None, offsets, pa.py_buffer(b"a\xff")])


def test_an_invalid_array_is_refused():
    with pytest.raises(pa.ArrowInvalid, match="Invalid UTF8") as caught:
        numera.to_host(invalid_text())
    assert not hasattr(caught.value, "column_name")
    assert not hasattr(caught.value, "__notes__")  # no cast would help


def test_an_invalid_column_is_named():
    table = pa.table({"a": [1, 2], "b": invalid_text(), "c": [1, 2]})
    with pytest.raises(pa.ArrowInvalid, match="Invalid UTF8") as caught:
        numera.to_host(table)
    error = caught.value
    assert str(error) == "Column 'b' (index 1): Invalid UTF8 sequence at string index 1"
    assert (error.column_name, error.column_index) == ("b", 1)
    assert error.error_code is numera.TableErrorCode.Internal and error.error_code == 1


def test_a_column_of_a_type_without_host_form_is_named():
    table = pa.table({"a": [1], "é": pa.array([[None]], pa.list_(pa.decimal128(3, 1)))})
    with pytest.raises(pa.ArrowTypeError) as caught:
        numera.to_host(table)
    error = caught.value
    assert str(error) == ("Column 'é' (index 1)[]: found type decimal128(3, 1), expected one that has "
                          "a host form; casts were not asked for.")
    assert (error.column_name, error.column_index) == ("é", 1)
    assert error.error_code is numera.TableErrorCode.TypeError and error.error_code == 0


def test_the_families_are_those_of_python_too():
    with pytest.raises(TypeError):
        numera.to_host(pa.array([None], pa.decimal128(3, 1)))
    with pytest.raises(ValueError):
        numera.to_host(invalid_text())


class Failing(Exception):
    pass


def failing_batches(error):
    yield pa.record_batch({"a": [1]})
    raise error


@pytest.mark.parametrize("error", [Failing("lost"), KeyboardInterrupt(), MemoryError()], ids=repr)
def test_the_exception_of_a_reader_comes_through(error):
    reader = pa.RecordBatchReader.from_batches(pa.schema({"a": pa.int64()}), failing_batches(error))
    with pytest.raises(type(error)):
        numera.to_host(reader)


class Stream:
    def __init__(self, reader):
        self.reader = reader

    def __arrow_c_stream__(self, requested_schema=None):
        return self.reader.__arrow_c_stream__(requested_schema)


def test_a_stream_that_fails_is_an_error_of_the_system():
    batches = failing_batches(Failing("lost"))
    reader = pa.RecordBatchReader.from_batches(pa.schema({"a": pa.int64()}), batches)
    with pytest.raises(Exception, match="lost") as caught:
        numera.to_host(Stream(reader))
    assert isinstance(caught.value, (OSError, pa.ArrowException))


class Refusing:
    def __arrow_c_stream__(self, requested_schema=None):
        raise Failing("no data")


def test_the_exception_of_the_protocol_itself_comes_through():
    with pytest.raises(Failing, match="^no data$"):
        numera.to_host(Refusing())


def test_nothing_half_made_stays_after_a_failure():
    before = host.live_arrays()
    for value in (invalid_text(), pa.table({"a": [1, 2], "b": invalid_text()})):
        with pytest.raises(pa.ArrowInvalid):
            numera.to_host(value)
    assert host.live_arrays() == before
