#pragma once

/// \file
/// The docstrings of the module's functions. Their examples are run as tests.

namespace numera::python::docs {

inline constexpr const char* kTableErrorCode =
    R"(What kind of failure a column had: the `error_code` of exceptions.)";

inline constexpr const char* kToHost = R"(The encoded host value of Arrow data.

x is one of
- an object with `__arrow_c_stream__`: tables, data frames, relations, record batches and their
  readers, chunked arrays, series. A stream of structs becomes an encoded table, any other an
  encoded array; rows of a table that are null are null in every column;
- an object with `__arrow_c_array__`: an encoded array;
- one-dimensional bytes-like memory (bytes, bytearray, memoryview, pyarrow.Buffer): the envelope
  of a buffer.

Everything is validated once and copied; x is only read. With cast=True values that have no host
form (decimals, half floats, intervals, views, list views, fixed-size lists, run-end encoded and
extension values) are cast where there is a rule for it. Views and list views of other libraries
than pyarrow, which polars holds text as, become plain text, bytes and lists without being asked:
nothing is lost by that.

Raises pyarrow.ArrowTypeError for a type without host form, pyarrow.ArrowInvalid for data that is
not valid, OSError for a stream that fails, TypeError for any other x, MemoryError. Where a column
of a table failed, the exception has its `column_name`, its 0-based `column_index` and an
`error_code`. Ctrl-C raises KeyboardInterrupt between two columns.

Other Python threads run meanwhile.

>>> import numera, pyarrow
>>> numera.to_host(pyarrow.array([1.5, 2.0, 3.0]))
struct 1x1
  ArrowType: char 1x5 "array"
  Type: char 1x6 "double"
  Valid: struct 1x1
    ArrowType: char 1x6 "buffer"
    Values: uint8 0x1 []
    Length: double 1x1 [3]
  Data: double 3x1 [1.5 2 3]
)";

inline constexpr const char* kDatatype =
    R"(The name of the host class that values of an Arrow type become, or None.

type is a pyarrow.DataType or any object with `__arrow_c_schema__`; a schema is a "table". None
says that the type, or the type of a child, has no host form.

Raises TypeError for any other object, pyarrow.ArrowInvalid for a schema that is not valid.

>>> import numera, pyarrow
>>> numera.datatype(pyarrow.timestamp("us", "UTC"))
'datetime'
>>> numera.datatype(pyarrow.decimal128(9, 2)) is None
True
)";

inline constexpr const char* kToArrow = R"(The Arrow value of an encoded host value.

An encoded table gives a pyarrow.Table, the envelope of a buffer a pyarrow.Buffer, any other
encoded value a pyarrow.Array. The result shares the memory of the host value, at the same
addresses, and keeps it alive as long as any of its buffers lives.

`to_arrow` reads what `make_readable` makes. What `to_host` gave is read as it stands only where
both forms are the same, as with numbers. Call `make_readable` first for text, dates, bytes and
nested values.

With validate=True the result is checked completely before it is returned. Without it, codes,
offsets and texts are taken as they stand: only for values that are known to be sound, since Arrow
trusts them.

Raises pyarrow.ArrowTypeError and pyarrow.ArrowInvalid with what is wrong, ValueError for a struct
that is not encoded ("Wrong field name."), IndexError for a struct without elements, MemoryError.
Where a column of a table failed, the exception has its `column_name`, its 0-based `column_index`
and an `error_code`, and a note with its type. Ctrl-C raises KeyboardInterrupt between two columns.

>>> import numera, pyarrow
>>> texts = numera.to_host(pyarrow.array(["one", None, "three"]))
>>> numera.to_arrow(numera.make_readable(texts)).to_pylist()
['one', None, 'three']
)";

inline constexpr const char* kMakeReadable = R"(The form of a host value that `to_arrow` reads.

value is an ordinary value (real numbers, logical values, string arrays, char arrays, cells of
char rows or of uint8 arrays; any shape, read in storage order) or an encoded value in the form
that `to_host` gives. Nothing is copied that can be read as it stands.

Raises pyarrow.ArrowTypeError and pyarrow.ArrowInvalid with the place, what was found there and
what was expected; MemoryError. Where a column of a table failed, the exception has its
`column_name`, its 0-based `column_index` and an `error_code`, and a note with its type and what
can be done. Ctrl-C raises KeyboardInterrupt between two columns.

>>> import numera
>>> numera.to_arrow(numera.make_readable(numera.host.string(["a", None, "c"]))).to_pylist()
['a', None, 'c']
)";

inline constexpr const char* kUtf16ToUtf8 = R"(UTF-8 bytes and offsets of host texts.

text is an N-by-1 string array (a missing text gives no bytes), an N-by-1 cell of char rows, or a
char matrix of N rows. The result is a pair of
- the bytes, (T + 1)-by-1 uint8: the texts back to back and one zero byte behind them;
- the offsets, (N + 1)-by-1 uint64: text i is bytes[offsets[i]:offsets[i + 1]].

Raises ValueError with an `identifier` for any other value and for a text that is not UTF-16.

>>> import numera
>>> numera.utf16_to_utf8(numera.host.string(["one", "é"]))
(uint8 6x1 [111 110 101 195 169 0], uint64 3x1 [0 3 5])
)";

}  // namespace numera::python::docs
