"""Every file format: what is read and what is refused."""

import errno
import os

import numera
import pyarrow as pa
import pyarrow.csv
import pyarrow.json
import pyarrow.orc as orc
import pyarrow.parquet as pq
import pytest
from table_files import NESTED, ROWS, columns, file_of

TEXTS = [".csv", ".tsv", ".csv.gz", ".csv.zst", ".csv.bz2", ".csv.lz4"]
SUFFIXES = [".parquet", ".arrow", ".ipc", ".feather", ".arrows", ".json", ".jsonl", ".ndjson",
            ".json.gz", ".jsonl.zst", *TEXTS]


@pytest.mark.parametrize("suffix", SUFFIXES)
def test_what_is_written_is_read_again(tmp_path, suffix):
    path = tmp_path / f"rows{suffix}"
    rows = ROWS if suffix in TEXTS else ROWS | NESTED
    numera.write(numera.to_host(pa.table(rows)), path)
    assert columns(numera.read(path)) == rows
    assert os.listdir(tmp_path) == [path.name]


@pytest.mark.parametrize("suffix, reads", [(".parquet", pq.read_table), (".csv", pa.csv.read_csv),
                                           (".csv.gz", pa.csv.read_csv), (".jsonl", pa.json.read_json),
                                           (".arrow", lambda path: pa.ipc.open_file(path).read_all()),
                                           (".arrows", lambda path: pa.ipc.open_stream(path).read_all())])
def test_others_read_what_is_written(tmp_path, suffix, reads):
    path = str(tmp_path / f"rows{suffix}")
    numera.write(numera.to_host(pa.table(ROWS)), path)
    assert reads(path).to_pydict() == ROWS


READERS = {
    ".parquet": pq.read_table,
    ".orc": orc.read_table,
    ".arrow": lambda file: pa.ipc.open_file(file).read_all(),
    ".arrows": lambda file: pa.ipc.open_stream(file).read_all(),
    ".csv": pa.csv.read_csv,
    ".tsv": lambda file: pa.csv.read_csv(file, parse_options=pa.csv.ParseOptions(delimiter="\t")),
    ".ssv": lambda file: pa.csv.read_csv(file, parse_options=pa.csv.ParseOptions(delimiter=";")),
    ".psv": lambda file: pa.csv.read_csv(file, parse_options=pa.csv.ParseOptions(delimiter="|")),
    ".jsonl": pa.json.read_json,
}


@pytest.mark.parametrize("name", ["rows", "rows.txt"])
@pytest.mark.parametrize("suffix", READERS)
def test_every_format_is_known_by_its_contents_and_read_as_pyarrow_reads_it(tmp_path, suffix, name):
    written = file_of(tmp_path, pa.table(ROWS | {"x": [0.5, -1e300, None]}), suffix)
    expected = READERS[suffix](written).to_pydict()
    assert expected["text"] == ["a", "", "ж"] and expected["x"] == [0.5, -1e300, None]
    path = written.rename(tmp_path / name)
    assert columns(numera.read(path)) == expected
    [table] = numera.scan(path)
    assert columns(table) == expected


@pytest.mark.parametrize("suffix", [".csv", ".jsonl"])
@pytest.mark.parametrize("compression", ["gzip", "zstd", "bz2", "lz4"])
def test_compressed_text_is_read(tmp_path, suffix, compression):
    plain = file_of(tmp_path, pa.table(ROWS), suffix)
    path = tmp_path / "rows"
    with pa.CompressedOutputStream(path, compression) as file:
        file.write(plain.read_bytes())
    assert columns(numera.read(path)) == ROWS
    [table] = numera.scan(path)
    assert columns(table) == ROWS


@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".arrows", ".csv"])
def test_columns_come_in_the_order_that_is_asked_for(tmp_path, suffix):
    path = file_of(tmp_path, pa.table(ROWS), suffix)
    expected = {"text": ROWS["text"], "n": ROWS["n"]}
    assert list(columns(numera.read(path, ["text", "n"])).items()) == list(expected.items())
    [table] = numera.scan(path, columns=("text", "n"))
    assert list(columns(table).items()) == list(expected.items())


