"""Files for the tests of reading and writing, and their expected contents."""

import numera
import pyarrow as pa
import pyarrow.csv
import pyarrow.parquet as pq

ROWS = {"n": [1, None, 3], "text": ["a", "", "ж"], "flag": [True, None, False]}
NESTED = {"list": [[1], None, []], "place": [{"x": 1.5}, None, {"x": None}]}


def columns(value):
    return numera.to_arrow(numera.make_readable(value)).to_pydict()


def file_of(tmp_path, table, suffix, rows=None):
    """A file that pyarrow writes, in row groups or batches of `rows` rows."""
    path = tmp_path / f"data{suffix}"
    if suffix == ".parquet":
        pq.write_table(table, path, row_group_size=rows)
    elif suffix == ".csv":
        pa.csv.write_csv(table, path)
    else:
        make = pa.ipc.new_stream if suffix == ".arrows" else pa.ipc.new_file
        with make(path, table.schema) as writer:
            writer.write_table(table, max_chunksize=rows)
    return path
