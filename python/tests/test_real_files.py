"""The real files of the examples, compared value by value with what pyarrow reads."""

from pathlib import Path

import encoded
import losses
import numera
import pyarrow as pa
import pyarrow.parquet as pq
import pytest

DATA = Path(__file__).parents[2] / "examples" / "data"
ROWS = {"penguins.parquet": 344, "cities.parquet": 12_325, "countries.arrow": 252,
        "flights.parquet": 336_776}


def table_of(path):
    return pq.read_table(path) if path.suffix == ".parquet" else pa.ipc.open_file(path).read_all()


def expected_of(table, name, rule):
    type = table.schema.field(name).type
    return [rule(type, cell) for cell in table[name].to_pylist()]


@pytest.mark.parametrize("name", ROWS)
def test_the_host_holds_every_cell(name):
    table = table_of(DATA / name)
    host = numera.read(DATA / name)
    assert table.num_rows == ROWS[name]
    assert [text.text for text in host["Names"]] == table.column_names
    for name, column in zip(table.column_names, host["Columns"]):
        assert encoded.elements(column) == expected_of(table, name, losses.in_host), name


@pytest.mark.parametrize("name", sorted(ROWS.keys() - {"flights.parquet"}))
def test_every_cell_comes_back(name):
    table = table_of(DATA / name)
    back = numera.to_arrow(numera.make_readable(numera.read(DATA / name)))
    assert back.column_names == table.column_names
    for name in table.column_names:
        assert back[name].to_pylist() == expected_of(table, name, losses.back_in_arrow), name


def test_every_cell_of_a_large_file_comes_back():
    table = table_of(DATA / "flights.parquet")
    back = numera.to_arrow(numera.make_readable(numera.read(DATA / "flights.parquet")))
    for name, there, here in zip(table.column_names, table.columns, back.columns, strict=True):
        if pa.types.is_dictionary(there.type):
            there, here = there.cast(pa.large_string()), here.cast(pa.large_string())
        assert here.equals(there.cast(here.type)), name


def test_scanned_tables_are_the_file():
    table = table_of(DATA / "cities.parquet")
    parts = [encoded.columns(part) for part in numera.scan(DATA / "cities.parquet", batch_rows=5_000)]
    assert [len(part["name"]) for part in parts] == [5_000, 5_000, 2_325]
    for name in table.column_names:
        found = [cell for part in parts for cell in part[name]]
        assert found == expected_of(table, name, losses.in_host), name
