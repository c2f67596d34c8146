#pragma once

/// \file
/// The docstrings of the module's functions. Their examples are run as tests.

namespace numera::python::docs {

inline constexpr const char* kTableErrorCode =
    R"(The kind of failure in a column, given as `error_code` of exceptions.)";

inline constexpr const char* kToHost = R"(Converts Arrow data to an encoded host value.

x is one of
- an object with `__arrow_c_stream__`: tables, data frames, relations, record batches and their
  readers, chunked arrays, series. A stream of structs becomes an encoded table; a null row is
  null in every column. Any other stream becomes an encoded array;
- an object with `__arrow_c_array__`: it becomes an encoded array;
- one-dimensional bytes-like memory (bytes, bytearray, memoryview, pyarrow.Buffer): it becomes the
  envelope of a buffer.

The data is validated once and copied. x is only read.

cast=True casts values that have no host form, if there is a rule for their type: decimals, half
floats, intervals, views, list views, fixed-size lists, run-end encoded and extension values.

Views and list views from libraries other than pyarrow are always cast to plain text, bytes and
lists, even with cast=False. Nothing is lost by this. For example, polars stores text as views.

Raises
- pyarrow.ArrowTypeError if a type has no host form;
- pyarrow.ArrowInvalid if the data is not valid;
- OSError if a stream fails;
- TypeError for any other x;
- MemoryError;
- KeyboardInterrupt between two columns, after Ctrl-C.

If a column of a table fails, the exception has the attributes `column_name`, `column_index`
(0-based) and `error_code`.

Other Python threads can run during the conversion.

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
    R"(The name of the host class to which values of an Arrow type are converted, or None.

type is a pyarrow.DataType or any object with `__arrow_c_schema__`. The result for a schema is
"table". The result is None if the type, or the type of a child, has no host form.

Raises TypeError for any other object, and pyarrow.ArrowInvalid for a schema that is not valid.

>>> import numera, pyarrow
>>> numera.datatype(pyarrow.timestamp("us", "UTC"))
'datetime'
>>> numera.datatype(pyarrow.decimal128(9, 2)) is None
True
)";

inline constexpr const char* kToArrow = R"(Converts an encoded host value to Arrow.

An encoded table becomes a pyarrow.Table, the envelope of a buffer becomes a pyarrow.Buffer, and
any other encoded value becomes a pyarrow.Array. The result shares the memory of the host value, at
the same addresses. Each buffer of the result keeps the host value alive.

`to_arrow` reads the results of `make_readable`. It can also read results of `to_host` for types
that need no change, for example numbers. For text, dates, bytes and nested values, call
`make_readable` first.

validate=True checks the result completely before it is returned. validate=False does not check
codes, offsets and texts. Use it only for values that are known to be valid, because Arrow trusts
them.

Raises
- pyarrow.ArrowTypeError and pyarrow.ArrowInvalid, with a message that says what is wrong;
- ValueError for a struct that is not encoded ("Wrong field name.");
- IndexError for a struct without elements;
- MemoryError;
- KeyboardInterrupt between two columns, after Ctrl-C.

If a column of a table fails, the exception has the attributes `column_name`, `column_index`
(0-based) and `error_code`, and a note with the type of the column.

>>> import numera, pyarrow
>>> texts = numera.to_host(pyarrow.array(["one", None, "three"]))
>>> numera.to_arrow(numera.make_readable(texts)).to_pylist()
['one', None, 'three']
)";

inline constexpr const char* kMakeReadable =
    R"(Converts a host value to the form that `to_arrow` reads.

value is one of
- an ordinary value: real numbers, logical values, a string array, a char array, or a cell array of
  char rows or of uint8 arrays. It may have any shape; elements are read in storage order;
- an encoded value in the form that `to_host` returns.

Parts that `to_arrow` can read already are not copied.

Raises
- pyarrow.ArrowTypeError and pyarrow.ArrowInvalid; the message states the place of the error, what
  was found there and what was expected;
- MemoryError;
- KeyboardInterrupt between two columns, after Ctrl-C.

If a column of a table fails, the exception has the attributes `column_name`, `column_index`
(0-based) and `error_code`, and a note with the type of the column and what can be done.

>>> import numera
>>> numera.to_arrow(numera.make_readable(numera.host.string(["a", None, "c"]))).to_pylist()
['a', None, 'c']
)";

inline constexpr const char* kUtf16ToUtf8 = R"(Converts host texts to UTF-8 bytes and offsets.

text is an N-by-1 string array, an N-by-1 cell array of char rows, or a char matrix of N rows. A
missing text has no bytes.

The result is a pair of
- the bytes, (T + 1)-by-1 uint8: the T bytes of all texts without gaps, then one zero byte;
- the offsets, (N + 1)-by-1 uint64: text i is bytes[offsets[i]:offsets[i + 1]].

Raises ValueError for any other value and for a text that is not UTF-16. The exception has the
attribute `identifier`.

>>> import numera
>>> numera.utf16_to_utf8(numera.host.string(["one", "é"]))
(uint8 6x1 [111 110 101 195 169 0], uint64 3x1 [0 3 5])
)";

}  // namespace numera::python::docs
