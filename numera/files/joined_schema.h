#pragma once

#include <arrow/result.h>
#include <arrow/status.h>
#include <arrow/type.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "numera/files/input.h"
#include "numera/files/locations.h"
#include "numera/files/read.h"

namespace numera::files {

/// One of several files that are read as one table.
struct Member {
  Location location;
  std::shared_ptr<::arrow::Schema> schema;
  std::optional<std::int64_t> rows;
  std::optional<std::int64_t> bytes;
  FileVersion version;
  std::shared_ptr<Source> source;  ///< of a pipe, which cannot be opened again
};

/// The failure with the name of the file in front of its message.
::arrow::Status in_file(const Location& location, const ::arrow::Status& failure);

/// Whether the files have the same columns, and no keys of partitions.
bool have_equal_schemas(const std::vector<Member>& members);

/// Of all files, the columns that `columns` names, or all if that is empty; behind them the keys of
/// partitions. Invalid for columns that cannot be joined.
::arrow::Result<std::shared_ptr<::arrow::Schema>> join_schemas(
    const std::vector<Member>& members, const std::vector<std::string>& columns,
    const ::arrow::FieldVector& keys);

}  // namespace numera::files
