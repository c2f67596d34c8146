#pragma once

/// \file
/// What has to hold for Arrow values that the library took: the way to the host, to a readable form
/// and back.

#include <arrow/array/data.h>
#include <arrow/chunked_array.h>
#include <arrow/table.h>
#include <arrow/type.h>

#include <memory>

#include "numera/host/array.h"

namespace numera::fuzz {

/// A column that the intake took: it gets to the host, and where its type is one that returns it
/// returns with its values.
void check_round_trip(const std::shared_ptr<::arrow::ChunkedArray>& column);

/// The same for the columns of a table together, and their names.
void check_round_trip(const std::shared_ptr<::arrow::Table>& table);

/// Converts an encoded array that is readable by contract; refutes anything but a valid array.
std::shared_ptr<::arrow::Array> read_valid(const hxArray* readable);

}  // namespace numera::fuzz
