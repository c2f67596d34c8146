"""What values lose in a conversion: the table, and the expected elements."""

import datetime as dt

import pyarrow as pa

# Arrow type, in the host, back in Arrow. The documentation has the same table.
TABLE = [
    ("string, binary", "the offsets' width is gone", "large string, large binary"),
    ("fixed_size_binary", "bytes", "large binary"),
    ("date32, date64", "days or milliseconds", "timestamp in seconds or milliseconds, at midnight"),
    ("duration", "integers without the unit", "int64"),
    ("dictionary of text", "several chunks: one merged list of categories, not ordered",
     "dictionary of large strings"),
    ("list", "the name of its items is gone", "large list of items named item"),
    ("map", "keys, values and offsets", "large list of structs of key and value"),
    ("null", "the number of elements", "double, all null"),
    ("schema", "no metadata, no fields that are never null", "fields that may be null"),
    ("stream of structs", "a table; a null row is null in every column", "a table"),
    ("chunks", "joined; one element each for lists, structs and maps", "one chunk"),
    ("decimal, cast", "the nearest double", "double"),
    ("half float, cast", "its exact value as double", "double"),
    ("month_day_nano_interval, cast", "text in ISO 8601", "large string"),
    ("views, fixed-size lists, runs, cast", "the plain type of the same elements",
     "as that type"),
    ("dictionary of others than text, cast", "its values", "as the value type"),
    ("extension, cast", "its storage", "as the storage"),
]


def in_host(type, value):
    """What the host holds for an element that pyarrow reads as `value`."""
    if value is None:
        return None
    if isinstance(type, pa.BaseExtensionType):
        return value.bytes  # uuid is the only extension type drawn
    if pa.types.is_duration(type):
        return pa.scalar(value, type).value
    if pa.types.is_timestamp(type) and type.tz:
        return (value, type.tz)
    if pa.types.is_decimal(type) or pa.types.is_float16(type):
        return float(value)
    if pa.types.is_interval(type):
        return _iso(value)
    if pa.types.is_dictionary(type) or pa.types.is_run_end_encoded(type):
        return in_host(type.value_type, value)
    return _parts(type, value, in_host, lambda key, item: (key, item))


def back_in_arrow(type, value):
    """What pyarrow reads, after the way back, for an element of a type that needs no cast."""
    if value is None:
        return None
    if pa.types.is_date(type):
        return dt.datetime.combine(value, dt.time())
    if pa.types.is_duration(type):
        return pa.scalar(value, type).value
    return _parts(type, value, back_in_arrow, lambda key, item: {"key": key, "value": item})


def _parts(type, value, of, pair):
    """The value with `of` applied to its elements at any depth, and `pair` to map entries."""
    if pa.types.is_map(type):
        return [pair(of(type.key_type, key), of(type.item_type, item)) for key, item in value]
    if pa.types.is_struct(type):
        return {field.name: of(field.type, value[field.name]) for field in type}
    if pa.types.is_nested(type):
        return [of(type.value_type, element) for element in value]
    return value


def _iso(value):
    months, days, nanoseconds = value
    text = (f"{months}M" if months else "") + (f"{days}D" if days else "")
    if nanoseconds:
        whole, fraction = divmod(abs(nanoseconds), 10**9)
        digits = f".{fraction:09}".rstrip("0").rstrip(".")
        text += f"T{'-' if nanoseconds < 0 else ''}{whole}{digits}S"
    return f"P{text or '0D'}"
