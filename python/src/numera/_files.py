"""Arrow tables in files, read and written by pyarrow.

A source has the `names` of its columns and the number of `rows`, or None if the file does not state
it. It reads the named columns in two ways: `parts` gives batches or tables as large as in the file,
and `batches` holds a bounded number of rows in memory. A file is closed with its last reference.
"""

import csv
import os
from pathlib import Path

import pyarrow as pa
import pyarrow.csv
import pyarrow.parquet

_BUFFER_BYTES = 1 << 20
_CSV_BLOCK_BYTES = 1 << 20  # about forty blocks are read ahead
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
    """Checks row counts against the footer: pyarrow ends a row group with its shortest column."""

    def __init__(self, path):
        self._path = path
        self._file = pa.parquet.ParquetFile(_open(path), buffer_size=_BUFFER_BYTES,
                                            pre_buffer=False, page_checksum_verification=True)
        self.names = self._file.schema_arrow.names
        self.rows = self._file.metadata.num_rows
        found = sum(self._rows_of(group) for group in range(self._file.num_row_groups))
        if found != self.rows:
            raise pa.ArrowInvalid(f"{path!r}: found {found} rows in the row groups, "
                                  f"expected {self.rows}, as the footer states.")

    def parts(self, names):
        return self._counted(names, lambda group: [self._file.read_row_group(group, names)])

    def batches(self, names, rows):
        return self._counted(names, lambda group: self._batches(group, names, rows))

    def empty(self):
        return self._file.schema_arrow.empty_table()

    def _batches(self, group, names, rows):
        rows = min(rows, max(self._rows_of(group), 1))
        return self._file.iter_batches(rows, row_groups=[group], columns=names)

    def _rows_of(self, group):
        return self._file.metadata.row_group(group).num_rows

    def _counted(self, names, read):
        """The parts that `read` returns for each row group, with checked row counts."""
        flat = list(self._flat_leaves(names))
        for group in range(self._file.num_row_groups):
            self._check_values(group, flat)
            rows = 0
            try:
                for part in read(group):
                    rows += part.num_rows
                    yield part
                if rows != self._rows_of(group):
                    raise self._miscounted(group, rows, "rows")
            except (pa.ArrowInvalid, OSError) as error:
                raise self._explained(group, names, error) from None

    def _flat_leaves(self, names):
        """The numbers and names of the leaves without repetition, which have one value per row."""
        heads = None if names is None else tuple(name + "." for name in names)
        schema = self._file.schema
        for i in range(len(schema)):
            leaf = schema.column(i)
            if leaf.max_repetition_level == 0 and (heads is None or f"{leaf.path}.".startswith(heads)):
                yield i, leaf.path

    def _check_values(self, group, flat):
        """Refuses values after the last row, which would not be read."""
        metadata = self._file.metadata.row_group(group)
        for i, name in flat:
            values = metadata.column(i).num_values
            if values > metadata.num_rows:
                raise self._in_column(group, name, self._miscounted(group, values, "values"))

    def _explained(self, group, names, failure):
        """Reads each column of the row group alone. The first one that fails gives the reason."""
        for name in self.names if names is None else names:
            try:
                rows = sum(batch.num_rows for batch in self._batches(group, [name], _IPC_ROWS))
            except (pa.ArrowInvalid, OSError) as error:
                return self._in_column(group, name, error)
            if rows != self._rows_of(group):
                return self._in_column(group, name, self._miscounted(group, rows, "rows"))
        return failure

    def _miscounted(self, group, count, what):
        return pa.ArrowInvalid(
            f"found {count} {what}, expected {self._rows_of(group)}, as the footer states.")

    def _in_column(self, group, name, error):
        *number, text = error.args  # an OSError has a number
        return type(error)(*number, f"{self._path!r}, row group {group}, column {name!r}: {text}")


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
        """Reads the file at once, so that the types fit the whole file, not only its first rows."""
        try:
            yield pa.csv.read_csv(_open(self._path), *self._options(_CSV_LONGEST_ROW_BYTES, names))
        except pa.ArrowInvalid as error:
            raise _explained(error, _CSV_LONGEST_ROW_BYTES) from None

    def batches(self, names, rows):
        """If a row is longer than a block, continues after the rows so far with longer blocks."""
        # A new reader gets the types of the first blocks by name, so names must be unique.
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
        # In a file with one column, an empty line is a null.
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
    """Replaces pyarrow's error for a long row: it suggests an option that callers do not have."""
    if not _is_too_long(error):
        return error
    return pa.ArrowInvalid(f"CSV: found a row of more than {block_bytes:,} bytes, "
                           "expected a shorter row.")


def _behind(rows, batches):
    """The batches without the first `rows` rows."""
    for batch in batches:
        if batch.num_rows > rows:
            yield batch.slice(rows)
        rows = max(0, rows - batch.num_rows)


def _csv_heading(path):
    """The names of the columns, and the number of empty lines before them."""
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
    # File names need not be UTF-8.
    return pa.OSFile(os.fsencode(path))


def open_source(path):
    kind = format_of(path)
    if kind in ("file", "stream"):
        # The name does not always tell the two forms apart; the first bytes do.
        with open(path, "rb") as file:
            kind = "file" if file.read(len(_FILE_MAGIC)) == _FILE_MAGIC else "stream"
    return {"parquet": _Parquet, "file": _IpcFile, "stream": _IpcStream, "csv": _Csv}[kind](path)


def open_sink(sink, path, schema):
    """A pyarrow writer to the open file `sink` in the format of `path`, and its rows per write."""
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
