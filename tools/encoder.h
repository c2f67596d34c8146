#pragma once

#include <arrow/io/interfaces.h>
#include <arrow/record_batch.h>
#include <arrow/result.h>
#include <arrow/status.h>

#include <functional>
#include <memory>
#include <string_view>

namespace numera::tools {

/// What writes batches of one schema in one format. Parquet gathers a row group of some
/// 16 MiB; an Arrow IPC file keeps the dictionaries.
struct Encoder {
  std::function<::arrow::Status(const std::shared_ptr<::arrow::RecordBatch>&)> write;
  /// Writes what stands behind the last batch. There has been one.
  std::function<::arrow::Status()> close;
};

using MakeEncoder = Encoder (*)(std::shared_ptr<::arrow::io::OutputStream>);

/// The format that the end of a file's name stands for: Parquet for ".parquet"; an Arrow IPC
/// file, a record batch a batch, for ".arrow", ".feather" and ".ipc". Invalid for any other.
::arrow::Result<MakeEncoder> find_encoder(std::string_view path);

}  // namespace numera::tools
