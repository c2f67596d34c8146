#pragma once

/// \file
/// Checks for Arrow values that the library accepted: the way to the host, to a readable form and
/// back.

#include <arrow/array/data.h>
#include <arrow/chunked_array.h>
#include <arrow/table.h>
#include <arrow/type.h>

#include <memory>

#include "numera/host/array.h"

namespace numera::fuzz {

/// Checks a column that passed the intake. It must convert to the host. If its type is one that
/// returns, it must return with the same values.
void check_round_trip(const std::shared_ptr<::arrow::ChunkedArray>& column);

/// The same for a table: all columns together, and their names.
void check_round_trip(const std::shared_ptr<::arrow::Table>& table);

/// Converts an encoded array that must be readable. Refutes anything but a valid array.
std::shared_ptr<::arrow::Array> read_valid(const hxArray* readable);

}  // namespace numera::fuzz
