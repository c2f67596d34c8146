#pragma once

/// \file
/// What `open_source` makes of a file.

#include <arrow/table.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "numera/files/read.h"
#include "tests/tools/written_files.h"

namespace numera::files {

inline void PrintTo(const StatedCounts& counts, std::ostream* stream) {
  const auto print = [&](std::optional<std::int64_t> number) {
    *stream << (number ? std::to_string(*number) : "-") << ' ';
  };
  *stream << "rows ";
  print(counts.rows);
  *stream << "chunks ";
  print(counts.chunks);
  *stream << "nulls ";
  for (const auto& nulls : counts.nulls) print(nulls);
}

}  // namespace numera::files

namespace numera::testing {

inline const auto kInts = ::arrow::int64();
inline const auto kTexts = ::arrow::utf8();

/// A table of the numbers below 100,000.
inline std::shared_ptr<::arrow::Table> many_numbers() {
  std::string json = "[0";
  for (int i = 1; i < 100'000; ++i) json += "," + std::to_string(i);
  return table_of({{"n", kInts, json + "]"}});
}

/// The whole table in a file.
inline ::arrow::Result<std::shared_ptr<::arrow::Table>> read_table(
    const std::string& path, const files::ReadOptions& options = {}) {
  ARROW_ASSIGN_OR_RAISE(const auto source, files::open_source(path, options));
  return source->ToTable();
}

/// Expects that the file holds this table, with these types and in this order.
inline void expect_table(const std::string& path, const ::arrow::Table& expected,
                         const files::ReadOptions& options = {}) {
  const auto table = read_table(path, options);
  ASSERT_TRUE(table.ok()) << table.status();
  EXPECT_TRUE((*table)->ValidateFull().ok());
  EXPECT_TRUE((*table)->Equals(expected))
      << "found " << (*table)->ToString() << "expected " << expected.ToString();
}

/// Expects that the file is refused when it is opened or read.
inline void expect_refused(const std::string& path, const std::string& status,
                           const files::ReadOptions& options = {}) {
  EXPECT_EQ(read_table(path, options).status().ToString(), status);
}

}  // namespace numera::testing
