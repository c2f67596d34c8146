#include "tools/file_input.h"

#include <arrow/io/file.h>
#include <arrow/ipc/reader.h>
#include <parquet/arrow/reader.h>
#include <parquet/exception.h>

#include <string_view>
#include <utility>
#include <vector>

namespace numera::tools {
namespace {

using TableResult = ::arrow::Result<std::shared_ptr<::arrow::Table>>;

/// A row group becomes a chunk of each column. Checksums of pages are verified where there are any.
TableResult read_parquet(std::shared_ptr<::arrow::io::RandomAccessFile> file) {
  parquet::ReaderProperties properties;
  properties.set_page_checksum_verification(true);
  parquet::arrow::FileReaderBuilder builder;
  ARROW_RETURN_NOT_OK(builder.Open(std::move(file), properties));
  ARROW_ASSIGN_OR_RAISE(const auto reader, builder.Build());
  if (reader->num_row_groups() == 0) return reader->ReadTable();
  std::vector<std::shared_ptr<::arrow::Table>> row_groups;
  for (int i = 0; i < reader->num_row_groups(); ++i) {
    ARROW_ASSIGN_OR_RAISE(row_groups.emplace_back(), reader->ReadRowGroup(i));
  }
  return ::arrow::ConcatenateTables(row_groups);
}

TableResult read_ipc(std::shared_ptr<::arrow::io::RandomAccessFile> file) {
  ARROW_ASSIGN_OR_RAISE(auto reader, ::arrow::ipc::RecordBatchFileReader::Open(file));
  return reader->ToTable();
}

struct Format {
  std::string_view magic;  ///< its first bytes
  TableResult (*read)(std::shared_ptr<::arrow::io::RandomAccessFile>);
};

constexpr Format kFormats[] = {{"PAR1", read_parquet}, {"ARROW1", read_ipc}};

TableResult read_known(const std::shared_ptr<::arrow::io::RandomAccessFile>& file) {
  ARROW_ASSIGN_OR_RAISE(const std::int64_t size, file->GetSize());
  if (size == 0) return ::arrow::Status::Invalid("the file is empty");
  ARROW_ASSIGN_OR_RAISE(const auto start, file->ReadAt(0, 8));
  for (const Format& format : kFormats) {
    if (std::string_view(*start).starts_with(format.magic)) return format.read(file);
  }
  return ::arrow::Status::Invalid("neither a Parquet nor an Arrow IPC file");
}

}  // namespace

TableResult read_table(const std::string& path) {
  try {
    ARROW_ASSIGN_OR_RAISE(const auto file, ::arrow::io::ReadableFile::Open(path));
    ARROW_ASSIGN_OR_RAISE(auto table, read_known(file));
    ARROW_RETURN_NOT_OK(table->ValidateFull());
    return table;
  } catch (const parquet::ParquetException& error) {
    return ::arrow::Status::IOError(error.what());
  }
}

}  // namespace numera::tools
