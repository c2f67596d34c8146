#pragma once

#include <arrow/io/file.h>
#include <arrow/record_batch.h>
#include <arrow/result.h>
#include <arrow/status.h>

#include <memory>
#include <string>

#include "tools/encoder.h"

namespace numera::tools {

/// A file that appears only when it is complete: it is written beside its target and renamed at the
/// end. Until then, and after any failure, an existing target stays as it is. A link stays a link:
/// what it leads to is the target.
class Sink {
 public:
  /// The end of `path` says which format is written. `input` is the file that is read: writing over
  /// it is refused. So is what is there and is no regular file, or not writable.
  static ::arrow::Result<std::unique_ptr<Sink>> open(const std::string& path,
                                                     const std::string& input);

  ~Sink();
  Sink(const Sink&) = delete;
  Sink& operator=(const Sink&) = delete;

  /// All batches have the schema of the first.
  ::arrow::Status write(const std::shared_ptr<::arrow::RecordBatch>& batch);
  /// Makes the file appear, with the permissions of the one that it replaces. There has been a
  /// batch.
  ::arrow::Status finish();

 private:
  explicit Sink(std::string path);

  ::arrow::Status check_target(const std::string& input) const;
  ::arrow::Status create_part();
  ::arrow::Status put_in_place();
  ::arrow::Status name_target(const ::arrow::Status& status) const;

  std::string path_;
  std::string target_;  ///< the file behind the links that `path_` may be
  std::string part_;    ///< empty while there is none
  std::shared_ptr<::arrow::io::FileOutputStream> output_;
  Encoder encoder_;
};

}  // namespace numera::tools
