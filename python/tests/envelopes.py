"""Builders of encoded values in readable form."""

from numera import host


def encoded(kind, name, values, valid=None):
    buffer = {"ArrowType": "buffer", "Values": [] if valid is None else valid, "Length": 1.0}
    return {"ArrowType": kind, "Type": name, "Data": values, "Valid": host.struct(
        {**buffer, "Values": host.numeric(memoryview(bytes(buffer["Values"])))})}


def numbers(values):
    return host.struct(encoded("array", "double", host.numeric(values)))


def table(columns, names=None):
    columns = list(columns)
    return host.struct({
        "ArrowType": "table",
        "Columns": host.struct(columns),
        "Names": host.cell(names or [f"c{i}" for i in range(len(columns))]),
    })
