#pragma once

#include <arrow/io/file.h>
#include <arrow/record_batch.h>
#include <arrow/result.h>
#include <arrow/status.h>

#include <memory>
#include <string>

#include "tools/encoder.h"

namespace numera::tools {

/// A file that appears only when it is complete. It is written beside its target and renamed at the
/// end. Until then, and after any failure, an existing target stays unchanged. If the target is a
/// link, the link stays and the file it leads to is replaced.
class Sink {
 public:
  /// The end of `path` selects the format. `input` is the file that is read; writing over it is
  /// refused. So is an existing target that is not a regular file or not writable.
  static ::arrow::Result<std::unique_ptr<Sink>> open(const std::string& path,
                                                     const std::string& input);

  ~Sink();
  Sink(const Sink&) = delete;
  Sink& operator=(const Sink&) = delete;

  /// All batches have the schema of the first.
  ::arrow::Status write(const std::shared_ptr<::arrow::RecordBatch>& batch);
  /// Puts the file in place, with the permissions of the file it replaces. At least one batch was
  /// written before.
  ::arrow::Status finish();

 private:
  explicit Sink(std::string path);

  ::arrow::Status check_target(const std::string& input) const;
  ::arrow::Status create_part();
  ::arrow::Status put_in_place();
  ::arrow::Status name_target(const ::arrow::Status& status) const;

  std::string path_;
  std::string target_;  ///< `path_` with its links followed
  std::string part_;    ///< the unfinished file; empty if there is none
  std::shared_ptr<::arrow::io::FileOutputStream> output_;
  Encoder encoder_;
};

}  // namespace numera::tools
