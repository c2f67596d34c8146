#pragma once

/// \file
/// Failures of the library as exceptions of Python and pyarrow.

#include <arrow/result.h>
#include <arrow/status.h>
#include <nanobind/nanobind.h>

#include <string>
#include <utility>

namespace numera::python {

namespace nb = nanobind;

/// Raises the exception of pyarrow's family that belongs to the status, with its message and, where
/// a column failed, the attributes `column_name`, `column_index` and `error_code`. `note` is added
/// to a type error or an invalid value: what the caller can do about it.
[[noreturn]] void raise_status(const ::arrow::Status& status, const std::string& note = {});

inline void raise_unless_ok(const ::arrow::Status& status, const std::string& note = {}) {
  if (!status.ok()) raise_status(status, note);
}

template <class T>
T value_or_raise(::arrow::Result<T> result, const std::string& note = {}) {
  if (!result.ok()) raise_status(result.status(), note);
  return std::move(result).MoveValueUnsafe();
}

/// Raises `type` with a text in UTF-8 and a note.
[[noreturn]] void raise_with_note(PyObject* type, const char* text, const nb::object& note);

/// Makes the host's exceptions, which nanobind does not know, those of Python.
void register_host_exceptions();

}  // namespace numera::python
