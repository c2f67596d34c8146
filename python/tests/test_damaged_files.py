"""Files that were cut, changed or made to harm: an exception or a table, and nothing else."""

import struct

import numera
import pyarrow as pa
import pytest
from table_files import NESTED, ROWS, columns, file_of


def scan(path):
    return list(numera.scan(path, 5))  # over several batches


CALLS = pytest.mark.parametrize("call", [numera.read, scan])
ERRORS = (pa.ArrowException, OSError, UnicodeError)


def written(tmp_path, suffix):
    rows = ROWS if ".csv" in suffix else ROWS | NESTED
    if suffix == ".orc":
        return file_of(tmp_path, pa.table(rows), suffix)
    path = tmp_path / f"rows{suffix}"
    numera.write(numera.to_host(pa.table(rows)), path)
    return path


@CALLS
@pytest.mark.parametrize("suffix", [".parquet", ".orc", ".arrow", ".arrows", ".csv.gz", ".csv.zst",
                                    ".csv.lz4", ".csv.bz2", ".jsonl.gz"])
def test_a_file_that_is_cut_is_refused(tmp_path, call, suffix):
    path = written(tmp_path, suffix)
    content = path.read_bytes()
    for size in range(0, len(content), max(1, len(content) // 50)):
        path.write_bytes(content[:size])
        with pytest.raises(ERRORS):
            call(path)


@CALLS
@pytest.mark.parametrize("suffix", [".parquet", ".orc", ".arrow", ".arrows", ".csv", ".csv.gz",
                                    ".csv.zst", ".jsonl", ".jsonl.lz4"])
def test_a_file_with_a_changed_byte_is_read_or_refused(tmp_path, call, suffix):
    path = written(tmp_path, suffix)
    content = path.read_bytes()
    refused = 0
    for place in range(0, len(content), max(1, len(content) // 200)):
        path.write_bytes(content[:place] + bytes([content[place] ^ 0xFF]) + content[place + 1:])
        try:
            call(path)
        except ERRORS:
            refused += 1
    assert refused > 0


def batches_of(tmp_path, *arrays):
    path = tmp_path / "rows.arrow"
    batches = [pa.record_batch([array], ["c"]) for array in arrays]
    with pa.ipc.new_file(path, batches[0].schema) as writer:
        for batch in batches:
            writer.write_batch(batch)
    return path


def lists(*offsets):
    buffer = pa.py_buffer(struct.pack(f"{len(offsets)}i", *offsets))
    return pa.Array.from_buffers(pa.list_(pa.int64()), len(offsets) - 1, [None, buffer],
                                 children=[pa.array([1, 2])])


@CALLS
@pytest.mark.parametrize("offsets", [(0, 1 << 30, 2), (0, 2, 1)])
def test_lists_that_leave_their_values_are_refused(tmp_path, call, offsets):
    path = batches_of(tmp_path, lists(0, 2, 2), lists(*offsets))
    with pytest.raises(pa.ArrowInvalid):
        call(path)


def codes(code, words):
    """Structs of one text each; the second one has this code and is null if there is no such word."""
    values = pa.py_buffer(struct.pack("3i", 0, code, 0))
    valid = pa.py_buffer(b"\5") if code >= len(words) else None
    texts = pa.DictionaryArray.from_buffers(pa.dictionary(pa.int32(), pa.string()), 3,
                                            [valid, values], pa.array(words))
    return pa.StructArray.from_arrays([texts], ["t"])


def test_codes_behind_nulls_lead_nowhere(tmp_path):
    path = tmp_path / "rows.arrows"
    arrays = [codes(1, ["a", "b"]), codes(1 << 30, ["c", "a"])]
    with pa.ipc.new_stream(path, pa.schema([("c", arrays[0].type)])) as writer:
        for array in arrays:
            writer.write_batch(pa.record_batch([array], ["c"]))
    [table] = numera.scan(path)
    assert [row["t"] for row in columns(table)["c"]] == ["a", "b", "a", "c", None, "c"]


@CALLS
def test_codes_without_a_word_are_refused(tmp_path, call):
    texts = pa.DictionaryArray.from_buffers(pa.dictionary(pa.int32(), pa.string()), 3,
                                            [None, pa.py_buffer(struct.pack("3i", 0, 1 << 30, 0))],
                                            pa.array(["a"]))
    path = batches_of(tmp_path, pa.StructArray.from_arrays([texts], ["t"]))
    with pytest.raises(pa.ArrowInvalid):
        call(path)


@CALLS
def test_a_stream_without_the_marker_of_its_end_is_refused(tmp_path, call):
    path = written(tmp_path, ".arrows")
    path.write_bytes(path.read_bytes()[:-8])
    with pytest.raises(pa.ArrowInvalid) as caught:
        call(path)
    assert str(caught.value) == (f"{str(path)!r}: the stream is truncated: the marker of its end is "
                                 "missing")


@CALLS
def test_a_file_that_changes_while_it_is_read_is_refused(tmp_path, monkeypatch, call):
    path = written(tmp_path, ".csv")
    opened = numera.io.open_source

    def open_and_change(*arguments, **options):
        source = opened(*arguments, **options)
        path.write_text("n\n1\n")
        return source

    monkeypatch.setattr(numera.io, "open_source", open_and_change)
    with pytest.raises(OSError) as caught:
        call(path)
    assert str(caught.value) == f"{str(path)!r}: it changed while it was read"
