#include <arrow/array/array_base.h>
#include <arrow/buffer.h>
#include <arrow/csv/chunker.h>
#include <arrow/csv/column_decoder.h>
#include <arrow/csv/options.h>
#include <arrow/csv/parser.h>
#include <arrow/util/future.h>
#include <arrow/util/utf8.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>

#include "numera/files/formats.h"
#include "numera/files/row_blocks.h"

namespace numera::files {
namespace {

namespace csv = ::arrow::csv;

/// In texts, only an empty field without quotation marks is null, so that "NA" stays a text.
csv::ConvertOptions options_of_texts() {
  auto options = csv::ConvertOptions::Defaults();
  options.null_values = {""};
  options.strings_can_be_null = true;
  options.quoted_strings_can_be_null = false;
  return options;
}

/// The number of columns of the first rows; 1 if they differ.
std::int32_t columns_of(std::string_view text, char delimiter, std::int32_t rows) {
  auto parse = csv::ParseOptions::Defaults();
  parse.delimiter = delimiter;
  csv::BlockParser parser(parse, -1, -1, rows);
  std::uint32_t size = 0;
  return parser.Parse(text, &size).ok() && parser.num_rows() > 0 ? parser.num_cols() : 1;
}

/// The delimiter that splits the heading into most columns. `start` is the start of the file.
::arrow::Result<char> find_delimiter(std::string_view start) {
  constexpr std::string_view kDelimiters = ",\t;|";
  constexpr std::int32_t kRowsLookedAt = 10;
  if (start.starts_with(kByteOrderMark)) start.remove_prefix(kByteOrderMark.size());
  char best = kDelimiters.front();
  std::int32_t most = 1;
  for (const char delimiter : kDelimiters) {
    const std::int32_t columns = columns_of(start, delimiter, 1);
    if (columns > most) best = delimiter;
    most = std::max(most, columns);
  }
  if (most > 1) return best;
  const std::string_view rows = start.substr(std::min(start.find('\n'), start.size()));
  const std::int32_t columns = columns_of(rows, '\t', kRowsLookedAt);
  if (columns == 1) return best;
  return ::arrow::Status::Invalid("its first line has one column, and the next lines have ",
                                  columns, ", separated by tabs");
}

/// The rows of a file, block by block. The first block with rows decides the types.
class CsvRows {
 public:
  CsvRows(std::shared_ptr<::arrow::io::InputStream> text, const csv::ParseOptions& parse,
          ::arrow::MemoryPool* pool)
      : parse_(parse),
        pool_(pool),
        blocks_(std::move(text), csv::MakeChunker(quoted_lines(parse)), pool) {}

  /// Reads the heading, then the first rows.
  ::arrow::Status open(const std::vector<std::string>& wanted) {
    ARROW_ASSIGN_OR_RAISE(const auto names, read_heading());
    ::arrow::FieldVector fields;
    for (const std::string& name : names) fields.push_back(::arrow::field(name, ::arrow::null()));
    schema_ = ::arrow::schema(std::move(fields));
    ARROW_ASSIGN_OR_RAISE(columns_, find_columns(*schema_, wanted));
    // An empty line of a file with several columns is no row.
    parse_.ignore_empty_lines = names.size() > 1;
    width_ = schema_->num_fields();
    ARROW_RETURN_NOT_OK(parse_block());
    return find_types();
  }

  const std::shared_ptr<::arrow::Schema>& schema() const { return schema_; }
  const std::shared_ptr<std::int64_t>& blocks() const { return count_; }

  BatchResult next() {
    if (parser_ == nullptr) ARROW_RETURN_NOT_OK(parse_block());
    if (parser_ == nullptr) return nullptr;
    ::arrow::ArrayVector arrays;
    for (const auto& decoder : decoders_) {
      ARROW_ASSIGN_OR_RAISE(arrays.emplace_back(), decode(*decoder));
    }
    auto batch = ::arrow::RecordBatch::Make(schema_, parser_->num_rows(), std::move(arrays));
    parser_ = nullptr;
    ++*count_;
    return batch;
  }

 private:
  static csv::ParseOptions quoted_lines(csv::ParseOptions parse) {
    parse.newlines_in_values = true;
    return parse;
  }

