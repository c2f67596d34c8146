#pragma once

#include <arrow/io/interfaces.h>
#include <arrow/result.h>

#include <functional>
#include <memory>
#include <optional>

#include "tools/source.h"

namespace numera::tools {

using File = std::shared_ptr<::arrow::io::RandomAccessFile>;

/// \name One reader per format
/// They return the batches as the file stores them, with the columns asked for.
/// @{
::arrow::Result<Source> open_parquet(const File& file, const SourceOptions& options);
::arrow::Result<Source> open_ipc_file(const File& file, const SourceOptions& options);
::arrow::Result<Source> open_ipc_stream(const File& file, const SourceOptions& options);
::arrow::Result<Source> open_csv(const File& file, const SourceOptions& options);
/// @}

/// Whether the file starts as streams did before Arrow 0.15: with the length of the schema, then
/// the schema.
::arrow::Result<bool> is_old_ipc_stream(const File& file);

/// The field numbers of `columns`, in that order; of all fields if `columns` is empty. Invalid for
/// a name that is missing, ambiguous or listed twice.
::arrow::Result<std::vector<int>> find_columns(const ::arrow::Schema& schema,
                                               const std::vector<std::string>& columns);

using BatchResult = ::arrow::Result<std::shared_ptr<::arrow::RecordBatch>>;

/// The columns asked for, of every batch that `pull` returns. Counts these batches. `whole` is
/// their schema. `pull` returns null after the last one.
::arrow::Result<Source> select_columns(const ::arrow::Schema& whole, const SourceOptions& options,
                                       std::function<BatchResult()> pull,
                                       std::optional<std::int64_t> rows = std::nullopt);

}  // namespace numera::tools
