#pragma once

#include <arrow/record_batch.h>
#include <arrow/result.h>
#include <arrow/type.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace numera::tools {

struct SourceOptions {
  std::vector<std::string> columns;  ///< names, in this order; empty: all columns
  std::int64_t batch_rows = 65536;   ///< most rows per batch
};

/// A file that is read batch by batch, so that memory is bounded whatever its size.
struct Source {
  std::shared_ptr<::arrow::Schema> schema;
  /// The next batch, or null after the last one.
  std::function<::arrow::Result<std::shared_ptr<::arrow::RecordBatch>>()> next;
  /// The total number of rows, if the file states it.
  std::optional<std::int64_t> rows;
  /// Row groups, record batches or blocks read so far.
  std::shared_ptr<std::int64_t> chunks;
};

/// Opens a Parquet, Arrow IPC or CSV file, or an Arrow IPC stream in a file. The content tells
/// which. If the file cannot be read, the status says why in one line, here and from `next`.
::arrow::Result<Source> open_source(const std::string& path, const SourceOptions& options);

}  // namespace numera::tools
