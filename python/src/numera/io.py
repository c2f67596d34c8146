"""Host tables from files and into files: Parquet, Arrow IPC and CSV."""

import operator
import os
import secrets
import shutil
import stat
import sys
from collections.abc import Iterator, Sequence
from contextlib import contextmanager, suppress
from pathlib import Path

import pyarrow as pa
from tqdm import tqdm

from ._core import HostArray, encode, to_arrow, to_host
from ._files import format_of, open_sink, open_source

__all__ = ["read", "scan", "write"]

# No bar flashes up for what is done in a moment.
_SECONDS_BEFORE_BAR = 1.0

_Path = str | bytes | os.PathLike[str] | os.PathLike[bytes]


def read(
    path: _Path, columns: Sequence[str] | None = None, cast: bool = False
) -> HostArray:
    """The encoded table of a file, as `to_host` gives it.

    The suffix of path says what it is: ".parquet"; ".arrow", ".ipc", ".feather" and ".arrows" for
    Arrow IPC files and streams, which are told apart by their first bytes; ".csv". Types of CSV
    columns are inferred from the whole file, by the rules of pyarrow.csv; in a file of one column
    an empty line is a null. A row of CSV has 32 MB at most: pyarrow.ArrowInvalid where one is longer.

    columns names the columns to read, in the order of the result; None reads all. cast is that of
    `to_host`. A bar shows the progress where reading is long and stderr is a terminal.

    Raises KeyError with the names of columns that the file does not have, ValueError for a name
    that is asked for twice or that several columns of the file have, OSError for a file that cannot
    be read or a page of Parquet that does not fit its checksum, ValueError for any other suffix
    (pyarrow.ArrowInvalid, which is one too, for contents that are not valid, such as a column of
    Parquet that has other rows than the footer says), and what `to_host` raises.

    >>> import numera, tempfile, pathlib
    >>> path = pathlib.Path(tempfile.mkdtemp(), "rows.csv")
    >>> _ = path.write_text("n,text\\n1,one\\n2,two\\n")
    >>> numera.read(path, columns=["text"])["Columns"][0]["Data"]
    string 2x1 ["one" "two"]
    """
    path = os.fsdecode(path)
    source = open_source(path)
    names = _checked(columns, source.names, path)
    with _bar("reading", source.rows) as bar:
        parts = []
        for part in source.parts(names):
            parts.append(part if isinstance(part, pa.Table) else pa.Table.from_batches([part]))
            bar.update(part.num_rows)
    table = pa.concat_tables(parts) if parts else source.empty()
    return to_host(table if names is None else table.select(names), cast)


def scan(
    path: _Path,
    batch_rows: int = 65_536,
    columns: Sequence[str] | None = None,
    cast: bool = False,
) -> Iterator[HostArray]:
    """An iterator of encoded tables that together are the file, each of batch_rows rows.

    The last one is shorter where the rows do not divide, and there is none for a file without
    rows. No more of the file is in memory than one such table and what its format holds together:
    a few pages a column of a Parquet file, a batch of an IPC file, 40 MB of a CSV file. Every
    column of a table is one chunk.

    The types of CSV columns are those of the first megabyte of the file, or of the first row where
    that is longer, and a later value of another type is an error. A row of CSV that is longer than
    a megabyte takes up to 80 times its length in memory, since files are read ahead, and reading
    begins anew where it is met; where two columns have one name, it is refused.

    path, columns and cast are those of `read`, and so are the errors: those of the path, its
    columns and batch_rows (TypeError where it is no integer, ValueError where it is not positive or
    exceeds 64 bits) come at once, others where they are met.

    >>> import numera, tempfile, pathlib
    >>> path = pathlib.Path(tempfile.mkdtemp(), "rows.csv")
    >>> _ = path.write_text("n\\n1\\n2\\n3\\n")
    >>> [table["Columns"][0]["Data"] for table in numera.scan(path, batch_rows=2)]
    [int64 2x1 [1 2], int64 1x1 [3]]
    """
    batch_rows = operator.index(batch_rows)
    if not 0 < batch_rows < 2**63:
        raise ValueError(f"batch_rows: found {batch_rows}, expected a positive number of 64 bits.")
    path = os.fsdecode(path)
    source = open_source(path)
    names = _checked(columns, source.names, path)
    return _scanned(source, names, batch_rows, cast)


