"""Host tables from files and into files."""

import operator
import os
import sys
from collections.abc import Iterator, Sequence
from contextlib import closing

import pyarrow as pa
from tqdm import tqdm

from ._core import FileSink, FileSource, HostArray, to_arrow

__all__ = ["read", "scan", "write"]

# Short work shows no bar.
_SECONDS_BEFORE_BAR = 1.0

_ALL_ROWS = 2**63 - 1
_READ_ROWS = 1 << 20  # at a time; most row groups have no more, and stay one chunk
_WRITTEN_ROWS = 1 << 16  # at a time; the rows of a batch in Arrow IPC files

_Path = str | bytes | os.PathLike[str] | os.PathLike[bytes]


def read(
    path: _Path,
    columns: Sequence[str] | None = None,
    cast: bool = False,
    *,
    memory_limit: int | None = None,
) -> HostArray:
    """Reads a file and returns its encoded table, as `to_host` does.

    The contents tell the format, not the name: Parquet, Arrow IPC files and streams, ORC, CSV with
    any of the delimiters comma, tab, semicolon and vertical bar, and JSON lines. CSV and JSON lines
    may be compressed by gzip, zstd, bzip2 or lz4.

    The first MiB of a CSV file decides the types of its columns. A later value of another type is
    an error. In a column of texts, an empty field is null and a field of two quotation marks is an
    empty text. In a CSV file with one column an empty line is a null. A row may have 64 MiB.

    columns names the columns to read, in the order of the result; None reads all. cast is the same
    as in `to_host`. memory_limit is the most memory in bytes that the file may take before it is
    converted; None is 2 GiB, or four times the size of the file if that is more. If reading takes
    long and stderr is a terminal, a bar shows the progress.

    Raises:
    - KeyError, with the names, for columns that the file does not have;
    - ValueError for a name that is listed twice or that several columns have, and for a
      memory_limit that is not positive or is 2**63 or more;
    - pyarrow.ArrowInvalid, which is a ValueError, for contents that are no table of these formats,
      such as a Parquet column whose number of rows differs from the footer;
    - OSError for a file that cannot be read, that changed while it was read, or whose data does not
      match its checksum;
    - pyarrow.ArrowMemoryError, which is a MemoryError, for a file that takes more than memory_limit;
    - UnicodeError, which is a ValueError, for a name that is not UTF-8;
    - whatever `to_host` raises.

    >>> import numera, tempfile, pathlib
    >>> path = pathlib.Path(tempfile.mkdtemp(), "rows.csv")
    >>> _ = path.write_text("n,text\\n1,one\\n2,two\\n")
    >>> numera.read(path, columns=["text"])["Columns"][0]["Data"]
    string 2x1 ["one" "two"]
    """
    with closing(_open(path, columns, _READ_ROWS, memory_limit=memory_limit)) as source:
        with _bar("reading", source.rows) as bar:
            _collect(source, _ALL_ROWS, bar)
        return source.take(cast, one_chunk=False)


def scan(
    path: _Path,
    batch_rows: int = 65_536,
    columns: Sequence[str] | None = None,
    cast: bool = False,
    *,
    memory_limit: int | None = None,
) -> Iterator[HostArray]:
    """An iterator over a file as encoded tables of batch_rows rows each.

    The last table may be shorter. A file without rows gives no table. Memory holds one table and
    what the format needs: some pages per column of a Parquet file, one batch of an IPC file, some
    megabytes of text. Every column of a table is one chunk.

    path, columns, cast and memory_limit are the same as in `read`, and so are the errors. A
    batch_rows that is not an integer raises TypeError; one that is not positive or is 2**63 or more
    raises ValueError. Errors of the arguments, and of files that cannot be opened, are raised at
    once, others when they occur. The file is closed when the iterator ends or is closed.

    One thread at a time may use the iterator; it may be another one for each table.

    >>> import numera, tempfile, pathlib
    >>> path = pathlib.Path(tempfile.mkdtemp(), "rows.csv")
    >>> _ = path.write_text("n\\n1\\n2\\n3\\n")
    >>> [table["Columns"][0]["Data"] for table in numera.scan(path, batch_rows=2)]
    [int64 2x1 [1 2], int64 1x1 [3]]
    """
    batch_rows = _positive("batch_rows", batch_rows)
    source = _open(path, columns, batch_rows, memory_limit=memory_limit)
    return _scanned(source, batch_rows, cast)


