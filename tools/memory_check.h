#pragma once

#include <arrow/array/array_base.h>
#include <arrow/record_batch.h>
#include <arrow/status.h>

namespace numera::tools {

/// Whether every element can be read without leaving the buffers: offsets, sizes, codes and runs at
/// every depth. Unlike Arrow's full validation it accepts texts that are not UTF-8 and numbers that
/// are no time of a day, no whole day or too large for a decimal type. Those can be shown.
::arrow::Status check_memory(const ::arrow::Array& array);

/// The same of every column. The message names the column.
::arrow::Status check_memory(const ::arrow::RecordBatch& batch);

}  // namespace numera::tools
