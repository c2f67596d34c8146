"""The Python package in a few lines: convert real data, print it, compute, convert it back."""

import pathlib

import pyarrow.parquet

import numera

data = pathlib.Path(__file__).parent / "data"
penguins = pyarrow.parquet.read_table(data / "penguins.parquet")
host = numera.to_host(penguins)
columns = dict(zip(host["Names"].to_python(), host["Columns"]))
print(columns["island"].tree(max_elements=4))

mass = columns["body_mass_g"]["Data"].numpy()
print(f"{mass.dtype} {mass.shape}, read-only, not copied; the heaviest: {mass.max()} g\n")

back = numera.to_arrow(host)
print(back.slice(0, 2).to_pylist()[0])
