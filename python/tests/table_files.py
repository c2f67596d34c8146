"""Files for the tests of reading and writing, and their expected contents."""

import json

import numera
import pyarrow as pa
import pyarrow.csv
import pyarrow.orc as orc
import pyarrow.parquet as pq

ROWS = {"n": [1, None, 3], "text": ["a", "", "ж"], "flag": [True, None, False]}
DELIMITERS = {".csv": ",", ".tsv": "\t", ".ssv": ";", ".psv": "|"}
NESTED = {"list": [[1], None, []], "place": [{"x": 1.5}, None, {"x": None}]}


def columns(value):
    return numera.to_arrow(numera.make_readable(value)).to_pydict()


def file_of(tmp_path, table, suffix, rows=None):
    """A file that others write, in row groups or batches of `rows` rows."""
    path = tmp_path / f"data{suffix}"
    if suffix == ".parquet":
        pq.write_table(table, path, row_group_size=rows)
    elif suffix == ".orc":
        orc.write_table(table, path)
    elif suffix in DELIMITERS:
        pa.csv.write_csv(table, path, pa.csv.WriteOptions(delimiter=DELIMITERS[suffix]))
    elif suffix == ".jsonl":
        path.write_text("".join(json.dumps(row) + "\n" for row in table.to_pylist()))
    else:
        make = pa.ipc.new_stream if suffix == ".arrows" else pa.ipc.new_file
        with make(path, table.schema) as writer:
            writer.write_table(table, max_chunksize=rows)
    return path
