#pragma once

#include <arrow/result.h>
#include <arrow/status.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "numera/files/counted_file.h"
#include "numera/files/locations.h"
#include "numera/files/pipe.h"
#include "numera/files/read.h"

namespace numera::files {

/// What a file system says of a file. It differs after the file was written.
struct FileVersion {
  std::int64_t bytes = 0;
  std::int64_t seconds = 0;  ///< of the last change
  std::int64_t nanoseconds = 0;

  bool operator==(const FileVersion&) const = default;
};

/// An open file whose format is not known yet.
struct Input {
  std::shared_ptr<CountedFile> file;
  std::optional<std::int64_t> size;  ///< none: a pipe
  /// IOError if the file has changed since it was opened.
  std::function<::arrow::Status()> check_unchanged;
  FileVersion version = {};              ///< when it was opened; not of a pipe
  std::shared_ptr<Pipe> pipe = nullptr;  ///< what `file` counts, if it is one
};

/// IOError for a path that is no readable file.
::arrow::Result<Input> open_input(const Location& location, const ReadOptions& options);

/// The bytes of a pipe from its start, in a file that has no name and is gone when it is closed.
/// It lies in the folder that the environment variable TMPDIR names, else in /tmp.
::arrow::Result<Input> copy_to_file(Pipe& pipe, const ReadOptions& options);

}  // namespace numera::files
