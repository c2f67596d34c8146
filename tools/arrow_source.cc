#include <arrow/buffer.h>
#include <arrow/csv/api.h>
#include <arrow/io/file.h>
#include <arrow/ipc/reader.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "tools/formats.h"

namespace numera::tools {
namespace {

using Batch = std::shared_ptr<::arrow::RecordBatch>;
using BatchResult = ::arrow::Result<Batch>;

/// The columns asked for, of every batch that `pull` gives, counted.
template <class Pull>
::arrow::Result<Source> select(const ::arrow::Schema& whole, const SourceOptions& options,
                               Pull pull, std::optional<std::int64_t> rows = std::nullopt) {
  ARROW_ASSIGN_OR_RAISE(auto columns, find_columns(whole, options.columns));
  ::arrow::FieldVector fields;
  for (const int column : columns) fields.push_back(whole.field(column));
  auto count = std::make_shared<std::int64_t>(0);
  auto next = [pull = std::move(pull), columns = std::move(columns),
               count]() mutable -> BatchResult {
    ARROW_ASSIGN_OR_RAISE(const Batch batch, pull());
    if (batch == nullptr) return nullptr;
    ++*count;
    return batch->SelectColumns(columns);
  };
  return Source{::arrow::schema(std::move(fields), whole.metadata()), std::move(next), rows, count};
}

/// Batches of a reader that gives null behind the last one. The file stays open as long.
template <class Reader>
auto batches_of(const std::shared_ptr<Reader>& reader) {
  return [reader]() -> BatchResult {
    Batch batch;
    ARROW_RETURN_NOT_OK(reader->ReadNext(&batch));
    return batch;
  };
}

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

using CsvReader = std::shared_ptr<::arrow::csv::StreamingReader>;

::arrow::Result<CsvReader> open_csv_reader(const File& file, int skipped_lines,
                                           bool ignore_empty_lines) {
  auto read = ::arrow::csv::ReadOptions::Defaults();
  read.use_threads = false;
  read.skip_rows = skipped_lines;
  auto parse = ::arrow::csv::ParseOptions::Defaults();
  parse.newlines_in_values = true;
  parse.ignore_empty_lines = ignore_empty_lines;
  ARROW_ASSIGN_OR_RAISE(const std::int64_t size, file->GetSize());
  ARROW_ASSIGN_OR_RAISE(auto whole, ::arrow::io::RandomAccessFile::GetStream(file, 0, size));
  return ::arrow::csv::StreamingReader::Make(::arrow::io::default_io_context(), std::move(whole),
                                             read, parse, ::arrow::csv::ConvertOptions::Defaults());
}

/// In a CSV of one column an empty line is a null, but none before the heading.
::arrow::Result<int> empty_lines_before_heading(::arrow::io::RandomAccessFile& file) {
  constexpr std::int64_t kMostBytes = 1 << 16;
  ARROW_ASSIGN_OR_RAISE(const auto start, file.ReadAt(0, kMostBytes));
  const std::string_view text(*start);
  int lines = 0;
  for (std::size_t i = 0; i < text.size() && (text[i] == '\n' || text[i] == '\r'); ++i) {
    const bool is_pair = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
    if (!is_pair) ++lines;
  }
  return lines;
}

}  // namespace

::arrow::Result<std::vector<int>> find_columns(const ::arrow::Schema& schema,
                                               const std::vector<std::string>& columns) {
  std::vector<int> numbers;
  if (columns.empty()) {
    for (int i = 0; i < schema.num_fields(); ++i) numbers.push_back(i);
  }
  for (const std::string& name : columns) {
    const auto found = schema.GetAllFieldIndices(name);
    if (found.empty()) return ::arrow::Status::Invalid("there is no column '", name, "'");
    if (found.size() > 1) {
      return ::arrow::Status::Invalid("there are ", found.size(), " columns '", name, "'");
    }
    if (std::ranges::find(numbers, found.front()) != numbers.end()) {
      return ::arrow::Status::Invalid("column '", name, "' is asked for twice");
    }
    numbers.push_back(found.front());
  }
  return numbers;
}

::arrow::Result<Source> open_ipc_file(const File& file, const SourceOptions& options) {
  ARROW_ASSIGN_OR_RAISE(const auto reader, ::arrow::ipc::RecordBatchFileReader::Open(file));
  ARROW_ASSIGN_OR_RAISE(const std::int64_t rows, reader->CountRows());
  auto next = [reader, i = 0]() mutable -> BatchResult {
    if (i == reader->num_record_batches()) return nullptr;
    return reader->ReadRecordBatch(i++);
  };
  return select(*reader->schema(), options, std::move(next), rows);
}

::arrow::Result<Source> open_ipc_stream(const File& file, const SourceOptions& options) {
  ARROW_ASSIGN_OR_RAISE(const auto reader, ::arrow::ipc::RecordBatchStreamReader::Open(file));
  auto next = [file, pull = batches_of(reader)]() -> BatchResult {
    ARROW_ASSIGN_OR_RAISE(Batch batch, pull());
    if (batch == nullptr) ARROW_RETURN_NOT_OK(check_end_of_stream(*file));
    return batch;
  };
  return select(*reader->schema(), options, std::move(next));
}

::arrow::Result<Source> open_csv(const File& file, const SourceOptions& options) {
  ARROW_ASSIGN_OR_RAISE(auto reader, open_csv_reader(file, 0, true));
  if (reader->schema()->num_fields() == 1) {
    ARROW_ASSIGN_OR_RAISE(const int skipped, empty_lines_before_heading(*file));
    ARROW_ASSIGN_OR_RAISE(reader, open_csv_reader(file, skipped, false));
  }
  return select(*reader->schema(), options, batches_of(reader));
}

}  // namespace numera::tools
