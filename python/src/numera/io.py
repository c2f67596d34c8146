"""Host tables from files and into files."""

import os
import sys
from collections.abc import Iterator, Sequence
from contextlib import closing

import pyarrow as pa
from tqdm import tqdm

from . import _arguments
from ._core import FileSink, HostArray, to_arrow
from ._source import open_source

__all__ = ["read", "scan", "write"]

# Short work shows no bar.
_SECONDS_BEFORE_BAR = 1.0

_ALL_ROWS = 2**63 - 1
_READ_ROWS = 1 << 20  # at a time; most row groups have no more, and stay one chunk
_WRITTEN_ROWS = 1 << 16  # at a time; the rows of a batch in Arrow IPC files

_Path = str | bytes | os.PathLike[str] | os.PathLike[bytes]


def read(
    path: _Path | Sequence[_Path],
    columns: Sequence[str] | None = None,
    cast: bool = False,
    *,
    memory_limit: int | None = None,
    csv_delimiter: str | None = None,
    csv_heading: bool = True,
    csv_nulls: Sequence[str] = (),
    csv_encoding: str | None = None,
    csv_types_of_all_rows: bool = True,
) -> HostArray:
    """Reads files and returns their encoded table, as `to_host` does.

    path is a path, or several, whose files are joined to one table. Each is
    - a file or a named pipe, or "-": standard input, behind what `sys.stdin` has read;
    - a folder: all files below it, in the order of their paths, but for names that begin with "."
      or "_". A folder named "year=2024" adds a column "year": integers, or a dictionary of texts;
    - a pattern with "*" or "?", which match within a name;
    - a URI of one of these, such as "s3://bucket/rows", as a str or bytes: a pathlib.Path would
      join its slashes. No other path touches a network.

    Columns are joined by name. A file without a column gives nulls. Columns of nulls take the type
    of the others, and numbers, sizes and units become wider if no value is lost. All other
    differences are refused.

    The contents tell the format, not the name: Parquet, Arrow IPC files and streams, ORC, CSV with
    any of the delimiters comma, tab, semicolon and vertical bar, and JSON lines. CSV and JSON lines
    may be compressed by gzip, zstd, bzip2 or lz4.

    In a CSV column of texts, an empty field is null and a field of two quotation marks is an empty
    text. In a CSV file with one column an empty line is a null. A row may have 64 MiB. These
    arguments are for CSV alone:
    - csv_delimiter is the character that separates fields; None is whichever of the four splits the
      heading into most columns;
    - csv_heading is False if the first line is a row. Columns are then called "f0", "f1" and so on;
    - csv_nulls are further texts that are null, in columns of every type. In columns of texts, they
      have no quotation marks;
    - csv_encoding is the name of the encoding, as iconv knows it, such as "latin1"; None is UTF-8,
      or UTF-16 if the file starts with the mark of its byte order;
    - csv_types_of_all_rows lets all rows decide the types of columns, so the file is read twice,
      and a pipe is copied to a temporary file. If it is False, the first MiB decides, and a later
      value of another type is an error.

    columns names the columns to read, in the order of the result; None reads all. cast is the same
    as in `to_host`. memory_limit is the most memory in bytes that the files may take before they
    are converted; None is 2 GiB, or four times the size of a file if that is more. If reading takes
    long and stderr is a terminal, a bar shows the progress.

    Raises:
    - KeyError, with the names, for columns that the files do not have;
    - ValueError for a name that is listed twice or that several columns have, for a memory_limit
      that is not positive or is 2**63 or more, and for a csv_delimiter that is not one ASCII
      character;
    - pyarrow.ArrowInvalid, which is a ValueError, for contents that are no table of these formats,
      such as a Parquet column whose number of rows differs from the footer; for files that cannot
      be joined; for columns that a pipe does not have, since a pipe is read once;
    - OSError for a file that cannot be read, that changed while it was read, or whose data does not
      match its checksum; for a folder without files and a pattern without matches;
    - pyarrow.ArrowMemoryError, which is a MemoryError, for a file that takes more than memory_limit;
    - UnicodeError, which is a ValueError, for a name or an argument that is not UTF-8;
    - whatever `to_host` raises.

    >>> import numera, tempfile, pathlib
    >>> path = pathlib.Path(tempfile.mkdtemp(), "rows.csv")
    >>> _ = path.write_text("n,text\\n1,one\\n2,two\\n")
    >>> numera.read(path, columns=["text"])["Columns"][0]["Data"]
    string 2x1 ["one" "two"]
    """
    source = open_source(path, columns, _READ_ROWS, memory_limit=memory_limit,
                         csv_delimiter=csv_delimiter, csv_heading=csv_heading, csv_nulls=csv_nulls,
                         csv_encoding=csv_encoding, csv_types_of_all_rows=csv_types_of_all_rows)
    with closing(source):
        with _bar("reading", source.rows) as bar:
            _collect(source, _ALL_ROWS, bar)
        return source.take(cast, one_chunk=False)


