"""What each peer does for the rows towards Arrow, and for texts that become UTF-8."""

# First: it says how many threads NumPy may have, which is read when NumPy is loaded.
from peer_packages import MAKES_ARROW, Work, available, nanoarrow, pandas, polars, scaled

import numpy as np
import pyarrow as pa


def _wrapped(values):
    return pa.Array.from_buffers(pa.float64(), len(values), [None, pa.py_buffer(values)])


def wrap_one(elements):
    def works(quick):
        values = np.arange(scaled(elements, quick and elements > 10)) / 2
        all_works = [Work("pyarrow", "Array.from_buffers(py_buffer())", lambda: _wrapped(values),
                          "does not copy, as we do not")]
        if nanoarrow is not None:
            all_works.append(Work("nanoarrow", "c_array_from_buffers()",
                                  lambda: nanoarrow.c_array_from_buffers(
                                      nanoarrow.float64(), len(values), [None, values]),
                                  "does not copy, as we do not"))
        return all_works
    return works


def wrap_table(quick):
    values = [np.arange(1000) / 2 + i for i in range(1000)]
    names = [f"column {i}" for i in range(1000)]
    works = [Work("pyarrow", "Table.from_arrays(Array.from_buffers() each)",
                  lambda: pa.Table.from_arrays([_wrapped(column) for column in values], names),
                  "does not copy, as we do not")]
    if polars is not None:
        works.append(Work("Polars", "DataFrame(dict)",
                          lambda: polars.DataFrame(dict(zip(names, values)))))
    return works


def gateway(text, elements):
    """Texts from Python objects. Python caches the UTF-8 of a text, so each measurement gets new
    texts."""
    def works(quick):
        count = scaled(elements, quick)

        def texts():
            return [text.format(i) for i in range(count)]

        def objects():
            return np.array(texts(), dtype=object)

        return available([
            Work("nanoarrow", "c_array(list)",
                 lambda values: nanoarrow.c_array(values, nanoarrow.string()), MAKES_ARROW, texts),
            Work("pyarrow", "array(objects)", lambda values: pa.array(values, pa.string()),
                 MAKES_ARROW, objects),
            Work("Polars", "Series(list)", lambda values: polars.Series(values), MAKES_ARROW,
                 texts),
            Work("pandas", "array(objects, dtype=str)",
                 lambda values: pandas.array(values, dtype="str"), MAKES_ARROW, objects),
        ])
    return works
