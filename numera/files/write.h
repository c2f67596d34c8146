#pragma once

/// \file
/// Arrow record batches, written to files.

#include <arrow/record_batch.h>
#include <arrow/result.h>
#include <arrow/status.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "numera/arrow_version.h"
#include "numera/export.h"

namespace numera::files {

/// What a file is written as.
enum class Format : std::uint8_t {
  kParquet,    ///< with the Arrow schema; a row group of about 16 MiB is held in memory
  kIpcFile,    ///< an Arrow IPC file; one record batch per batch
  kIpcStream,  ///< an Arrow IPC stream; one record batch per batch
};

/// How a file is written.
struct WriteOptions {
  /// Paths of files that are read meanwhile. A sink that would replace one of them is refused.
  std::vector<std::string> inputs = {};
  /// None: the end of the path decides.
  std::optional<Format> format = {};
  /// A name, and for some a level: "zstd", "zstd:9". "none" compresses nothing. Empty: "zstd:1" for
  /// Parquet and "none" for Arrow IPC.
  ///
  /// - Parquet: none, zstd, snappy, gzip, brotli, lz4
  /// - Arrow IPC: none, zstd, lz4
  std::string compression = {};
};

/// A file that appears only when it is complete. It is written beside its target and renamed at the
/// end. Until then, and after any failure, an existing target stays unchanged. If the target is a
/// link, the link stays and the file that it leads to is replaced. The destructor of a sink that
/// was not finished removes the unfinished file. One thread at a time may use a sink.
///
/// After an error, every further call returns the same error.
class NUMERA_EXPORT Sink {
 public:
  virtual ~Sink();
  Sink(const Sink&) = delete;
  Sink& operator=(const Sink&) = delete;

  /// Writes a batch. Returns Invalid for a batch with another schema than the first, for a column
  /// that is not valid Arrow data, and for types that nest more than 1,024 levels deep.
  virtual ::arrow::Status write(const std::shared_ptr<::arrow::RecordBatch>& batch) = 0;
  /// Puts the file in place, with the permissions of the file that it replaces. Its data is on disk
  /// before. Returns Invalid if no batch was written; one without rows is enough.
  virtual ::arrow::Status finish() = 0;

 protected:
  Sink() = default;
};

/// Opens a file to write. The end of `path` selects the format, unless the options do:
///
/// | end of the path             | format      |
/// |-----------------------------|-------------|
/// | ".parquet"                  | Parquet     |
/// | ".arrow", ".feather", ".ipc" | IPC file   |
/// | ".arrows"                   | IPC stream  |
///
/// Dictionaries of Arrow IPC are held in memory; they only grow from batch to batch.
///
/// The path "-" is standard output, and the options select its format. It gets the bytes as they
/// are made, and stays open. A write error, as for a closed pipe, is returned and raises no signal.
///
/// Returns Invalid for a path without a known end, for a compression that the format does not have,
/// and for an input. Returns IOError for a target that is not a regular file, that is not writable,
/// or whose folder is not. Messages here and of the sink begin with "cannot write PATH: ", or with
/// "cannot write standard output: ".
NUMERA_EXPORT ::arrow::Result<std::unique_ptr<Sink>> open_sink(const std::string& path,
                                                               const WriteOptions& options = {});

}  // namespace numera::files
