"""Host arrays to Apache Arrow and back.

>>> import numera, pyarrow
>>> host = numera.to_host(pyarrow.table({"n": [1, 2], "text": ["a", None]}))
>>> host["Columns"][1]["Data"]
string 2x1 ["a" ""]
>>> numera.to_arrow(numera.encode(host)).to_pydict()
{'n': [1, 2], 'text': ['a', None]}
"""

from . import _pyarrow

_pyarrow.check()

from . import host
from ._core import (
    HostArray,
    TableErrorCode,
    __version__,
    datatype,
    encode,
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
    "read",
    "scan",
    "to_arrow",
    "to_host",
    "utf16_to_utf8",
    "write",
]
