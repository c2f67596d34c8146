"""Host arrays to Apache Arrow and back.

>>> import numera, pyarrow
>>> host = numera.to_host(pyarrow.table({"n": [1, 2], "text": ["a", None]}))
>>> host["Columns"][1]["Data"]
string 2x1 ["a" ""]
>>> numera.to_arrow(host).to_pydict()
{'n': [1, 2], 'text': ['a', None]}
"""

import warnings as _warnings

from . import _pyarrow

_pyarrow.check()

from . import host
from ._core import (
    HostArray,
    TableErrorCode,
    __version__,
    datatype,
    make_readable,
    to_arrow,
    to_host,
    utf16_to_utf8,
)
from .io import read, scan, write

__all__ = [
    "HostArray",
    "TableErrorCode",
    "__version__",
    "datatype",
    "encode",
    "host",
    "make_readable",
    "read",
    "scan",
    "to_arrow",
    "to_host",
    "utf16_to_utf8",
    "write",
]


def encode(value: HostArray) -> HostArray:
    """The former name of `make_readable`.

    >>> import numera
    >>> numera.make_readable(numera.host.char("a"))["Type"]
    char 1x6 "string"
    """
    _warnings.warn("call numera.make_readable", DeprecationWarning, stacklevel=2)
    return make_readable(value)
