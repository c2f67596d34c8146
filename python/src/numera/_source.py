"""Opens what `read` and `scan` read."""

import importlib
import os
import re
import stat
from collections.abc import Iterable
from urllib.parse import unquote, urlsplit

import pyarrow as pa

from . import _arguments
from ._core import FileSource


def open_source(path, columns, batch_rows, **options):
    """The files as a FileSource. The options are keywords of `read`, as the caller gave them."""
    if isinstance(columns, str):
        raise TypeError("columns: found a text, expected a list of names.")
    names = None if columns is None else list(columns)
    paths = _paths(path)
    if any(one.startswith("s3://") for one in paths):
        _end_s3_with_the_process()
    options = _arguments.checked(_arguments.READING, options)
    shown = _listed([_without_user(one) for one in paths])
    files = paths, f"{shown}: " if len(paths) == 1 else ""
    try:
        return FileSource(*files, names, batch_rows, **options)
    except (TypeError, pa.ArrowInvalid) as error:
        if names is None or any(map(_is_pipe, paths)):
            raise
        found = _names_of(files, batch_rows, options)
        raise _refused(names, found, shown) or error from None


def _paths(path):
    """The paths as a list of str."""
    paths = [path] if isinstance(path, (str, bytes, os.PathLike)) else path
    if not isinstance(paths, Iterable):
        raise TypeError(f"path: found {type(path).__name__}, expected a path or a list of paths.")
    return [os.fsdecode(one) for one in paths]


def _end_s3_with_the_process():
    """A process that uses S3 crashes at its end if nobody ends S3 before. This module does."""
    importlib.import_module("pyarrow.fs")


def _without_user(path):
    """A path as messages show it: a URI may have a password."""
    return re.sub(r"\A([a-z0-9+.-]+://)[^/]*@", r"\1", path, flags=re.IGNORECASE)


def _is_pipe(path):
    if path == "-":
        return True
    if path.startswith("file://"):
        path = unquote(urlsplit(path).path)
    try:
        return stat.S_ISFIFO(os.stat(path).st_mode)
    except (OSError, ValueError):
        return False


def _names_of(files, batch_rows, options):
    """The columns of files, or None if they cannot be read."""
    try:
        return FileSource(*files, None, batch_rows, **options).names
    except (TypeError, pa.ArrowInvalid):
        return None


def _refused(columns, names, shown):
    """The reason why columns are not to be had of files with these names, or None."""
    if names is None:
        return None
    missing = [name for name in columns if name not in names]
    if missing:
        return KeyError(f"columns: found no {_listed(missing)} in {shown}, "
                        f"expected some of {_listed(names)}.")
    for name in columns:
        if columns.count(name) > 1:
            return ValueError(f"columns: found {name!r} twice or more, expected it once.")
        if names.count(name) > 1:
            return ValueError(f"columns: found {names.count(name)} columns {name!r} in {shown}, "
                              "expected one.")
    return None


def _listed(names):
    shown = ", ".join(map(repr, names[:20]))
    return f"{shown}, ... {len(names) - 20} more" if len(names) > 20 else shown
