#pragma once

#include <arrow/result.h>
#include <arrow/type.h>

#include <memory>

namespace numera::files {

/// The type of the rows of both parts of a JSON lines file, from the types that Arrow found for the
/// parts: int64 with double is double, text with time is text, null with anything is that type, and
/// structs and lists are widened within. Invalid for other types; the message names the column.
::arrow::Result<std::shared_ptr<::arrow::DataType>> widen_rows(
    const std::shared_ptr<::arrow::DataType>& before,
    const std::shared_ptr<::arrow::DataType>& found);

}  // namespace numera::files
