"""Rows that measure calls from Python, for environments that have the package."""

import importlib.util

import peer_data as data
from peer_packages import Row, Work


def _row(name, make, theirs):
    """`theirs` takes the array and returns the work that pyarrow does on it."""
    def own(quick):
        import numera
        array = make(quick)
        return (len(array), array.nbytes,
                Work("numera", "to_host()", lambda: numera.to_host(array)))

    return Row("python/to_host/" + name, "pyarrow", lambda quick: [theirs(make(quick))], own)


def _one_call(array):
    return Work("pyarrow", "to_numpy()", array.to_numpy, "does not copy")


def _copy(array):
    return Work("pyarrow", "to_numpy().copy()", lambda: array.to_numpy().copy())


def _objects(array):
    return Work("pyarrow", "to_numpy(zero_copy_only=False)",
                lambda: array.to_numpy(zero_copy_only=False), "copies into Python objects")


def _many(make, elements):
    return lambda quick: make(elements // 100 if quick else elements)


ROWS = [
    _row("one_call", lambda quick: data.doubles(10), _one_call),
    _row("float64", _many(data.doubles, 10**7), _copy),
    _row("text_mixed", _many(data.mixed_texts, 10**6), _objects),
] if importlib.util.find_spec("numera") else []
