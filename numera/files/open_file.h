#pragma once

#include <arrow/result.h>

#include <memory>
#include <vector>

#include "numera/files/input.h"
#include "numera/files/locations.h"
#include "numera/files/memory_limit.h"
#include "numera/files/read.h"

namespace numera::files {

/// How files are opened: the options with a pool, and the limit of that pool if it has one.
struct Opening {
  ReadOptions options;
  std::shared_ptr<LimitedPool> limit;  ///< outlives what the pool is used for
};

/// A source, and whether the file can be opened again.
struct OpenedFile {
  std::shared_ptr<Source> source;
  bool is_pipe;
  FileVersion version;
};

/// Opens one file. Messages do not name it. Keys of partitions are not looked at.
::arrow::Result<OpenedFile> open_file(const Location& location, const Opening& opening);

/// Opens several files as one table: the columns of all of them, then the keys of partitions.
/// Messages begin with the name of a file.
::arrow::Result<std::shared_ptr<Source>> open_files(const std::vector<Location>& locations,
                                                    const Opening& opening);

}  // namespace numera::files
