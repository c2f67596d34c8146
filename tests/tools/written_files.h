#pragma once

/// \file
/// Files that a test and the program exchange.

#include <arrow/table.h>
#include <arrow/type.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace numera::testing {

/// The names in a folder, sorted.
std::vector<std::string> names_in(const std::string& folder);

/// A new folder. The destructor removes it with everything in it.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string path(const std::string& name) const { return folder_ / name; }
  std::vector<std::string> names() const { return names_in(folder_); }
  /// Writes a text file and makes the folders above it. Returns its path.
  std::string write(const std::string& name, const std::string& text) const;

 private:
  std::filesystem::path folder_;
};

struct NamedColumn {
  std::string name;
  std::shared_ptr<::arrow::DataType> type;
  std::string json;  ///< the values
};

std::shared_ptr<::arrow::Table> table_of(const std::vector<NamedColumn>& columns);

/// Writes a Parquet file with checksums and `row_group_length` rows per row group.
void write_parquet(const std::string& path, const ::arrow::Table& table,
                   std::int64_t row_group_length = 1024);
/// Writes an Arrow IPC file with one batch per chunk.
void write_ipc(const std::string& path, const ::arrow::Table& table);
/// Writes an Arrow IPC stream with one batch per chunk. Each batch may have other dictionaries.
void write_ipc_stream(const std::string& path, const ::arrow::Table& table);
/// Writes the same in the format before Arrow 0.15.
void write_old_ipc_stream(const std::string& path, const ::arrow::Table& table);

/// Reads a whole Arrow IPC file or Parquet file.
std::shared_ptr<::arrow::Table> read_ipc(const std::string& path);
std::shared_ptr<::arrow::Table> read_parquet(const std::string& path);

std::string read_text(const std::string& path);
void write_text(const std::string& path, const std::string& text);
/// Inverts the bits of one byte; a negative position counts from the end.
void flip_byte(const std::string& path, std::int64_t position);
/// Writes `text` over the only occurrence of `found`, which has the same length.
void overwrite(const std::string& path, const std::string& found, const std::string& text);

}  // namespace numera::testing
