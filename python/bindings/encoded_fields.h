#pragma once

/// \file
/// Looks into encoded values, which may be defective, without an exception.

#include <arrow/status.h>

#include <string>

#include "numera/host/array.h"
#include "python/bindings/host_value.h"

namespace numera::python {

/// The text of "ArrowType"; empty for a value that is not encoded.
std::string kind_of(const hxArray* value);

/// Whether the value is a struct that is no encoded value. Nothing makes it readable.
bool is_other_struct(const hxArray* value);

/// Whether the value is known to be in readable form, or refused in every form. True for arrays of
/// numbers, packed texts and bytes, logical values and times of day, and for tables of such
/// columns.
bool is_known_readable(const hxArray* value);

/// `Column 'price' (index 1, type 'double'): `; empty if the failure names no column.
std::string failed_column(const HostValue& host, const ::arrow::Status& status);

/// The note for a value that is refused: the column and what can be done. Empty if the failure
/// names no column.
std::string refused_column_note(const HostValue& host, const ::arrow::Status& status);

}  // namespace numera::python
