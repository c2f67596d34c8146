#include <parquet/arrow/reader.h>
#include <parquet/arrow/schema.h>
#include <parquet/exception.h>
#include <parquet/file_reader.h>
#include <parquet/metadata.h>

#include <utility>

#include "numera/files/formats.h"
#include "numera/files/parquet_nulls.h"

namespace numera::files {
namespace {

/// Adds the numbers of the leaves below a field. Parquet calls these leaves columns.
void add_leaves(const parquet::arrow::SchemaField& field, std::vector<int>& leaves) {
  if (field.is_leaf()) leaves.push_back(field.column_index);
  for (const auto& child : field.children) add_leaves(child, leaves);
}

/// A column of the Arrow schema.
struct Column {
  std::string name;
  std::vector<int> leaves;
};

/// Reads the row groups in order, each batch by batch. Refuses a column whose number of rows
/// differs from the footer: Arrow would end the row group with the shortest column.
class RowGroups {
 public:
  RowGroups(std::shared_ptr<parquet::arrow::FileReader> file, std::vector<Column> columns)
      : file_(std::move(file)), columns_(std::move(columns)) {
    for (const Column& column : columns_) {
      leaves_.insert(leaves_.end(), column.leaves.begin(), column.leaves.end());
    }
  }

  const std::shared_ptr<std::int64_t>& opened() const { return opened_; }

  BatchResult next() {
    try {
      while (batches_ != nullptr || *opened_ < file_->num_row_groups()) {
        if (batches_ == nullptr) ARROW_RETURN_NOT_OK(open_group());
        auto batch = batches_->Next();
        if (!batch.ok()) return explained(batch.status());
        if (*batch != nullptr) {
          rows_ += (*batch)->num_rows();
          return batch;
        }
        batches_ = nullptr;
        if (rows_ != group_->num_rows()) return explained(miscounted(rows_, "rows"));
      }
      return nullptr;
    } catch (const parquet::ParquetException& error) {
      return ::arrow::Status::IOError(error.what());
    }
  }

 private:
  int number() const { return static_cast<int>(*opened_) - 1; }

  ::arrow::Status open_group() {
    group_ = file_->parquet_reader()->metadata()->RowGroup(static_cast<int>((*opened_)++));
    rows_ = 0;
    for (const Column& column : columns_) ARROW_RETURN_NOT_OK(check_values(column));
    return file_->GetRecordBatchReader({number()}, leaves_).Value(&batches_);
  }

  /// Without repetition, each row has one value. Values after the last row would not be read.
  ::arrow::Status check_values(const Column& column) const {
    for (const int leaf : column.leaves) {
      if (group_->schema()->Column(leaf)->max_repetition_level() > 0) continue;
      const std::int64_t values = group_->ColumnChunk(leaf)->num_values();
      if (values > group_->num_rows()) return in_column(column, miscounted(values, "values"));
    }
    return ::arrow::Status::OK();
  }

  /// Reads each column of the row group alone. The first one that fails gives the reason.
  ::arrow::Status explained(const ::arrow::Status& failure) const {
    for (const Column& column : columns_) {
      const auto rows = rows_of(column);
      if (!rows.ok()) return in_column(column, rows.status());
      if (*rows != group_->num_rows()) return in_column(column, miscounted(*rows, "rows"));
    }
    return failure;
  }

  ::arrow::Result<std::int64_t> rows_of(const Column& column) const {
    ARROW_ASSIGN_OR_RAISE(const auto batches,
                          file_->GetRecordBatchReader({number()}, column.leaves));
    std::int64_t rows = 0;
    while (true) {
      ARROW_ASSIGN_OR_RAISE(const auto batch, batches->Next());
      if (batch == nullptr) return rows;
      rows += batch->num_rows();
    }
  }

  ::arrow::Status miscounted(std::int64_t count, const char* what) const {
    return ::arrow::Status::Invalid("found ", count, " ", what, ", expected ", group_->num_rows(),
                                    ", as the footer states");
  }

  ::arrow::Status in_column(const Column& column, const ::arrow::Status& failure) const {
    return failure.WithMessage("row group ", number(), ", column '", column.name,
                               "': ", failure.message());
  }

