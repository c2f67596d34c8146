#pragma once

#include <arrow/record_batch.h>
#include <arrow/result.h>
#include <arrow/status.h>

#include <memory>
#include <string>

namespace numera::tools {

/// A file that appears only when it is complete: it is written beside its target and renamed at the
/// end. Until then, and after any failure, an existing target stays as it is.
class Sink {
 public:
  /// `path` ends in ".parquet", or in ".arrow", ".feather" or ".ipc" for an Arrow IPC file.
  /// `input` is the file that is read: writing over it is refused.
  static ::arrow::Result<std::unique_ptr<Sink>> open(const std::string& path,
                                                     const std::string& input);

  virtual ~Sink() = default;
  /// All batches have the schema of the first.
  virtual ::arrow::Status write(const std::shared_ptr<::arrow::RecordBatch>& batch) = 0;
  /// Makes the file appear. Without any batch there is no file.
  virtual ::arrow::Status finish() = 0;
};

}  // namespace numera::tools
