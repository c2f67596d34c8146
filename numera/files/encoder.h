#pragma once

#include <arrow/io/interfaces.h>
#include <arrow/record_batch.h>
#include <arrow/result.h>
#include <arrow/status.h>

#include <functional>
#include <memory>
#include <string_view>

namespace numera::files {

/// Writes batches of one schema in one format. Parquet collects a row group of about 16 MiB in
/// memory; Arrow IPC keeps the dictionaries in memory.
struct Encoder {
  std::function<::arrow::Status(const std::shared_ptr<::arrow::RecordBatch>&)> write;
  /// Writes the end of the file. At least one batch was written before.
  std::function<::arrow::Status()> close;
};

using MakeEncoder = Encoder (*)(std::shared_ptr<::arrow::io::OutputStream>);

/// The format for the end of a file name. ".parquet" is Parquet. ".arrow", ".feather" and ".ipc"
/// are an Arrow IPC file with one record batch per batch. Invalid for any other.
::arrow::Result<MakeEncoder> find_encoder(std::string_view path);

}  // namespace numera::files
