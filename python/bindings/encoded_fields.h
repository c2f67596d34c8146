#pragma once

/// \file
/// Reads fields of encoded values. A defective value gives an empty or false answer, never an
/// exception.

#include <arrow/status.h>

#include <string>

#include "numera/host/array.h"
#include "python/bindings/host_value.h"

namespace numera::python {

/// The text of "ArrowType"; empty for a value that is not encoded.
std::string kind_of(const hxArray* value);

/// Whether the value is a struct or object without "ArrowType" or without elements. No conversion
/// takes it.
bool is_other_struct(const hxArray* value);

/// Whether `to_arrow` can read the value directly: an array of numbers, packed texts or bytes,
/// packed logical values or times of day, or a table of such columns. A defective value may pass;
/// its conversion then fails in either form.
bool is_known_readable(const hxArray* value);

/// "the type is 'double': "; empty if the failure names no column or the column has no type. The
/// message of the failure names the column.
std::string type_of_failed_column(const HostValue& host, const ::arrow::Status& status);

/// The note for a value that is refused: the type of the column and what can be done. Empty if the
/// failure names no column.
std::string refused_column_note(const HostValue& host, const ::arrow::Status& status);

}  // namespace numera::python
