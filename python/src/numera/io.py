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

from ._core import HostArray, to_arrow, to_host
from ._files import format_of, open_sink, open_source

__all__ = ["read", "scan", "write"]

# Short work shows no bar.
_SECONDS_BEFORE_BAR = 1.0

_Path = str | bytes | os.PathLike[str] | os.PathLike[bytes]


def read(
    path: _Path, columns: Sequence[str] | None = None, cast: bool = False
) -> HostArray:
    """Reads a file and returns its encoded table, as `to_host` does.

    The suffix of path selects the format: ".parquet"; ".csv"; ".arrow", ".ipc", ".feather" and
    ".arrows" for Arrow IPC. The first bytes of an Arrow IPC file tell whether it is in the file or
    in the stream format. The types of CSV columns are inferred from the whole file, by the rules of
    pyarrow.csv. In a CSV file with one column an empty line is a null. A CSV row of more than 32 MB
    raises pyarrow.ArrowInvalid.

    columns names the columns to read, in the order of the result; None reads all. cast is the same
    as in `to_host`. If reading takes long and stderr is a terminal, a bar shows the progress.

    Raises:
    - KeyError, with the names, for columns that the file does not have;
    - ValueError for a name that is listed twice or that several columns have, and for any other
      suffix;
    - pyarrow.ArrowInvalid, which is a ValueError, for invalid contents, such as a Parquet column
      whose number of rows differs from the footer;
    - OSError for a file that cannot be read or a Parquet page that does not match its checksum;
    - whatever `to_host` raises.

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
    """An iterator over a file as encoded tables of batch_rows rows each.

    The last table may be shorter. A file without rows gives no table. Memory holds one table and
    what the format needs: a few pages per column of a Parquet file, one batch of an IPC file, 40 MB
    of a CSV file. Every column of a table is one chunk.

    The types of CSV columns come from the first megabyte of the file, or from the first row if that
    is longer. A later value of another type is an error. A CSV row longer than a megabyte takes up
    to 80 times its length in memory, because files are read ahead. At such a row the file is read
    again from the start; if two columns have the same name, the row is refused instead.

    path, columns and cast are the same as in `read`, and so are the errors. A batch_rows that is
    not an integer raises TypeError; one that is not positive or is 2**63 or more raises ValueError.
    Errors of path, columns and batch_rows are raised at once, others when they occur.

    >>> import numera, tempfile, pathlib
    >>> path = pathlib.Path(tempfile.mkdtemp(), "rows.csv")
    >>> _ = path.write_text("n\\n1\\n2\\n3\\n")
    >>> [table["Columns"][0]["Data"] for table in numera.scan(path, batch_rows=2)]
    [int64 2x1 [1 2], int64 1x1 [3]]
    """
    batch_rows = operator.index(batch_rows)
    if not 0 < batch_rows < 2**63:
        raise ValueError(f"batch_rows: found {batch_rows}, expected a positive number below 2**63.")
    path = os.fsdecode(path)
    source = open_source(path)
    names = _checked(columns, source.names, path)
    return _scanned(source, names, batch_rows, cast)


def write(host: HostArray, path: _Path) -> None:
    """Writes an encoded table, from `to_host`, `read` or `make_readable`, to a file.

    The suffix of path selects the format: ".parquet"; ".arrow", ".ipc" and ".feather" for Arrow IPC
    files; ".arrows" for streams; ".csv". The new file is written beside path. It replaces path, and
    takes over its permissions, when it is complete and on disk. Readers see the old file or the new
    one, and after any failure the old one stays. If writing takes long and stderr is a terminal, a
    bar shows the progress.

    Columns have the types of `to_arrow(host)`. CSV has no nested columns and no types: a null text
    reads back as an empty text, and a column that holds only nulls reads back as type null.

    Raises:
    - ValueError for any other suffix, which is checked first, and for a path that exists but is
      not a regular file;
    - TypeError for any other value;
    - OSError, with the path, for a file that cannot be written;
    - whatever `to_arrow` and the pyarrow writers raise.

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
    """Lists of batches with `rows` rows in total each; the last list has the rest."""
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
    table = to_arrow(host)
    if not isinstance(table, pa.Table):
        kind = f"{host.class_name} {'x'.join(map(str, host.shape))}"
        raise TypeError(f"host: found {kind}, expected an encoded table.")
    return table


@contextmanager
def _replacing(path):
    """A new file beside `path`. It replaces `path` at the end; after a failure it is removed."""
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
