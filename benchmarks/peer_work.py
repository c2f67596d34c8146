"""The rows of the benchmarks that peers have work for."""

import pathlib

# First: it says how many threads NumPy may have, which is read when NumPy is loaded.
from peer_packages import Row

import peer_data as data
import peer_to_arrow as to_arrow
import peer_to_host as to_host

EXAMPLES = pathlib.Path(__file__).resolve().parent.parent / "examples" / "data"


def _file(name):
    return Row(f"files/{name}", "pyarrow",
               lambda quick: to_host.table_works(data.example(EXAMPLES / name)))


ROWS = [
    Row("to_host/float64", "pyarrow", to_host.numbers),
    Row("to_host/float64_nulls", "pyarrow", to_host.numbers_with_nulls),
    Row("to_host/float64_1000_chunks", "pyarrow", to_host.numbers_in_chunks),
    Row("to_host/bool_aligned", "pyarrow", to_host.booleans(data.booleans)),
    Row("to_host/bool_unaligned", "pyarrow", to_host.booleans(data.odd_chunks_of_booleans)),
    Row("to_host/date", "pyarrow", to_host.plain(data.dates)),
    Row("to_host/timestamp", "pyarrow", to_host.plain(data.timestamps)),
    Row("to_host/duration", "pyarrow", to_host.plain(data.durations)),
    Row("to_host/text_ascii", "pyarrow", to_host.texts(data.ascii_texts, 5 * 10**6)),
    Row("to_host/text_mixed", "pyarrow", to_host.texts(data.mixed_texts, 10**6)),
    Row("to_host/binary", "pyarrow", to_host.byte_strings),
    Row("to_host/dictionary", "pyarrow", to_host.categories(1)),
    Row("to_host/dictionary_20_chunks", "pyarrow", to_host.categories(20)),
    Row("to_host/list", "pyarrow", to_host.lists),
    Row("to_host/struct", "pyarrow", to_host.structs),
    Row("to_host/table_1000_columns", "pyarrow",
        lambda quick: to_host.table_works(data.table(1000))),
    Row("to_host/one_call", "pyarrow", to_host.one_call),
    Row("to_arrow/one_call", "pyarrow", to_arrow.wrap_one(10)),
    Row("to_arrow/one_call_1e7", "pyarrow", to_arrow.wrap_one(10**7)),
    Row("to_arrow/table_1000_columns", "pyarrow", to_arrow.wrap_table),
    Row("gateway/text_ascii", "nanoarrow", to_arrow.gateway("item {:07d}", 2 * 10**6)),
    Row("gateway/text_mixed", "pyarrow", to_arrow.gateway("Zürich 東京 Αθήνα {:03d}", 5 * 10**5)),
    _file("penguins.parquet"),
    _file("flights.parquet"),
    _file("cities.parquet"),
    _file("countries.arrow"),
]
