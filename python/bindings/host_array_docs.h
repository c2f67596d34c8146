#pragma once

/// \file
/// The docstrings of `HostArray`. Their examples are run as tests.

namespace numera::python::docs {

inline constexpr const char* kHostArray =
    R"(A host value: an array of numbers, logical values, characters, strings, cells or structs.

`numera.to_host`, `numera.make_readable` and the functions of `numera.host` create host values. They
are immutable. Every array has a class and at least two dimensions. Its elements are stored in
column-major order. Indexes follow that order and start at 0. Host values and views that are taken
from a value share its memory and keep the whole value alive.

Numeric, logical and char arrays support the buffer protocol: numpy.asarray and memoryview read them
without a copy.

>>> import numera, pyarrow
>>> column = numera.to_host(pyarrow.array([1, 2, 3]))
>>> column.fields
('ArrowType', 'Type', 'Valid', 'Data')
>>> column["Type"].text, column["Data"].numpy().ravel().tolist()
('int64', [1, 2, 3])
)";

inline constexpr const char* kClassName =
    R"(The name of the class.

One of "cell", "struct", "logical", "char", "double", "single", "int8" to "uint64" and "string". Any
other object has the name of its own class.

>>> import numera
>>> numera.host.string(["a", "b"]).class_name
'string'
)";

inline constexpr const char* kShape = R"(The dimensions, at least two.

>>> import numera
>>> numera.host.numeric([1.0, 2.0, 3.0]).shape
(3, 1)
)";

inline constexpr const char* kFields =
    R"(The field names of a struct, in order. Empty for every other class.

>>> import numera
>>> numera.host.struct({"Name": "x", "Size": 2}).fields
('Name', 'Size')
)";

inline constexpr const char* kIsComplex = R"(Whether the elements are complex numbers.

>>> import numera
>>> numera.host.numeric([1j, 2.0]).is_complex
True
)";

inline constexpr const char* kIsSparse =
    R"(Whether the array is sparse. The elements of a sparse array cannot be read.

>>> import numera
>>> numera.host.numeric([1.0]).is_sparse
False
)";

inline constexpr const char* kText =
    R"(The text of a char array: all its code units in storage order.

Unpaired surrogates of the array stay unpaired surrogates in the str.

Raises ValueError "Array is not char array." for every other class. Read the elements of a string
array by index.

>>> import numera
>>> numera.host.char("données").text
'données'
)";

inline constexpr const char* kLen = R"(The total number of elements, over all dimensions.)";

inline constexpr const char* kGetField =
    R"(The value of a field of a struct with one element, or None if the field is empty.

Raises KeyError "Wrong field name.". Raises ValueError for every other class and for a struct array
with several elements. Raises IndexError for a struct array without elements.
)";

inline constexpr const char* kGetElement =
    R"(The element at `index` in storage order. Negative indexes count from the end.

- cell array: the value of the cell, or None if the cell is empty;
- struct array: a 1-by-1 struct;
- any other array: a Python number, bool or str, or None for a missing text.

Raises IndexError if the index is out of range.

>>> import numera
>>> cell = numera.host.cell(["text", None, 1.5])
>>> cell[0], cell[1], cell[-1][0]
(char 1x4 "text", None, 1.5)
)";

inline constexpr const char* kIter = R"(Iterates over the elements `self[i]` in storage order.)";

inline constexpr const char* kContains =
    R"(Whether the value is a struct that has a field of this name.)";

inline constexpr const char* kNumpy =
    R"(A read-only NumPy view of the elements, with the same shape and without a copy.

The view is column-major and keeps the host array alive. Logical values have the dtype bool. The
elements of a char array are its code units, with the dtype uint16.

Raises TypeError for string, cell and struct arrays and objects, because their elements are not one
block of memory. Raises TypeError for complex integers and sparse arrays, because NumPy has no form
for them.

>>> import numera
>>> view = numera.host.numeric([[1.0, 2.0], [3.0, 4.0]]).numpy()
>>> view[1].tolist(), view.flags.writeable, view.flags.f_contiguous
([3.0, 4.0], False, True)
)";

inline constexpr const char* kToPython =
    R"(The value as plain Python objects. The contents are copied.

- numeric, logical or string array: one element becomes a number, bool or str. A two-dimensional
  array with a dimension of 1 or 0 becomes a list. Any other array becomes nested lists, with the
  rows outermost, like numpy.ndarray.tolist;
- char array: a row or a 0-by-0 array becomes a str. Any other shape becomes a list of the rows,
  page by page;
- cell array: always a list or nested lists, by the same rule;
- struct array: a single element becomes a dict. Any other struct array becomes a list or nested
  lists of dicts, by the same rule;
- missing texts, empty cells and empty fields become None.

Raises TypeError for sparse arrays, complex integers and classes whose contents are not known.

>>> import numera
>>> numera.host.struct({"A": [1, 2], "B": "text", "C": numera.host.cell([None, True])}).to_python()
{'A': [1, 2], 'B': 'text', 'C': [None, True]}
)";

inline constexpr const char* kTree =
    R"(The value printed as a tree, like `repr`, with limits of your choice.

- max_depth: number of levels below the value;
- max_elements: number of elements listed per array;
- max_width: number of columns per line;
- max_lines: total number of lines.

"..." marks what a limit cuts off.

>>> import numera
>>> print(numera.host.numeric(range(100)).tree(max_elements=3))
int64 100x1 [0 1 2 ... 97 more]
)";

inline constexpr const char* kRepr = R"(The value printed as a tree.)";

inline constexpr const char* kReprHtml =
    R"(The value as an HTML tree that can be folded, for notebooks.)";

inline constexpr const char* kEqual =
    R"(Whether the class, the size, the field names and every bit of the contents are equal.

NaN equals NaN with the same bits. -0.0 differs from 0.0.
)";

inline constexpr const char* kReduce =
    R"(Supports pickle and copy for numeric, logical, char, string, cell and struct arrays.

Raises TypeError for sparse arrays, complex integers and objects of classes other than "string".
)";

inline constexpr const char* kLiveArrays =
    R"(The number of host arrays that exist now, including nested arrays and shared copies.

>>> import numera
>>> before = numera.host.live_arrays()
>>> value = numera.host.numeric([1.0])
>>> numera.host.live_arrays() - before
1
)";

inline constexpr const char* kLiveBytes = R"(The number of bytes that host arrays occupy now.

>>> import numera
>>> before = numera.host.live_bytes()
>>> value = numera.host.numeric(range(1000))
>>> numera.host.live_bytes() - before >= 8000
True
)";

inline constexpr const char* kFirstDifference =
    R"(The first difference between two values, or None if they are equal.

The result is one line. It starts with the path of the difference, unless the difference concerns
the outermost value as a whole.

>>> import numera
>>> a, b = numera.host.struct({"X": [1, 2]}), numera.host.struct({"X": [1, 3]})
>>> numera.host.first_difference(a, b)
'.X(1): 2 is not 3'
)";

}  // namespace numera::python::docs
