"""Arrow tables in files, read and written by pyarrow.

A source has the `names` of its columns, the number of `rows` where the file tells it (else None),
and two ways to read the columns of the names that are asked for: `parts`, batches or tables as
large as the file has them, and `batches`, which hold a bounded number of rows in memory. What is
opened is closed with the last reference to it.
"""

import csv
import os
from pathlib import Path

import pyarrow as pa
import pyarrow.csv
import pyarrow.parquet

_BUFFER_BYTES = 1 << 20
_CSV_BLOCK_BYTES = 1 << 20  # some forty of which are read ahead
_CSV_LONGEST_ROW_BYTES = 1 << 25  # no row may be longer than a block
_PARQUET_ROWS = 1 << 20
_IPC_ROWS = 1 << 16
_FILE_MAGIC = b"ARROW1"

_FORMATS = {
    ".parquet": "parquet",
    ".arrow": "file",
    ".ipc": "file",
    ".feather": "file",
    ".arrows": "stream",
    ".csv": "csv",
}


class _Parquet:
    def __init__(self, path):
        self._file = pa.parquet.ParquetFile(_open(path), buffer_size=_BUFFER_BYTES,
                                            pre_buffer=False)
        self.names = self._file.schema_arrow.names
        self.rows = self._file.metadata.num_rows

    def parts(self, names):
        for i in range(self._file.num_row_groups):
            yield self._file.read_row_group(i, names)

    def batches(self, names, rows):
        yield from self._file.iter_batches(min(rows, max(self.rows, 1)), columns=names)

    def empty(self):
        return self._file.schema_arrow.empty_table()


class _IpcFile:
    def __init__(self, path):
        self._reader = pa.ipc.open_file(_open(path))
        self.names = self._reader.schema.names
        self.rows = None

    def parts(self, names):
        for i in range(self._reader.num_record_batches):
            yield _select(self._reader.get_batch(i), names)

    def batches(self, names, rows):
        return self.parts(names)

    def empty(self):
        return self._reader.schema.empty_table()


class _IpcStream:
    def __init__(self, path):
        self._reader = pa.ipc.open_stream(_open(path))
        self.names = self._reader.schema.names
        self.rows = None

    def parts(self, names):
        for batch in self._reader:
            yield _select(batch, names)

    def batches(self, names, rows):
        return self.parts(names)

    def empty(self):
        return self._reader.schema.empty_table()


class _Csv:
    def __init__(self, path):
        self._path = path
        self.names, self._lines_before = _csv_heading(path)
        self.rows = None

    def parts(self, names):
        """All at once: the types are those that fit the whole file, not those of its first rows."""
        try:
            yield pa.csv.read_csv(_open(self._path), *self._options(_CSV_LONGEST_ROW_BYTES, names))
        except pa.ArrowInvalid as error:
            raise _explained(error, _CSV_LONGEST_ROW_BYTES) from None

    def batches(self, names, rows):
        """Where a row is longer than a block, goes on behind the rows so far with longer blocks."""
        # The types of the first blocks are given on by name.
        longest = _CSV_LONGEST_ROW_BYTES if len(set(self.names)) == len(self.names) else 0
        block_bytes, rows_so_far, schema = _CSV_BLOCK_BYTES, 0, None
        while True:
            try:
                reader = pa.csv.open_csv(_open(self._path),
                                         *self._options(block_bytes, names, schema))
                schema = reader.schema
                for batch in _behind(rows_so_far, reader):
                    rows_so_far += batch.num_rows
                    yield batch
                return
            except pa.ArrowInvalid as error:
                if not _is_too_long(error) or block_bytes >= longest:
                    raise _explained(error, block_bytes) from None
                block_bytes *= 2

    def _options(self, block_bytes, names, schema=None):
        # Of one column, an empty line is a null.
        is_one = len(self.names) == 1
        return (
            pa.csv.ReadOptions(block_size=block_bytes,
                               skip_rows=self._lines_before if is_one else 0),
            pa.csv.ParseOptions(newlines_in_values=True, ignore_empty_lines=not is_one),
            pa.csv.ConvertOptions(include_columns=names, column_types=schema),
        )


def _is_too_long(error):
    return "straddling object" in str(error)


def _explained(error, block_bytes):
    """Where a row is too long, pyarrow advises an option that nobody has here."""
    if not _is_too_long(error):
        return error
    return pa.ArrowInvalid(f"CSV: found a row of more than {block_bytes:,} bytes, "
                           "expected no longer one.")


def _behind(rows, batches):
    """The batches without so many rows at their beginning."""
    for batch in batches:
        if batch.num_rows > rows:
            yield batch.slice(rows)
        rows = max(0, rows - batch.num_rows)


def _csv_heading(path):
    """The names of the columns, and how many empty lines stand before them."""
    with open(path, encoding="utf-8-sig", errors="surrogateescape", newline="") as file:
        lines = iter(lambda: file.readline(_CSV_LONGEST_ROW_BYTES), "")
        try:
            for lines_before, names in enumerate(csv.reader(lines)):
                if names:
                    return names, lines_before
        except csv.Error as error:
            raise pa.ArrowInvalid(f"CSV parse error: {error}") from None
    raise pa.ArrowInvalid("Empty CSV file")


def _open(path):
    # Names of files need not be UTF-8.
    return pa.OSFile(os.fsencode(path))


def open_source(path):
    kind = format_of(path)
    if kind in ("file", "stream"):
        # The name does not always tell the two forms apart; the first bytes do.
        with open(path, "rb") as file:
            kind = "file" if file.read(len(_FILE_MAGIC)) == _FILE_MAGIC else "stream"
    return {"parquet": _Parquet, "file": _IpcFile, "stream": _IpcStream, "csv": _Csv}[kind](path)


def open_sink(sink, path, schema):
    """A writer of pyarrow to the open file `sink` in the form of `path`, and its rows at once."""
    kind = format_of(path)
    if kind == "parquet":
        return pa.parquet.ParquetWriter(sink, schema), _PARQUET_ROWS
    if kind == "csv":
        return pa.csv.CSVWriter(sink, schema), _IPC_ROWS
    make = pa.ipc.new_file if kind == "file" else pa.ipc.new_stream
    return make(sink, schema), _IPC_ROWS


def format_of(path):
    suffix = Path(path).suffix.lower()
    if suffix not in _FORMATS:
        raise ValueError(f"path: found the suffix {suffix!r}, expected one of {', '.join(_FORMATS)}.")
    return _FORMATS[suffix]


def _select(batch, names):
    return batch if names is None else batch.select(names)
