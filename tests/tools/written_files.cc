#include "tests/tools/written_files.h"

#include <arrow/io/file.h>
#include <arrow/ipc/reader.h>
#include <arrow/ipc/writer.h>
#include <arrow/json/from_string.h>
#include <arrow/result.h>
#include <parquet/arrow/reader.h>
#include <parquet/arrow/writer.h>
#include <stdlib.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace numera::testing {
namespace {

void require(const ::arrow::Status& status) {
  if (!status.ok()) throw std::runtime_error(status.ToString());
}

std::shared_ptr<::arrow::io::FileOutputStream> open_to_write(const std::string& path) {
  return ::arrow::io::FileOutputStream::Open(path).ValueOrDie();
}

void write_stream(const std::string& path, const ::arrow::Table& table,
                  const ::arrow::ipc::IpcWriteOptions& options) {
  const auto file = open_to_write(path);
  const auto writer = ::arrow::ipc::MakeStreamWriter(file, table.schema(), options).ValueOrDie();
  require(writer->WriteTable(table));
  require(writer->Close());
  require(file->Close());
}

}  // namespace

std::vector<std::string> names_in(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename());
  }
  std::ranges::sort(names);
  return names;
}

TemporaryFolder::TemporaryFolder() {
  std::string name = std::filesystem::temp_directory_path() / "numera_tools_XXXXXX";
  if (mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), name);
  }
  folder_ = name;
  std::filesystem::permissions(folder_, std::filesystem::perms(0755));  // also for user nobody
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

std::string TemporaryFolder::write(const std::string& name, const std::string& text) const {
  std::filesystem::create_directories((folder_ / name).parent_path());
  write_text(path(name), text);
  return path(name);
}

std::shared_ptr<::arrow::Table> table_of(const std::vector<NamedColumn>& columns) {
  ::arrow::FieldVector fields;
  ::arrow::ArrayVector values;
  for (const NamedColumn& column : columns) {
    fields.push_back(::arrow::field(column.name, column.type));
    values.push_back(::arrow::json::ArrayFromJSONString(column.type, column.json).ValueOrDie());
  }
  return ::arrow::Table::Make(::arrow::schema(fields), values);
}

void write_parquet(const std::string& path, const ::arrow::Table& table,
                   std::int64_t row_group_length) {
  const auto file = open_to_write(path);
  const auto properties = parquet::WriterProperties::Builder().enable_page_checksum()->build();
  const auto arrow_properties = parquet::ArrowWriterProperties::Builder().store_schema()->build();
  require(parquet::arrow::WriteTable(table, ::arrow::default_memory_pool(), file, row_group_length,
                                     properties, arrow_properties));
  require(file->Close());
}

void write_ipc(const std::string& path, const ::arrow::Table& table) {
  const auto file = open_to_write(path);
  const auto writer = ::arrow::ipc::MakeFileWriter(file, table.schema()).ValueOrDie();
  require(writer->WriteTable(table));
  require(writer->Close());
  require(file->Close());
}

void write_ipc_stream(const std::string& path, const ::arrow::Table& table) {
  write_stream(path, table, ::arrow::ipc::IpcWriteOptions::Defaults());
}

void write_old_ipc_stream(const std::string& path, const ::arrow::Table& table) {
  auto options = ::arrow::ipc::IpcWriteOptions::Defaults();
  options.write_legacy_ipc_format = true;
  options.metadata_version = ::arrow::ipc::MetadataVersion::V4;
  write_stream(path, table, options);
}

std::shared_ptr<::arrow::Table> read_ipc(const std::string& path) {
  const auto file = ::arrow::io::ReadableFile::Open(path).ValueOrDie();
  const auto reader = ::arrow::ipc::RecordBatchFileReader::Open(file).ValueOrDie();
  return reader->ToTable().ValueOrDie();
}

std::shared_ptr<::arrow::Table> read_parquet(const std::string& path) {
  const auto file = ::arrow::io::ReadableFile::Open(path).ValueOrDie();
  const auto reader = parquet::arrow::OpenFile(file, ::arrow::default_memory_pool()).ValueOrDie();
  return reader->ReadTable().ValueOrDie();
}

std::string read_text(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void write_text(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

void flip_byte(const std::string& path, std::int64_t position) {
  std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
  const auto origin = position < 0 ? std::ios::end : std::ios::beg;
  file.seekg(position, origin);
  const int byte = file.get();
  file.seekp(position, origin);
  file.put(static_cast<char>(~byte));
  if (!file) throw std::runtime_error("cannot change " + path);
}

void overwrite(const std::string& path, const std::string& found, const std::string& text) {
  std::string content = read_text(path);
  const size_t at = content.find(found);
  if (at == std::string::npos || content.find(found, at + 1) != std::string::npos) {
    throw std::runtime_error("'" + found + "' does not stand once in " + path);
  }
  write_text(path, content.replace(at, text.size(), text));
}

}  // namespace numera::testing