def write(host: HostArray, path: _Path, *, compression: str | None = None) -> None:
    """Writes an encoded table, from `to_host`, `read` or `make_readable`, to a file.

    The end of the name selects the format:
    - ".parquet" is Parquet;
    - ".arrow", ".ipc" and ".feather" are Arrow IPC files, ".arrows" are Arrow IPC streams;
    - ".csv" is CSV with commas, ".tsv" with tabs;
    - ".json", ".jsonl" and ".ndjson" are JSON lines. Behind the end of CSV and JSON lines, ".gz",
      ".zst", ".bz2" and ".lz4" compress the text.

    compression is a name, and for some a level: "zstd", "zstd:9"; "none" compresses nothing. None
    is "zstd:1" for Parquet, what the end of the name says for text, and else "none".

    The new file is written beside path. It replaces path, and takes over its permissions, when it
    is complete and on disk. Readers see the old file or the new one, and after any failure the old
    one stays. If writing takes long and stderr is a terminal, a bar shows the progress.

    Columns have the types of `to_arrow(host)`. CSV has no nested columns, and CSV and JSON do not
    state types: a text column whose texts all look like numbers reads back as numbers, for example.
    Nulls and empty texts of CSV read back as such, if the column has another text.

    Raises:
    - pyarrow.ArrowInvalid, which is a ValueError, for any other name, which is checked first, for a
      compression that the format does not have, and for a column that has no form in the format;
    - TypeError for any other value;
    - OSError for a file that cannot be written, and for a path that exists but is not a regular
      file;
    - whatever `to_arrow` raises.

    >>> import numera, pyarrow, tempfile, pathlib
    >>> path = pathlib.Path(tempfile.mkdtemp(), "rows.parquet")
    >>> numera.write(numera.to_host(pyarrow.table({"n": [1, None]})), path)
    >>> numera.to_arrow(numera.read(path)).to_pydict()
    {'n': [1, None]}
    """
    with closing(FileSink(path, compression)) as sink:
        table = _table(host)
        with _bar("writing", table.num_rows) as bar:
            for start in range(0, max(table.num_rows, 1), _WRITTEN_ROWS):
                part = table.slice(start, _WRITTEN_ROWS)
                sink.write(part)
                bar.update(part.num_rows)
        sink.finish()


def _open(path, columns, batch_rows, *, memory_limit):
    if isinstance(columns, str):
        raise TypeError("columns: found a text, expected a list of names.")
    names = None if columns is None else list(columns)
    if memory_limit is not None:
        memory_limit = _positive("memory_limit", memory_limit)
    options = {"batch_rows": batch_rows, "memory_limit": memory_limit}
    try:
        return FileSource(path, names, **options)
    except (TypeError, pa.ArrowInvalid) as error:
        if names is None:
            raise
        found = _names_of(path, options)
        raise _refused(names, found, path) or error from None


def _names_of(path, options):
    """The columns of a file, or None if it cannot be read."""
    try:
        return FileSource(path, None, **options).names
    except (TypeError, pa.ArrowInvalid):
        return None


def _refused(columns, names, path):
    """The reason why columns are not to be had of a file with these names, or None."""
    if names is None:
        return None
    path = os.fsdecode(path)
    missing = [name for name in columns if name not in names]
    if missing:
        return KeyError(f"columns: found no {_listed(missing)} in {path!r}, "
                        f"expected some of {_listed(names)}.")
    for name in columns:
        if columns.count(name) > 1:
            return ValueError(f"columns: found {name!r} twice or more, expected it once.")
        if names.count(name) > 1:
            return ValueError(f"columns: found {names.count(name)} columns {name!r} in {path!r}, "
                              "expected one.")
    return None


def _listed(names):
    shown = ", ".join(map(repr, names[:20]))
    return f"{shown}, ... {len(names) - 20} more" if len(names) > 20 else shown


def _positive(name, number):
    number = operator.index(number)
    if not 0 < number < 2**63:
        raise ValueError(f"{name}: found {number}, expected a positive number below 2**63.")
    return number


def _scanned(source, rows, cast):
    with closing(source), _bar("scanning", source.rows) as bar:
        while _collect(source, rows, bar):
            yield source.take(cast, one_chunk=True)


def _collect(source, rows, bar):
    """Collects so many rows, or those up to the end. Returns their number."""
    missing = rows
    while missing and (collected := source.collect(missing)):
        missing -= collected
        bar.update(collected)
    return rows - missing


def _table(host):
    if not isinstance(host, HostArray):
        raise TypeError(f"host: found {type(host).__name__}, expected a HostArray.")
    table = to_arrow(host)
    if not isinstance(table, pa.Table):
        kind = f"{host.class_name} {'x'.join(map(str, host.shape))}"
        raise TypeError(f"host: found {kind}, expected an encoded table.")
    return table


def _bar(doing, rows):
    terminal = sys.stderr is not None and sys.stderr.isatty()
    return tqdm(desc=doing, total=rows, unit=" rows", unit_scale=True, leave=False,
                delay=_SECONDS_BEFORE_BAR, disable=not terminal)
