#include <parquet/arrow/reader.h>
#include <parquet/arrow/schema.h>
#include <parquet/exception.h>
#include <parquet/file_reader.h>

#include <utility>

#include "tools/formats.h"

namespace numera::tools {
namespace {

/// The numbers of the leaves below a field: what Parquet calls its columns.
void add_leaves(const parquet::arrow::SchemaField& field, std::vector<int>& leaves) {
  if (field.is_leaf()) leaves.push_back(field.column_index);
  for (const auto& child : field.children) add_leaves(child, leaves);
}

/// One row group after another, each batch by batch.
struct RowGroups {
  std::shared_ptr<parquet::arrow::FileReader> file;
  std::vector<int> leaves;
  std::shared_ptr<std::int64_t> read = std::make_shared<std::int64_t>(0);
  std::unique_ptr<::arrow::RecordBatchReader> group = nullptr;

  BatchResult next() {
    try {
      std::shared_ptr<::arrow::RecordBatch> batch;
      while (batch == nullptr) {
        if (group == nullptr) {
          if (*read == file->num_row_groups()) return nullptr;
          const int number = static_cast<int>((*read)++);
          ARROW_ASSIGN_OR_RAISE(group, file->GetRecordBatchReader({number}, leaves));
        }
        ARROW_RETURN_NOT_OK(group->ReadNext(&batch));
        if (batch == nullptr) group = nullptr;
      }
      return batch;
    } catch (const parquet::ParquetException& error) {
      return ::arrow::Status::IOError(error.what());
    }
  }
};

/// Checksums of pages are verified where there are any.
::arrow::Result<std::shared_ptr<parquet::arrow::FileReader>> open_reader(
    const File& file, const SourceOptions& options) {
  parquet::ReaderProperties properties;
  properties.set_page_checksum_verification(true);
  properties.enable_buffered_stream();
  parquet::ArrowReaderProperties arrow_properties;
  arrow_properties.set_batch_size(options.batch_rows);
  arrow_properties.set_pre_buffer(false);
  parquet::arrow::FileReaderBuilder builder;
  ARROW_RETURN_NOT_OK(builder.Open(file, properties));
  builder.properties(arrow_properties);
  ARROW_ASSIGN_OR_RAISE(auto reader, builder.Build());
  return std::shared_ptr<parquet::arrow::FileReader>(std::move(reader));
}

}  // namespace

::arrow::Result<Source> open_parquet(const File& file, const SourceOptions& options) {
  try {
    ARROW_ASSIGN_OR_RAISE(const auto reader, open_reader(file, options));
    std::shared_ptr<::arrow::Schema> whole;
    ARROW_RETURN_NOT_OK(reader->GetSchema(&whole));
    ARROW_ASSIGN_OR_RAISE(const auto columns, find_columns(*whole, options.columns));
    auto groups = std::make_shared<RowGroups>(RowGroups{reader, {}});
    ::arrow::FieldVector fields;
    for (const int column : columns) {
      fields.push_back(whole->field(column));
      add_leaves(reader->manifest().schema_fields[static_cast<size_t>(column)], groups->leaves);
    }
    return Source{::arrow::schema(std::move(fields), whole->metadata()),
                  [groups] { return groups->next(); },
                  reader->parquet_reader()->metadata()->num_rows(), groups->read};
  } catch (const parquet::ParquetException& error) {
    return ::arrow::Status::IOError(error.what());
  }
}

}  // namespace numera::tools