def test_the_parts_of_a_parquet_file_with_dots_in_names_are_told_apart(tmp_path):
    path = file_of(tmp_path, pa.table({"a": [{"b": 1}], "a.b": [2]}), ".parquet")
    assert columns(numera.read(path, ["a.b"])) == {"a.b": [2]}
    assert columns(numera.read(path, ["a"])) == {"a": [{"b": 1}]}


@pytest.mark.parametrize("function", [numera.read, lambda path, names: numera.scan(path, 1, names)])
@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".arrows", ".csv"])
def test_unknown_columns_are_named(tmp_path, function, suffix):
    path = file_of(tmp_path, pa.table(ROWS), suffix)
    with pytest.raises(KeyError) as caught:
        function(path, ["x", "n", "y"])
    assert caught.value.args == (
        f"columns: found no 'x', 'y' in {str(path)!r}, expected some of 'n', 'text', 'flag'.",
    )


def test_a_text_is_no_list_of_columns(tmp_path):
    with pytest.raises(TypeError, match="^columns: found a text, expected a list of names.$"):
        numera.read(file_of(tmp_path, pa.table(ROWS), ".csv"), "n")


@pytest.mark.parametrize("function", [numera.read, lambda path, names: numera.scan(path, 1, names)])
@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".arrows", ".csv"])
def test_columns_are_asked_for_once_and_by_names_of_one_column(tmp_path, function, suffix):
    table = pa.table([[1], [2], [3]], names=["n", "n", "x"])
    path = file_of(tmp_path, table, suffix)
    with pytest.raises(ValueError, match="^columns: found 'x' twice or more, expected it once.$"):
        function(path, ["x", "x"])
    with pytest.raises(ValueError, match="^columns: found 2 columns 'n' in '.*', expected one.$"):
        function(path, ["x", "n"])


OPENED = pytest.mark.parametrize("call", [numera.read, numera.scan])


@OPENED
def test_a_missing_file_is_an_error_of_the_system(tmp_path, call):
    path = tmp_path / "missing.csv"
    with pytest.raises(FileNotFoundError) as caught:
        call(path)
    assert str(caught.value) == f"[Errno 2] No such file or directory: {str(path)!r}"
    assert (caught.value.errno, caught.value.filename) == (errno.ENOENT, str(path))


@OPENED
def test_devices_are_not_read(call):
    with pytest.raises(OSError) as caught:
        call("/dev/null")
    assert str(caught.value) == "'/dev/null': it is neither a regular file nor a pipe"


@OPENED
@pytest.mark.parametrize("content, reason", [
    (b"", "it is empty"),
    (b"PK\x03\x04 and more", "it is a ZIP archive, as Excel workbooks are, which is not read"),
    (b"\0\1\2\3", "it is no table in a known format (Parquet, Arrow IPC, ORC, CSV, JSON lines)"),
    (b"[1, 2]", "it is JSON, but no table: of JSON, only files with one object per line are read"),
])
def test_other_contents_are_refused_with_the_name_of_the_file(tmp_path, call, content, reason):
    path = tmp_path / "rows.parquet"
    path.write_bytes(content)
    with pytest.raises(pa.ArrowInvalid) as caught:
        call(path, columns=["n"])
    assert str(caught.value) == f"{str(path)!r}: {reason}"


@OPENED
def test_a_path_ends_at_no_null_byte(tmp_path, call):
    file_of(tmp_path, pa.table(ROWS), ".csv")
    with pytest.raises(ValueError, match="^embedded null byte$"):
        call(f"{tmp_path}/data.csv\0.parquet")
    with pytest.raises(ValueError, match="^embedded null byte$"):
        numera.write(numera.to_host(pa.table(ROWS)), f"{tmp_path}/other\0.csv")
    assert os.listdir(tmp_path) == ["data.csv"]


