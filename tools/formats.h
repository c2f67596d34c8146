#pragma once

#include <arrow/io/interfaces.h>
#include <arrow/result.h>

#include <functional>
#include <memory>
#include <optional>

#include "tools/source.h"

namespace numera::tools {

using File = std::shared_ptr<::arrow::io::RandomAccessFile>;

/// \name Readers of one format each
/// They give batches as they lie in the file, of the columns asked for.
/// @{
::arrow::Result<Source> open_parquet(const File& file, const SourceOptions& options);
::arrow::Result<Source> open_ipc_file(const File& file, const SourceOptions& options);
::arrow::Result<Source> open_ipc_stream(const File& file, const SourceOptions& options);
::arrow::Result<Source> open_csv(const File& file, const SourceOptions& options);
/// @}

/// Whether it opens as streams did before Arrow 0.15: with the length of the schema, and the
/// schema.
::arrow::Result<bool> is_old_ipc_stream(const File& file);

/// The field numbers of columns, in the order of their names. Invalid for one that is not there, is
/// there several times, or is asked for twice.
::arrow::Result<std::vector<int>> find_columns(const ::arrow::Schema& schema,
                                               const std::vector<std::string>& columns);

using BatchResult = ::arrow::Result<std::shared_ptr<::arrow::RecordBatch>>;

/// The columns asked for, of every batch that `pull` gives, counted. `whole` is the schema of these
/// batches, and null is behind the last.
::arrow::Result<Source> select_columns(const ::arrow::Schema& whole, const SourceOptions& options,
                                       std::function<BatchResult()> pull,
                                       std::optional<std::int64_t> rows = std::nullopt);

}  // namespace numera::tools
