"""The data of the peers: the same values as in arrow_data.h, made in Python."""

import numpy as np
import pyarrow as pa
import pyarrow.ipc
import pyarrow.parquet


def _bytes_with_numbers(text, begin, count):
    """`count` copies of the text, each with its number in decimal in place of the '#' signs."""
    template = np.frombuffer(text.encode(), dtype=np.uint8)
    digits = text.count("#")
    rows = np.tile(template, (count, 1))
    numbers = np.arange(begin, begin + count, dtype=np.int64)
    for place in range(digits):
        rows[:, len(template) - 1 - place] = ord("0") + numbers % 10
        numbers //= 10
    return rows


def _numbered(type_, text, count):
    rows = _bytes_with_numbers(text, 0, count)
    offsets = np.arange(count + 1, dtype=np.int32) * rows.shape[1]
    buffers = [None, pa.py_buffer(offsets), pa.py_buffer(rows.reshape(-1))]
    return pa.Array.from_buffers(type_, count, buffers)


def doubles(count, begin=0):
    return pa.array(np.arange(begin, begin + count) / 2)


def doubles_with_nulls(count):
    numbers = np.arange(count)
    validity = np.packbits(numbers % 10 != 9, bitorder="little")
    return pa.Array.from_buffers(
        pa.float64(), count, [pa.py_buffer(validity), pa.py_buffer(numbers / 2)])


def in_chunks(array, chunks):
    step = -(-len(array) // chunks)
    return pa.chunked_array(
        [array.slice(begin, step) for begin in range(0, len(array), step)])


def booleans(count):
    numbers = np.arange(count)
    bits = np.packbits((numbers % 3 == 0) | (numbers % 7 == 0), bitorder="little")
    return pa.Array.from_buffers(pa.bool_(), count, [None, pa.py_buffer(bits)])


def odd_chunks_of_booleans(count):
    odd = count // 10 + 1
    bits = np.unpackbits(
        np.frombuffer(booleans(count).buffers()[1], np.uint8), count=count, bitorder="little")
    chunks = []
    for begin in range(0, count, odd):
        part = bits[begin:begin + odd]
        packed = pa.py_buffer(np.packbits(part, bitorder="little"))
        chunks.append(pa.Array.from_buffers(pa.bool_(), len(part), [None, packed]))
    return pa.chunked_array(chunks)


def dates(count):
    return pa.array((np.arange(count) % 20_000).astype(np.int32)).view(pa.date32())


def timestamps(count):
    return pa.array(np.arange(count) * 60_000_000).view(pa.timestamp("us", "UTC"))


def durations(count):
    return pa.array(np.arange(count)).view(pa.duration("s"))


def ascii_texts(count):
    return _numbered(pa.string(), "item #######", count)


def mixed_texts(count):
    return _numbered(pa.string(), "Zürich 東京 Αθήνα ###", count)


def byte_strings(count):
    return _numbered(pa.binary(), "bytes ##########", count)


def categories(count, chunks=1):
    arrays = []
    for chunk in range(chunks):
        length = count // chunks
        numbers = np.arange(chunk * length, (chunk + 1) * length)
        names = pa.array([f"category {(chunk + i) % 100}" for i in range(100)])
        codes = pa.array((numbers * 37 % 100).astype(np.int32))
        arrays.append(pa.DictionaryArray.from_arrays(codes, names))
    return pa.chunked_array(arrays)


def lists(count):
    offsets = pa.array(np.arange(count + 1, dtype=np.int32) * 8)
    return pa.ListArray.from_arrays(offsets, doubles(count * 8))


def structs(count):
    return pa.StructArray.from_arrays(
        [pa.array(np.arange(count)), ascii_texts(count)], ["number", "text"])


def table(columns, rows=1000):
    arrays = [doubles(rows, begin=i * rows) for i in range(columns)]
    return pa.table(arrays, names=[f"column {i}" for i in range(columns)])


def example(path):
    if path.suffix == ".arrow":
        with pa.OSFile(str(path)) as file:
            return pa.ipc.open_file(file).read_all()
    return pa.parquet.read_table(path, use_threads=False)