  ::arrow::Result<std::vector<std::string>> read_heading() {
    ARROW_ASSIGN_OR_RAISE(block_, blocks_.next());
    csv::BlockParser parser(pool_, parse_, -1, 1, 1);
    std::uint32_t size = 0;
    if (block_ == nullptr || !parser.Parse(std::string_view(*block_), &size).ok() ||
        (size == block_->size() && blocks_.lacks_last_line_break())) {
      return ::arrow::Status::Invalid(
          "read as CSV, it has no heading: no line with text ends with a line break");
    }
    std::vector<std::string> names;
    const auto add = [&](const std::uint8_t* text, std::uint32_t length, bool, bool) {
      names.emplace_back(reinterpret_cast<const char*>(text), length);
      return ::arrow::util::ValidateUTF8(names.back())
                 ? ::arrow::Status::OK()
                 : ::arrow::Status::Invalid("a name in the heading is not UTF-8");
    };
    ARROW_RETURN_NOT_OK(parser.VisitLastRow(add));
    block_ = ::arrow::SliceBuffer(block_, size);
    row_ = 2;
    return names;
  }

  /// Parses the next block that has a row. There is no parser after the last one.
  ::arrow::Status parse_block() {
    for (; parser_ == nullptr; block_ = nullptr) {
      if (block_ == nullptr) {
        ARROW_ASSIGN_OR_RAISE(block_, blocks_.next());
      }
      if (block_ == nullptr) return ::arrow::Status::OK();
      auto parser = std::make_shared<csv::BlockParser>(pool_, parse_, width_, row_,
                                                       std::numeric_limits<std::int32_t>::max());
      std::uint32_t size = 0;
      ARROW_RETURN_NOT_OK(parser->Parse(std::string_view(*block_), &size));
      if (size < block_->size()) {
        return ::arrow::Status::Invalid("a quotation mark after row ",
                                        row_ + parser->total_num_rows() - 1, " is not closed");
      }
      row_ += parser->total_num_rows();
      if (parser->num_rows() > 0) parser_ = std::move(parser);
    }
    return ::arrow::Status::OK();
  }

  ::arrow::Result<std::shared_ptr<::arrow::Array>> decode(csv::ColumnDecoder& decoder) const {
    const auto column = decoder.Decode(parser_);  // the future owns its result
    return column.result();
  }

  /// Numbers, dates and times have Arrow's spellings of null, such as "NA".
  ::arrow::Status find_types() {
    ::arrow::FieldVector fields;
    for (const int column : columns_) {
      ARROW_ASSIGN_OR_RAISE(auto decoder, csv::ColumnDecoder::Make(pool_, column, others_));
      auto type = ::arrow::null();
      if (parser_ != nullptr) {
        ARROW_ASSIGN_OR_RAISE(const auto first, decode(*decoder));
        type = first->type();
      }
      if (::arrow::is_base_binary_like(type->id())) {
        ARROW_ASSIGN_OR_RAISE(decoder, csv::ColumnDecoder::Make(pool_, type, column, texts_));
      }
      fields.push_back(schema_->field(column)->WithType(type));
      decoders_.push_back(std::move(decoder));
    }
    schema_ = ::arrow::schema(std::move(fields));
    return ::arrow::Status::OK();
  }

  csv::ParseOptions parse_;
  ::arrow::MemoryPool* pool_;
  RowBlocks blocks_;
  // Decoders refer to these.
  const csv::ConvertOptions others_ = csv::ConvertOptions::Defaults();
  const csv::ConvertOptions texts_ = options_of_texts();
  std::shared_ptr<::arrow::Schema> schema_;  ///< of the columns asked for
  std::int32_t width_ = 0;                   ///< the number of columns of the file
  std::vector<int> columns_;
  std::vector<std::shared_ptr<csv::ColumnDecoder>> decoders_;
  std::shared_ptr<::arrow::Buffer> block_;    ///< not parsed yet
  std::shared_ptr<csv::BlockParser> parser_;  ///< the rows of the next batch, if they are parsed
  std::int64_t row_ = 1;                      ///< of the file, the heading included
  std::shared_ptr<std::int64_t> count_ = std::make_shared<std::int64_t>(0);
};

}  // namespace

::arrow::Result<Stream> open_csv(const OpenText& open, const ReadOptions& options) {
  ::arrow::util::InitializeUTF8();
  auto parse = csv::ParseOptions::Defaults();
  if (options.csv_delimiter) {
    parse.delimiter = *options.csv_delimiter;
    ARROW_RETURN_NOT_OK(parse.Validate());
  } else {
    ARROW_ASSIGN_OR_RAISE(const auto text, open());
    ARROW_ASSIGN_OR_RAISE(const auto start, text->Read(kTextBlockBytes));
    ARROW_ASSIGN_OR_RAISE(parse.delimiter, find_delimiter(std::string_view(*start)));
  }
  ARROW_ASSIGN_OR_RAISE(auto text, open());
  const auto rows = std::make_shared<CsvRows>(std::move(text), parse, options.pool);
  ARROW_RETURN_NOT_OK(rows->open(options.columns));
  return Stream{rows->schema(), [rows] { return rows->next(); }, std::nullopt, rows->blocks()};
}

}  // namespace numera::files
