#include <arrow/ipc/feather.h>
#include <arrow/table.h>
#include <arrow/util/macros.h>

#include <utility>

#include "numera/files/formats.h"

namespace numera::files {

/// Arrow has no other reader of version 1.
::arrow::Result<Stream> open_feather(const File& file, const ReadOptions& options) {
  ARROW_SUPPRESS_DEPRECATION_WARNING
  ARROW_ASSIGN_OR_RAISE(const auto reader, ::arrow::ipc::feather::Reader::Open(file));
  ARROW_UNSUPPRESS_DEPRECATION_WARNING
  ARROW_ASSIGN_OR_RAISE(const auto columns, find_columns(*reader->schema(), options.columns));
  std::shared_ptr<::arrow::Table> table;
  ARROW_RETURN_NOT_OK(reader->Read(columns, &table));
  ARROW_RETURN_NOT_OK(table->Validate());
  const auto batches = std::make_shared<::arrow::TableBatchReader>(table);
  const auto count = std::make_shared<std::int64_t>(0);
  auto next = [batches, count]() -> BatchResult {
    std::shared_ptr<::arrow::RecordBatch> batch;
    ARROW_RETURN_NOT_OK(batches->ReadNext(&batch));
    if (batch != nullptr) ++*count;
    return batch;
  };
  return Stream{table->schema(), std::move(next), table->num_rows(), count};
}

}  // namespace numera::files
