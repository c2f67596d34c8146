#pragma once

/// \file
/// The docstrings of `HostArray`. Their examples are run as tests.

namespace numera::python::docs {

inline constexpr const char* kHostArray =
    R"(A value of the host: an array of numbers, truth values, text, texts, cells or structs.

Made by `numera.to_host`, `numera.make_readable` and the functions of `numera.host`; never changed
afterwards. Every array has a class and two dimensions or more; elements lie in column-major
order, and are indexed from 0 in that order. What is read out of a value shares its memory and
keeps all of it alive.

Arrays of numbers, truth values and text speak the buffer protocol, so that numpy.asarray and
memoryview read them without a copy.

>>> import numera, pyarrow
>>> column = numera.to_host(pyarrow.array([1, 2, 3]))
>>> column.fields
('ArrowType', 'Type', 'Valid', 'Data')
>>> column["Type"].text, column["Data"].numpy().ravel().tolist()
('int64', [1, 2, 3])
)";

inline constexpr const char* kClassName =
    R"("cell", "struct", "logical", "char", "double", "single", "int8" to "uint64", "string", or the class name of another object.

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
    R"(The names of the fields of a struct in their order; empty for every other class.

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
    R"(Whether the host stores the numbers sparsely; their elements cannot be read.

>>> import numera
>>> numera.host.numeric([1.0]).is_sparse
False
)";

inline constexpr const char* kText =
    R"(The text of a char array, all its code units in storage order.

Code units that belong to no pair become lone surrogates. Raises ValueError "Array is not char
array." for every other class; the elements of a string array are read by index.

>>> import numera
>>> numera.host.char("données").text
'données'
)";

inline constexpr const char* kLen = R"(The number of elements, over all dimensions.)";

inline constexpr const char* kGetField =
    R"(The value of a field of a struct of one element, or None where it is empty.

Raises KeyError "Wrong field name.", ValueError for another class and for a struct array of
several elements, IndexError for one without elements.
)";

inline constexpr const char* kGetElement =
    R"(Element `index` in storage order; negative ones count from the end.

Of a cell array its value, or None where it is empty; of a struct array a 1-by-1 struct; of any
other array a Python number, bool or text (None where it is missing).

Raises IndexError.

>>> import numera
>>> cell = numera.host.cell(["text", None, 1.5])
>>> cell[0], cell[1], cell[-1][0]
(char 1x4 "text", None, 1.5)
)";

inline constexpr const char* kIter = R"(The elements in storage order, as `self[i]` gives them.)";

inline constexpr const char* kContains = R"(Whether a struct has a field of this name.)";

inline constexpr const char* kNumpy =
    R"(The elements as a read-only NumPy array of the same shape, without a copy.

Logical values are bool, char arrays the uint16 code units; the array is column-major. It keeps
the host array alive.

Raises TypeError for classes without a block of elements (string, cell, struct, objects), and for
complex integers and sparse arrays, which NumPy has no form for.

>>> import numera
>>> view = numera.host.numeric([[1.0, 2.0], [3.0, 4.0]]).numpy()
>>> view[1].tolist(), view.flags.writeable, view.flags.f_contiguous
([3.0, 4.0], False, True)
)";

inline constexpr const char* kToPython = R"(The value as plain Python objects, copied.

- numbers, truth values, texts of a string array: one element is itself, a vector (one dimension
  longer than 1, or no elements and two dimensions) a list, anything else nested lists, the row
  first, like numpy.ndarray.tolist;
- a char row: str; another char array: the list of its rows, page after page;
- a cell array: always lists, shaped likewise; a struct: a dict; a struct array: a list of them,
  shaped likewise;
- missing texts and empty slots: None.

Raises TypeError for sparse arrays, complex integers and classes without known contents.

>>> import numera
>>> numera.host.struct({"A": [1, 2], "B": "text", "C": numera.host.cell([None, True])}).to_python()
{'A': [1, 2], 'B': 'text', 'C': [None, True]}
)";

inline constexpr const char* kTree =
    R"(The value printed as a tree, like `repr`, within other limits.

max_depth: levels below the value; max_elements: elements listed of each array; max_width: columns
of a line; max_lines: lines in all. What is cut off is marked with "...".

>>> import numera
>>> print(numera.host.numeric(range(100)).tree(max_elements=3))
int64 100x1 [0 1 2 ... 97 more]
)";

inline constexpr const char* kRepr = R"(The value printed as a tree.)";

inline constexpr const char* kReprHtml =
    R"(The value as a folding tree of HTML, which notebooks show.)";

inline constexpr const char* kEqual =
    R"(Whether class, size, field names and every bit of the contents are the same.

NaN equals NaN of the same bits; -0.0 differs from 0.0.
)";

inline constexpr const char* kReduce =
    R"(How pickle and copy take the value apart: numbers, truth values, text, cells and structs.

Raises TypeError for sparse arrays, complex integers and objects of other classes than "string".
)";

inline constexpr const char* kLiveArrays =
    R"(The number of arrays of the host that live now, those inside of others and shared copies counted.

>>> import numera
>>> before = numera.host.live_arrays()
>>> value = numera.host.numeric([1.0])
>>> numera.host.live_arrays() - before
1
)";

inline constexpr const char* kLiveBytes = R"(The bytes that the arrays of the host take now.

>>> import numera
>>> before = numera.host.live_bytes()
>>> value = numera.host.numeric(range(1000))
>>> numera.host.live_bytes() - before >= 8000
True
)";

inline constexpr const char* kFirstDifference =
    R"(The first difference between two values as one line that opens with its path, or None.

>>> import numera
>>> a, b = numera.host.struct({"X": [1, 2]}), numera.host.struct({"X": [1, 3]})
>>> numera.host.first_difference(a, b)
'.X(1): 2 is not 3'
)";

}  // namespace numera::python::docs
