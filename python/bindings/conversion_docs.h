#pragma once

/// \file
/// The docstrings of the module's functions. Their examples are run as tests.

namespace numera::python::docs {

inline constexpr const char* kTableErrorCode =
    R"(The kind of a failure in a column: the attribute `error_code` of the exception.)";

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
floats, intervals, views, list views, fixed-size lists, run-end encoded and extension values, and
dictionaries whose values are not text.

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

inline constexpr const char* kToArrow = R"(Converts a host value to Arrow.

host is an encoded value from `to_host` or `read`, the result of `make_readable`, or an ordinary
value that `make_readable` takes: numbers, logical values, texts, and cells of texts or of bytes.

An encoded table becomes a pyarrow.Table, the envelope of a buffer becomes a pyarrow.Buffer, and
any other value becomes a pyarrow.Array. The result shares the memory of the parts of the host value
that are in readable form, at the same addresses; the other parts are converted to new memory. Each
buffer of the result keeps the memory that it uses alive. host is only read.

type is the pyarrow.DataType of the array, or the pyarrow.Schema of the table. The result has
exactly this type or schema, including names, nullability and metadata. Only casts without loss are
made, also inside lists, structs and maps:
- text, bytes and lists to 32-bit offsets;
- text and bytes to views, and bytes to a fixed width;
- timestamps of whole days, without time zone, to dates;
- int64 to durations;
- lists of structs of key and value to maps;
- dictionaries to another index type, and their texts as above;
- doubles that are all null to the null type.
Without a type nothing is cast.

The result is checked completely. validate=False reads a value in readable form as it is, and does
not check codes, offsets and texts. Use it only for results of `make_readable` and for other values
in readable form that are known to be valid, because Arrow trusts them. It cannot be combined with a
type.

Raises
- pyarrow.ArrowTypeError and pyarrow.ArrowInvalid if the value is not valid, or cannot be cast to
  type without loss;
- TypeError if type is not a pyarrow.Schema (for a table) or not a pyarrow.DataType (for an array),
  and if a buffer is given any type;
- ValueError for a struct that is not encoded, if no type is given ("Wrong field name."), and for
  validate=False with a type;
- IndexError for a struct without elements;
- MemoryError;
- KeyboardInterrupt between two columns, after Ctrl-C.

If a column of a table fails, the exception has the attributes `column_name`, `column_index`
(0-based) and `error_code`, and a note with the type of the column and what can be done.

Other Python threads can run during the conversion.

>>> import numera, pyarrow
>>> table = pyarrow.table({"n": [1, 2], "text": ["one", None]})
>>> numera.to_arrow(numera.to_host(table)).to_pydict()
{'n': [1, 2], 'text': ['one', None]}
>>> numera.to_arrow(numera.to_host(table), table.schema) == table
True
>>> numera.to_arrow(numera.host.string(["a", None, "c"]), pyarrow.string()).to_pylist()
['a', None, 'c']
)";

inline constexpr const char* kMakeReadable =
    R"(Converts a host value to the form that Arrow reads.

`to_arrow` calls it. Call it yourself to keep the readable value, for example to convert it several
times.

value is one of
- an ordinary value: real numbers, logical values, a string array, a char array, or a cell array of
  char rows or of uint8 arrays. It may have any shape; elements are read in storage order;
- an encoded value in the form that `to_host` returns.

Parts that are already in the form that Arrow reads are not copied.

Raises
- pyarrow.ArrowTypeError and pyarrow.ArrowInvalid; the message states the place of the error, what
  was found there and what was expected;
- MemoryError;
- KeyboardInterrupt between two columns, after Ctrl-C.

If a column of a table fails, the exception has the attributes `column_name`, `column_index`
(0-based) and `error_code`, and a note with the type of the column and what can be done.

>>> import numera
>>> readable = numera.make_readable(numera.host.char(["ab", "cd"]))
>>> readable["Type"].text, readable["Data"]["StartOffsets"]
('string', uint64 3x1 [0 2 4])
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