@OPENED
def test_a_file_that_needs_more_than_the_memory_limit_is_refused(tmp_path, call):
    path = file_of(tmp_path, pa.table({"n": list(range(100_000))}), ".arrow")
    with pytest.raises(MemoryError, match="^'.*/data.arrow': reading it needs .* bytes beside .* in "
                                          "use, and the memory limit is 100000 bytes$"):
        list(call(path, memory_limit=100_000))
    assert numera.read(path, memory_limit=1_000_000)["Columns"][0]["Data"].shape == (100_000, 1)


def test_a_scan_needs_no_more_than_the_memory_of_a_batch(tmp_path):
    path = file_of(tmp_path, pa.table({"n": list(range(100_000))}), ".arrow", rows=1_000)
    assert sum(1 for _ in numera.scan(path, 1_000, memory_limit=100_000)) == 100
    with pytest.raises(MemoryError):
        numera.read(path, memory_limit=100_000)


@OPENED
@pytest.mark.parametrize("limit", [0, -1, 2**63])
def test_the_memory_limit_is_positive(tmp_path, call, limit):
    with pytest.raises(ValueError, match=f"^memory_limit: found {limit}, expected a positive "):
        call(tmp_path / "rows.csv", memory_limit=limit)


@pytest.mark.parametrize("suffix", [".arrow", ".arrows"])
def test_forms_of_ipc_are_told_apart_by_what_they_hold(tmp_path, suffix):
    path = file_of(tmp_path, pa.table(ROWS), suffix)
    other = path.rename(tmp_path / ("data.arrows" if suffix == ".arrow" else "data.arrow"))
    assert columns(numera.read(other)) == ROWS


def test_streams_from_before_arrow_0_15_are_read(tmp_path):
    path = tmp_path / "old"
    options = pa.ipc.IpcWriteOptions(use_legacy_format=True)
    with pa.ipc.new_stream(path, pa.table(ROWS).schema, options=options) as writer:
        writer.write_table(pa.table(ROWS))
    assert path.read_bytes()[:4] != b"\xff\xff\xff\xff"
    assert columns(numera.read(path)) == ROWS


def test_the_chunks_of_a_file_stay_in_what_is_read(tmp_path):
    path = file_of(tmp_path, pa.table(NESTED), ".arrow", rows=2)
    assert len(numera.read(path)["Columns"][0]["Data"]) == 2


@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".arrows", ".csv"])
def test_paths_may_be_bytes_that_are_no_utf8(tmp_path, suffix):
    path = os.fsencode(tmp_path) + b"/\xff" + suffix.encode()
    numera.write(numera.to_host(pa.table(ROWS)), path)
    for name in (path, os.fsdecode(path)):
        assert columns(numera.read(name)) == ROWS
        [table] = numera.scan(name)
        assert columns(table) == ROWS


@pytest.mark.parametrize("suffix", [".parquet", ".arrow", ".csv", ".jsonl"])
def test_no_columns_may_be_asked_for(tmp_path, suffix):
    path = file_of(tmp_path, pa.table(ROWS), suffix)
    assert columns(numera.read(path, [])) == {}
    [table] = numera.scan(path, columns=[])
    assert columns(table) == {}


@OPENED
@pytest.mark.parametrize("name", [1, "\udcff", None])
def test_names_that_no_column_can_have_are_unknown_columns(tmp_path, call, name):
    with pytest.raises(KeyError, match="columns: found no "):
        call(file_of(tmp_path, pa.table(ROWS), ".csv"), columns=["n", name])


def test_values_without_host_form_are_cast_on_request(tmp_path):
    path = file_of(tmp_path, pa.table({"d": pa.array([1], pa.decimal128(3, 1))}), ".parquet")
    for call in (numera.read, lambda *a, **k: next(numera.scan(*a, **k))):
        with pytest.raises(pa.ArrowTypeError) as caught:
            call(path)
        assert str(caught.value).startswith("Column 'd' (index 0): found type decimal128(3, 1), ")
        assert caught.value.column_name == "d"
        assert columns(call(path, cast=True)) == {"d": [1.0]}
