#pragma once

#include <arrow/io/interfaces.h>
#include <arrow/record_batch.h>
#include <arrow/result.h>
#include <arrow/status.h>

#include <functional>
#include <memory>
#include <string_view>

namespace numera::tools {

/// What writes batches of one schema in one format, and holds no more than one of them.
struct Encoder {
  std::function<::arrow::Status(const std::shared_ptr<::arrow::RecordBatch>&)> write;
  /// Writes what stands behind the last batch. There has been one.
  std::function<::arrow::Status()> close;
};

using MakeEncoder = Encoder (*)(std::shared_ptr<::arrow::io::OutputStream>);

/// The format that the end of a file's name stands for: Parquet, a row group a batch, for
/// ".parquet"; an Arrow IPC file for ".arrow", ".feather" and ".ipc". Invalid for any other.
::arrow::Result<MakeEncoder> find_encoder(std::string_view path);

}  // namespace numera::tools
