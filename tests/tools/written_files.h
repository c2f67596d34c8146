#pragma once

/// \file
/// Files that a test and the program hand each other.

#include <arrow/table.h>
#include <arrow/type.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace numera::testing {

/// The names in a folder, in order.
std::vector<std::string> names_in(const std::string& folder);

/// A new folder that is removed with everything in it.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string path(const std::string& name) const { return folder_ / name; }
  std::vector<std::string> names() const { return names_in(folder_); }

 private:
  std::filesystem::path folder_;
};

struct NamedColumn {
  std::string name;
  std::shared_ptr<::arrow::DataType> type;
  std::string json;  ///< its values
};

std::shared_ptr<::arrow::Table> table_of(const std::vector<NamedColumn>& columns);

/// A Parquet file with checksums, `row_group_length` rows a row group.
void write_parquet(const std::string& path, const ::arrow::Table& table,
                   std::int64_t row_group_length = 1024);
/// An Arrow IPC file, a batch a chunk.
void write_ipc(const std::string& path, const ::arrow::Table& table);
/// An Arrow IPC stream, a batch a chunk. Its dictionaries may be other ones in each.
void write_ipc_stream(const std::string& path, const ::arrow::Table& table);
/// The same as Arrow wrote it before version 0.15.
void write_old_ipc_stream(const std::string& path, const ::arrow::Table& table);

/// The whole of an Arrow IPC file or a Parquet file.
std::shared_ptr<::arrow::Table> read_ipc(const std::string& path);
std::shared_ptr<::arrow::Table> read_parquet(const std::string& path);

std::string read_text(const std::string& path);
void write_text(const std::string& path, const std::string& text);
/// Inverts the bits of one byte; a negative position counts from the end.
void flip_byte(const std::string& path, std::int64_t position);
/// Puts `text` over the one place that holds `found`, which is as long.
void overwrite(const std::string& path, const std::string& found, const std::string& text);

}  // namespace numera::testing
