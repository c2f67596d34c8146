"""Writes a Parquet file of mixed columns: convert_data.py PATH MEGABYTES.

Numbers, texts, dictionaries that differ between row groups, and lists of structs, with 30 % nulls.
"""

import os
import sys

import numpy as np
import pyarrow as pa
import pyarrow.parquet as pq

GROUP_ROWS = 1 << 18
WORDS = ("amber", "basalt", "cobalt", "dolomite", "ebony", "flint", "granite", "hematite")


def with_nulls(generator, values):
    """The values with 30 % nulls."""
    return pa.array(values, mask=generator.random(len(values)) < 0.3)


def texts(generator, rows):
    numbers = generator.integers(0, 10**9, rows)
    return pa.array([f"{WORDS[n % 8]} {n}" for n in numbers.tolist()])


def lists_of_structs(generator, rows):
    sizes = generator.integers(0, 4, rows)
    offsets = pa.array(np.concatenate([[0], np.cumsum(sizes)]).astype(np.int32))
    items = int(sizes.sum())
    values = pa.StructArray.from_arrays(
        [with_nulls(generator, generator.integers(0, 10**6, items)), texts(generator, items)],
        ["id", "label"])
    return pa.ListArray.from_arrays(offsets, values)


def row_group(generator, number):
    """Mixed columns. Dictionaries have other values in each row group."""
    rows = GROUP_ROWS
    keys = pa.array([f"{word} {number % 7}" for word in WORDS])
    codes = with_nulls(generator, generator.integers(0, len(WORDS), rows).astype(np.int32))
    days = generator.integers(0, 20000, rows).astype("datetime64[D]")
    return pa.table({
        "id": np.arange(number * rows, (number + 1) * rows),
        "amount": with_nulls(generator, generator.random(rows)),
        "count": with_nulls(generator, generator.integers(-10**6, 10**6, rows).astype(np.int32)),
        "flag": with_nulls(generator, generator.random(rows) < 0.5),
        "day": with_nulls(generator, days),
        "name": texts(generator, rows),
        "kind": pa.DictionaryArray.from_arrays(codes, keys),
        "parts": lists_of_structs(generator, rows),
    })


def generate(path, megabytes):
    """Writes row groups until the file is as large as wanted."""
    generator = np.random.default_rng(20261122)
    table = row_group(generator, 0)
    with pq.ParquetWriter(path, table.schema, compression="zstd", compression_level=1) as writer:
        number = 0
        while number == 0 or os.path.getsize(path) < megabytes * 10**6:
            writer.write_table(table if number == 0 else row_group(generator, number))
            number += 1


if __name__ == "__main__":
    generate(sys.argv[1], int(sys.argv[2]))
