"""Checks of arguments: each takes the name of an argument and its value, and returns the value."""

import operator


def positive(name, value):
    number = operator.index(value)
    if not 0 < number < 2**63:
        raise ValueError(f"{name}: found {number}, expected a positive number below 2**63.")
    return number


def text(name, value):
    if not isinstance(value, str):
        raise TypeError(f"{name}: found {type(value).__name__}, expected a text.")
    value.encode()  # UnicodeError for what has no UTF-8
    return value


def texts(name, values):
    if isinstance(values, str):
        raise TypeError(f"{name}: found a text, expected a list of texts.")
    return [text(name, value) for value in values]


def character(name, value):
    if not text(name, value).isascii() or len(value) != 1:
        raise ValueError(f"{name}: found {value!r}, expected one ASCII character.")
    return value


def truth(name, value):
    if not isinstance(value, bool):
        raise TypeError(f"{name}: found {type(value).__name__}, expected True or False.")
    return value


def or_none(check):
    return lambda name, value: None if value is None else check(name, value)


READING = {
    "memory_limit": or_none(positive),
    "csv_delimiter": or_none(character),
    "csv_heading": truth,
    "csv_nulls": texts,
    "csv_encoding": or_none(text),
    "csv_types_of_all_rows": truth,
}
WRITING = {
    "compression": or_none(text),
    "partition_by": texts,
    "csv_delimiter": or_none(character),
}


def checked(checks, options):
    """The options, a dictionary of names and values, as the checks return them."""
    return {name: checks[name](name, value) for name, value in options.items()}