def scan(
    path: _Path | Sequence[_Path],
    batch_rows: int = 65_536,
    columns: Sequence[str] | None = None,
    cast: bool = False,
    *,
    memory_limit: int | None = None,
    csv_delimiter: str | None = None,
    csv_heading: bool = True,
    csv_nulls: Sequence[str] = (),
    csv_encoding: str | None = None,
    csv_types_of_all_rows: bool = False,
) -> Iterator[HostArray]:
    """An iterator over files as encoded tables of batch_rows rows each.

    The last table may be shorter. Files without rows give no table. Memory holds one table and
    what the format needs: some pages per column of a Parquet file, one batch of an IPC file, some
    megabytes of text. Every column of a table is one chunk.

    The other arguments are the same as in `read`, and so are the errors. But the first MiB of a CSV
    file decides the types, unless csv_types_of_all_rows is True: pipes are then read as the bytes
    come. A batch_rows that is not an integer raises TypeError; one that is not positive or is 2**63
    or more raises ValueError. Errors of the arguments, and of files that cannot be opened, are raised at
    once, others when they occur. The files are closed when the iterator ends or is closed.

    One thread at a time may use the iterator; it may be another one for each table.

    >>> import numera, tempfile, pathlib
    >>> path = pathlib.Path(tempfile.mkdtemp(), "rows.csv")
    >>> _ = path.write_text("n\\n1\\n2\\n3\\n")
    >>> [table["Columns"][0]["Data"] for table in numera.scan(path, batch_rows=2)]
    [int64 2x1 [1 2], int64 1x1 [3]]
    """
    batch_rows = _arguments.positive("batch_rows", batch_rows)
    source = open_source(path, columns, batch_rows, memory_limit=memory_limit,
                         csv_delimiter=csv_delimiter, csv_heading=csv_heading, csv_nulls=csv_nulls,
                         csv_encoding=csv_encoding, csv_types_of_all_rows=csv_types_of_all_rows)
    return _scanned(source, batch_rows, cast)


def write(
    host: HostArray,
    path: _Path,
    *,
    compression: str | None = None,
    partition_by: Sequence[str] = (),
    csv_delimiter: str | None = None,
) -> None:
    """Writes an encoded table, from `to_host`, `read` or `make_readable`, to a file.

    The end of the name selects the format:
    - ".parquet" is Parquet;
    - ".arrow", ".ipc" and ".feather" are Arrow IPC files, ".arrows" are Arrow IPC streams;
    - ".csv" is CSV with commas, ".tsv" with tabs;
    - ".json", ".jsonl" and ".ndjson" are JSON lines. Behind the end of CSV and JSON lines, ".gz",
      ".zst", ".bz2" and ".lz4" compress the text.

    compression is a name, and for some a level: "zstd", "zstd:9"; "none" compresses nothing. None
    is "zstd:1" for Parquet, what the end of the name says for text, and else "none". csv_delimiter
    is the character that separates the fields of CSV: a tab or a punctuation mark, but none of
    "+-.: and no space.

    With partition_by, path is a new or empty folder, and the values of these columns name folders
    within it, from the outer one to the inner one, such as "year=2024/part-0.parquet". The files do
    not have these columns; `read` adds them again. They may be integers, truth values, dates of 32
    bits, texts and dictionaries of these. The files are Parquet, unless the end of the name says
    something else. The folder appears when all of them are complete.

    The new file is written beside path. It replaces path, and takes over its permissions, when it
    is complete and on disk. Readers see the old file or the new one, and after any failure the old
    one stays. If writing takes long and stderr is a terminal, a bar shows the progress.

    Columns have the types of `to_arrow(host)`. CSV has no nested columns, and CSV and JSON do not
    state types: a text column whose texts all look like numbers reads back as numbers, for example.
    Nulls and empty texts of CSV read back as such, if the column has another text.

    Raises:
    - pyarrow.ArrowInvalid, which is a ValueError, for any other name, which is checked first, for a
      compression that the format does not have, for a csv_delimiter that is not such a character,
      for a column that has no form in the format, and for partition_by with a column that does not
      exist or cannot name folders, with no rows, or with no other column;
    - TypeError for any other value;
    - OSError for a file that cannot be written, for a path that exists but is not a regular file,
      and with partition_by for one that exists but is no empty folder;
    - whatever `to_arrow` raises.

    >>> import numera, pyarrow, tempfile, pathlib
    >>> path = pathlib.Path(tempfile.mkdtemp(), "rows.parquet")
    >>> numera.write(numera.to_host(pyarrow.table({"n": [1, None]})), path)
    >>> numera.to_arrow(numera.read(path)).to_pydict()
    {'n': [1, None]}
    """
    options = _arguments.checked(_arguments.WRITING, {
        "compression": compression, "partition_by": partition_by, "csv_delimiter": csv_delimiter})
    with closing(FileSink(path, **options)) as sink:
        table = _table(host)
        with _bar("writing", table.num_rows) as bar:
            for start in range(0, max(table.num_rows, 1), _WRITTEN_ROWS):
                part = table.slice(start, _WRITTEN_ROWS)
                sink.write(part)
                bar.update(part.num_rows)
        sink.finish()


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