  std::shared_ptr<parquet::arrow::FileReader> file_;
  std::vector<Column> columns_;
  std::vector<int> leaves_;
  std::shared_ptr<std::int64_t> opened_ = std::make_shared<std::int64_t>(0);
  std::unique_ptr<parquet::RowGroupMetaData> group_;
  std::unique_ptr<::arrow::RecordBatchReader> batches_;
  std::int64_t rows_ = 0;  ///< rows of the row group read so far
};

::arrow::Status check_rows_of_groups(const parquet::FileMetaData& footer) {
  std::uint64_t sum = 0;  // may wrap if the footer is wrong
  for (int i = 0; i < footer.num_row_groups(); ++i) {
    sum += static_cast<std::uint64_t>(footer.RowGroup(i)->num_rows());
  }
  const auto rows = static_cast<std::int64_t>(sum);
  if (rows == footer.num_rows()) return ::arrow::Status::OK();
  return ::arrow::Status::Invalid("found ", rows, " rows in the row groups, expected ",
                                  footer.num_rows(), ", as the footer states");
}

/// A file with a plain footer may have encrypted columns. Their metadata is encrypted, too.
::arrow::Status check_is_plain(const parquet::FileMetaData& footer, const Column& column) {
  if (!footer.is_encryption_algorithm_set() || footer.num_row_groups() == 0) {
    return ::arrow::Status::OK();
  }
  for (const int leaf : column.leaves) {
    try {
      footer.RowGroup(0)->ColumnChunk(leaf);
    } catch (const parquet::ParquetException&) {
      return ::arrow::Status::Invalid("column '", column.name, "' is encrypted");
    }
  }
  return ::arrow::Status::OK();
}

/// Verifies the checksums of pages that have them.
::arrow::Result<std::shared_ptr<parquet::arrow::FileReader>> open_reader(
    const File& file, const ReadOptions& options) {
  parquet::ReaderProperties properties(options.pool);
  properties.set_page_checksum_verification(true);
  properties.enable_buffered_stream();
  parquet::ArrowReaderProperties arrow_properties;
  arrow_properties.set_batch_size(options.batch_rows);
  arrow_properties.set_pre_buffer(false);
  parquet::arrow::FileReaderBuilder builder;
  ARROW_RETURN_NOT_OK(builder.Open(file, properties));
  builder.memory_pool(options.pool)->properties(arrow_properties);
  ARROW_ASSIGN_OR_RAISE(auto reader, builder.Build());
  return std::shared_ptr<parquet::arrow::FileReader>(std::move(reader));
}

}  // namespace

::arrow::Result<Stream> open_parquet(const File& file, const ReadOptions& options) {
  try {
    ARROW_ASSIGN_OR_RAISE(const auto reader, open_reader(file, options));
    const auto footer = reader->parquet_reader()->metadata();
    ARROW_RETURN_NOT_OK(check_rows_of_groups(*footer));
    std::shared_ptr<::arrow::Schema> whole;
    ARROW_RETURN_NOT_OK(reader->GetSchema(&whole));
    ARROW_ASSIGN_OR_RAISE(const auto numbers, find_columns(*whole, options.columns));
    std::vector<Column> columns;
    ::arrow::FieldVector fields;
    for (const int number : numbers) {
      fields.push_back(whole->field(number));
      columns.push_back({fields.back()->name(), {}});
      add_leaves(reader->manifest().schema_fields[static_cast<size_t>(number)],
                 columns.back().leaves);
      ARROW_RETURN_NOT_OK(check_is_plain(*footer, columns.back()));
    }
    auto stated = [reader, footer, numbers] {
      StatedCounts counts{.rows = footer->num_rows(), .chunks = footer->num_row_groups()};
      for (const int number : numbers) {
        const auto& field = reader->manifest().schema_fields[static_cast<size_t>(number)];
        counts.nulls.push_back(stated_nulls(*footer, field));
      }
      return counts;
    };
    auto groups = std::make_shared<RowGroups>(reader, std::move(columns));
    return Stream{::arrow::schema(std::move(fields), whole->metadata()),
                  [groups] { return groups->next(); }, footer->num_rows(), groups->opened(),
                  std::move(stated)};
  } catch (const parquet::ParquetException& error) {
    return ::arrow::Status::IOError(error.what());
  }
}

}  // namespace numera::files
