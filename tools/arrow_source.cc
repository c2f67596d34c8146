#include <arrow/buffer.h>
#include <arrow/io/file.h>
#include <arrow/ipc/reader.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "tools/formats.h"

namespace numera::tools {
namespace {

/// A stream that was cut between two messages looks like one that was closed without the marker of
/// its end, which every writer of files puts there.
::arrow::Status check_end_of_stream(::arrow::io::RandomAccessFile& file) {
  constexpr std::string_view kMarker("\xFF\xFF\xFF\xFF\0\0\0\0", 8);
  ARROW_ASSIGN_OR_RAISE(const std::int64_t end, file.Tell());
  const auto size = static_cast<std::int64_t>(kMarker.size());
  ARROW_ASSIGN_OR_RAISE(const auto last, file.ReadAt(std::max<std::int64_t>(end - size, 0), size));
  if (std::string_view(*last) == kMarker) return ::arrow::Status::OK();
  return ::arrow::Status::Invalid("the stream is truncated: the marker of its end is missing");
}

}  // namespace

::arrow::Result<Source> open_ipc_file(const File& file, const SourceOptions& options) {
  ARROW_ASSIGN_OR_RAISE(const auto reader, ::arrow::ipc::RecordBatchFileReader::Open(file));
  ARROW_ASSIGN_OR_RAISE(const std::int64_t rows, reader->CountRows());
  auto next = [reader, i = 0]() mutable -> BatchResult {
    if (i == reader->num_record_batches()) return nullptr;
    return reader->ReadRecordBatch(i++);
  };
  return select_columns(*reader->schema(), options, std::move(next), rows);
}

::arrow::Result<Source> open_ipc_stream(const File& file, const SourceOptions& options) {
  ARROW_ASSIGN_OR_RAISE(const auto reader, ::arrow::ipc::RecordBatchStreamReader::Open(file));
  auto next = [file, reader]() -> BatchResult {
    std::shared_ptr<::arrow::RecordBatch> batch;
    ARROW_RETURN_NOT_OK(reader->ReadNext(&batch));
    if (batch == nullptr) ARROW_RETURN_NOT_OK(check_end_of_stream(*file));
    return batch;
  };
  return select_columns(*reader->schema(), options, std::move(next));
}

}  // namespace numera::tools
