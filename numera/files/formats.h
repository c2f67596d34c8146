#pragma once

/// \file
/// One reader per format, and what the readers share.

#include <arrow/io/interfaces.h>
#include <arrow/record_batch.h>
#include <arrow/result.h>
#include <arrow/type.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "numera/files/read.h"

namespace numera::files {

using File = std::shared_ptr<::arrow::io::RandomAccessFile>;
using BatchResult = ::arrow::Result<std::shared_ptr<::arrow::RecordBatch>>;

/// The batches of a file as it stores them, with the columns asked for.
struct Stream {
  std::shared_ptr<::arrow::Schema> schema;
  /// The next batch, or null after the last one.
  std::function<BatchResult()> next;
  /// The total number of rows, if the file states it.
  std::optional<std::int64_t> rows;
  /// Row groups, record batches, stripes or blocks read so far.
  std::shared_ptr<std::int64_t> chunks;
  /// What the file states beside its rows; nothing if there is no function.
  std::function<StatedCounts()> stated = {};
};

/// Opens the bytes of a text file from their start, decompressed.
using OpenText = std::function<::arrow::Result<std::shared_ptr<::arrow::io::InputStream>>()>;

/// \name One reader per format
/// @{
::arrow::Result<Stream> open_parquet(const File& file, const ReadOptions& options);
::arrow::Result<Stream> open_ipc_file(const File& file, const ReadOptions& options);
::arrow::Result<Stream> open_ipc_stream(const File& file, const ReadOptions& options);
::arrow::Result<Stream> open_orc(const File& file, const ReadOptions& options);
::arrow::Result<Stream> open_csv(const OpenText& open, const ReadOptions& options);
/// JSON lines. Reads the whole text twice: for the types of the columns, then for the rows.
::arrow::Result<Stream> open_json(const OpenText& open, const ReadOptions& options);
/// @}

/// Whether the file starts as streams did before Arrow 0.15: with the length of the schema, then
/// the schema.
::arrow::Result<bool> is_old_ipc_stream(const File& file);

/// The field numbers of `columns`, in that order; of all fields if `columns` is empty. Invalid for
/// a name that is missing, ambiguous or listed twice.
::arrow::Result<std::vector<int>> find_columns(const ::arrow::Schema& schema,
                                               const std::vector<std::string>& columns);

/// The columns asked for, of every batch that `pull` returns. Counts these batches. `whole` is
/// their schema. `pull` returns null after the last one.
::arrow::Result<Stream> select_columns(const ::arrow::Schema& whole, const ReadOptions& options,
                                       std::function<BatchResult()> pull,
                                       std::optional<std::int64_t> rows = std::nullopt);

}  // namespace numera::files
