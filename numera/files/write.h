#pragma once

/// \file
/// Arrow record batches, written to files.

#include <arrow/record_batch.h>
#include <arrow/result.h>
#include <arrow/status.h>

#include <memory>
#include <string>
#include <vector>

#include "numera/arrow_version.h"
#include "numera/export.h"

namespace numera::files {

/// How a file is written.
struct WriteOptions {
  /// Paths of files that are read meanwhile. A sink that would replace one of them is refused.
  std::vector<std::string> inputs = {};
};

/// A file that appears only when it is complete. It is written beside its target and renamed at the
/// end. Until then, and after any failure, an existing target stays unchanged. If the target is a
/// link, the link stays and the file that it leads to is replaced. The destructor of a sink that
/// was not finished removes the unfinished file. One thread at a time may use a sink.
class NUMERA_EXPORT Sink {
 public:
  virtual ~Sink();
  Sink(const Sink&) = delete;
  Sink& operator=(const Sink&) = delete;

  /// Writes a batch. All batches have the schema of the first.
  virtual ::arrow::Status write(const std::shared_ptr<::arrow::RecordBatch>& batch) = 0;
  /// Puts the file in place, with the permissions of the file that it replaces. Its data is on disk
  /// before. At least one batch was written.
  virtual ::arrow::Status finish() = 0;

 protected:
  Sink() = default;
};

/// Opens a file to write. The end of `path` selects the format:
///
/// - ".parquet": Parquet with the Arrow schema. A row group of about 16 MiB is held in memory.
/// - ".arrow", ".feather", ".ipc": an Arrow IPC file with one record batch per batch. Dictionaries
///   are held in memory; they only grow from batch to batch.
///
/// Returns Invalid for another name and for an input, and IOError for a target that is not a
/// regular file, that is not writable, or whose folder is not. Messages here and of the sink begin
/// with "cannot write PATH: ".
NUMERA_EXPORT ::arrow::Result<std::unique_ptr<Sink>> open_sink(const std::string& path,
                                                               const WriteOptions& options = {});

}  // namespace numera::files
