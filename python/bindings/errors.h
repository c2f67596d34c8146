#pragma once

/// \file
/// Turns failures of the library into exceptions of Python and pyarrow.

#include <arrow/result.h>
#include <arrow/status.h>
#include <nanobind/nanobind.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace numera::python {

namespace nb = nanobind;

/// Raises the pyarrow exception for the status, with its message. If a column failed, the exception
/// has the attributes `column_name`, `column_index` and `error_code`. `note` tells the caller what
/// to do; it is only added to type errors and invalid values.
[[noreturn]] void raise_status(const ::arrow::Status& status, const std::string& note = {});

inline void raise_unless_ok(const ::arrow::Status& status, const std::string& note = {}) {
  if (!status.ok()) raise_status(status, note);
}

template <class T>
T value_or_raise(::arrow::Result<T> result, const std::string& note = {}) {
  if (!result.ok()) raise_status(result.status(), note);
  return std::move(result).MoveValueUnsafe();
}

/// Raises the exception for files that cannot be read or written. If the system gave the reason,
/// this is an OSError with the error number, and with the path if the message names no more than
/// one of `paths`; else what `raise_status` raises. Other messages begin with `prefix`.
[[noreturn]] void raise_file_status(const ::arrow::Status& status,
                                    const std::vector<std::string>& paths,
                                    const std::string& prefix);

/// Python text of UTF-8. Other bytes are replaced.
nb::str text_of(std::string_view text);
/// Python text of a path, as `os.fsdecode` gives it.
nb::str path_text(std::string_view path);

/// Raises `type` with a UTF-8 text and a note.
[[noreturn]] void raise_with_note(PyObject* type, const char* text, const nb::object& note);

/// Translates the host's exceptions, which nanobind does not know, into Python exceptions.
void register_host_exceptions();

}  // namespace numera::python
