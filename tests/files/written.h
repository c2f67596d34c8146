#pragma once

/// \file
/// Tables that are written with a sink, and the standard streams of a test.

#include <arrow/record_batch.h>
#include <arrow/result.h>
#include <arrow/status.h>
#include <arrow/table.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "numera/files/write.h"
#include "tests/tools/written_files.h"

namespace numera::testing {

/// One batch of all rows. The columns have one chunk each.
std::shared_ptr<::arrow::RecordBatch> batch_of(const ::arrow::Table& table);
std::shared_ptr<::arrow::RecordBatch> batch_of(const std::vector<NamedColumn>& columns);
std::shared_ptr<::arrow::RecordBatch> batch_of(const std::string& name,
                                               const std::shared_ptr<::arrow::Array>& column);

/// Writes the batches to a file.
::arrow::Status write_batches(const std::string& path, const ::arrow::RecordBatchVector& batches,
                              const files::WriteOptions& options = {});

/// The bytes that `run` writes to standard output, which is a file meanwhile.
std::string standard_output_of(const std::function<void()>& run);

/// Runs the function while standard output is the descriptor.
void with_standard_output(int descriptor, const std::function<void()>& run);

/// Runs the function while standard input is the descriptor.
void with_standard_input(int descriptor, const std::function<void()>& run);

}  // namespace numera::testing
