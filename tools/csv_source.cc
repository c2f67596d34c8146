#include <arrow/buffer.h>
#include <arrow/csv/api.h>
#include <arrow/io/interfaces.h>

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "numera/host/array.h"
#include "tools/formats.h"

namespace numera::tools {
namespace {

using Batch = std::shared_ptr<::arrow::RecordBatch>;

/// The file is read in blocks. A row may span at most two of them.
constexpr std::int32_t kFirstBlock = 1 << 20;
constexpr std::int32_t kLargestBlock = 1 << 26;
constexpr std::int64_t kGrowth = 4;

bool is_row_too_long(const ::arrow::Status& status) {
  return status.IsInvalid() &&
         status.message().find("straddles two block boundaries") != std::string::npos;
}

/// The rows of a file. If a row is longer than a block, the file is read again in larger blocks,
/// and the rows returned before are skipped.
class CsvRows {
 public:
  CsvRows(File file, int skipped_lines, bool ignore_empty_lines)
      : file_(std::move(file)),
        skipped_lines_(skipped_lines),
        ignore_empty_lines_(ignore_empty_lines) {}

  ::arrow::Status open() {
    ARROW_ASSIGN_OR_RAISE(size_, file_->GetSize());
    ::arrow::Status status = make_reader();
    while (is_row_too_long(status)) {
      ARROW_RETURN_NOT_OK(enlarge_block());
      status = make_reader();
    }
    if (status.IsInvalid() && status.message().find("Empty CSV file") != std::string::npos) {
      return ::arrow::Status::Invalid(
          "read as CSV, it has no heading: no line with text ends with a line break");
    }
    ARROW_RETURN_NOT_OK(status);
    schema_ = reader_->schema();
    return status;
  }

  const std::shared_ptr<::arrow::Schema>& schema() const { return schema_; }

  BatchResult next() {
    while (true) {
      Batch batch;
      const ::arrow::Status status = reader_->ReadNext(&batch);
      if (is_row_too_long(status)) {
        ARROW_RETURN_NOT_OK(read_again());
        continue;
      }
      ARROW_RETURN_NOT_OK(status);
      if (batch == nullptr) return nullptr;
      const std::int64_t known = std::min(known_rows_, batch->num_rows());
      known_rows_ -= known;
      if (known > 0 && known == batch->num_rows()) {
        hxThrowIfInterruptPending();
        continue;
      }
      given_rows_ += batch->num_rows() - known;
      return batch->Slice(known);
    }
  }

 private:
  ::arrow::Status make_reader() {
    auto read = ::arrow::csv::ReadOptions::Defaults();
    read.use_threads = false;
    read.block_size = block_;
    read.skip_rows = skipped_lines_;
    auto parse = ::arrow::csv::ParseOptions::Defaults();
    parse.newlines_in_values = true;
    parse.ignore_empty_lines = ignore_empty_lines_;
    auto types = ::arrow::csv::ConvertOptions::Defaults();
    if (schema_ != nullptr) {
      for (const auto& field : schema_->fields()) types.column_types[field->name()] = field->type();
    }
    ARROW_ASSIGN_OR_RAISE(auto whole, ::arrow::io::RandomAccessFile::GetStream(file_, 0, size_));
    return ::arrow::csv::StreamingReader::Make(::arrow::io::default_io_context(), std::move(whole),
                                               read, parse, types)
        .Value(&reader_);
  }

  /// Invalid if the block already is as long as the file or as the largest block.
  ::arrow::Status enlarge_block() {
    if (block_ >= std::min<std::int64_t>(kLargestBlock, size_)) {
      return ::arrow::Status::Invalid("a row after the first ", given_rows_,
                                      " rows is longer than 64 MiB, or a quotation mark in it is "
                                      "not closed");
    }
    block_ = static_cast<std::int32_t>(std::min(std::int64_t{block_} * kGrowth, size_));
    return ::arrow::Status::OK();
  }

  /// Rows are skipped by reading them, because Arrow's `skip_rows` also counts empty lines.
  ::arrow::Status read_again() {
    ARROW_RETURN_NOT_OK(enlarge_block());
    ARROW_RETURN_NOT_OK(make_reader());
    if (!reader_->schema()->Equals(*schema_)) {  // the types are set by column name
      return ::arrow::Status::Invalid(
          "a row after the first ", given_rows_,
          " rows is longer than 1 MiB, and columns with the same name have different types");
    }
    known_rows_ = given_rows_;
    return ::arrow::Status::OK();
  }

  File file_;
  int skipped_lines_;
  bool ignore_empty_lines_;
  std::int64_t size_ = 0;
  std::int32_t block_ = kFirstBlock;
  std::shared_ptr<::arrow::Schema> schema_;  ///< guessed from the first block
  std::shared_ptr<::arrow::csv::StreamingReader> reader_;
  std::int64_t given_rows_ = 0;
  std::int64_t known_rows_ = 0;  ///< rows given before that the reader has yet to skip
};

::arrow::Result<std::shared_ptr<CsvRows>> open_rows(const File& file, int skipped_lines,
                                                    bool ignore_empty_lines) {
  auto rows = std::make_shared<CsvRows>(file, skipped_lines, ignore_empty_lines);
  ARROW_RETURN_NOT_OK(rows->open());
  return rows;
}

/// In a CSV with one column, an empty line is a null. Empty lines before the heading are none.
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

::arrow::Result<Source> open_csv(const File& file, const SourceOptions& options) {
  ARROW_ASSIGN_OR_RAISE(auto rows, open_rows(file, 0, true));
  if (rows->schema()->num_fields() == 1) {
    ARROW_ASSIGN_OR_RAISE(const int skipped, empty_lines_before_heading(*file));
    ARROW_ASSIGN_OR_RAISE(rows, open_rows(file, skipped, false));
  }
  return select_columns(*rows->schema(), options, [rows] { return rows->next(); });
}

}  // namespace numera::tools
