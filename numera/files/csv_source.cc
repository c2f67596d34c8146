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

#include "numera/files/csv_fields.h"
#include "numera/files/formats.h"
#include "numera/files/row_blocks.h"

namespace numera::files {
namespace {

namespace csv = ::arrow::csv;

/// The rows of a file, block by block.
class CsvRows {
 public:
  CsvRows(std::shared_ptr<::arrow::io::InputStream> text, const csv::ParseOptions& parse,
          const ReadOptions& options)
      : parse_(parse),
        pool_(options.pool),
        has_heading_(options.csv_heading),
        blocks_(std::move(text), csv::MakeChunker(quoted_lines(parse)), options),
        others_(fields_of_others(options)),
        texts_(fields_of_texts(options)) {}

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
    return parse_block();
  }

  /// The types of the columns asked for. Takes them from the block at hand, or from that and all
  /// that follow; then no rows are left.
  ::arrow::Result<::arrow::DataTypeVector> find_types(bool all_rows) {
    ::arrow::DataTypeVector types(columns_.size(), ::arrow::null());
    while (parser_ != nullptr) {
      for (size_t i = 0; i < types.size(); ++i) {
        ARROW_ASSIGN_OR_RAISE(const auto decoder,
                              csv::ColumnDecoder::Make(pool_, columns_[i], others_));
        ARROW_ASSIGN_OR_RAISE(const auto column, decode(*decoder));
        types[i] = common_type(types[i], column->type());
      }
      if (!all_rows) break;
      parser_ = nullptr;
      ARROW_RETURN_NOT_OK(parse_block());
    }
    return types;
  }

  /// Sets the types of the columns asked for.
  ::arrow::Status set_types(const ::arrow::DataTypeVector& types) {
    ::arrow::FieldVector fields;
    for (size_t i = 0; i < types.size(); ++i) {
      const bool is_text = ::arrow::is_base_binary_like(types[i]->id());
      ARROW_ASSIGN_OR_RAISE(
          decoders_.emplace_back(),
          csv::ColumnDecoder::Make(pool_, types[i], columns_[i], is_text ? texts_ : others_));
      fields.push_back(schema_->field(columns_[i])->WithType(types[i]));
    }
    schema_ = ::arrow::schema(std::move(fields));
    return ::arrow::Status::OK();
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

  ::arrow::Status skip_empty_lines() {
    do {
      ARROW_ASSIGN_OR_RAISE(block_, blocks_.next());
      if (block_ == nullptr) return ::arrow::Status::OK();
      const std::string_view text(*block_);
      const size_t start = std::min(text.find_first_not_of("\r\n"), text.size());
      block_ = ::arrow::SliceBuffer(block_, static_cast<std::int64_t>(start));
    } while (block_->size() == 0);
    return ::arrow::Status::OK();
  }

  /// Reads the first line that is not empty. Without a heading it is a row.
  ::arrow::Result<std::vector<std::string>> read_heading() {
    ARROW_RETURN_NOT_OK(skip_empty_lines());
    csv::BlockParser parser(pool_, parse_, -1, 1, 1);
    std::uint32_t size = 0;
    if (block_ == nullptr || !parser.Parse(std::string_view(*block_), &size).ok() ||
        (has_heading_ && size == block_->size() && blocks_.lacks_last_line_break())) {
      return ::arrow::Status::Invalid(
          "read as CSV, it has no heading: no line with text ends with a line break");
    }
    std::vector<std::string> names;
    const auto add = [&](const std::uint8_t* text, std::uint32_t length, bool, bool) {
      names.emplace_back(reinterpret_cast<const char*>(text), length);
      if (!has_heading_) names.back() = "f" + std::to_string(names.size() - 1);
      return ::arrow::util::ValidateUTF8(names.back())
                 ? ::arrow::Status::OK()
                 : ::arrow::Status::Invalid("a name in the heading is not UTF-8");
    };
    ARROW_RETURN_NOT_OK(parser.VisitLastRow(add));
    if (has_heading_) {
      block_ = ::arrow::SliceBuffer(block_, size);
      row_ = 2;
    }
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

  csv::ParseOptions parse_;
  ::arrow::MemoryPool* pool_;
  bool has_heading_;
  RowBlocks blocks_;
  // Decoders refer to these.
  const csv::ConvertOptions others_;
  const csv::ConvertOptions texts_;
  std::shared_ptr<::arrow::Schema> schema_;  ///< of the columns asked for
  std::int32_t width_ = 0;                   ///< the number of columns of the file
  std::vector<int> columns_;
  std::vector<std::shared_ptr<csv::ColumnDecoder>> decoders_;
  std::shared_ptr<::arrow::Buffer> block_;    ///< not parsed yet
  std::shared_ptr<csv::BlockParser> parser_;  ///< the rows of the next batch, if they are parsed
  std::int64_t row_ = 1;                      ///< of the file, the heading included
  std::shared_ptr<std::int64_t> count_ = std::make_shared<std::int64_t>(0);
};

::arrow::Result<csv::ParseOptions> find_dialect(const OpenText& open, const ReadOptions& options) {
  auto parse = csv::ParseOptions::Defaults();
  if (options.csv_delimiter) {
    parse.delimiter = *options.csv_delimiter;
    ARROW_RETURN_NOT_OK(parse.Validate());
    return parse;
  }
  ARROW_ASSIGN_OR_RAISE(const auto text, open());
  ARROW_ASSIGN_OR_RAISE(const auto start, text->Read(kTextBlockBytes));
  ARROW_ASSIGN_OR_RAISE(parse.delimiter, find_delimiter(std::string_view(*start)));
  return parse;
}

}  // namespace

::arrow::Result<Stream> open_csv(const OpenText& open, const ReadOptions& options) {
  ::arrow::util::InitializeUTF8();
  ARROW_ASSIGN_OR_RAISE(const auto parse, find_dialect(open, options));
  const auto open_rows = [&]() -> ::arrow::Result<std::shared_ptr<CsvRows>> {
    ARROW_ASSIGN_OR_RAISE(auto text, open());
    auto rows = std::make_shared<CsvRows>(std::move(text), parse, options);
    ARROW_RETURN_NOT_OK(rows->open(options.columns));
    return rows;
  };
  ARROW_ASSIGN_OR_RAISE(auto rows, open_rows());
  ARROW_ASSIGN_OR_RAISE(const auto types, rows->find_types(options.csv_types_of_all_rows));
  if (options.csv_types_of_all_rows) {
    ARROW_ASSIGN_OR_RAISE(rows, open_rows());
  }
  ARROW_RETURN_NOT_OK(rows->set_types(types));
  return Stream{rows->schema(), [rows] { return rows->next(); }, std::nullopt, rows->blocks()};
}

}  // namespace numera::files