def write(host: HostArray, path: _Path) -> None:
    """Writes an encoded table to a file: one that `to_host` or `read` gave, or `encode`.

    The suffix of path says how: ".parquet"; ".arrow", ".ipc" and ".feather" for Arrow IPC files,
    ".arrows" for streams; ".csv". The file is made beside path and takes its place, and its
    permissions, when it is complete and on disk: readers see the old file or the new one, and
    where anything fails the old one stays. A bar shows the progress where writing is long and
    stderr is a terminal.

    Columns have the types of `to_arrow(encode(host))`. CSV has no nested columns and no types: a
    null text is read back from it as an empty one, and a column of nulls alone as one of type null.

    Raises ValueError for any other suffix, before anything else, and for a path that is no regular
    file, TypeError for any other value, OSError with the path for a file that cannot be written,
    and what `encode`, `to_arrow` and the writers of pyarrow raise.

    >>> import numera, pyarrow, tempfile, pathlib
    >>> path = pathlib.Path(tempfile.mkdtemp(), "rows.parquet")
    >>> numera.write(numera.to_host(pyarrow.table({"n": [1, None]})), path)
    >>> numera.to_arrow(numera.read(path)).to_pydict()
    {'n': [1, None]}
    """
    path = os.fsdecode(path)
    format_of(path)
    table = _table(host)
    with _replacing(path) as sink:
        writer, rows = open_sink(sink, path, table.schema)
        with writer, _bar("writing", table.num_rows) as bar:
            for start in range(0, table.num_rows, rows):
                part = table.slice(start, rows)
                writer.write_table(part)
                bar.update(part.num_rows)


def _checked(columns, names, path):
    if columns is None:
        return None
    if isinstance(columns, str):
        raise TypeError("columns: found a text, expected a list of names.")
    columns = list(columns)
    missing = [name for name in columns if name not in names]
    if missing:
        raise KeyError(f"columns: found no {_listed(missing)} in {path!r}, "
                       f"expected some of {_listed(names)}.")
    for name in columns:
        if columns.count(name) > 1:
            raise ValueError(f"columns: found {name!r} twice or more, expected it once.")
        if names.count(name) > 1:
            raise ValueError(f"columns: found {names.count(name)} columns {name!r} in {path!r}, "
                             "expected one.")
    return columns


def _listed(names):
    shown = ", ".join(map(repr, names[:20]))
    return f"{shown}, ... {len(names) - 20} more" if len(names) > 20 else shown


def _scanned(source, names, rows, cast):
    with _bar("scanning", source.rows) as bar:
        for batches in _gathered(source.batches(names, rows), rows):
            table = pa.Table.from_batches(batches).combine_chunks()
            yield to_host(table if names is None else table.select(names), cast)
            bar.update(table.num_rows)


def _gathered(batches, rows):
    """Lists of batches that have so many rows in all; the last has the rest."""
    gathered, missing = [], rows
    for batch in batches:
        while batch.num_rows > 0:
            part = batch.slice(0, missing)
            gathered.append(part)
            batch = batch.slice(part.num_rows)
            missing -= part.num_rows
            if missing == 0:
                yield gathered
                gathered, missing = [], rows
    if gathered:
        yield gathered


def _table(host):
    if not isinstance(host, HostArray):
        raise TypeError(f"host: found {type(host).__name__}, expected a HostArray.")
    table = to_arrow(encode(host))
    if not isinstance(table, pa.Table):
        kind = f"{host.class_name} {'x'.join(map(str, host.shape))}"
        raise TypeError(f"host: found {kind}, expected an encoded table.")
    return table


@contextmanager
def _replacing(path):
    """A new file beside `path`, which takes its place in the end; on failure it is removed."""
    target = Path(os.path.realpath(path))
    with suppress(FileNotFoundError):
        if not stat.S_ISREG(target.stat().st_mode):
            raise ValueError(f"path: found {path!r}, expected a regular file.")
    new = target.with_name(f".numera-{secrets.token_hex(8)}.tmp")
    try:
        with open(new, "xb") as sink:
            yield sink
            sink.flush()
            os.fsync(sink.fileno())
        with suppress(FileNotFoundError):
            shutil.copymode(target, new)
        os.replace(new, target)
    except BaseException as error:
        with suppress(OSError):
            new.unlink()
        if isinstance(error, OSError) and error.filename is not None:
            raise OSError(error.errno, error.strerror, path) from None  # not the hidden file's name
        raise


def _bar(doing, rows):
    terminal = sys.stderr is not None and sys.stderr.isatty()
    return tqdm(desc=doing, total=rows, unit=" rows", unit_scale=True, leave=False,
                delay=_SECONDS_BEFORE_BAR, disable=not terminal)
